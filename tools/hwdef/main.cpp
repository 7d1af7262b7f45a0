#include <algorithm>
#include <csignal>
#include <exception>
#include <filesystem>
#include <new>
#include <string>
#include <vector>

#include "CommandError.h"
#include "CommandLine.h"
#include "Help.h"
#include "Messages.h"
#include "ProgressLine.h"
#include "Text.h"
#include "platform/HUTEnv.h"

namespace {

constexpr int errorCode = static_cast<int>(ExitCode::ERROR);

int say(const std::string& text)
{
    writeToStream(1, text + "\n");
    return 0;
}

int runVerb(Verb& verb, std::vector<std::string> words)
{
    Settings settings;
    Arguments arguments;
    verb.define(arguments);
    defineSettings(arguments, settings);
    parseWords(verb, arguments, settings, std::move(words));
    if (settings.help) {
        return say(helpOf(verb, arguments));
    }
    showMessages(settings.quiet, coloursOf(settings));
    Output output(verb.text().name, settings.json, coloursOf(settings));
    int code = 0;
    {
        const ProgressLine progress(settings.quiet);
        code = static_cast<int>(verb.run(output));
    }
    if (ProgressLine::signal() == 0) {
        output.finish();
    }
    return code;
}

int runWords(std::vector<std::string> words)
{
    const auto verbWord = verbIn(words);  // options may stand in front of it
    if (verbWord == words.end()) {
        const std::string first = words.empty() ? "" : words.front();
        if (first == "--version") {
            return say("hwdef " + HUTEnv::getProductVersion());
        }
        if (first == "--help" || first == "-h") {
            return say(generalHelp());
        }
        throw CommandError(
            (words.empty() ? "a verb is missing" : "a verb is missing behind \"" + first + "\"") +
            "\nTry \"hwdef --help\".");
    }
    Verb* const verb = findVerb(*verbWord);
    if (verb == nullptr) {
        throw CommandError(unknownVerb(*verbWord) + "\nTry \"hwdef --help\".");
    }
    words.erase(verbWord);
    return runVerb(*verb, std::move(words));
}

int runReported(std::vector<std::string> words)
{
    try {
        return runWords(std::move(words));
    } catch (const std::bad_alloc&) {
        tellError("there is not enough memory");
    } catch (const ClosedPipe&) {
        return 128 + SIGPIPE;  // nobody reads any more
    } catch (const CommandError& error) {
        // What fails because the user stopped it was told of, and needs no other reason.
        if (ProgressLine::signal() == 0) {
            tellError(error.what());
        }
    } catch (const std::filesystem::filesystem_error& error) {
        tellError(printable(error.path1().string()) + ": " + error.code().message());
    } catch (const std::exception& error) {
        tellError(printable(error.what()));
    }
    return errorCode;
}

}  // namespace

int main(int argc, char** argv)
{
    // A process that a closed pipe ends would leave its scratch directory.
    std::signal(SIGPIPE, SIG_IGN);
    const int code = runReported({argv + std::min(argc, 1), argv + argc});
    // As a shell tells of a process that a signal ended; dying of it would leave the scratch directory.
    return ProgressLine::signal() == 0 ? code : 128 + ProgressLine::signal();
}
