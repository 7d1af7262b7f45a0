#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/File.h"
#include "platform/iostreams/FileTail.h"

namespace iostreams::zip {

constexpr std::uint32_t END_RECORD_SIGNATURE = 0x06054b50;
constexpr std::uint32_t ZIP64_END_RECORD_SIGNATURE = 0x06064b50;
constexpr std::uint32_t ZIP64_LOCATOR_SIGNATURE = 0x07064b50;
constexpr std::size_t END_RECORD_BYTES = 22;        ///< fixed part, APPNOTE 4.3.16
constexpr std::size_t ZIP64_END_RECORD_BYTES = 56;  ///< fixed part, APPNOTE 4.3.14
constexpr std::size_t ZIP64_LOCATOR_BYTES = 20;     ///< APPNOTE 4.3.15

/// Where the central directory stands and how many records it has: the end of central directory
/// record (APPNOTE 4.3.16) with its zip64 form (4.3.14, 4.3.15) resolved.
struct EndRecord {
    std::uint64_t entryCount = 0;
    std::uint64_t directorySize = 0;    ///< in bytes
    std::uint64_t directoryOffset = 0;  ///< as stored: from the first byte of the archive
    std::string comment;

    std::uint64_t prefixSize = 0;  ///< bytes in front of the archive: stored offsets count from here
    std::uint64_t position = 0;    ///< of the end records (zip64 ones included) in the file
    std::uint64_t end = 0;         ///< of the end records with the comment, in the file
};

/// Finds and checks the end record of an archive: one read of the tail; when the end of the file
/// holds none, a search back through the whole file for the last one that an interrupted addition
/// may have left there (see docs/container-format.md); `end` then lies before the file's end. Throws
/// zip_exception when there is none, and for split archives and numbers that lie outside the file.
EndRecord findEndRecord(const platform::File& file);

/// The same; the tail keeps the bytes that were read.
EndRecord findEndRecord(FileTail& tail);

/// Reads and checks the end record at `position`, the zip64 records in front of it included. Throws
/// zip_exception as findEndRecord does. The comment may end before the file does, not behind; it is
/// left to readComment.
EndRecord parseEndRecord(const FileTail& tail, std::uint64_t position);
void readComment(const FileTail& tail, std::uint64_t position, EndRecord& record);

/// Throws zip_exception for a comment, of an archive to be written, that holds the signature of an end
/// record: readers, which search from the end, would take that for the archive's own.
void checkComment(const std::string& archive, std::string_view comment);

/// Throws zip_exception when the record of an archive to be written would be read together with the bytes in
/// front of it: when it needs no zip64 records, but `bytes` end like the locator of one.
void checkInFront(const std::string& archive, const EndRecord& record, std::string_view bytes);

/// Appends the end record to `out`, with the zip64 records in front when a number needs them.
/// `prefixSize + directoryOffset + directorySize` must be where the record will stand.
void appendEndRecord(std::string& out, const EndRecord& record);

}  // namespace iostreams::zip
