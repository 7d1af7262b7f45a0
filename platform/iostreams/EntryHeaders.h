#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/iostreams/Entry.h"

namespace iostreams::zip {

constexpr std::size_t LOCAL_HEADER_BYTES = 30;      ///< fixed part, APPNOTE 4.3.7
constexpr std::size_t DIRECTORY_HEADER_BYTES = 46;  ///< fixed part, APPNOTE 4.3.12

/// Reads the directory record that `record` begins with, zip64 extra field (APPNOTE 4.5.3) resolved;
/// `prefixSize` is added to its offset. Throws zip_exception, naming archive and member, for a record
/// that is cut off, has a wrong signature, or lacks a number it must have. `entry.record` tells how
/// long it is.
Entry parseDirectoryRecord(std::string_view record, std::uint64_t prefixSize, const std::string& archive);

/// Checks the local header in `header` (at least its fixed part, name and extra field) against the
/// directory's entry and returns its whole length. Throws zip_exception when the two disagree.
std::size_t checkLocalHeader(std::string_view header, const Entry& entry, const std::string& archive);

/// Appends a local header for a member whose sizes are known, with a zip64 field only where a size
/// needs one. Fixed time (see modificationTime), UTF-8 flag where the name needs it, no descriptor.
void appendLocalHeader(std::string& out, const Entry& entry);

/// Appends a directory record for the same member; mode 0644. `storedOffset` is the local header's
/// offset as to be stored (from the first byte of the archive).
void appendDirectoryRecord(std::string& out, const Entry& entry, std::uint64_t storedOffset);

/// How long appendLocalHeader's result is.
std::size_t localHeaderLength(const Entry& entry);

/// The time every member gets, as MS-DOS date (high 16 bits) and time: 1980-01-01, or the UTC time
/// of $SOURCE_DATE_EPOCH, which is read once.
std::uint32_t modificationTime();

/// Whether a name must carry the UTF-8 flag (APPNOTE 4.4.4, bit 11): valid UTF-8 that isn't ASCII.
bool needsUtf8Flag(std::string_view name);

}  // namespace iostreams::zip
