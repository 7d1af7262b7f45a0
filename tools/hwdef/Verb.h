#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Argument.h"
#include "Output.h"

/// What the command ends with.
enum class ExitCode {
    SOUND = 0,     ///< done; sound; the same
    FINDINGS = 1,  ///< there are findings or differences
    ERROR = 2,     ///< wrong usage, or what was asked can't be done
};

/// What people read about a verb.
struct VerbText {
    std::string name;
    std::string summary;                                        ///< one line, without a full stop
    std::string description;                                    ///< paragraphs, separated by empty lines
    std::vector<std::pair<std::string, std::string>> examples;  ///< command line, and what it does
};

/// One verb of the command. A verb is made once, defined once and run at most once.
class Verb {
public:
    /// Verbs are listed by ascending `rank`.
    Verb(int rank, VerbText text) : rank_(rank), text_(std::move(text)) {}
    virtual ~Verb();
    Verb(const Verb&) = delete;
    Verb& operator=(const Verb&) = delete;

    int rank() const { return rank_; }
    const VerbText& text() const { return text_; }
    /// Whether it is for other programs, and left out of help texts.
    bool isHidden() const { return text_.name.front() == '_'; }

    /// Tells its options and operands; their targets are its own fields.
    virtual void define(Arguments& arguments) = 0;
    /// Does the work on the values that were parsed. Throws CommandError for what can't be done.
    virtual ExitCode run(Output& output) = 0;

private:
    int rank_;
    VerbText text_;
};

/// A verb whose first operand is a container.
class ContainerVerb : public Verb {
public:
    using Verb::Verb;
    void define(Arguments& arguments) override
    {
        arguments.operand("FILE", Kind::CONTAINER, file_, "The container");
    }

protected:
    const std::string& containerPath() const { return file_; }

private:
    std::string file_;
};

/// All verbs by rank. Complete once main() runs.
const std::vector<Verb*>& verbs();
/// The verb of that name; null when there is none.
Verb* findVerb(const std::string& name);

/// Adds a verb to the table.
void registerVerb(std::unique_ptr<Verb> verb);

/// Adds a verb to the table when it is made: one object of static storage in the file of each verb.
template <typename VerbClass>
class Registration {
public:
    Registration() { registerVerb(std::make_unique<VerbClass>()); }
};
