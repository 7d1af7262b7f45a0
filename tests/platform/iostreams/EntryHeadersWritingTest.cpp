// Headers as they are written, and the times in them.

#include "platform/iostreams/EntryHeaders.h"

#include <gtest/gtest.h>

#include "platform/iostreams/ZipException.h"
#include "support/ZipBuilder.h"

using namespace iostreams::zip;
using support::little;

namespace {

Entry entry(std::string_view name, std::uint64_t compressedSize, std::uint64_t size)
{
    Entry entry;
    entry.name = name;
    entry.compressedSize = compressedSize;
    entry.size = size;
    entry.crc = 0x1f2e3d4c;
    entry.method = METHOD_DEFLATED;
    return entry;
}

constexpr std::uint64_t large = 0x123456789;

}  // namespace

TEST(EntryHeaders, writesALocalHeader)
{
    std::string out = "before";
    appendLocalHeader(out, entry("a.txt", 3, 5));
    EXPECT_EQ(out, "before" + little(0x04034b50, 4) + little(20, 2) + little(0, 2) + little(8, 2) +
                       little(modificationTime(), 4) + little(0x1f2e3d4c, 4) + little(3, 4) + little(5, 4) +
                       little(5, 2) + little(0, 2) + "a.txt");
    EXPECT_EQ(out.size(), 6 + localHeaderLength(entry("a.txt", 3, 5)));
}

TEST(EntryHeaders, writesADirectoryRecord)
{
    std::string out = "before";
    Entry stored = entry("a.txt", 5, 5);
    stored.method = METHOD_STORED;
    appendDirectoryRecord(out, stored, 1000);
    EXPECT_EQ(out, "before" + little(0x02014b50, 4) + little(0x0314, 2) + little(10, 2) + little(0, 2) +
                       little(0, 2) + little(modificationTime(), 4) + little(0x1f2e3d4c, 4) + little(5, 4) +
                       little(5, 4) + little(5, 2) + little(0, 2) + little(0, 2) + little(0, 2) +
                       little(0, 2) + little(0x81a40000, 4) + little(1000, 4) + "a.txt");
}

namespace {

/// A record of another program, for "a.txt", with numbers that ours would not have.
std::string otherRecord(std::uint64_t compressedSize, std::uint64_t size, std::uint64_t offset,
                        const std::string& extra, std::uint16_t version = 30)
{
    return little(0x02014b50, 4) + little(0x073f, 2) + little(version, 2) + little(0x000a, 2) + little(8, 2) +
           little(0x12345678, 4) + little(0x1f2e3d4c, 4) + little(compressedSize, 4) + little(size, 4) +
           little(5, 2) + little(extra.size(), 2) + little(7, 2) + little(0, 2) + little(1, 2) +
           little(0x87654321, 4) + little(offset, 4) + "a.txt" + extra + "comment";
}

std::string moved(const std::string& record, std::uint64_t offset)
{
    std::string out = "before";
    appendDirectoryRecord(out, parseDirectoryRecord(record, 0, "z"), offset);
    EXPECT_EQ(parseDirectoryRecord(std::string_view(out).substr(6), 0, "z").headerOffset, offset);
    return out.substr(6);
}

const std::string otherField = little(0x5455, 2) + little(3, 2) + "abc";

}  // namespace

TEST(EntryHeaders, keepsARecordButForTheOffset)
{
    const std::string rest = otherField + "x";  // a byte that makes no field
    EXPECT_EQ(moved(otherRecord(5, 7, 1000, rest), 0xfffffffe), otherRecord(5, 7, 0xfffffffe, rest));
    const auto fields = [](std::uint64_t offset) {
        return otherField + little(1, 2) + little(24, 2) + little(7, 8) + little(5, 8) + little(offset, 8);
    };
    EXPECT_EQ(moved(otherRecord(0xffffffff, 0xffffffff, 0xffffffff, fields(large)), 12),
              otherRecord(0xffffffff, 0xffffffff, 0xffffffff, fields(12)));
    const auto alone = [](std::uint64_t offset) { return little(1, 2) + little(8, 2) + little(offset, 8); };
    EXPECT_EQ(moved(otherRecord(5, 7, 0xffffffff, alone(1)), large),
              otherRecord(5, 7, 0xffffffff, alone(large)));
}

TEST(EntryHeaders, makesRoomForALargeOffsetInARecordThatItKeeps)
{
    EXPECT_EQ(moved(otherRecord(5, 7, 1000, otherField), large),
              otherRecord(5, 7, 0xffffffff, little(1, 2) + little(8, 2) + little(large, 8) + otherField, 45));
    const std::string sizes = little(7, 8) + little(5, 8);
    EXPECT_EQ(
        moved(otherRecord(0xffffffff, 0xffffffff, 0, otherField + little(1, 2) + little(16, 2) + sizes, 46),
              0xffffffff),
        otherRecord(0xffffffff, 0xffffffff, 0xffffffff,
                    otherField + little(1, 2) + little(24, 2) + sizes + little(0xffffffff, 8), 46));
    EXPECT_EQ(moved(otherRecord(5, 0xffffffff, 0, little(1, 2) + little(8, 2) + little(7, 8)), large),
              otherRecord(5, 0xffffffff, 0xffffffff,
                          little(1, 2) + little(16, 2) + little(7, 8) + little(large, 8), 45));
}

TEST(EntryHeaders, refusesALargeOffsetWhereThereIsNoRoom)
{
    const auto fill = [](std::size_t size) {
        return little(0x5455, 2) + little(size - 4, 2) + std::string(size - 4, 'f');
    };
    EXPECT_NO_THROW(moved(otherRecord(5, 7, 0, fill(65523)), large));
    std::string out;
    const std::string record = otherRecord(5, 7, 0, fill(65524));
    EXPECT_EQ(
        support::zipFailure("new archive",
                            [&] { appendDirectoryRecord(out, parseDirectoryRecord(record, 0, "z"), large); }),
        "member \"a.txt\": its extra fields leave no room for an offset of 4 GiB or more");
}

TEST(EntryHeaders, tellsWhichMembersAreDirectories)
{
    std::string out;
    appendDirectoryRecord(out, entry("d/", 0, 0), 0);
    EXPECT_EQ(out.substr(38, 4), little(0x41ed0010, 4));
}

TEST(EntryHeaders, writesZip64FieldsFromTheFirstSizeThatNeedsThem)
{
    for (const auto& [compressedSize, size] :
         {std::pair{0xffffffffULL, 7ULL}, std::pair{7ULL, 0xffffffffULL}}) {
        std::string out;
        const Entry big = entry("x", compressedSize, size);
        appendLocalHeader(out, big);
        EXPECT_EQ(out.substr(18, 8), little(~0ULL, 8));
        EXPECT_EQ(out.substr(30),
                  "x" + little(1, 2) + little(16, 2) + little(size, 8) + little(compressedSize, 8));
        EXPECT_EQ(out.size(), localHeaderLength(big));
        EXPECT_EQ(checkLocalHeader(out, big, "z"), out.size());
    }
}

TEST(EntryHeaders, writesNoZip64FieldUpToTheLastSizeThatFits)
{
    std::string out;
    appendLocalHeader(out, entry("x", 0xfffffffe, 0xfffffffe));
    EXPECT_EQ(out.size(), 31U);
    out.clear();
    appendDirectoryRecord(out, entry("x", 0xfffffffe, 0xfffffffe), 0xfffffffe);
    EXPECT_EQ(out.size(), 47U);
}

TEST(EntryHeaders, readsWhatItWritesInADirectoryRecord)
{
    const std::uint64_t numbers[] = {0, 0xfffffffe, 0xffffffff, large};
    for (const std::uint64_t size : numbers) {
        for (const std::uint64_t compressedSize : numbers) {
            for (const std::uint64_t offset : numbers) {
                std::string out;
                appendDirectoryRecord(out, entry("x", compressedSize, size), offset);
                const Entry parsed = parseDirectoryRecord(out, 0, "z");
                EXPECT_EQ(parsed.size, size);
                EXPECT_EQ(parsed.compressedSize, compressedSize);
                EXPECT_EQ(parsed.headerOffset, offset);
                EXPECT_EQ(parsed.record.size(), out.size());
            }
        }
    }
}

TEST(EntryHeaders, flagsNamesThatAreUtf8AndNotAscii)
{
    EXPECT_FALSE(needsUtf8Flag(""));
    EXPECT_FALSE(needsUtf8Flag("plain/name.txt"));
    EXPECT_TRUE(needsUtf8Flag("gr\xc3\xbc\xc3\x9f.txt"));
    EXPECT_TRUE(needsUtf8Flag("\xf0\x9f\x94\xa7"));
    EXPECT_FALSE(needsUtf8Flag("latin1 \xfc"));
    EXPECT_FALSE(needsUtf8Flag("cut off \xc3"));
    EXPECT_FALSE(needsUtf8Flag("too long \xc0\xaf"));
    EXPECT_FALSE(needsUtf8Flag("surrogate \xed\xa0\x80"));
    std::string out;
    appendLocalHeader(out, entry("gr\xc3\xbc\xc3\x9f.txt", 1, 1));
    EXPECT_EQ(out.substr(6, 2), little(0x0800, 2));
}

TEST(EntryHeaders, tellsTimesAsMsDosDoes)
{
    const std::uint32_t first = 1U << 21U | 1U << 16U;
    EXPECT_EQ(dosTime("315532800"), first);  // 1980-01-01 00:00:00
    EXPECT_EQ(dosTime("315532801"), first);  // even seconds only
    EXPECT_EQ(dosTime("1700000000"), 43U << 25U | 11U << 21U | 14U << 16U | 22U << 11U | 13U << 5U | 10U);
    EXPECT_EQ(dosTime("1709164800"), 44U << 25U | 2U << 21U | 29U << 16U);  // a leap day
}

TEST(EntryHeaders, movesTimesIntoTheRangeOfMsDos)
{
    const std::uint32_t first = 1U << 21U | 1U << 16U;
    const std::uint32_t last = 127U << 25U | 12U << 21U | 31U << 16U | 23U << 11U | 59U << 5U | 29U;
    EXPECT_EQ(dosTime("0"), first);
    EXPECT_EQ(dosTime("-1"), first);
    EXPECT_EQ(dosTime("4354819199"), last);
    EXPECT_EQ(dosTime("4354819200"), last);
    EXPECT_EQ(dosTime("9223372036854775807"), last);
}

TEST(EntryHeaders, takesNoTimeFromWhatIsNoNumber)
{
    const std::uint32_t first = 1U << 21U | 1U << 16U;
    for (const char* text : {"", "soon", "1700000000x", " 1700000000", "99999999999999999999"}) {
        EXPECT_EQ(dosTime(text), first) << text;
    }
}
