#include "platform/iostreams/Directory.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

#include "platform/iostreams/ZipException.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using namespace iostreams::zip;
using support::FailingSystemCalls;
using support::little;
using support::ZipBuilder;

namespace {

/// The directory of an archive on disk.
class OnDisk {
public:
    explicit OnDisk(const std::string& archive) : path_(dir_ / "z.zip")
    {
        support::writeFile(path_, archive);
        file_ = platform::File::open(path_, O_RDONLY);
    }

    Directory read() const
    {
        FileTail tail(file_);
        const EndRecord end = findEndRecord(tail);
        return Directory(tail, end);
    }
    std::string failure() const
    {
        return support::zipFailure(path_, [&] { read(); });
    }
    const std::string& path() const { return path_; }

private:
    support::TempDir dir_;
    std::string path_;
    platform::File file_;
};

std::string failureOf(const ZipBuilder& zip)
{
    return OnDisk(zip.build()).failure();
}

/// Members "a", "b" and "c" of 5 bytes, each 36 bytes long in the file.
ZipBuilder good()
{
    ZipBuilder zip;
    zip.addStored("a", "hello");
    zip.addStored("b", "world");
    zip.addStored("c", "again");
    return zip;
}

constexpr std::uint64_t memberBytes = 36;

Entry entryNamed(const Directory& directory, const std::string& name)
{
    const std::optional<Entry> entry = directory.find(name);
    EXPECT_TRUE(entry.has_value()) << name;
    return entry.value_or(Entry());
}

}  // namespace

TEST(Directory, holdsTheRecordsAsTheyAreStored)
{
    const std::string archive = good().build();
    const Directory directory = OnDisk(archive).read();
    EXPECT_EQ(directory.entryCount(), 3U);
    EXPECT_EQ(directory.position(), 3 * memberBytes);
    EXPECT_EQ(directory.bytes(), archive.substr(3 * memberBytes, 3 * 47));
    EXPECT_EQ(directory.entryAt(47).name, "b");
}

TEST(Directory, findsTheLastEntryOfAName)
{
    ZipBuilder zip = good();
    zip.addStored("a", "second");
    const Directory directory = OnDisk(zip.build()).read();
    EXPECT_EQ(entryNamed(directory, "a").size, 6U);
    EXPECT_EQ(entryNamed(directory, "c").size, 5U);
    EXPECT_FALSE(directory.find("").has_value());
    EXPECT_FALSE(directory.find("A").has_value());
    EXPECT_FALSE(directory.find("aa").has_value());
}

TEST(Directory, countsOffsetsFromTheArchivesFirstByte)
{
    ZipBuilder zip = good();
    zip.prefix = "prefix";
    const Directory directory = OnDisk(zip.build()).read();
    EXPECT_EQ(directory.position(), 6 + 3 * memberBytes);
    EXPECT_EQ(entryNamed(directory, "b").headerOffset, 6 + memberBytes);
}

TEST(Directory, isTakenFromTheTailWhenItLiesThere)
{
    const OnDisk file(good().build());
    FailingSystemCalls calls;
    file.read();
    EXPECT_EQ(calls.count(FailingSystemCalls::READ), 1U);
}

TEST(Directory, tellsWhereDataMustHaveEnded)
{
    const Directory directory = OnDisk(good().build()).read();
    EXPECT_EQ(directory.dataLimit(entryNamed(directory, "a")), memberBytes);
    EXPECT_EQ(directory.dataLimit(entryNamed(directory, "b")), 2 * memberBytes);
    EXPECT_EQ(directory.dataLimit(entryNamed(directory, "c")), 3 * memberBytes);
}

TEST(Directory, tellsWhereDataMustHaveEndedWhateverTheOrder)
{
    ZipBuilder zip = good();
    zip.members[0].offset = 2 * memberBytes;
    zip.members[1].offset = 0;
    zip.members[2].offset = memberBytes;
    const Directory directory = OnDisk(zip.build()).read();
    EXPECT_EQ(directory.dataLimit(entryNamed(directory, "a")), 3 * memberBytes);
    EXPECT_EQ(directory.dataLimit(entryNamed(directory, "b")), memberBytes);
    EXPECT_EQ(directory.dataLimit(entryNamed(directory, "c")), 2 * memberBytes);
}

TEST(Directory, acceptsBytesThatBelongToNoMember)
{
    ZipBuilder zip = good();
    zip.members[0].descriptor = "old bytes";
    zip.members[2].descriptor = "old bytes";
    EXPECT_EQ(OnDisk(zip.build()).read().entryCount(), 3U);
}

TEST(Directory, refusesMembersThatOverlap)
{
    ZipBuilder zip = good();
    zip.members[1].offset = memberBytes - 1;
    EXPECT_EQ(failureOf(zip), "member \"b\": begins at 35, inside member \"a\", which ends at 36 or later");
    zip = good();
    zip.members[0].listed.compressedSize = 6;
    EXPECT_EQ(failureOf(zip), "member \"b\": begins at 36, inside member \"a\", which ends at 37 or later");
}

TEST(Directory, refusesTwoMembersAtOnePlace)
{
    ZipBuilder zip = good();
    zip.members[2].offset = 0;
    EXPECT_NE(failureOf(zip).find("begins at 0, inside member"), std::string::npos);
}

TEST(Directory, refusesAMemberThatHoldsAnother)
{
    ZipBuilder zip = good();
    zip.members[0].listed.compressedSize = 5 + memberBytes;
    EXPECT_EQ(failureOf(zip), "member \"b\": begins at 36, inside member \"a\", which ends at 72 or later");
}

TEST(Directory, refusesMembersThatDontFitBeforeIt)
{
    ZipBuilder zip = good();
    zip.members[2].listed.compressedSize = 6;
    EXPECT_EQ(failureOf(zip), "member \"c\": 6 bytes at 72 don't fit before the directory at 108");
    zip = good();
    zip.members[2].offset = 0xfffffff0;
    EXPECT_EQ(failureOf(zip), "member \"c\": 5 bytes at 4294967280 don't fit before the directory at 108");
    zip = good();
    zip.members[2].offset = 108;
    EXPECT_EQ(failureOf(zip), "member \"c\": 5 bytes at 108 don't fit before the directory at 108");
}

TEST(Directory, refusesSizesThatOverflow)
{
    ZipBuilder zip = good();
    zip.members[0].listed.compressedSize = 0xffffffff;
    zip.members[0].listed.extra = support::zip64Extra({~0ULL - 30});
    EXPECT_EQ(failureOf(zip),
              "member \"a\": 18446744073709551585 bytes at 0 don't fit before the directory at 108");
}

TEST(Directory, refusesAnotherCountThanItHas)
{
    ZipBuilder zip = good();
    zip.end.entries = 2;
    zip.end.entriesOnDisk = 2;
    EXPECT_EQ(failureOf(zip), "the directory's 2 records have 94 bytes, the end record says 141");
    zip.members[0].comment = std::string(46, 'c');  // room for one more
    zip.end.entries = 4;
    zip.end.entriesOnDisk = 4;
    EXPECT_EQ(failureOf(zip), "a record of the central directory is cut off after 0 bytes");
    zip.end.entries = 0;
    zip.end.entriesOnDisk = 0;
    EXPECT_EQ(failureOf(zip), "the directory's 0 records have 0 bytes, the end record says 187");
}

TEST(Directory, refusesBytesBehindItsLastRecord)
{
    ZipBuilder zip = good();
    zip.directoryTail = "tail";
    EXPECT_EQ(failureOf(zip), "the directory's 3 records have 141 bytes, the end record says 145");
}

TEST(Directory, refusesARecordThatIsNone)
{
    const std::string archive = good().build();
    for (const std::size_t record : {1U, 2U}) {
        std::string broken = archive;
        broken[3 * memberBytes + record * 47] = 'Q';
        EXPECT_EQ(OnDisk(broken).failure(),
                  "a record of the central directory begins with 02014b51, not with 02014b50");
    }
}

TEST(Directory, refusesARecordThatGoesBeyondItsEnd)
{
    std::string archive = good().build();
    archive.replace(3 * memberBytes + 2 * 47 + 28, 2, little(2, 2));  // the last name's length
    EXPECT_EQ(OnDisk(archive).failure(), "a record of the central directory is cut off after 47 bytes");
}

TEST(Directory, readsLargeDirectoriesInOrder)
{
    ZipBuilder zip;
    for (int count = 0; count < 500; ++count) {
        zip.addStored("member" + std::to_string(count), "x").comment = std::string(4000, 'c');
    }
    const Directory directory = OnDisk(zip.build()).read();
    EXPECT_EQ(directory.entryCount(), 500U);
    EXPECT_EQ(entryNamed(directory, "member499").headerOffset,
              entryNamed(directory, "member498").headerOffset + 40);
}

TEST(Directory, stopsReadingAtTheFirstWrongRecord)
{
    // A hole of 4 GiB stands where the directory should be, but for its first record.
    const support::TempDir dir;
    const std::string path = dir / "z.zip";
    constexpr std::uint64_t holeBytes = 1ULL << 32U;
    const std::string record = little(0x02014b50, 4) + std::string(42, '\0');
    const platform::File file = platform::File::open(path, O_RDWR | O_CREAT);
    file.writeAt(std::string(30, 'h').data(), 30, 0);
    file.writeAt(record.data(), record.size(), 30);
    EndRecord end;
    end.entryCount = holeBytes / 46;
    end.directorySize = holeBytes;
    end.directoryOffset = 30;
    std::string records;
    appendEndRecord(records, end);
    file.writeAt(records.data(), records.size(), 30 + holeBytes);

    FileTail tail(file);
    const EndRecord found = findEndRecord(tail);
    FailingSystemCalls calls;
    EXPECT_THROW(Directory(tail, found), zip_exception);
    EXPECT_LE(calls.count(FailingSystemCalls::READ), 1U);
}

TEST(Directory, refusesAFileThatBecomesShorter)
{
    ZipBuilder zip = good();
    zip.comment = std::string(0xffff, 'c');
    for (int count = 0; count < 2000; ++count) {
        zip.addStored("member" + std::to_string(count), "");
    }
    const OnDisk file(zip.build());
    const platform::File open = platform::File::open(file.path(), O_RDONLY);
    FileTail tail(open);
    const EndRecord end = findEndRecord(tail);
    ASSERT_EQ(::truncate(file.path().c_str(), 1000), 0);
    EXPECT_EQ(support::zipFailure(file.path(), [&] { Directory(tail, end); }),
              "the file has become shorter: it has 0 of " + std::to_string(end.directorySize) + " bytes at " +
                  std::to_string(end.directoryOffset));
}
