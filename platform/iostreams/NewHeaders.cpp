// The headers of members that are written.
#include <algorithm>
#include <boost/locale/utf.hpp>
#include <cassert>
#include <charconv>
#include <chrono>
#include <cstdlib>

#include "platform/iostreams/EntryHeaders.h"
#include "platform/iostreams/LittleEndian.h"
#include "platform/iostreams/ZipException.h"

namespace iostreams::zip {

namespace {

constexpr std::uint16_t madeByUnix = 3U << 8U;
constexpr std::uint32_t attributesOfFile = 0100644U << 16U;  // st_mode of a plain file, rw-r--r--
/// Of a directory, rwxr-xr-x, with the flag by which DOS tells one. Members that other programs list for
/// directories would else be unpacked as something that can't be entered.
constexpr std::uint32_t attributesOfDirectory = (0040755U << 16U) | 0x10U;
constexpr std::size_t localZip64Bytes = 4 + 2 * 8;
/// Places in a directory record, APPNOTE 4.3.12.
constexpr std::size_t versionOffset = 6;  // needed to extract
constexpr std::size_t compressedSizeOffset = 20;
constexpr std::size_t sizeOffset = 24;
constexpr std::size_t extraSizeOffset = 30;
constexpr std::size_t offsetOffset = 42;

bool isSaturated(std::uint64_t number)
{
    return number >= SATURATED_32;
}

std::uint32_t saturate(std::uint64_t number)
{
    return isSaturated(number) ? SATURATED_32 : static_cast<std::uint32_t>(number);
}

/// Both sizes go to the zip64 field of a local header as soon as one of them must (APPNOTE 4.5.3).
bool needsLocalZip64(const Entry& entry)
{
    return isSaturated(entry.size) || isSaturated(entry.compressedSize);
}

void replace(std::string& bytes, std::size_t at, std::string_view by)
{
    bytes.replace(at, by.size(), by);
}

/// Where among extra fields the one of zip64 begins; npos when there is none.
std::size_t findZip64Field(std::string_view extra)
{
    for (std::size_t at = 0; extra.size() - at >= 4;) {
        if (load16(extra.data() + at) == ZIP64_FIELD) {
            return at;
        }
        at += 4 + std::min<std::size_t>(load16(extra.data() + at + 2), extra.size() - at - 4);
    }
    return std::string_view::npos;
}

/// Makes room for an offset in a record whose own one had 32 bits (APPNOTE 4.5.3); returns its place.
std::size_t insertOffset(std::string& record, std::size_t extraBegin, std::size_t field, std::size_t place)
{
    std::string inserted;
    if (field == std::string_view::npos) {
        append16(inserted, ZIP64_FIELD);
        append16(inserted, 8);
        place = extraBegin + inserted.size();
    } else {
        std::string size;
        append16(size, static_cast<std::uint16_t>(load16(record.data() + extraBegin + field + 2) + 8U));
        replace(record, extraBegin + field + 2, size);
    }
    inserted.append(8, '\0');
    const std::size_t extraSize = load16(record.data() + extraSizeOffset) + inserted.size();
    if (extraSize > SATURATED_16) {
        throw memberError("new archive", directoryRecordName(record),
                          "its extra fields leave no room for an offset of 4 GiB or more");
    }
    record.insert(field == std::string_view::npos ? extraBegin : place, inserted);
    std::string numbers;
    append16(numbers, static_cast<std::uint16_t>(extraSize));
    replace(record, extraSizeOffset, numbers);
    numbers.clear();
    append16(numbers, std::max<std::uint16_t>(load16(record.data() + versionOffset), 45U));
    replace(record, versionOffset, numbers);
    replace(record, offsetOffset, "\xff\xff\xff\xff");
    return place;
}

/// A record as it is, but for the offset.
std::string movedRecord(std::string_view record, std::uint64_t storedOffset)
{
    std::string moved(record);
    std::string number;
    const bool isWide = load32(record.data() + offsetOffset) == SATURATED_32;
    if (!isWide && !isSaturated(storedOffset)) {
        append32(number, static_cast<std::uint32_t>(storedOffset));
        replace(moved, offsetOffset, number);
        return moved;
    }
    const std::size_t extraBegin = DIRECTORY_HEADER_BYTES + directoryRecordName(record).size();
    const std::size_t field =
        findZip64Field(record.substr(extraBegin, load16(record.data() + extraSizeOffset)));
    std::size_t place = extraBegin + field + 4;  // behind the sizes that are there
    for (const std::size_t size : {compressedSizeOffset, sizeOffset}) {
        place += load32(record.data() + size) == SATURATED_32 ? 8 : 0;
    }
    if (!isWide) {
        place = insertOffset(moved, extraBegin, field, place);
    }
    append64(number, storedOffset);
    replace(moved, place, number);
    return moved;
}

/// Version, flags, method, time, CRC-32 and sizes: the part that both kinds of header share.
void appendCommonFields(std::string& out, const Entry& entry, bool zip64, bool bothSizes)
{
    append16(out, zip64 ? 45 : entry.method == METHOD_STORED ? 10 : 20);  // needed to extract, 4.4.3
    append16(out, needsUtf8Flag(entry.name) ? FLAG_UTF8 : 0);
    append16(out, entry.method);
    append32(out, modificationTime());
    append32(out, entry.crc);
    append32(out, bothSizes ? SATURATED_32 : saturate(entry.compressedSize));
    append32(out, bothSizes ? SATURATED_32 : saturate(entry.size));
    assert(entry.name.size() <= SATURATED_16);
    append16(out, static_cast<std::uint16_t>(entry.name.size()));
}

}  // namespace

void appendLocalHeader(std::string& out, const Entry& entry)
{
    const bool zip64 = needsLocalZip64(entry);
    append32(out, LOCAL_HEADER_SIGNATURE);
    appendCommonFields(out, entry, zip64, zip64);
    append16(out, zip64 ? localZip64Bytes : 0);
    out += entry.name;
    if (zip64) {
        append16(out, ZIP64_FIELD);
        append16(out, localZip64Bytes - 4);
        append64(out, entry.size);
        append64(out, entry.compressedSize);
    }
}

void appendDirectoryRecord(std::string& out, const Entry& entry, std::uint64_t storedOffset)
{
    if (!entry.record.empty()) {
        out += movedRecord(entry.record, storedOffset);
        return;
    }
    std::string extra;
    for (const std::uint64_t number : {entry.size, entry.compressedSize, storedOffset}) {
        if (isSaturated(number)) {
            append64(extra, number);
        }
    }
    const bool zip64 = !extra.empty();
    append32(out, DIRECTORY_HEADER_SIGNATURE);
    append16(out, madeByUnix | (zip64 ? 45U : 20U));
    appendCommonFields(out, entry, zip64, false);
    append16(out, static_cast<std::uint16_t>(zip64 ? 4 + extra.size() : 0));
    append16(out, 0);  // comment
    append16(out, 0);  // disk
    append16(out, 0);  // internal attributes
    append32(out, entry.name.ends_with('/') ? attributesOfDirectory : attributesOfFile);
    append32(out, saturate(storedOffset));
    out += entry.name;
    if (zip64) {
        append16(out, ZIP64_FIELD);
        append16(out, static_cast<std::uint16_t>(extra.size()));
        out += extra;
    }
}

std::size_t localHeaderLength(const Entry& entry)
{
    return LOCAL_HEADER_BYTES + entry.name.size() + (needsLocalZip64(entry) ? localZip64Bytes : 0);
}

std::uint32_t dosTime(std::string_view epoch)
{
    using namespace std::chrono;
    constexpr sys_seconds first = sys_days(year(1980) / 1 / 1);
    constexpr sys_seconds last = sys_days(year(2108) / 1 / 1) - seconds(2);
    std::int64_t count = 0;
    const auto [end, error] = std::from_chars(epoch.data(), epoch.data() + epoch.size(), count);
    const bool isNumber = error == std::errc() && end == epoch.data() + epoch.size();
    const sys_seconds time = std::clamp(isNumber ? sys_seconds(seconds(count)) : first, first, last);

    const sys_days day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    const auto years = static_cast<std::uint32_t>(static_cast<int>(date.year()) - 1980);
    return years << 25U | static_cast<unsigned>(date.month()) << 21U |
           static_cast<unsigned>(date.day()) << 16U |
           static_cast<std::uint32_t>(clock.hours().count()) << 11U |
           static_cast<std::uint32_t>(clock.minutes().count()) << 5U |
           static_cast<std::uint32_t>(clock.seconds().count()) / 2;
}

std::uint32_t modificationTime()
{
    static const std::uint32_t time = [] {
        const char* epoch = std::getenv("SOURCE_DATE_EPOCH");
        return dosTime(epoch != nullptr ? epoch : "");
    }();
    return time;
}

bool needsUtf8Flag(std::string_view name)
{
    namespace utf = boost::locale::utf;
    const bool ascii =
        std::all_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (ascii) {
        return false;
    }
    for (auto at = name.begin(); at != name.end();) {
        const utf::code_point point = utf::utf_traits<char>::decode(at, name.end());
        if (point == utf::illegal || point == utf::incomplete) {
            return false;
        }
    }
    return true;
}

}  // namespace iostreams::zip
