#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace support {

/// What a piece of work came to that ran in a process of its own.
struct Measured {
    static constexpr int THROWN = 100;  ///< the exit code when the work threw

    int exitCode = -1;            ///< what the work returned; -1 when a signal ended it
    int signal = 0;               ///< the one that ended it, if any
    std::uint64_t peakBytes = 0;  ///< of resident memory, what this process had at the fork included
    double cpuSeconds = 0;        ///< in user and kernel mode, which other work on the machine doesn't add to
};

/// True under the address, thread or memory sanitizer, whose shadow memory makes sizes meaningless.
constexpr bool isSanitized()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
    return true;
#else
    return false;
#endif
#else
    return false;
#endif
}

/// Runs `work` in a forked child that may have `addressBytes` of address space (not enforced under a
/// sanitizer) and two minutes of processor time, and whose scratch root lies below `scratchParent`.
/// What the child's tests expect isn't seen: let it return a code.
Measured measureInChild(const std::string& scratchParent, std::uint64_t addressBytes,
                        const std::function<int()>& work);

}  // namespace support
