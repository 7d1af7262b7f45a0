#include "platform/iostreams/UnpackTime.h"

#include <ctime>

#include "platform/Limits.h"

namespace iostreams::zip {

namespace {

/// Asking the clock is a system call, so it is asked after so many packed bytes: 30 ms of the slowest ones.
constexpr std::size_t stepBytes = 64 * 1024;

double threadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

}  // namespace

UnpackTime::UnpackTime()
    : allowed_(static_cast<double>(platform::limits::maxUnpackSeconds())), start_(threadSeconds())
{
}

void UnpackTime::allow(std::uint64_t archiveBytes)
{
    allowed_ += static_cast<double>(archiveBytes) / platform::limits::ARCHIVE_BYTES_PER_UNPACK_SECOND;
}

bool UnpackTime::isUp(std::size_t packedBytes)
{
    unasked_ += packedBytes;
    if (!isUp_ && unasked_ >= stepBytes) {
        unasked_ = 0;
        isUp_ = threadSeconds() - start_ > allowed_;
    }
    return isUp_;
}

}  // namespace iostreams::zip
