#include "platform/iostreams/EntryHeaders.h"

#include <algorithm>
#include <limits>

#include "platform/iostreams/LittleEndian.h"
#include "platform/iostreams/ZipException.h"

namespace iostreams::zip {

namespace {

constexpr std::uint16_t comparedFlags =
    FLAG_ENCRYPTED | FLAG_DESCRIPTOR | FLAG_STRONG_ENCRYPTION | FLAG_MASKED_HEADERS;

/// The zip64 extra field of a record: one number for each saturated field of the record, in fixed
/// order.
class Zip64Field {
public:
    explicit Zip64Field(std::string_view extra)
    {
        while (extra.size() >= 4) {
            const std::size_t size = std::min<std::size_t>(load16(extra.data() + 2), extra.size() - 4);
            if (load16(extra.data()) == ZIP64_FIELD) {
                rest_ = extra.substr(4, size);
                return;
            }
            extra.remove_prefix(4 + size);
        }
    }

    /// Replaces a saturated number by the field's next one; false when the field has no more.
    bool resolve(std::uint64_t& number)
    {
        if (number != SATURATED_32) {
            return true;
        }
        if (rest_.size() < 8) {
            return false;
        }
        number = load64(rest_.data());
        rest_.remove_prefix(8);
        return true;
    }

    /// The same for the 16-bit number of a disk, which takes four bytes here.
    bool resolveDisk(std::uint32_t& disk)
    {
        if (disk != SATURATED_16) {
            return true;
        }
        if (rest_.size() < 4) {
            return false;
        }
        disk = load32(rest_.data());
        rest_.remove_prefix(4);
        return true;
    }

private:
    std::string_view rest_;
};

std::string both(const std::string& what, const std::string& local, const std::string& listed)
{
    return "local header has " + what + " " + local + ", directory has " + listed;
}

/// Holds one size of the local header against the directory's.
void checkSize(const char* what, std::uint64_t local, std::uint64_t listed, const Entry& entry,
               const std::string& archive)
{
    const bool comesLater = (entry.flags & FLAG_DESCRIPTOR) != 0 && local == 0;
    if (local != listed && !comesLater) {
        throw memberError(archive, entry.name, both(what, std::to_string(local), std::to_string(listed)));
    }
}

/// Holds CRC-32 and sizes of the local header against the directory's.
void checkNumbers(const char* fixed, std::string_view extra, const Entry& entry, const std::string& archive)
{
    const std::uint32_t crc = load32(fixed + 14);
    std::uint64_t compressedSize = load32(fixed + 18);
    std::uint64_t size = load32(fixed + 22);
    Zip64Field zip64(extra);
    if (!zip64.resolve(size) || !zip64.resolve(compressedSize)) {
        throw memberError(archive, entry.name, "local header has no zip64 field for its sizes");
    }
    const bool comesLater = (entry.flags & FLAG_DESCRIPTOR) != 0 && crc == 0;
    if (crc != entry.crc && !comesLater) {
        throw memberError(archive, entry.name, both("CRC-32", hex(crc), hex(entry.crc)));
    }
    checkSize("compressed size", compressedSize, entry.compressedSize, entry, archive);
    checkSize("size", size, entry.size, entry, archive);
}

}  // namespace

std::size_t directoryRecordLength(std::string_view record)
{
    if (record.size() < DIRECTORY_HEADER_BYTES) {
        return 0;
    }
    const char* fixed = record.data();
    return DIRECTORY_HEADER_BYTES + load16(fixed + 28) + load16(fixed + 30) + load16(fixed + 32);
}

std::string_view directoryRecordName(std::string_view record)
{
    return record.substr(DIRECTORY_HEADER_BYTES, load16(record.data() + 28));
}

std::size_t localHeaderLength(std::string_view header)
{
    if (header.size() < LOCAL_HEADER_BYTES) {
        return 0;
    }
    return LOCAL_HEADER_BYTES + load16(header.data() + 26) + load16(header.data() + 28);
}

Entry parseDirectoryRecord(std::string_view record, std::uint64_t prefixSize, const std::string& archive)
{
    const char* fixed = record.data();
    const std::size_t length = directoryRecordLength(record);
    if (length == 0 || record.size() < length) {
        throw archiveError(archive, "a record of the central directory is cut off after " +
                                        std::to_string(record.size()) + " bytes");
    }
    if (load32(fixed) != DIRECTORY_HEADER_SIGNATURE) {
        throw archiveError(archive, "a record of the central directory begins with " + hex(load32(fixed)) +
                                        ", not with " + hex(DIRECTORY_HEADER_SIGNATURE));
    }
    Entry entry;
    entry.record = record.substr(0, length);
    entry.flags = load16(fixed + 8);
    entry.method = load16(fixed + 10);
    entry.crc = load32(fixed + 16);
    entry.compressedSize = load32(fixed + 20);
    entry.size = load32(fixed + 24);
    entry.name = directoryRecordName(record);
    std::uint32_t disk = load16(fixed + 34);
    entry.headerOffset = load32(fixed + 42);

    Zip64Field zip64(record.substr(DIRECTORY_HEADER_BYTES + entry.name.size(), load16(fixed + 30)));
    if (!zip64.resolve(entry.size) || !zip64.resolve(entry.compressedSize) ||
        !zip64.resolve(entry.headerOffset) || !zip64.resolveDisk(disk)) {
        throw memberError(archive, entry.name, "directory has no zip64 field for a size or the offset");
    }
    if (disk != 0) {
        throw memberError(
            archive, entry.name,
            "lies on part " + std::to_string(disk) + " of a split archive, which can't be read");
    }
    if (entry.headerOffset > std::numeric_limits<std::uint64_t>::max() - prefixSize) {
        throw memberError(archive, entry.name,
                          "its offset " + std::to_string(entry.headerOffset) + " lies outside the file");
    }
    entry.headerOffset += prefixSize;
    return entry;
}

std::size_t checkLocalHeader(std::string_view header, const Entry& entry, const std::string& archive)
{
    const std::size_t length = localHeaderLength(header);
    if (length == 0 || header.size() < length) {
        throw memberError(archive, entry.name,
                          "local header is cut off after " + std::to_string(header.size()) + " bytes");
    }
    const char* fixed = header.data();
    if (load32(fixed) != LOCAL_HEADER_SIGNATURE) {
        throw memberError(
            archive, entry.name,
            "local header begins with " + hex(load32(fixed)) + ", not with " + hex(LOCAL_HEADER_SIGNATURE));
    }
    const std::string_view name = header.substr(LOCAL_HEADER_BYTES, load16(fixed + 26));
    if (name != entry.name) {
        throw memberError(archive, entry.name, "local header has the name " + quoted(name));
    }
    const std::uint16_t flags = load16(fixed + 6);
    if (((flags ^ entry.flags) & comparedFlags) != 0) {
        throw memberError(archive, entry.name, both("flags", hex(flags), hex(entry.flags)));
    }
    const std::uint16_t method = load16(fixed + 8);
    if (method != entry.method) {
        throw memberError(archive, entry.name,
                          both("method", std::to_string(method), std::to_string(entry.method)));
    }
    checkNumbers(fixed, header.substr(LOCAL_HEADER_BYTES + name.size(), load16(fixed + 28)), entry, archive);
    return length;
}

void checkSupported(const Entry& entry, const std::string& archive)
{
    if ((entry.flags & (FLAG_ENCRYPTED | FLAG_STRONG_ENCRYPTION | FLAG_MASKED_HEADERS)) != 0) {
        throw memberError(archive, entry.name, "is encrypted, which isn't supported");
    }
    if (entry.method != METHOD_STORED && entry.method != METHOD_DEFLATED) {
        throw memberError(archive, entry.name,
                          "has compression method " + std::to_string(entry.method) +
                              ", supported are 0 (stored) and 8 (deflated)");
    }
    if (entry.method == METHOD_STORED && entry.size != entry.compressedSize) {
        throw memberError(archive, entry.name,
                          "is stored, yet has size " + std::to_string(entry.size) + " and compressed size " +
                              std::to_string(entry.compressedSize));
    }
}

std::size_t descriptorLength(std::string_view bytes, const Entry& entry)
{
    std::string expected;
    append32(expected, DESCRIPTOR_SIGNATURE);
    const std::size_t signatureBytes = expected.size();
    append32(expected, entry.crc);
    std::string expected64 = expected;
    append32(expected, static_cast<std::uint32_t>(entry.compressedSize));
    append32(expected, static_cast<std::uint32_t>(entry.size));
    append64(expected64, entry.compressedSize);
    append64(expected64, entry.size);
    const bool fits32 = std::max(entry.compressedSize, entry.size) <= SATURATED_32;

    // The longer form first: in front of a descriptor of small sizes stands one of 32 bits.
    for (const std::size_t skipped : {std::size_t(0), signatureBytes}) {
        for (const std::string& form : {expected64, fits32 ? expected : expected64}) {
            const std::string_view wanted = std::string_view(form).substr(skipped);
            if (bytes.starts_with(wanted)) {
                return wanted.size();
            }
        }
    }
    return 0;
}

void checkDescriptor(std::string_view bytes, const Entry& entry, const std::string& archive)
{
    if (descriptorLength(bytes, entry) > 0) {
        return;
    }
    const std::string found = bytes.size() < 4 ? "nothing" : hex(load32(bytes.data()));
    throw memberError(archive, entry.name,
                      "data descriptor doesn't agree with the directory's CRC-32 " + hex(entry.crc) +
                          ", compressed size " + std::to_string(entry.compressedSize) + " and size " +
                          std::to_string(entry.size) + ": it begins with " + found);
}

}  // namespace iostreams::zip
