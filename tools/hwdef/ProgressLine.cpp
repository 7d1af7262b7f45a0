#include "ProgressLine.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <string>

#include "CommandError.h"
#include "Output.h"
#include "Text.h"
#include "platform/HEXAll.h"

namespace {

using Clock = std::chrono::steady_clock;

volatile std::sig_atomic_t caught = 0;

extern "C" void remember(int signal)
{
    caught = signal;
}

/// Takes a signal over: the first one is remembered, a second one ends the process as if there were no
/// handler.
void watch(int signal)
{
    struct sigaction action {};
    action.sa_handler = remember;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    // A signal that the starter of this process has told it to ignore stays ignored.
    struct sigaction earlier {};
    if (::sigaction(signal, nullptr, &earlier) == 0 && earlier.sa_handler != SIG_IGN) {
        ::sigaction(signal, &action, nullptr);
    }
}

std::string timeText(double seconds)
{
    const auto whole = static_cast<std::uint64_t>(std::llround(seconds));
    const std::string tail = std::to_string(whole % 60);
    return std::to_string(whole / 60) + ":" + (tail.size() < 2 ? "0" : "") + tail;
}

std::size_t terminalWidth()
{
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

}  // namespace

class ProgressLine::Impl {
public:
    explicit Impl(bool isQuiet) : isShown_(!isQuiet && ::isatty(STDERR_FILENO) == 1) { current = this; }

    ~Impl()
    {
        clear();
        current = nullptr;
    }

    bool tell(const platform::Progress& progress)
    {
        if (isShown_) {
            show(progress);
        }
        return caught == 0;
    }

    void clear()
    {
        if (isVisible_) {
            write("");
            isVisible_ = false;
        }
    }

    static inline Impl* current = nullptr;  ///< null when there is none

private:
    void show(const platform::Progress& progress)
    {
        const Clock::time_point now = Clock::now();
        if (callBegin_ == Clock::time_point{} || progress.doneBytes < doneBytes_) {
            callBegin_ = now;
        }
        doneBytes_ = progress.doneBytes;
        // A call that has just begun has no rate yet, and may be over at once.
        constexpr std::chrono::milliseconds between(100);
        if (now - begin_ < std::chrono::seconds(1) || now - shown_ < between || now - callBegin_ < between) {
            return;
        }
        shown_ = now;
        write(line(progress, std::chrono::duration<double>(now - callBegin_).count()));
        isVisible_ = true;
    }

    static std::string line(const platform::Progress& progress, double seconds)
    {
        const auto done = static_cast<double>(progress.doneBytes);
        const auto total = static_cast<double>(progress.totalBytes);
        const auto percent = static_cast<unsigned>(total > 0 ? 100 * done / total : 0);
        const double rate = done / seconds;
        const double left = rate > 0 ? (total - done) / rate : 0;
        const std::string text = std::to_string(percent) + " %  " + readableSize(progress.doneBytes) +
                                 " of " + readableSize(progress.totalBytes) + "  " +
                                 readableSize(static_cast<std::uint64_t>(rate)) + "/s  " + timeText(left) +
                                 " left  " + printable(progress.member);
        return text.substr(0, terminalWidth() - 1);
    }

    void write(const std::string& text)
    {
        try {
            writeToStream(STDERR_FILENO, "\r\x1b[K" + text);  // erase in line (ECMA-48, 8.3.41)
        } catch (const CommandError&) {
            isShown_ = false;
        }
    }

    bool isShown_;
    bool isVisible_ = false;
    Clock::time_point begin_ = Clock::now();
    Clock::time_point callBegin_;  // when the call of the library that reports now did so first
    Clock::time_point shown_;
    std::uint64_t doneBytes_ = 0;

public:
    platform::ProgressWatch watch_{[this](const platform::Progress& progress) { return tell(progress); }};
};

ProgressLine::ProgressLine(bool isQuiet) : impl_(std::make_unique<Impl>(isQuiet))
{
    watch(SIGINT);
    watch(SIGTERM);
    watch(SIGHUP);
}

ProgressLine::~ProgressLine() = default;

void ProgressLine::hide()
{
    if (Impl::current != nullptr) {
        Impl::current->clear();
    }
}

int ProgressLine::signal()
{
    return caught;
}

void OwnWork::advance(std::string_view member, std::uint64_t bytes)
{
    progress_.doneBytes += bytes;
    progress_.member = member;
    if (ProgressLine::Impl::current != nullptr) {
        ProgressLine::Impl::current->tell(progress_);
    }
    if (ProgressLine::signal() != 0 && !task_.empty()) {
        throw HEXAll(task_ + ": cancelled after " + std::to_string(progress_.doneBytes) + " of " +
                     std::to_string(progress_.totalBytes) + " bytes, at member \"" + std::string(member) +
                     "\"");
    }
    endIfAsked();
}

void OwnWork::endIfAsked()
{
    if (ProgressLine::signal() != 0) {
        throw CommandError("interrupted");
    }
}
