#include "tools/Command.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

#include "support/TempDir.h"

namespace tools {

namespace {

/// How long nothing may come from a terminal until its watch is asked again.
constexpr int watchMilliseconds = 50;

/// Becomes the command; for a child process.
[[noreturn]] void become(const std::string& dir, const std::vector<std::string>& words)
{
    std::vector<std::string> texts = {"hwdef"};
    texts.insert(texts.end(), words.begin(), words.end());
    std::vector<char*> arguments;
    for (std::string& text : texts) {
        arguments.push_back(text.data());
    }
    arguments.push_back(nullptr);
    if (::chdir(dir.c_str()) == 0) {
        ::execv(HWDEF_COMMAND, arguments.data());
    }
    ::_exit(127);
}

int exitCodeOf(pid_t process)
{
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void redirect(const std::string& path, int stream)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(file, stream);
}

}  // namespace

CommandRun runCommand(const std::string& dir, const std::vector<std::string>& words)
{
    const support::TempDir streams;
    const std::string out = streams / "out";
    const std::string error = streams / "error";
    const pid_t process = ::fork();
    if (process == 0) {
        ::setenv("TMPDIR", streams.path().c_str(), 1);
        redirect(out, STDOUT_FILENO);
        redirect(error, STDERR_FILENO);
        become(dir, words);
    }
    const int code = exitCodeOf(process);
    EXPECT_EQ(streams.list(), "error out") << "a scratch directory stays";
    return {code, support::readFile(out), support::readFile(error)};
}

CommandRun runOnTerminal(const std::string& dir, const std::vector<std::string>& words,
                         const std::vector<std::string>& environment,
                         const std::function<void(const std::string& soFar, int process)>& watch)
{
    winsize size{};
    size.ws_row = 24;
    size.ws_col = 80;
    int terminal = -1;
    const pid_t process = ::forkpty(&terminal, nullptr, nullptr, &size);
    if (process == 0) {
        ::setenv("TERM", "xterm", 1);
        ::unsetenv("NO_COLOR");
        for (std::string variable : environment) {
            const std::size_t sign = variable.find('=');
            ::setenv(variable.substr(0, sign).c_str(), variable.substr(sign + 1).c_str(), 1);
        }
        become(dir, words);
    }
    CommandRun run;
    std::array<char, 4096> buffer{};
    for (;;) {
        pollfd input{terminal, POLLIN, 0};
        if (::poll(&input, 1, watch ? watchMilliseconds : -1) > 0) {
            const ssize_t count = ::read(terminal, buffer.data(), buffer.size());
            if (count <= 0) {
                break;  // the last process that had the terminal open has ended
            }
            run.out.append(buffer.data(), static_cast<std::size_t>(count));
        }
        if (watch) {
            watch(run.out, process);
        }
    }
    ::close(terminal);
    run.exitCode = exitCodeOf(process);
    return run;
}

void expectDone(const CommandRun& run)
{
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.error, "");
}

void expectError(const CommandRun& run, const std::string& text)
{
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.error, "hwdef: error: " + text + "\n");
}

}  // namespace tools
