#include "platform/iostreams/EndRecord.h"

#include <algorithm>
#include <array>
#include <cassert>

#include "platform/iostreams/EndRecordSearch.h"
#include "platform/iostreams/EntryHeaders.h"
#include "platform/iostreams/LittleEndian.h"
#include "platform/iostreams/ZipException.h"

namespace iostreams::zip {

namespace {

constexpr std::uint32_t saturated32 = 0xffffffff;  // "see the zip64 record"
constexpr std::uint16_t saturated16 = 0xffff;
constexpr std::size_t firstTailBytes = 16 * 1024;  // directory and all of a small archive
constexpr std::size_t longestTailBytes =
    ZIP64_END_RECORD_BYTES + ZIP64_LOCATOR_BYTES + END_RECORD_BYTES + 0xffff;

/// The end record's numbers as they are stored in one of its two forms.
struct Numbers {
    std::uint32_t disk = 0;
    std::uint32_t directoryDisk = 0;
    std::uint64_t entriesOnDisk = 0;
    std::uint64_t entries = 0;
    std::uint64_t directorySize = 0;
    std::uint64_t directoryOffset = 0;
};

Numbers parseNumbers(const char* fixed)
{
    Numbers numbers;
    numbers.disk = load16(fixed + 4);
    numbers.directoryDisk = load16(fixed + 6);
    numbers.entriesOnDisk = load16(fixed + 8);
    numbers.entries = load16(fixed + 10);
    numbers.directorySize = load32(fixed + 12);
    numbers.directoryOffset = load32(fixed + 16);
    return numbers;
}

Numbers parseZip64Numbers(const char* fixed)
{
    Numbers numbers;
    numbers.disk = load32(fixed + 16);
    numbers.directoryDisk = load32(fixed + 20);
    numbers.entriesOnDisk = load64(fixed + 24);
    numbers.entries = load64(fixed + 32);
    numbers.directorySize = load64(fixed + 40);
    numbers.directoryOffset = load64(fixed + 48);
    return numbers;
}

/// A number of the plain record must be that of the zip64 one, or say that it has no room for it.
void requireAgreement(const char* what, std::uint64_t plain, std::uint64_t zip64, std::uint64_t saturated,
                      const std::string& archive)
{
    if (plain != zip64 && plain != saturated) {
        throw archiveError(archive, std::string("end record has ") + what + " " + std::to_string(plain) +
                                        ", zip64 end record has " + std::to_string(zip64));
    }
}

void requireAgreement(const Numbers& plain, const Numbers& zip64, const std::string& archive)
{
    requireAgreement("disk", plain.disk, zip64.disk, saturated16, archive);
    requireAgreement("directory disk", plain.directoryDisk, zip64.directoryDisk, saturated16, archive);
    requireAgreement("member count", plain.entriesOnDisk, zip64.entriesOnDisk, saturated16, archive);
    requireAgreement("member count", plain.entries, zip64.entries, saturated16, archive);
    requireAgreement("directory size", plain.directorySize, zip64.directorySize, saturated32, archive);
    requireAgreement("directory offset", plain.directoryOffset, zip64.directoryOffset, saturated32, archive);
}

bool needsZip64(const EndRecord& record)
{
    return record.entryCount >= saturated16 || record.directorySize >= saturated32 ||
           record.directoryOffset >= saturated32;
}

/// Whether a zip64 end record at `position` ends where its locator begins.
bool isZip64RecordAt(const FileTail& tail, std::uint64_t position, std::uint64_t locator)
{
    if (position > locator || locator - position < ZIP64_END_RECORD_BYTES) {
        return false;
    }
    std::array<char, 12> start = {};
    tail.read(start.data(), start.size(), position);
    return load32(start.data()) == ZIP64_END_RECORD_SIGNATURE &&
           load64(start.data() + 4) == locator - position - start.size();
}

/// Finds the zip64 end record of a locator: right before it, or, when it holds more than the fixed
/// part, where the locator says. Bytes in front of the archive make only the second way fail.
std::uint64_t findZip64Record(const FileTail& tail, const char* locator, std::uint64_t locatorPosition)
{
    const std::string& archive = tail.file().path();
    const std::uint32_t disk = load32(locator + 4);
    const std::uint32_t disks = load32(locator + 16);
    if (disk != 0 || disks > 1) {
        throw archiveError(archive,
                           "split archive of " + std::to_string(disks) + " parts, which can't be read");
    }
    if (locatorPosition >= ZIP64_END_RECORD_BYTES &&
        isZip64RecordAt(tail, locatorPosition - ZIP64_END_RECORD_BYTES, locatorPosition)) {
        return locatorPosition - ZIP64_END_RECORD_BYTES;
    }
    const std::uint64_t stored = load64(locator + 8);
    if (!isZip64RecordAt(tail, stored, locatorPosition)) {
        throw archiveError(
            archive, "no zip64 end record at " + std::to_string(stored) + ", where its locator says it is");
    }
    return stored;
}

/// Replaces the plain numbers by those of a zip64 end record where one stands in front; returns where
/// the end records begin.
std::uint64_t resolveZip64(const FileTail& tail, std::uint64_t position, Numbers& numbers)
{
    std::array<char, ZIP64_LOCATOR_BYTES> locator = {};
    if (position < locator.size()) {
        return position;
    }
    const std::uint64_t locatorPosition = position - locator.size();
    tail.read(locator.data(), locator.size(), locatorPosition);
    if (load32(locator.data()) != ZIP64_LOCATOR_SIGNATURE) {
        return position;
    }
    const std::uint64_t recordPosition = findZip64Record(tail, locator.data(), locatorPosition);
    std::array<char, ZIP64_END_RECORD_BYTES> fixed = {};
    tail.read(fixed.data(), fixed.size(), recordPosition);
    const Numbers zip64 = parseZip64Numbers(fixed.data());
    requireAgreement(numbers, zip64, tail.file().path());
    numbers = zip64;

    const std::uint64_t stored = load64(locator.data() + 8);
    if (stored < numbers.directoryOffset || stored - numbers.directoryOffset != numbers.directorySize) {
        throw archiveError(tail.file().path(), "zip64 end record is said to be at " + std::to_string(stored) +
                                                   ", where the directory doesn't end");
    }
    return recordPosition;
}

/// Refuses what can't be true whatever the directory holds.
void checkNumbers(const Numbers& numbers, std::uint64_t position, const std::string& archive)
{
    if (numbers.disk != 0 || numbers.directoryDisk != 0 || numbers.entriesOnDisk != numbers.entries) {
        throw archiveError(
            archive, "part " + std::to_string(numbers.disk) + " of a split archive, which can't be read");
    }
    if (numbers.directorySize > position || numbers.directoryOffset > position - numbers.directorySize) {
        throw archiveError(archive, "directory of " + std::to_string(numbers.directorySize) + " bytes at " +
                                        std::to_string(numbers.directoryOffset) +
                                        " doesn't fit before the end record at " + std::to_string(position));
    }
    if (numbers.entries > numbers.directorySize / DIRECTORY_HEADER_BYTES) {
        throw archiveError(archive, "directory of " + std::to_string(numbers.directorySize) +
                                        " bytes can't hold " + std::to_string(numbers.entries) + " members");
    }
}

/// Whether the directory that the record names begins like one.
void checkDirectoryStart(const FileTail& tail, const EndRecord& record)
{
    if (record.entryCount == 0) {
        return;
    }
    std::array<char, 4> signature = {};
    const std::uint64_t directory = record.position - record.directorySize;
    tail.read(signature.data(), signature.size(), directory);
    if (load32(signature.data()) != DIRECTORY_HEADER_SIGNATURE) {
        throw archiveError(tail.file().path(), "directory at " + std::to_string(directory) + " begins with " +
                                                   hex(load32(signature.data())) + ", not with " +
                                                   hex(DIRECTORY_HEADER_SIGNATURE));
    }
}

/// The last end record among the tail's bytes whose comment ends with the file. A comment may hold
/// bytes that look like a record, so one that can't be right gives way to one further in front.
/// `firstError` tells what was wrong with the last one of them.
std::optional<EndRecord> findInTail(const FileTail& tail, std::optional<zip_exception>& firstError)
{
    const std::string_view bytes = tail.bytes();
    std::string signature;
    append32(signature, END_RECORD_SIGNATURE);
    for (std::size_t at = bytes.rfind(signature); at != std::string_view::npos;
         at = at == 0 ? std::string_view::npos : bytes.rfind(signature, at - 1)) {
        const std::size_t left = bytes.size() - at;
        if (left < END_RECORD_BYTES || load16(bytes.data() + at + 20) != left - END_RECORD_BYTES) {
            continue;
        }
        try {
            EndRecord record = parseEndRecord(tail, tail.offset() + at);
            checkDirectoryStart(tail, record);
            readComment(tail, tail.offset() + at, record);
            return record;
        } catch (const zip_exception& error) {
            if (!firstError) {
                firstError = error;
            }
        }
    }
    return std::nullopt;
}

}  // namespace

EndRecord parseEndRecord(const FileTail& tail, std::uint64_t position)
{
    const std::string& archive = tail.file().path();
    std::array<char, END_RECORD_BYTES> fixed = {};
    tail.read(fixed.data(), fixed.size(), position);
    EndRecord record;
    record.end = position + fixed.size() + load16(fixed.data() + 20);
    if (load32(fixed.data()) != END_RECORD_SIGNATURE || record.end > tail.fileSize()) {
        throw archiveError(archive, "no whole end record at " + std::to_string(position));
    }
    Numbers numbers = parseNumbers(fixed.data());
    record.position = resolveZip64(tail, position, numbers);
    checkNumbers(numbers, record.position, archive);
    record.entryCount = numbers.entries;
    record.directorySize = numbers.directorySize;
    record.directoryOffset = numbers.directoryOffset;
    record.prefixSize = record.position - record.directorySize - record.directoryOffset;
    return record;
}

void readComment(const FileTail& tail, std::uint64_t position, EndRecord& record)
{
    const std::uint64_t begin = position + END_RECORD_BYTES;
    record.comment.resize(static_cast<std::size_t>(record.end - begin));
    tail.read(record.comment.data(), record.comment.size(), begin);
}

EndRecord findEndRecord(FileTail& tail)
{
    std::optional<zip_exception> error;
    for (const std::size_t size : {firstTailBytes, longestTailBytes}) {
        tail.load(size);
        if (std::optional<EndRecord> record = findInTail(tail, error)) {
            return *record;
        }
        if (tail.offset() == 0) {
            break;
        }
    }
    if (error) {
        throw zip_exception(*error);
    }
    return searchBackForEndRecord(tail);
}

EndRecord findEndRecord(const platform::File& file)
{
    try {
        FileTail tail(file);
        return findEndRecord(tail);
    } catch (const platform::FileError& error) {
        throw archiveError(file.path(), error);
    }
}

void checkComment(const std::string& archive, std::string_view comment)
{
    std::string signature;
    append32(signature, END_RECORD_SIGNATURE);
    if (comment.find(signature) != std::string_view::npos) {
        throw archiveError(archive,
                           "the comment holds an end record, which would be taken for the archive's own");
    }
}

void checkInFront(const std::string& archive, const EndRecord& record, std::string_view bytes)
{
    if (!needsZip64(record) && bytes.size() >= ZIP64_LOCATOR_BYTES &&
        load32(bytes.data() + bytes.size() - ZIP64_LOCATOR_BYTES) == ZIP64_LOCATOR_SIGNATURE) {
        throw archiveError(
            archive, "what stands in front of the end record would be taken for the locator of another one");
    }
}

void appendEndRecord(std::string& out, const EndRecord& record)
{
    if (needsZip64(record)) {
        append32(out, ZIP64_END_RECORD_SIGNATURE);
        append64(out, ZIP64_END_RECORD_BYTES - 12);
        append16(out, 3U << 8U | 45);  // made by: Unix, version 4.5
        append16(out, 45);             // needed to extract
        append32(out, 0);              // disk
        append32(out, 0);              // disk of the directory
        append64(out, record.entryCount);
        append64(out, record.entryCount);
        append64(out, record.directorySize);
        append64(out, record.directoryOffset);
        append32(out, ZIP64_LOCATOR_SIGNATURE);
        append32(out, 0);  // disk of the zip64 end record
        append64(out, record.directoryOffset + record.directorySize);
        append32(out, 1);  // number of disks
    }
    const auto count = static_cast<std::uint16_t>(std::min<std::uint64_t>(record.entryCount, saturated16));
    append32(out, END_RECORD_SIGNATURE);
    append16(out, 0);  // disk
    append16(out, 0);  // disk of the directory
    append16(out, count);
    append16(out, count);
    append32(out, static_cast<std::uint32_t>(std::min<std::uint64_t>(record.directorySize, saturated32)));
    append32(out, static_cast<std::uint32_t>(std::min<std::uint64_t>(record.directoryOffset, saturated32)));
    assert(record.comment.size() <= saturated16);
    append16(out, static_cast<std::uint16_t>(record.comment.size()));
    out += record.comment;
}

}  // namespace iostreams::zip
