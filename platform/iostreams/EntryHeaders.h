#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/iostreams/Entry.h"

namespace iostreams::zip {

constexpr std::uint32_t LOCAL_HEADER_SIGNATURE = 0x04034b50;
constexpr std::uint32_t DIRECTORY_HEADER_SIGNATURE = 0x02014b50;
constexpr std::uint32_t DESCRIPTOR_SIGNATURE = 0x08074b50;  ///< not always written, APPNOTE 4.3.9.3
constexpr std::size_t LOCAL_HEADER_BYTES = 30;              ///< fixed part, APPNOTE 4.3.7
constexpr std::size_t DIRECTORY_HEADER_BYTES = 46;          ///< fixed part, APPNOTE 4.3.12

/// The extra field of the numbers that don't fit into a header (APPNOTE 4.5.3), and what stands there
/// instead.
constexpr std::uint16_t ZIP64_FIELD = 0x0001;
constexpr std::uint32_t SATURATED_32 = 0xffffffff;
constexpr std::uint16_t SATURATED_16 = 0xffff;

/// General purpose bits (APPNOTE 4.4.4) that change how a member is read.
constexpr std::uint16_t FLAG_ENCRYPTED = 1U << 0U;
constexpr std::uint16_t FLAG_DESCRIPTOR = 1U << 3U;
constexpr std::uint16_t FLAG_STRONG_ENCRYPTION = 1U << 6U;
constexpr std::uint16_t FLAG_UTF8 = 1U << 11U;
constexpr std::uint16_t FLAG_MASKED_HEADERS = 1U << 13U;

/// Reads the directory record that `record` begins with, zip64 extra field (APPNOTE 4.5.3) resolved;
/// `prefixSize` is added to its offset. Throws zip_exception, naming archive and member, for a record
/// that is cut off, has a wrong signature, or lacks a number it must have. `entry.record` tells how
/// long it is.
Entry parseDirectoryRecord(std::string_view record, std::uint64_t prefixSize, const std::string& archive);

/// How long the directory record that `record` begins with is; 0 when not even its fixed part is
/// there. Looks at the lengths only, not at the signature.
std::size_t directoryRecordLength(std::string_view record);

/// The name in the whole directory record that `record` begins with.
std::string_view directoryRecordName(std::string_view record);

/// How long the local header that `header` begins with is, name and extra field included; 0 when not
/// even its fixed part is there. Looks at the lengths only, not at the signature.
std::size_t localHeaderLength(std::string_view header);

/// Checks the local header in `header` (at least its fixed part, name and extra field) against the
/// directory's entry and returns its whole length. Throws zip_exception when the two disagree in
/// name, method, a flag that changes how the member is read, CRC-32 or a size. With a data descriptor
/// announced, CRC-32 and sizes may also be 0. The UTF-8 flag isn't compared: names are bytes here.
std::size_t checkLocalHeader(std::string_view header, const Entry& entry, const std::string& archive);

/// Throws zip_exception unless the entry's data can be read: stored or deflated, not encrypted, and
/// of one size when stored.
void checkSupported(const Entry& entry, const std::string& archive);

constexpr std::size_t LONGEST_DESCRIPTOR_BYTES = 24;

/// How long the data descriptor (APPNOTE 4.3.9) is that `bytes` begin with: with or without signature, sizes
/// of 32 or 64 bits; 0 when none of its forms agrees with the entry.
std::size_t descriptorLength(std::string_view bytes, const Entry& entry);
/// Throws zip_exception when there is no such descriptor.
void checkDescriptor(std::string_view bytes, const Entry& entry, const std::string& archive);

/// Appends a local header for a member whose sizes are known, with a zip64 field only where a size
/// needs one. The fixed time (see modificationTime), UTF-8 flag where the name needs it, no descriptor: the
/// entry's own flags aren't looked at. The name must not be longer than 65535 bytes, and the member not
/// encrypted.
void appendLocalHeader(std::string& out, const Entry& entry);

/// Appends a directory record for the same member, with mode 0644 (a directory's 0755); of an entry that has
/// a record that one, with nothing but the offset changed. `storedOffset` is the local header's offset as to
/// be stored (from the first byte of the archive). Throws zip_exception when a record has no room for an
/// offset of 4 GiB or more.
void appendDirectoryRecord(std::string& out, const Entry& entry, std::uint64_t storedOffset);

/// How long appendLocalHeader's result for this entry is.
std::size_t localHeaderLength(const Entry& entry);

/// The time of members that bring none, as MS-DOS date (high 16 bits) and time: 1980-01-01, or the UTC time
/// of $SOURCE_DATE_EPOCH, which is read once.
std::uint32_t modificationTime();

/// The MS-DOS date and time of a $SOURCE_DATE_EPOCH text (decimal seconds since 1970 in UTC), moved
/// to the nearest that MS-DOS can tell (1980 to 2107, even seconds); 1980-01-01 for any other text,
/// numbers of more than 63 bits included.
std::uint32_t dosTime(std::string_view epoch);

/// Whether a name must carry the UTF-8 flag (APPNOTE 4.4.4, bit 11): valid UTF-8 that isn't ASCII.
bool needsUtf8Flag(std::string_view name);

}  // namespace iostreams::zip
