#include <algorithm>

#include "CommandError.h"
#include "CommandLine.h"
#include "Container.h"
#include "Messages.h"
#include "Properties.h"
#include "Verb.h"

namespace {

/// Prints what the last word of a command line may become, one candidate a line and unquoted; for the
/// shells. A line that is a kind of path in angle brackets asks the shell for such paths.
class Complete : public Verb {
public:
    Complete()
        : Verb(920, {"_complete", "Complete a command line", "Prints what the last word may become.", {}})
    {
    }

    void define(Arguments& arguments) override
    {
        arguments.operands("WORD", Kind::TEXT, words_, "The words behind the command's name", false);
    }

    ExitCode run(Output& output) override;

private:
    std::vector<std::string> words_;
};

const Registration<Complete> registration;

using Candidates = std::vector<std::string>;

bool isMatch(const std::string& name, const Argument& argument)
{
    return ("," + argument.names + ",").find("," + name + ",") != std::string::npos;
}

/// The words of a verb as they fall to its arguments.
class Line {
public:
    Line(const Arguments& arguments, Candidates words) : arguments_(arguments), last_(words.back())
    {
        words.pop_back();
        for (const std::string& word : words) {
            take(word);
        }
    }

    Candidates candidates() const
    {
        if (awaited_ != nullptr) {
            return valuesOf(*awaited_);
        }
        return last_.starts_with('-') ? options() : operands();
    }

private:
    const Argument* optionWithValue(const std::string& name) const
    {
        for (const Argument& argument : arguments_.all()) {
            if (argument.isOption() && !argument.isFlag() && isMatch(name, argument)) {
                return &argument;
            }
        }
        return nullptr;
    }

    void take(const std::string& word)
    {
        if (awaited_ != nullptr) {
            awaited_ = nullptr;
        } else if (word.size() > 1 && word.front() == '-') {
            awaited_ = optionWithValue(word);
        } else {
            operandWords_.push_back(word);
        }
    }

    /// Options, or the values of one that is there with its "=".
    Candidates options() const
    {
        Candidates names;
        const std::size_t sign = last_.find('=');
        if (sign != std::string::npos) {
            const Argument* const option = optionWithValue(last_.substr(0, sign));
            names = option == nullptr ? names : valuesOf(*option);
            for (std::string& name : names) {
                // Where the shell is asked for paths, it knows what stands in front of them.
                name.insert(0, name.starts_with('<') ? "" : last_.substr(0, sign + 1));
            }
            return names;
        }
        for (const Argument& argument : arguments_.all()) {
            if (argument.isOption()) {
                names.push_back(argument.names.substr(argument.names.rfind(',') + 1));
            }
        }
        return names;
    }

    Candidates operands() const
    {
        std::size_t index = 0;
        for (const Argument& argument : arguments_.all()) {
            if (argument.isOption()) {
                continue;
            }
            if (argument.isList() || index == operandWords_.size()) {
                return valuesOf(argument);
            }
            ++index;
        }
        return {};
    }

    Candidates valuesOf(const Argument& argument) const
    {
        switch (argument.kind) {
            case Kind::CONTAINER:
            case Kind::FILE:
                return {"<file>"};
            case Kind::DIRECTORY:
                return {"<directory>"};
            case Kind::MEMBER:
                return members();
            case Kind::TYPE:
                return typeTokens();
            case Kind::TYPED_FILE:
                return typedFiles();
            case Kind::PROPERTY:
                return keys();
            default:
                return argument.choices;
        }
    }

    Candidates members() const
    {
        Candidates names;
        if (!operandWords_.empty()) {
            const Container container = openContainer(operandWords_.front());
            for (const auto& member : container.archive->members()) {
                names.push_back(member.name);
            }
        }
        return names;
    }

    /// Types once there is a colon, paths before.
    Candidates typedFiles() const
    {
        const std::size_t colon = last_.rfind(':');
        if (colon == std::string::npos) {
            return {"<file>"};
        }
        Candidates words = typeTokens();
        std::erase(words, HHDFHwDefFileTypes::getHWHFileTypeStr(HHDFHwDefFileTypes::DRIVER_SRC));
        for (std::string& word : words) {
            word.insert(0, last_.substr(0, colon + 1));
        }
        return words;
    }

    static Candidates keys()
    {
        Candidates words = {"attribute."};
        for (const Property& property : properties()) {
            words.push_back(std::string(property.key) + "=");
        }
        return words;
    }

    const Arguments& arguments_;
    std::string last_;
    const Argument* awaited_ = nullptr;  // an option that has no value yet
    Candidates operandWords_;
};

Candidates verbNames()
{
    Candidates names = {"--help", "--version"};
    for (const Verb* verb : verbs()) {
        if (!verb->isHidden()) {
            names.push_back(verb->text().name);
        }
    }
    return names;
}

Candidates candidatesFor(Candidates words)
{
    const std::size_t place = static_cast<std::size_t>(verbIn(words) - words.cbegin());
    if (place + 1 >= words.size()) {
        return verbNames();
    }
    Verb* const verb = findVerb(words[place]);
    if (verb == nullptr) {
        return {};
    }
    if (verb->text().name == "help") {
        return verbNames();
    }
    words.erase(words.begin() + static_cast<std::ptrdiff_t>(place));
    Settings settings;
    Arguments arguments;
    verb->define(arguments);
    defineSettings(arguments, settings);
    return Line(arguments, words).candidates();
}

ExitCode Complete::run(Output& output)
{
    // Who presses the tabulator key wants no messages.
    HeldMessages messages;
    const std::string last = words_.empty() ? "" : words_.back();
    try {
        for (const std::string& word : candidatesFor(words_)) {
            // A control character would break the list, or reach the terminal. All else is offered as it is:
            // quoting for its own command line is the shell's part.
            const bool isPlain = std::none_of(word.begin(), word.end(), [](char letter) {
                return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7f;
            });
            if (isPlain && (word.front() == '<' || word.starts_with(last))) {
                output.line(word);
            }
        }
    } catch (const std::exception&) {
        // A container that can't be opened has no members to offer.
    }
    return ExitCode::SOUND;
}

}  // namespace
