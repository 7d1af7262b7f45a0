#include "Help.h"

#include "CommandError.h"
#include "CommandLine.h"
#include "Text.h"

namespace {

class Help : public Verb {
public:
    Help()
        : Verb(900, {"help",
                     "Show the help of a verb",
                     "Shows the help of a verb, or of the whole command.",
                     {{"hwdef help list", "tells what the verb list does"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        arguments.operand("VERB", Kind::TEXT, verb_, "The verb", false);
    }

    ExitCode run(Output& output) override
    {
        const std::string text = verb_.empty() ? generalHelp() : helpOf();
        if (output.isJson()) {
            output.json().add("text", text);
        }
        output.line(text);
        return ExitCode::SOUND;
    }

private:
    std::string helpOf() const
    {
        Verb* const verb = findVerb(verb_);
        if (verb == nullptr) {
            throw CommandError(unknownVerb(verb_));
        }
        Settings settings;
        Arguments arguments;
        verb->define(arguments);
        defineSettings(arguments, settings);
        return ::helpOf(*verb, arguments);
    }

    std::string verb_;
};

const Registration<Help> registration;

}  // namespace

std::string unknownVerb(const std::string& name)
{
    std::vector<std::string> names;
    for (const Verb* verb : verbs()) {
        if (!verb->isHidden()) {
            names.push_back(verb->text().name);
        }
    }
    return "there is no verb \"" + printable(name) + "\"" + didYouMean(name, names);
}

std::string generalHelp()
{
    std::string text =
        "hwdef looks into hardware definition containers, and checks, builds, compares and merges them.\n\n"
        "Usage: hwdef VERB [OPTIONS] ...\n\nVerbs:\n";
    Table table("ll");
    for (const Verb* verb : verbs()) {
        if (!verb->isHidden()) {
            table.row({verb->text().name, verb->text().summary});
        }
    }
    for (const std::string& line : table.lines(2)) {
        text += line + "\n";
    }
    return text +
           "\nEvery verb knows --json, --quiet, --color and --help.\n\n"
           "Examples:\n"
           "  hwdef info design.hdf\n"
           "      what the container is: device, versions, resources, files\n"
           "  hwdef list --type BIT design.hdf\n"
           "      the bitstreams in it\n"
           "  hwdef extract design.hdf -C out\n"
           "      all members as files below out\n"
           "  hwdef build -o design.hdf top.hwh:HW_HANDOFF top.bit:BIT -s part=ice40hx8k-ct256\n"
           "      a container of two files\n\n"
           "Exit codes: 0 done, sound or the same; 1 findings or differences; 2 an error.";
}
