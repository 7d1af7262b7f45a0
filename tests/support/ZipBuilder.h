#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace support {

/// CRC-32 as zip archives use it, bit by bit.
std::uint32_t crc32(const std::string& bytes);
/// A raw deflate stream that unpacks to `bytes`.
std::string deflated(const std::string& bytes);
/// A number of 2, 4 or 8 bytes, as an archive stores it.
std::string little(std::uint64_t number, int bytes);
/// A zip64 extra field (APPNOTE 4.5.3) of these numbers.
std::string zip64Extra(std::initializer_list<std::uint64_t> numbers);

/// The numbers that both headers of a member tell.
struct ZipHeader {
    std::string name;
    std::string extra;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t crc = 0;
    std::uint32_t compressedSize = 0;
    std::uint32_t size = 0;
};

struct ZipMember {
    ZipHeader local;
    ZipHeader listed;        ///< in the directory
    std::string data;        ///< as it stands in the archive
    std::string descriptor;  ///< stands behind the data
    std::string comment;
    std::uint16_t disk = 0;
    std::optional<std::uint32_t> offset;  ///< listed in place of the true one

    /// Sets a flag in both headers.
    void setFlag(std::uint16_t flag);
    /// Makes it a member whose numbers follow its data: zeros in its local header, and a descriptor
    /// with or without signature, with sizes of 4 or 8 bytes.
    void setDescriptor(bool signature, int sizeBytes);
};

/// An end record; what isn't set is what is true.
struct ZipEnd {
    std::optional<std::uint32_t> disk;
    std::optional<std::uint32_t> directoryDisk;
    std::optional<std::uint64_t> entriesOnDisk;
    std::optional<std::uint64_t> entries;
    std::optional<std::uint64_t> directorySize;
    std::optional<std::uint64_t> directoryOffset;
};

/// Writes an archive by hand, record by record, so that any of its numbers can be made wrong. What is
/// added is right at first, and build() gives a right archive then.
class ZipBuilder {
public:
    std::string prefix;  ///< stands in front of the archive; offsets don't count it
    std::vector<ZipMember> members;
    std::string directoryTail;  ///< stands between the last record and the end records
    std::string comment;
    ZipEnd end;

    bool zip64 = false;                         ///< whether zip64 end records are written
    ZipEnd zip64End;                            ///< their numbers; the plain ones then are all saturated
    std::string zip64Extensible;                ///< more data in the zip64 end record
    std::optional<std::uint64_t> zip64Locator;  ///< where the locator says that the zip64 record is
    std::uint32_t zip64Disks = 1;

    ZipMember& addStored(const std::string& name, const std::string& content);
    ZipMember& addDeflated(const std::string& name, const std::string& content);

    std::string build() const;
    void write(const std::string& path) const;
};

/// Puts so many bytes, rounded up to five, of deflate blocks without content in front of a deflated member's
/// data: 10 bits each, and half a microsecond to unpack.
void putEmptyBlocks(ZipMember& member, std::size_t packedBytes);

/// What the zip_exception that `work` throws says about the archive: its text behind "ARCHIVE: ".
/// Fails the test when none is thrown, or one about something else.
std::string zipFailure(const std::string& archive, const std::function<void()>& work);

}  // namespace support
