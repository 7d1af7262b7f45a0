#pragma once

#include <string>
#include <variant>
#include <vector>

/// What a value on the command line names; shell completion offers accordingly.
enum class Kind {
    TEXT,
    CONTAINER,
    FILE,
    DIRECTORY,
    MEMBER,      ///< of the container that the same command line names first
    TYPE,        ///< the token of a file type
    TYPED_FILE,  ///< PATH:TYPE
    PROPERTY,    ///< KEY=VALUE
};

/// One option or operand of a verb, and where its value goes.
struct Argument {
    std::string names;  ///< "-l,--long" for an option, "FILE" for an operand
    std::string value;  ///< what stands for an option's value in help texts; empty for a flag
    std::string help;
    Kind kind = Kind::TEXT;
    bool isRequired = false;
    std::variant<bool*, std::string*, std::vector<std::string>*> target;
    std::vector<std::string> choices;  ///< all that the value may be; empty for anything

    bool isOption() const { return names.front() == '-'; }
    bool isFlag() const { return std::holds_alternative<bool*>(target); }
    bool isList() const { return std::holds_alternative<std::vector<std::string>*>(target); }
};

/// The options and operands of a verb, in the order of its help. Targets must outlive the parsing.
class Arguments {
public:
    void flag(const std::string& names, bool& target, const std::string& help)
    {
        all_.push_back({names, {}, help, Kind::TEXT, false, &target, {}});
    }
    /// An option with one value.
    void option(const std::string& names, const std::string& value, Kind kind, std::string& target,
                const std::string& help, std::vector<std::string> choices = {})
    {
        all_.push_back({names, value, help, kind, false, &target, std::move(choices)});
    }
    /// An option that may be given again and again, with one value each time.
    void options(const std::string& names, const std::string& value, Kind kind,
                 std::vector<std::string>& target, const std::string& help)
    {
        all_.push_back({names, value, help, kind, false, &target, {}});
    }
    void operand(const std::string& name, Kind kind, std::string& target, const std::string& help,
                 bool isRequired = true)
    {
        all_.push_back({name, {}, help, kind, isRequired, &target, {}});
    }
    /// All operands that are left.
    void operands(const std::string& name, Kind kind, std::vector<std::string>& target,
                  const std::string& help, bool isRequired)
    {
        all_.push_back({name, {}, help, kind, isRequired, &target, {}});
    }

    const std::vector<Argument>& all() const { return all_; }

private:
    std::vector<Argument> all_;
};
