#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/File.h"
#include "platform/iostreams/Directory.h"
#include "platform/iostreams/EndRecord.h"
#include "platform/iostreams/Entry.h"
#include "platform/iostreams/UnpackTime.h"
#include "platform/iostreams/zip.h"

namespace iostreams::zip {

/// An archive open for reading: its file and its directory. Opening reads the tail and the
/// directory, nothing else, and checks all that these two can tell: the whole archive is refused
/// when a member lies outside the file or in another one. Members that are encrypted or of a method
/// that isn't supported are listed; only reading them throws.
///
/// An entry given to a member function must be one of this archive. For one thread at a time: finding
/// and listing keep what they have worked out.
class ArchiveReader {
public:
    /// Throws zip_exception when the path isn't a regular file or can't be read as an archive.
    explicit ArchiveReader(const std::string& path);
    ~ArchiveReader();
    ArchiveReader(const ArchiveReader&) = delete;
    ArchiveReader& operator=(const ArchiveReader&) = delete;

    /// The archive, or null when nothing exists at the path; throws as the constructor does.
    static std::unique_ptr<ArchiveReader> openIfExists(const std::string& path);

    /// Another number for each reader of this process, so that bytes kept from one are never taken
    /// for those of another that stands at the same address.
    std::uint64_t serial() const { return serial_; }
    const std::string& path() const;
    const platform::File& file() const;
    const EndRecord& endRecord() const;
    const Directory& directory() const;
    /// All listed members in directory order, a name that is listed twice included twice.
    const std::vector<Entry>& entries() const;
    /// Where the first member in the file begins; the directory when there is none. What stands in front of
    /// it belongs to no member.
    std::uint64_t membersBegin() const;
    /// The member of that exact name, the last one when it is listed twice; null when there is none.
    /// The result lives as long as this object, but need not stand in entries(): two entries are the
    /// same one when their records are the same bytes in memory. The first call may cost a walk over the
    /// directory; the index it leaves serves the others.
    const Entry* find(std::string_view name) const;

    /// The end of what may belong to one of this archive's members: the local header of the member
    /// behind it, or the directory. Header, data and data descriptor must have ended there.
    std::uint64_t dataLimit(const Entry& entry) const;

    /// The member's whole content in memory; throws zip_exception when it can't be read or is larger
    /// than `limitBytes` by its declared or its true size. Memory is taken for what the compressed
    /// bytes can unpack to at most, whatever size is declared. With a time: as MemberReader::limitTime.
    std::string read(const Entry& entry, std::uint64_t limitBytes, UnpackTime* time = nullptr) const;

private:
    explicit ArchiveReader(platform::File file);

    inline static std::atomic<std::uint64_t> opened_{0};
    const std::uint64_t serial_ = ++opened_;

    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace iostreams::zip
