#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/Progress.h"

/// While it lives, long calls of the library can be followed and ended: on a terminal, a line on standard
/// error tells how far a call has come once it takes longer than a second, with rate and time left; and an
/// interrupt (Ctrl-C) or a request to end (SIGTERM) cancels the call, so that no temporary file stays.
class ProgressLine {
public:
    /// With `isQuiet` there is no line.
    explicit ProgressLine(bool isQuiet);
    /// Takes the line away.
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// Takes the line away for something else to be shown; it comes back as the work goes on.
    static void hide();
    /// The signal that came, 0 for none.
    static int signal();

private:
    friend class OwnWork;

    class Impl;
    std::unique_ptr<Impl> impl_;
};

/// Work that the command does itself, followed and ended like the library's.
class OwnWork {
public:
    /// When a signal ends it, the task is told of: "TASK: cancelled after ...". Without one nothing is told.
    explicit OwnWork(std::uint64_t totalBytes, std::string task = {})
        : progress_{0, totalBytes, {}}, task_(std::move(task))
    {
    }

    /// So many more bytes are done, of which the member is told. After a signal throws HEXAll with the text,
    /// or CommandError("interrupted") without a task.
    void advance(std::string_view member, std::uint64_t bytes);
    /// Throws CommandError after a signal, and tells nothing.
    static void endIfAsked();

private:
    platform::Progress progress_;
    std::string task_;
};
