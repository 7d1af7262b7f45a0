#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace iostreams::zip {

/// A limit to the time that unpacking members of archives may take, for what somebody else chose to put in
/// them. Deflate has blocks of ten bits that hold nothing and take as long as thousands of bytes: neither the
/// packed nor the unpacked size tells how long a stream will take.
///
/// Only unpacking counts, not what is done with the bytes, and none of it as long as the calling thread
/// hasn't had the processor for longer than what is allowed.
class UnpackTime {
public:
    using Clock = std::chrono::steady_clock;

    /// Allows that part of "hwdef.maxUnpackSeconds" (platform/Limits.h).
    explicit UnpackTime(double share);

    /// Adds what one more archive of that many bytes may take.
    void allow(std::uint64_t archiveBytes);
    /// Takes note of a step of unpacking and of what it gave.
    void spend(Clock::duration time, std::size_t unpackedBytes);
    /// Once it is, it stays so.
    bool isUp() const { return isUp_; }
    double allowedSeconds() const;

private:
    double share_;
    double start_;  ///< the thread's processor time, in seconds like the others
    double spent_ = 0;
    std::uint64_t archiveBytes_ = 0;
    bool isUp_ = false;
};

}  // namespace iostreams::zip
