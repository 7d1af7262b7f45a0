#pragma once

#include <cstddef>
#include <memory>

#include "platform/iostreams/ArchiveReader.h"

namespace iostreams::zip {

/// Streams the content of one member through buffers of fixed size. The archive must outlive it.
class MemberReader {
public:
    /// Reads the local header (APPNOTE 4.3.7) and holds it against the directory. Throws
    /// zip_exception, also for a method that isn't supported and for encryption.
    MemberReader(const ArchiveReader& archive, const Entry& entry);
    ~MemberReader();
    MemberReader(const MemberReader&) = delete;
    MemberReader& operator=(const MemberReader&) = delete;

    /// Fills the buffer as far as the member goes; 0 at the end. The call that delivers the last byte,
    /// or finds none, checks size and CRC-32 first: throws zip_exception when they differ.
    std::size_t read(char* buffer, std::size_t size);

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace iostreams::zip
