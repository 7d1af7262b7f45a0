#pragma once

#include <isa-l/igzip_lib.h>

#include <memory>

namespace iostreams::zip {

/// Memory for one of ISA-L's compression streams, at an address that leaves no mark in what is packed.
///
/// At level 1, ISA-L enters the third byte of every stream into its table of places under a hash of bits 16
/// to 47 of the stream's own address, not of the input. A match with the first bytes is then found or missed
/// by where the stream lies, and the same input packs differently from one process to the next. So streams
/// lie where that hash is zero: then the third byte is lost to the same slot every time.
class StreamPlace {
public:
    StreamPlace();
    ~StreamPlace() = default;
    StreamPlace(const StreamPlace&) = delete;
    StreamPlace& operator=(const StreamPlace&) = delete;

    isal_zstream& stream() const { return *stream_; }

private:
    std::unique_ptr<isal_zstream, void (*)(isal_zstream*)> stream_;
};

}  // namespace iostreams::zip
