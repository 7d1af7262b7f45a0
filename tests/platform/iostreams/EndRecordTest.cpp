#include "platform/iostreams/EndRecord.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "platform/iostreams/EndRecordSearch.h"
#include "platform/iostreams/ZipException.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using namespace iostreams::zip;
using support::FailingSystemCalls;
using support::little;
using support::ZipBuilder;

namespace {

/// An archive of two small members: the first 36 bytes long, the second 37, the directory 104.
ZipBuilder good()
{
    ZipBuilder zip;
    zip.addStored("a", "hello");
    zip.addStored("bb", "world");
    return zip;
}

constexpr std::uint64_t goodDirectory = 36 + 37;
constexpr std::uint64_t goodDirectorySize = 47 + 48;
const std::string tooShort = "no end of central directory record: no zip archive, or one cut off";

/// A file in a directory of its own.
class OnDisk {
public:
    explicit OnDisk(const std::string& content) : path_(dir_ / "z.zip")
    {
        support::writeFile(path_, content);
    }

    EndRecord find() const { return findEndRecord(platform::File::open(path_, O_RDONLY)); }
    std::string failure() const
    {
        return support::zipFailure(path_, [&] { find(); });
    }

private:
    support::TempDir dir_;
    std::string path_;
};

EndRecord findIn(const std::string& content)
{
    return OnDisk(content).find();
}

std::string failureOf(const std::string& content)
{
    return OnDisk(content).failure();
}

std::string failureOf(const ZipBuilder& zip)
{
    return failureOf(zip.build());
}

}  // namespace

TEST(EndRecord, isReadWithItsPlace)
{
    ZipBuilder zip = good();
    zip.comment = "a comment";
    const EndRecord record = findIn(zip.build());
    EXPECT_EQ(record.entryCount, 2U);
    EXPECT_EQ(record.directorySize, goodDirectorySize);
    EXPECT_EQ(record.directoryOffset, goodDirectory);
    EXPECT_EQ(record.comment, "a comment");
    EXPECT_EQ(record.prefixSize, 0U);
    EXPECT_EQ(record.position, goodDirectory + goodDirectorySize);
    EXPECT_EQ(record.end, zip.build().size());
}

TEST(EndRecord, isFoundInAnArchiveWithoutMembers)
{
    const EndRecord record = findIn(ZipBuilder().build());
    EXPECT_EQ(record.entryCount, 0U);
    EXPECT_EQ(record.position, 0U);
    EXPECT_EQ(record.end, 22U);
}

TEST(EndRecord, isFoundWithOneReadOfASmallFile)
{
    const OnDisk file(good().build());
    FailingSystemCalls calls;
    file.find();
    EXPECT_EQ(calls.count(FailingSystemCalls::READ), 1U);
}

TEST(EndRecord, isFoundInFrontOfTheLongestComment)
{
    ZipBuilder zip = good();
    zip.comment = std::string(0xffff, 'c');
    zip.zip64 = true;
    const EndRecord record = findIn(support::randomBytes(100000, 1) + zip.build());
    EXPECT_EQ(record.comment, zip.comment);
    EXPECT_EQ(record.prefixSize, 100000U);
}

TEST(EndRecord, isNotTakenFromAComment)
{
    ZipBuilder zip = good();
    ZipBuilder fake;
    fake.end.entries = 7;
    fake.end.entriesOnDisk = 7;
    zip.comment = "see " + fake.build();
    EXPECT_EQ(findIn(zip.build()).comment, zip.comment);
}

TEST(EndRecord, tellsHowManyBytesStandInFrontOfTheArchive)
{
    ZipBuilder zip = good();
    zip.prefix = "#!/bin/sh\n";
    const EndRecord record = findIn(zip.build());
    EXPECT_EQ(record.prefixSize, 10U);
    EXPECT_EQ(record.directoryOffset, goodDirectory);
    EXPECT_EQ(record.position, 10 + goodDirectory + goodDirectorySize);
}

TEST(EndRecord, refusesWhatIsNoArchive)
{
    EXPECT_EQ(failureOf(""), tooShort);
    EXPECT_EQ(failureOf("P"), tooShort);
    EXPECT_EQ(failureOf(support::textBytes(100000, 1)), tooShort);
    EXPECT_EQ(failureOf(std::string(21, 'P')), tooShort);
}

TEST(EndRecord, refusesPartsOfASplitArchive)
{
    ZipBuilder zip = good();
    zip.end.disk = 3;
    EXPECT_EQ(failureOf(zip), "part 3 of a split archive, which can't be read");
    zip.end = {};
    zip.end.directoryDisk = 1;
    EXPECT_EQ(failureOf(zip), "part 0 of a split archive, which can't be read");
    zip.end = {};
    zip.end.entriesOnDisk = 1;
    EXPECT_EQ(failureOf(zip), "part 0 of a split archive, which can't be read");
}

TEST(EndRecord, refusesADirectoryOutsideTheFile)
{
    ZipBuilder zip = good();
    zip.end.directorySize = 1000;
    EXPECT_EQ(failureOf(zip), "directory of 1000 bytes at 73 doesn't fit before the end record at 168");
    zip.end = {};
    zip.end.directoryOffset = 74;
    EXPECT_EQ(failureOf(zip), "directory of 95 bytes at 74 doesn't fit before the end record at 168");
}

TEST(EndRecord, refusesNumbersThatOverflow)
{
    ZipBuilder zip = good();
    zip.zip64 = true;
    zip.zip64End.directoryOffset = ~0ULL;
    zip.zip64Locator = goodDirectorySize - 1;
    EXPECT_EQ(failureOf(zip), "zip64 end record is said to be at 94, where the directory doesn't end");
    zip.zip64End.directorySize = ~0ULL;
    zip.zip64End.directoryOffset = 1;
    zip.zip64Locator = 0;
    EXPECT_EQ(failureOf(zip), "zip64 end record is said to be at 0, where the directory doesn't end");
}

TEST(EndRecord, refusesMoreMembersThanTheDirectoryHasRoomFor)
{
    ZipBuilder zip = good();
    zip.zip64 = true;
    zip.zip64End.entries = 4000000000;
    zip.zip64End.entriesOnDisk = 4000000000;
    EXPECT_EQ(failureOf(zip), "directory of 95 bytes can't hold 4000000000 members");
}

TEST(EndRecord, refusesADirectoryThatDoesNotBeginAsOne)
{
    ZipBuilder zip = good();
    zip.end.directoryOffset = 70;
    zip.end.directorySize = 98;
    EXPECT_EQ(failureOf(zip), "directory at 70 begins with 50646c72, not with 02014b50");
}

TEST(EndRecord, readsTheZip64Numbers)
{
    ZipBuilder zip = good();
    zip.zip64 = true;
    zip.comment = "c";
    zip.prefix = "prefix";
    const std::string archive = zip.build();
    const EndRecord record = findIn(archive);
    EXPECT_EQ(record.entryCount, 2U);
    EXPECT_EQ(record.directorySize, goodDirectorySize);
    EXPECT_EQ(record.directoryOffset, goodDirectory);
    EXPECT_EQ(record.prefixSize, 6U);
    EXPECT_EQ(record.position, 6 + goodDirectory + goodDirectorySize);
    EXPECT_EQ(record.end, archive.size());
}

TEST(EndRecord, readsAZip64RecordThatHoldsMore)
{
    ZipBuilder zip = good();
    zip.zip64 = true;
    zip.zip64Extensible = "more than the fixed part";
    EXPECT_EQ(findIn(zip.build()).position, goodDirectory + goodDirectorySize);
}

TEST(EndRecord, acceptsALocatorThatCountsNoDisks)
{
    ZipBuilder zip = good();
    zip.zip64 = true;
    zip.zip64Disks = 0;
    EXPECT_EQ(findIn(zip.build()).entryCount, 2U);
    zip.zip64Disks = 2;
    EXPECT_EQ(failureOf(zip), "split archive of 2 parts, which can't be read");
}

TEST(EndRecord, refusesAZip64RecordOnAnotherDisk)
{
    ZipBuilder zip = good();
    zip.zip64 = true;
    zip.end.disk = 0xffff;
    zip.zip64End.disk = 1;
    EXPECT_EQ(failureOf(zip), "part 1 of a split archive, which can't be read");
}

TEST(EndRecord, refusesALocatorWithoutItsRecord)
{
    ZipBuilder zip = good();
    zip.zip64 = true;
    std::string archive = zip.build();
    archive[archive.find(little(0x06064b50, 4))] = 'Q';
    EXPECT_EQ(failureOf(archive), "no zip64 end record at 168, where its locator says it is");
    zip.zip64Extensible = "more";
    zip.zip64Locator = ~0ULL;
    EXPECT_EQ(failureOf(zip), "no zip64 end record at 18446744073709551615, where its locator says it is");
}

TEST(EndRecord, refusesTwoFormsThatDisagree)
{
    ZipBuilder zip = good();
    zip.zip64 = true;
    zip.end.entries = 3;
    EXPECT_EQ(failureOf(zip), "end record has member count 3, zip64 end record has 2");
    zip.end = {};
    zip.end.entriesOnDisk = 3;
    EXPECT_EQ(failureOf(zip), "end record has member count 3, zip64 end record has 2");
    zip.end = {};
    zip.end.directorySize = 94;
    EXPECT_EQ(failureOf(zip), "end record has directory size 94, zip64 end record has 95");
    zip.end = {};
    zip.end.directoryOffset = 74;
    EXPECT_EQ(failureOf(zip), "end record has directory offset 74, zip64 end record has 73");
}

TEST(EndRecord, agreesWithEqualNumbersInBothForms)
{
    ZipBuilder zip = good();
    zip.zip64 = true;
    zip.end.entries = 2;
    zip.end.entriesOnDisk = 2;
    zip.end.directorySize = goodDirectorySize;
    zip.end.directoryOffset = goodDirectory;
    EXPECT_EQ(findIn(zip.build()).entryCount, 2U);
}

TEST(EndRecord, takesAllOnesAsANumberWhereNoZip64RecordStands)
{
    const std::string record = little(0x02014b50, 4) + std::string(42, '\0');
    std::string directory;
    for (int count = 0; count < 0xffff; ++count) {
        directory += record;
    }
    const EndRecord found = findIn(directory + little(0x06054b50, 4) + little(0, 4) + little(0xffffffff, 4) +
                                   little(directory.size(), 4) + little(0, 4) + little(0, 2));
    EXPECT_EQ(found.entryCount, 0xffffU);
}

TEST(EndRecord, reportsAReadThatTheSystemRefuses)
{
    const OnDisk file(good().build());
    FailingSystemCalls calls;
    calls.failAll(FailingSystemCalls::READ, EIO);
    EXPECT_EQ(file.failure(), "can't read: Input/output error");
}

TEST(EndRecord, reportsAFileThatBecomesShorter)
{
    const OnDisk file(good().build());
    FailingSystemCalls calls;
    calls.shorten(FailingSystemCalls::READ, 1, 100);
    calls.shorten(FailingSystemCalls::READ, 2, 0);
    EXPECT_EQ(file.failure(), "the file has become shorter: it has 100 of 190 bytes at 0");
}

TEST(EndRecord, isWrittenWithoutZip64WhereItFits)
{
    EndRecord record;
    record.entryCount = 0xfffe;
    record.directorySize = 0xfffffffe;
    record.directoryOffset = 0xfffffffe;
    record.comment = "text";
    std::string out = "before";
    appendEndRecord(out, record);
    EXPECT_EQ(out, "before" + little(0x06054b50, 4) + little(0, 4) + little(0xfffe, 2) + little(0xfffe, 2) +
                       little(0xfffffffe, 4) + little(0xfffffffe, 4) + little(4, 2) + "text");
}

TEST(EndRecord, isWrittenWithZip64FromTheFirstNumberThatNeedsIt)
{
    for (int which = 0; which < 3; ++which) {
        EndRecord record;
        record.entryCount = which == 0 ? 0xffff : 3;
        record.directorySize = which == 1 ? 0xffffffff : 200;
        record.directoryOffset = which == 2 ? 0xffffffff : 1000;
        std::string out;
        appendEndRecord(out, record);
        ASSERT_EQ(out.size(), 56U + 20U + 22U);
        EXPECT_EQ(out.substr(0, 12), little(0x06064b50, 4) + little(44, 8));
        EXPECT_EQ(out.substr(24, 32), little(record.entryCount, 8) + little(record.entryCount, 8) +
                                          little(record.directorySize, 8) +
                                          little(record.directoryOffset, 8));
        EXPECT_EQ(out.substr(56, 20), little(0x07064b50, 4) + little(0, 4) +
                                          little(record.directoryOffset + record.directorySize, 8) +
                                          little(1, 4));
        EXPECT_EQ(out.substr(84, 2), little(which == 0 ? 0xffff : 3, 2));
    }
}

TEST(EndRecord, readsWhatItWrites)
{
    std::string directory;
    for (int count = 0; count < 70000; ++count) {
        directory += little(0x02014b50, 4) + std::string(42, '\0');
    }
    EndRecord record;
    record.entryCount = 70000;
    record.directorySize = directory.size();
    record.directoryOffset = 3;
    record.comment = "c";
    std::string file = "1234567" + directory;
    appendEndRecord(file, record);
    const EndRecord found = findIn(file);
    EXPECT_EQ(found.entryCount, 70000U);
    EXPECT_EQ(found.directoryOffset, 3U);
    EXPECT_EQ(found.prefixSize, 4U);
    EXPECT_EQ(found.comment, "c");
}
