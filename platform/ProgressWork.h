#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Progress.h"

namespace platform {

/// One call of the library as its progress is counted. Made at the top of a call; one that is made while
/// another one lives on the thread, or while nobody watches, counts nothing.
///
/// The static operations serve the parts that do the work. They cost one comparison when nobody watches.
class ProgressWork {
public:
    /// `subject` is what a cancelled call's text begins with, the archive's path.
    explicit ProgressWork(std::string_view subject);
    ~ProgressWork();
    ProgressWork(const ProgressWork&) = delete;
    ProgressWork& operator=(const ProgressWork&) = delete;

    /// Whether it is worth while to find out how much work there will be.
    static bool isWatched() { return current_ != nullptr; }
    /// So many more bytes are to be handled.
    static void expect(std::uint64_t bytes)
    {
        if (current_ != nullptr) [[unlikely]] {
            current_->totalBytes_ += bytes;
        }
    }
    /// Nothing but these bytes is left to be handled.
    static void expectLast(std::uint64_t bytes)
    {
        if (current_ != nullptr) [[unlikely]] {
            current_->totalBytes_ = current_->doneBytes_ + bytes;
        }
    }
    /// So many bytes have been handled; throws Cancelled, and what the caller's function throws.
    static void advance(std::string_view member, std::uint64_t bytes)
    {
        if (current_ != nullptr) [[unlikely]] {
            current_->tell(member, bytes);
        }
    }
    /// Copies `bytes` bytes by `copy(offset, size)`, at once when nobody watches, else piece by piece.
    template <typename Copy>
    static void copyInSteps(std::string_view member, std::uint64_t bytes, Copy copy)
    {
        constexpr std::uint64_t stepBytes = std::uint64_t{4} << 20;
        const std::uint64_t most = isWatched() ? stepBytes : bytes;
        for (std::uint64_t done = 0; done < bytes;) {
            const std::uint64_t size = std::min(most, bytes - done);
            copy(done, size);
            done += size;
            advance(member, size);
        }
    }

private:
    void tell(std::string_view member, std::uint64_t bytes);

    ProgressWatch* watch_ = nullptr;
    std::string subject_;
    std::uint64_t doneBytes_ = 0;
    std::uint64_t totalBytes_ = 0;

    constinit static thread_local ProgressWork* current_;
};

}  // namespace platform
