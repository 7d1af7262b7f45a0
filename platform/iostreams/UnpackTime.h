#pragma once

#include <cstddef>
#include <cstdint>

namespace iostreams::zip {

/// A limit to the processor time that unpacking members of archives may take, for what somebody else
/// chose to put in them. Deflate has blocks of ten bits that hold nothing and take as long as thousands of
/// bytes: neither the packed nor the unpacked size tells how long a stream will take.
///
/// The time is the calling thread's, from here on, with all that it does meanwhile: "hwdef.maxUnpackSeconds"
/// and a second for each 32 MiB of the archives (platform/Limits.h). Honest members take less than a tenth of
/// that.
class UnpackTime {
public:
    UnpackTime();

    /// Adds what one more archive of that many bytes may take.
    void allow(std::uint64_t archiveBytes);
    /// Whether the time is up, before that many packed bytes are unpacked. Once it is, it stays so.
    bool isUp(std::size_t packedBytes);
    double allowedSeconds() const { return allowed_; }

private:
    double allowed_;
    double start_;
    std::size_t unasked_ = 0;  ///< packed bytes since the clock was asked
    bool isUp_ = false;
};

}  // namespace iostreams::zip
