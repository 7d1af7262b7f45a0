#include <filesystem>
#include <fstream>

#include "CommandError.h"
#include "CommandLine.h"
#include "Verb.h"
#include "platform/HUTEnv.h"

namespace {

/// Writes the manual pages; for the build.
class Manual : public Verb {
public:
    Manual()
        : Verb(
              910,
              {"_manual", "Write the manual pages", "Writes the manual pages as files into a directory.", {}})
    {
    }

    void define(Arguments& arguments) override
    {
        arguments.operand("DIR", Kind::DIRECTORY, dir_, "The directory");
    }

    ExitCode run(Output& output) override;

private:
    void write(const std::string& name, const std::string& text) const;

    std::string dir_;
};

const Registration<Manual> registration;

/// A text as roff shows it, man(7): dashes that can be searched for, and no line that begins a request.
std::string roff(const std::string& text)
{
    std::string escaped;
    for (const char letter : text) {
        if (letter == '-') {
            escaped += "\\-";
        } else if (letter == '\\') {
            escaped += "\\e";
        } else if ((letter == '.' || letter == '\'') && (escaped.empty() || escaped.back() == '\n')) {
            escaped += std::string("\\&") + letter;
        } else {
            escaped += letter;
        }
    }
    return escaped;
}

std::string paragraphs(const std::string& text)
{
    std::string result = roff(text);
    for (std::size_t gap = result.find("\n\n"); gap != std::string::npos; gap = result.find("\n\n", gap)) {
        result.replace(gap, 2, "\n.PP\n");
    }
    return result + "\n";
}

std::string header(const std::string& name, const std::string& summary)
{
    std::string title = name;
    for (char& letter : title) {
        letter = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    }
    return ".TH " + roff(title) + " 1 \"\" \"hwdef " + HUTEnv::getProductVersion() +
           "\" \"User Commands\"\n.SH NAME\n" + roff(name) + " \\- " + roff(summary) + "\n";
}

std::string synopsis(const Verb& verb, const Arguments& arguments)
{
    std::string text = ".SH SYNOPSIS\n.B hwdef " + roff(verb.text().name) + "\n[\\fIOPTIONS\\fR]";
    for (const Argument& argument : arguments.all()) {
        if (!argument.isOption()) {
            const std::string name =
                "\\fI" + roff(argument.names) + "\\fR" + (argument.isList() ? "..." : "");
            text += argument.isRequired ? " " + name : " [" + name + "]";
        }
    }
    return text + "\n";
}

std::string options(const Arguments& arguments, bool areOptions)
{
    std::string text;
    for (const Argument& argument : arguments.all()) {
        if (argument.isOption() == areOptions) {
            std::string names = argument.names;
            if (const std::size_t comma = names.find(','); comma != std::string::npos) {
                names.insert(comma + 1, " ");
            }
            text += ".TP\n\\fB" + roff(names) + "\\fR" +
                    (argument.value.empty() ? "" : " \\fI" + roff(argument.value) + "\\fR") + "\n" +
                    roff(argument.help) + "\n";
        }
    }
    return text;
}

std::string examples(const VerbText& text)
{
    std::string all = ".SH EXAMPLES\n";
    for (const auto& [command, what] : text.examples) {
        all += ".TP\n\\fB" + roff(command) + "\\fR\n" + roff(what) + "\n";
    }
    return all;
}

constexpr const char* exitStatus =
    ".SH \"EXIT STATUS\"\n.TP\n0\nDone; sound; the same.\n.TP\n1\nThere are findings or differences.\n"
    ".TP\n2\nWrong usage, or what was asked can't be done.\n"
    ".TP\n128 and a signal's number\nIt was interrupted. No file is left in part; members written before "
    "stay. 141: nobody reads what it writes; its work may be done.\n";

std::string pageOf(Verb& verb)
{
    Settings settings;
    Arguments arguments;
    verb.define(arguments);
    defineSettings(arguments, settings);
    return header("hwdef-" + verb.text().name, verb.text().summary) + synopsis(verb, arguments) +
           ".SH DESCRIPTION\n" + paragraphs(verb.text().description) + ".SH ARGUMENTS\n" +
           options(arguments, false) + ".SH OPTIONS\n" + options(arguments, true) + examples(verb.text()) +
           exitStatus + ".SH \"SEE ALSO\"\n.BR hwdef (1)\n";
}

std::string overview()
{
    std::string text =
        header("hwdef", "work with hardware definition containers") +
        ".SH SYNOPSIS\n.B hwdef\n\\fIVERB\\fR [\\fIOPTIONS\\fR] ...\n.SH DESCRIPTION\n"
        "Looks into hardware definition containers, and checks, builds, compares and merges them. "
        "Each verb has a page of its own.\n.SH VERBS\n";
    for (const Verb* verb : verbs()) {
        if (!verb->isHidden()) {
            text += ".TP\n\\fB" + roff(verb->text().name) + "\\fR\n" + roff(verb->text().summary) +
                    ". See \\fBhwdef\\-" + roff(verb->text().name) + "\\fR(1).\n";
        }
    }
    return text + exitStatus +
           ".SH ENVIRONMENT\n.TP\nNO_COLOR\nWhen it is set to anything but the empty text, no colours are "
           "used unless they are "
           "asked "
           "for.\n.TP\nSOURCE_DATE_EPOCH\nThe time that members of new containers get, in seconds since "
           "1970.\n"
           ".TP\nTMPDIR\nWhere the scratch directory of the process is made.\n";
}

void Manual::write(const std::string& name, const std::string& text) const
{
    const std::string path = dir_ + "/" + name + ".1";
    if (!(std::ofstream(path, std::ios::binary) << text).flush()) {
        throw CommandError(path + ": the page can't be written");
    }
}

ExitCode Manual::run(Output&)
{
    std::filesystem::create_directories(dir_);
    write("hwdef", overview());
    for (Verb* verb : verbs()) {
        if (!verb->isHidden()) {
            write("hwdef-" + verb->text().name, pageOf(*verb));
        }
    }
    return ExitCode::SOUND;
}

}  // namespace
