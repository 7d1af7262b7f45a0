#pragma once

#include <cstddef>
#include <memory>

#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/UnpackTime.h"

namespace iostreams::zip {

/// Streams the content of one member after the other through buffers of fixed size, which are made for
/// the first one and serve the others.
class MemberReader {
public:
    /// Without a member: open() must come before read().
    MemberReader();
    MemberReader(const ArchiveReader& archive, const Entry& entry);
    ~MemberReader();
    MemberReader(const MemberReader&) = delete;
    MemberReader& operator=(const MemberReader&) = delete;

    /// Begins a new member, in place of the one before, whatever became of that. Reads the local header
    /// (APPNOTE 4.3.7) and holds it against the directory. Throws zip_exception, also for a method that
    /// isn't supported and for encryption; only open() may follow then. The archive must stay until
    /// the next member is opened.
    void open(const ArchiveReader& archive, const Entry& entry);

    /// Unpacking takes from that time from now on, this member's and those opened later, and read() throws
    /// TimeError once it is up. Null, as at first, for no limit. Must outlive the reading.
    void limitTime(UnpackTime* time);

    /// Fills the buffer as far as the member goes; 0 at the end. The call that delivers the last byte,
    /// or finds none, checks size and CRC-32 first: throws zip_exception when they differ.
    std::size_t read(char* buffer, std::size_t size);

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace iostreams::zip
