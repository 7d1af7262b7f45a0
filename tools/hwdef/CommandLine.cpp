#include "CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "CommandError.h"
#include "Text.h"

namespace {

const std::vector<std::string> colourChoices = {"auto", "always", "never"};

CLI::Option* addOption(CLI::App& app, const Argument& argument)
{
    if (const auto* flag = std::get_if<bool*>(&argument.target)) {
        return app.add_flag(argument.names, **flag, argument.help);
    }
    if (const auto* text = std::get_if<std::string*>(&argument.target)) {
        return app.add_option(argument.names, **text, argument.help);
    }
    CLI::Option* const list =
        app.add_option(argument.names, *std::get<std::vector<std::string>*>(argument.target), argument.help);
    return argument.isOption() ? list->allow_extra_args(false) : list;
}

std::string footerOf(const VerbText& text)
{
    std::string footer = "Examples:\n";
    for (const auto& [command, what] : text.examples) {
        footer.append("  ").append(command).append("\n      ").append(what).append("\n");
    }
    return footer;
}

void fill(CLI::App& app, const Verb& verb, const Arguments& arguments)
{
    app.set_help_flag();  // ours is an argument as others are
    app.get_formatter()->column_width(30);
    app.footer(footerOf(verb.text()));
    for (const Argument& argument : arguments.all()) {
        CLI::Option* const option = addOption(app, argument);
        option->required(argument.isRequired);
        if (!argument.isFlag()) {
            option->option_text(argument.isOption() ? argument.value : " ");  // the usage line tells the rest
        }
    }
}

std::vector<std::string> optionNames(const Arguments& arguments)
{
    std::vector<std::string> names;
    for (const Argument& argument : arguments.all()) {
        if (argument.isOption()) {
            const std::vector<std::string> split = CLI::detail::split(argument.names, ',');
            names.insert(names.end(), split.begin(), split.end());
        }
    }
    return names;
}

CommandError usageError(const Verb& verb, const std::string& text)
{
    return CommandError(verb.text().name + ": " + text + "\nTry \"hwdef " + verb.text().name + " --help\".");
}

CommandError unexpected(const Verb& verb, const Arguments& arguments, const std::string& word)
{
    if (word.size() < 2 || word.front() != '-') {
        return usageError(verb, "\"" + printable(word) + "\" is one argument too many");
    }
    const std::string name = word.substr(0, word.find('='));
    return usageError(
        verb, "there is no option \"" + printable(name) + "\"" + didYouMean(name, optionNames(arguments)));
}

/// The parser takes a word in brackets for a list of several words; a mark in front makes it a plain one.
constexpr char bracketMark = '\x01';

void markBrackets(std::vector<std::string>& words)
{
    for (std::string& word : words) {
        if (word.starts_with('[') && word.ends_with(']')) {
            word.insert(word.begin(), bracketMark);
        }
    }
}

void unmarkBrackets(const Arguments& arguments)
{
    const auto unmark = [](std::string& text) {
        if (text.starts_with(std::string{bracketMark, '['})) {
            text.erase(0, 1);
        }
    };
    for (const Argument& argument : arguments.all()) {
        if (const auto* text = std::get_if<std::string*>(&argument.target)) {
            unmark(**text);
        } else if (const auto* list = std::get_if<std::vector<std::string>*>(&argument.target)) {
            std::for_each((*list)->begin(), (*list)->end(), unmark);
        }
    }
}

void checkChoices(const Verb& verb, const Arguments& arguments)
{
    for (const Argument& argument : arguments.all()) {
        if (argument.choices.empty()) {
            continue;
        }
        const std::string& value = *std::get<std::string*>(argument.target);
        const bool isChoice =
            std::find(argument.choices.begin(), argument.choices.end(), value) != argument.choices.end();
        if (!value.empty() && !isChoice) {
            throw usageError(verb, argument.names + " can't be \"" + printable(value) + "\", only " +
                                       CLI::detail::join(argument.choices, ", ") +
                                       didYouMean(value, argument.choices));
        }
    }
}

/// The parser's text of an option with too few or too many values, "--type: 1 required TEXT missing", in
/// the user's words.
std::string mismatch(const std::string& text)
{
    const std::string name = text.substr(0, text.find(':'));
    return printable(name) + (text.ends_with(" missing") ? " needs a value" : " may be given only once");
}

}  // namespace

std::vector<std::string>::const_iterator verbIn(const std::vector<std::string>& words)
{
    auto word = words.begin();
    while (word != words.end() && word->starts_with('-')) {
        word += *word == "--color" && word + 1 != words.end() ? 2 : 1;
    }
    return word;
}

void defineSettings(Arguments& arguments, Settings& settings)
{
    arguments.flag("--json", settings.json, "Write one JSON document in place of text");
    arguments.flag("-q,--quiet", settings.quiet, "Tell neither warnings nor progress");
    arguments.option("--color", "WHEN", Kind::TEXT, settings.colours, "Use colours: auto, always or never",
                     colourChoices);
    arguments.flag("-h,--help", settings.help, "Show this help");
}

Colours coloursOf(const Settings& settings)
{
    return settings.colours == "always"  ? Colours::ALWAYS
           : settings.colours == "never" ? Colours::NEVER
                                         : Colours::AUTO;
}

void parseWords(const Verb& verb, const Arguments& arguments, const Settings& settings,
                std::vector<std::string> words)
{
    CLI::App app(verb.text().description, "hwdef " + verb.text().name);
    fill(app, verb, arguments);
    app.allow_extras();
    markBrackets(words);
    std::reverse(words.begin(), words.end());  // the parser takes them from the end
    try {
        app.parse(std::move(words));
    } catch (const CLI::ParseError& error) {
        if (settings.help) {
            return;
        }
        if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
            throw usageError(verb, mismatch(error.what()));
        }
        throw usageError(verb, printable(error.what()));
    }
    std::vector<std::string> left = app.remaining();
    std::erase(left, "--");  // the mark that only operands follow is told as well
    if (!left.empty() && !settings.help) {
        throw unexpected(verb, arguments, left.front());
    }
    unmarkBrackets(arguments);
    checkChoices(verb, arguments);
}

std::string helpOf(const Verb& verb, const Arguments& arguments)
{
    CLI::App app(verb.text().description, "hwdef " + verb.text().name);
    fill(app, verb, arguments);
    std::string text = app.help();
    return text.erase(text.find_last_not_of('\n') + 1);
}
