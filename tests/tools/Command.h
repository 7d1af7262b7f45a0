#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tools {

/// How a run of the command hwdef ended, and what it said.
struct CommandRun {
    int exitCode = -1;  ///< -1 when a signal ended it
    std::string out;
    std::string error;
};

/// Runs the command in the directory with these words behind its name. Fails the test when a scratch
/// directory stays.
CommandRun runCommand(const std::string& dir, const std::vector<std::string>& words);

/// The same on a terminal of 80 columns; `out` holds all that it shows. `watch`, when given, sees what has
/// come so far each time something comes and some twenty times a second, with the process to act on.
CommandRun runOnTerminal(const std::string& dir, const std::vector<std::string>& words,
                         const std::vector<std::string>& environment = {},
                         const std::function<void(const std::string& soFar, int process)>& watch = {});

/// Whether a text that the command has shown holds that part.
inline bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

/// Expects that a run did what was asked, without a word on standard error.
void expectDone(const CommandRun& run);
/// Expects that a run failed with that text, and told nothing else.
void expectError(const CommandRun& run, const std::string& text);

}  // namespace tools
