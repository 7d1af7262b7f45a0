// The headers of members that are written.
#include <algorithm>
#include <boost/locale/utf.hpp>
#include <cassert>
#include <charconv>
#include <chrono>
#include <cstdlib>

#include "platform/iostreams/EntryHeaders.h"
#include "platform/iostreams/LittleEndian.h"

namespace iostreams::zip {

namespace {

constexpr std::uint16_t madeByUnix = 3U << 8U;
constexpr std::uint32_t attributesOfFile = 0100644U << 16U;  // st_mode of a plain file, rw-r--r--
/// Of a directory, rwxr-xr-x, with the flag by which DOS tells one. Members that other programs list for
/// directories would else be unpacked as something that can't be entered.
constexpr std::uint32_t attributesOfDirectory = (0040755U << 16U) | 0x10U;
constexpr std::size_t localZip64Bytes = 4 + 2 * 8;
constexpr std::size_t longestZip64Bytes = 4 + 3 * 8 + 4;

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

/// What a record tells of a member beside its data.
struct RecordFacts {
    std::uint16_t madeBy;  ///< the system that the attributes are of, and a version
    std::uint32_t time;    ///< MS-DOS date and time
    std::uint32_t attributes;
    std::uint16_t internalAttributes;
    std::string extra;         ///< fields but that of zip64, which is made anew
    std::string_view comment;  ///< lives as long as the record
};

/// That of a member to be written: what its record tells where it has one, and the same for all others.
RecordFacts factsOf(const Entry& entry)
{
    if (!entry.record.empty()) {
        const char* const fixed = entry.record.data();
        const std::string_view tail = entry.record.substr(DIRECTORY_HEADER_BYTES + load16(fixed + 28));
        const std::uint16_t extraSize = load16(fixed + 30);
        return {load16(fixed + 4),
                load32(fixed + 12),
                load32(fixed + 38),
                load16(fixed + 36),
                keptExtra(tail.substr(0, extraSize)),
                tail.substr(extraSize)};
    }
    return {madeByUnix,
            modificationTime(),
            entry.name.ends_with('/') ? attributesOfDirectory : attributesOfFile,
            0,
            {},
            {}};
}

/// Version, flags, method, time, CRC-32 and sizes: the part that both kinds of header share.
void appendCommonFields(std::string& out, const Entry& entry, bool zip64, bool bothSizes)
{
    append16(out, zip64 ? 45 : entry.method == METHOD_STORED ? 10 : 20);  // needed to extract, 4.4.3
    append16(out, needsUtf8Flag(entry.name) ? FLAG_UTF8 : 0);
    append16(out, entry.method);
    append32(out, entry.record.empty() ? modificationTime() : load32(entry.record.data() + 12));
    append32(out, entry.crc);
    append32(out, bothSizes ? SATURATED_32 : saturate(entry.compressedSize));
    append32(out, bothSizes ? SATURATED_32 : saturate(entry.size));
    assert(entry.name.size() <= SATURATED_16);
    append16(out, static_cast<std::uint16_t>(entry.name.size()));
}

}  // namespace

std::string keptExtra(std::string_view extra)
{
    std::string kept;
    while (extra.size() >= 4) {
        const std::size_t size = 4 + std::min<std::size_t>(load16(extra.data() + 2), extra.size() - 4);
        if (load16(extra.data()) != ZIP64_FIELD) {
            kept += extra.substr(0, size);
        }
        extra.remove_prefix(size);
    }
    return kept.size() + longestZip64Bytes <= SATURATED_16 ? kept : std::string();
}

void appendLocalHeader(std::string& out, const Entry& entry, std::string_view extra)
{
    const bool zip64 = needsLocalZip64(entry);
    append32(out, LOCAL_HEADER_SIGNATURE);
    appendCommonFields(out, entry, zip64, zip64);
    append16(out, static_cast<std::uint16_t>((zip64 ? localZip64Bytes : 0) + extra.size()));
    out += entry.name;
    if (zip64) {
        append16(out, ZIP64_FIELD);
        append16(out, localZip64Bytes - 4);
        append64(out, entry.size);
        append64(out, entry.compressedSize);
    }
    out += extra;
}

void appendDirectoryRecord(std::string& out, const Entry& entry, std::uint64_t storedOffset)
{
    std::string extra;
    for (const std::uint64_t number : {entry.size, entry.compressedSize, storedOffset}) {
        if (isSaturated(number)) {
            append64(extra, number);
        }
    }
    const bool zip64 = !extra.empty();
    append32(out, DIRECTORY_HEADER_SIGNATURE);
    const RecordFacts facts = factsOf(entry);
    append16(out, std::max<std::uint16_t>(facts.madeBy, (facts.madeBy & 0xff00U) | (zip64 ? 45U : 20U)));
    appendCommonFields(out, entry, zip64, false);
    append16(out, static_cast<std::uint16_t>((zip64 ? 4 + extra.size() : 0) + facts.extra.size()));
    append16(out, static_cast<std::uint16_t>(facts.comment.size()));
    append16(out, 0);  // disk
    append16(out, facts.internalAttributes);
    append32(out, facts.attributes);
    append32(out, saturate(storedOffset));
    out += entry.name;
    if (zip64) {
        append16(out, ZIP64_FIELD);
        append16(out, static_cast<std::uint16_t>(extra.size()));
        out += extra;
    }
    out += facts.extra;
    out += facts.comment;
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
