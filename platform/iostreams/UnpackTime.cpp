#include "platform/iostreams/UnpackTime.h"

#include <algorithm>
#include <ctime>

#include "platform/Limits.h"

namespace iostreams::zip {

namespace {

/// What any unpacked byte may take, which is less than it does.
constexpr double freeSecondsPerByte = 1.0 / (std::uint64_t{4} << 30);

double threadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

}  // namespace

UnpackTime::UnpackTime(double share) : share_(share), start_(threadSeconds()) {}

void UnpackTime::allow(std::uint64_t archiveBytes)
{
    archiveBytes_ += archiveBytes;
}

void UnpackTime::spend(Clock::duration time, std::size_t unpackedBytes)
{
    const double seconds = std::chrono::duration<double>(time).count();
    spent_ += std::max(0.0, seconds - freeSecondsPerByte * static_cast<double>(unpackedBytes));
    // That clock runs on while others have the processor, but costs no system call.
    if (!isUp_ && spent_ > allowedSeconds()) {
        isUp_ = threadSeconds() - start_ > allowedSeconds();
    }
}

double UnpackTime::allowedSeconds() const
{
    using namespace platform::limits;
    const std::uint64_t beyond = archiveBytes_ - std::min(archiveBytes_, UNPACK_FREE_ARCHIVE_BYTES);
    return share_ * (static_cast<double>(maxUnpackSeconds()) +
                     static_cast<double>(beyond) / ARCHIVE_BYTES_PER_UNPACK_SECOND);
}

}  // namespace iostreams::zip
