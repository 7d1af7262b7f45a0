#include "platform/iostreams/EntryHeaders.h"

#include <gtest/gtest.h>

#include "platform/iostreams/ZipException.h"
#include "support/ZipBuilder.h"

using namespace iostreams::zip;
using support::little;
using support::zipFailure;

namespace {

/// The headers of a member "a.txt" of 5 bytes, in the archive "z".
support::ZipMember member()
{
    return support::ZipBuilder().addStored("a.txt", "hello");
}

/// The directory record of an archive's only member.
std::string recordOf(const support::ZipMember& member)
{
    support::ZipBuilder zip;
    zip.members.push_back(member);
    const std::string archive = zip.build();
    const std::size_t begin = archive.find(little(0x02014b50, 4));
    return archive.substr(begin, archive.rfind(little(0x06054b50, 4)) - begin);
}

std::string localHeaderOf(const support::ZipMember& member)
{
    support::ZipBuilder zip;
    zip.members.push_back(member);
    return zip.build().substr(0, 30 + member.local.name.size() + member.local.extra.size());
}

Entry entryOf(const support::ZipMember& member)
{
    static std::string record;  // the entry points into it
    record = recordOf(member);
    return parseDirectoryRecord(record, 0, "z");
}

std::string parseFailure(const std::string& record)
{
    return zipFailure("z", [&] { parseDirectoryRecord(record, 0, "z"); });
}

/// What is wrong with the member's local header in the eyes of its directory record.
std::string localFailure(const support::ZipMember& member)
{
    const Entry entry = entryOf(member);
    return zipFailure("z", [&] { checkLocalHeader(localHeaderOf(member), entry, "z"); });
}

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

TEST(EntryHeaders, readsTheNumbersOfADirectoryRecord)
{
    support::ZipMember described = member();
    described.listed.method = 12;
    described.listed.flags = 0x0800;
    described.listed.crc = 0x1f2e3d4c;
    described.listed.compressedSize = 77;
    described.listed.size = 99;
    described.listed.extra = "EXTRA";
    described.comment = "COMMENT";
    described.offset = 1000;
    const std::string record = recordOf(described);
    const std::string directory = record + "next record";
    const Entry parsed = parseDirectoryRecord(directory, 24, "z");
    EXPECT_EQ(parsed.name, "a.txt");
    EXPECT_EQ(parsed.record, record);
    EXPECT_EQ(parsed.method, 12);
    EXPECT_EQ(parsed.flags, 0x0800);
    EXPECT_EQ(parsed.crc, 0x1f2e3d4cU);
    EXPECT_EQ(parsed.compressedSize, 77U);
    EXPECT_EQ(parsed.size, 99U);
    EXPECT_EQ(parsed.headerOffset, 1024U);
}

TEST(EntryHeaders, takesSaturatedNumbersFromTheZip64Field)
{
    support::ZipMember big = member();
    big.listed.size = 0xffffffff;
    big.listed.compressedSize = 0xffffffff;
    big.offset = 0xffffffff;
    big.listed.extra =
        little(0x7075, 2) + little(2, 2) + "xx" + support::zip64Extra({large, large + 1, large + 2});
    const Entry parsed = entryOf(big);
    EXPECT_EQ(parsed.size, large);
    EXPECT_EQ(parsed.compressedSize, large + 1);
    EXPECT_EQ(parsed.headerOffset, large + 2);
}

TEST(EntryHeaders, takesOnlySaturatedNumbersFromTheZip64Field)
{
    support::ZipMember big = member();
    big.offset = 0xffffffff;
    big.listed.extra = support::zip64Extra({large});
    const Entry parsed = entryOf(big);
    EXPECT_EQ(parsed.size, 5U);
    EXPECT_EQ(parsed.compressedSize, 5U);
    EXPECT_EQ(parsed.headerOffset, large);
}

TEST(EntryHeaders, takesASaturatedDiskFromTheZip64Field)
{
    support::ZipMember spread = member();
    spread.disk = 0xffff;
    spread.listed.extra = little(1, 2) + little(4, 2) + little(0, 4);
    EXPECT_EQ(entryOf(spread).headerOffset, 0U);
    spread.listed.extra = little(1, 2) + little(4, 2) + little(7, 4);
    EXPECT_EQ(parseFailure(recordOf(spread)),
              "member \"a.txt\": lies on part 7 of a split archive, which can't be read");
}

TEST(EntryHeaders, refusesASaturatedNumberWithoutAZip64Field)
{
    const std::string failure = "member \"a.txt\": directory has no zip64 field for a size or the offset";
    support::ZipMember big = member();
    big.listed.size = 0xffffffff;
    EXPECT_EQ(parseFailure(recordOf(big)), failure);
    big.listed.extra = little(1, 2) + little(7, 2) + "1234567";
    EXPECT_EQ(parseFailure(recordOf(big)), failure);
    big.listed.extra = little(1, 2) + little(8, 2) + "1234567";  // says that it is longer than it is
    EXPECT_EQ(parseFailure(recordOf(big)), failure);
    big.listed.extra = support::zip64Extra({large});
    big.listed.compressedSize = 0xffffffff;
    EXPECT_EQ(parseFailure(recordOf(big)), failure);
    support::ZipMember spread = member();
    spread.disk = 0xffff;
    spread.listed.extra = little(1, 2) + little(3, 2) + "123";
    EXPECT_EQ(parseFailure(recordOf(spread)), failure);
}

TEST(EntryHeaders, refusesEveryPartOfADirectoryRecord)
{
    const std::string record = recordOf(member());
    for (std::size_t size = 0; size < record.size(); ++size) {
        EXPECT_EQ(parseFailure(record.substr(0, size)),
                  "a record of the central directory is cut off after " + std::to_string(size) + " bytes");
    }
}

TEST(EntryHeaders, refusesADirectoryRecordWithAnotherSignature)
{
    std::string record = recordOf(member());
    record[2] = '\3';
    EXPECT_EQ(parseFailure(record),
              "a record of the central directory begins with 02034b50, not with 02014b50");
}

TEST(EntryHeaders, refusesAnOffsetThatOverflows)
{
    support::ZipMember far = member();
    far.offset = 0xffffffff;
    far.listed.extra = support::zip64Extra({~0ULL});
    const std::string record = recordOf(far);
    EXPECT_EQ(zipFailure("z", [&] { parseDirectoryRecord(record, 1, "z"); }),
              "member \"a.txt\": its offset 18446744073709551615 lies outside the file");
}

TEST(EntryHeaders, keepsNamesByteForByte)
{
    support::ZipMember odd = member();
    odd.listed.name = std::string("a\0b\xff/", 5);
    EXPECT_EQ(entryOf(odd).name, std::string_view("a\0b\xff/", 5));
}

TEST(EntryHeaders, tellsTheLengthOfALocalHeaderThatAgrees)
{
    support::ZipMember padded = member();
    padded.local.extra = "padding";
    const Entry listed = entryOf(padded);
    EXPECT_EQ(checkLocalHeader(localHeaderOf(padded) + "data", listed, "z"), 30U + 5U + 7U);
}

TEST(EntryHeaders, refusesALocalHeaderThatIsCutOff)
{
    const Entry listed = entryOf(member());
    const std::string header = localHeaderOf(member());
    for (std::size_t size = 0; size < header.size(); ++size) {
        EXPECT_EQ(zipFailure("z", [&] { checkLocalHeader(header.substr(0, size), listed, "z"); }),
                  "member \"a.txt\": local header is cut off after " + std::to_string(size) + " bytes");
    }
}

TEST(EntryHeaders, refusesALocalHeaderWithAnotherSignature)
{
    const Entry listed = entryOf(member());
    std::string header = localHeaderOf(member());
    header[0] = 'Q';
    EXPECT_EQ(zipFailure("z", [&] { checkLocalHeader(header, listed, "z"); }),
              "member \"a.txt\": local header begins with 04034b51, not with 04034b50");
}

TEST(EntryHeaders, refusesALocalHeaderOfAnotherName)
{
    support::ZipMember other = member();
    other.local.name = "b.txt";
    EXPECT_EQ(localFailure(other), "member \"a.txt\": local header has the name \"b.txt\"");
    other.local.name = "a.txt2";
    EXPECT_EQ(localFailure(other), "member \"a.txt\": local header has the name \"a.txt2\"");
}

TEST(EntryHeaders, refusesALocalHeaderOfAnotherMethod)
{
    support::ZipMember other = member();
    other.local.method = 8;
    EXPECT_EQ(localFailure(other), "member \"a.txt\": local header has method 8, directory has 0");
}

TEST(EntryHeaders, refusesALocalHeaderWithOtherNumbers)
{
    support::ZipMember other = member();
    other.local.crc = 0x1f2e3d4c;
    EXPECT_EQ(localFailure(other),
              "member \"a.txt\": local header has CRC-32 1f2e3d4c, directory has 3610a686");
    other = member();
    other.local.compressedSize = 4;
    EXPECT_EQ(localFailure(other), "member \"a.txt\": local header has compressed size 4, directory has 5");
    other = member();
    other.local.size = 6;
    EXPECT_EQ(localFailure(other), "member \"a.txt\": local header has size 6, directory has 5");
}

TEST(EntryHeaders, refusesALocalHeaderWithFlagsThatChangeTheReading)
{
    for (const unsigned bit : {0U, 3U, 6U, 13U}) {
        support::ZipMember other = member();
        other.local.flags = static_cast<std::uint16_t>(1U << bit);
        EXPECT_NE(localFailure(other).find("local header has flags"), std::string::npos) << bit;
    }
}

TEST(EntryHeaders, acceptsOtherFlagsInALocalHeader)
{
    support::ZipMember other = member();
    other.local.flags = static_cast<std::uint16_t>(1U << 11U | 1U << 1U);
    EXPECT_EQ(checkLocalHeader(localHeaderOf(other), entryOf(other), "z"), 35U);
}

TEST(EntryHeaders, acceptsZerosInALocalHeaderOnlyBeforeADescriptor)
{
    support::ZipMember later = member();
    later.setDescriptor(true, 4);
    EXPECT_EQ(checkLocalHeader(localHeaderOf(later), entryOf(later), "z"), 35U);
    later.local.flags = 0;
    later.listed.flags = 0;
    EXPECT_EQ(localFailure(later),
              "member \"a.txt\": local header has CRC-32 00000000, directory has 3610a686");
}

TEST(EntryHeaders, refusesWrongNumbersInALocalHeaderBeforeADescriptor)
{
    support::ZipMember later = member();
    later.setDescriptor(true, 4);
    later.local.size = 7;
    EXPECT_EQ(localFailure(later), "member \"a.txt\": local header has size 7, directory has 5");
}

TEST(EntryHeaders, readsTheZip64FieldOfALocalHeader)
{
    support::ZipMember big = member();
    big.local.size = 0xffffffff;
    big.local.compressedSize = 0xffffffff;
    big.local.extra = support::zip64Extra({5, 5});
    EXPECT_EQ(checkLocalHeader(localHeaderOf(big), entryOf(big), "z"), 30U + 5U + 20U);
    big.local.extra = support::zip64Extra({5, 6});
    EXPECT_EQ(localFailure(big), "member \"a.txt\": local header has compressed size 6, directory has 5");
    big.local.extra = support::zip64Extra({5});
    EXPECT_EQ(localFailure(big), "member \"a.txt\": local header has no zip64 field for its sizes");
}

TEST(EntryHeaders, refusesWhatCantBeRead)
{
    Entry listed = entry("x", 5, 5);
    EXPECT_NO_THROW(checkSupported(listed, "z"));
    listed.method = 99;
    EXPECT_EQ(zipFailure("z", [&] { checkSupported(listed, "z"); }),
              "member \"x\": has compression method 99, supported are 0 (stored) and 8 (deflated)");
    listed.method = METHOD_STORED;
    listed.size = 6;
    EXPECT_EQ(zipFailure("z", [&] { checkSupported(listed, "z"); }),
              "member \"x\": is stored, yet has size 6 and compressed size 5");
    for (const std::uint16_t flag : {FLAG_ENCRYPTED, FLAG_STRONG_ENCRYPTION, FLAG_MASKED_HEADERS}) {
        listed.flags = flag;
        EXPECT_EQ(zipFailure("z", [&] { checkSupported(listed, "z"); }),
                  "member \"x\": is encrypted, which isn't supported");
    }
}

TEST(EntryHeaders, acceptsEveryFormOfADescriptor)
{
    for (const bool signature : {false, true}) {
        for (const int sizeBytes : {4, 8}) {
            support::ZipMember later = member();
            later.setDescriptor(signature, sizeBytes);
            EXPECT_NO_THROW(checkDescriptor(later.descriptor + "next", entryOf(later), "z"));
            EXPECT_EQ(descriptorLength(later.descriptor + "next", entryOf(later)), later.descriptor.size());
            EXPECT_THROW(
                checkDescriptor(later.descriptor.substr(0, later.descriptor.size() - 1), entryOf(later), "z"),
                zip_exception);
        }
    }
}

TEST(EntryHeaders, refusesADescriptorThatDisagrees)
{
    const std::string expected =
        "member \"a.txt\": data descriptor doesn't agree with the directory's CRC-32 3610a686, compressed "
        "size 5 "
        "and size 5: it begins with ";
    const Entry listed = entryOf(member());
    for (const std::string& wrong : {little(0x3610a687, 4) + little(5, 4) + little(5, 4),
                                     little(0x3610a686, 4) + little(6, 4) + little(5, 4),
                                     little(0x3610a686, 4) + little(5, 4) + little(6, 4)}) {
        EXPECT_EQ(zipFailure("z", [&] { checkDescriptor(little(0x08074b50, 4) + wrong, listed, "z"); }),
                  expected + "08074b50");
    }
    EXPECT_EQ(zipFailure("z", [&] { checkDescriptor("abc", listed, "z"); }), expected + "nothing");
    EXPECT_EQ(descriptorLength("abc", listed), 0U);
}

TEST(EntryHeaders, readsNoSmallSizesInADescriptorOfALargeMember)
{
    const Entry listed = entry("x", large, large);
    const std::string cut =
        little(listed.crc, 4) + little(large & 0xffffffff, 4) + little(large & 0xffffffff, 4);
    EXPECT_THROW(checkDescriptor(cut + "more bytes", listed, "z"), zip_exception);
    EXPECT_NO_THROW(
        checkDescriptor(little(listed.crc, 4) + little(large, 8) + little(large, 8), listed, "z"));
}
