#include "support/MeasuredChild.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace support {

namespace {

constexpr rlim_t mostCpuSeconds = 120;

double seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

void limit(__rlimit_resource resource, rlim_t most)
{
    const rlimit limits = {most, most};
    ::setrlimit(resource, &limits);
}

/// An exception must not reach the test: there would be two of it.
int codeOf(const std::function<int()>& work)
{
    try {
        return work();
    } catch (...) {
        return Measured::THROWN;
    }
}

}  // namespace

Measured measureInChild(const std::string& scratchParent, std::uint64_t addressBytes,
                        const std::function<int()>& work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::setenv("TMPDIR", scratchParent.c_str(), 1);
        if (!isSanitized()) {
            limit(RLIMIT_AS, addressBytes);
        }
        limit(RLIMIT_CPU, mostCpuSeconds);
        std::exit(codeOf(work));
    }
    int status = 0;
    rusage usage = {};
    EXPECT_EQ(::wait4(child, &status, 0, &usage), child);
    Measured measured;
    measured.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    measured.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    measured.peakBytes = static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
    measured.cpuSeconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    return measured;
}

}  // namespace support
