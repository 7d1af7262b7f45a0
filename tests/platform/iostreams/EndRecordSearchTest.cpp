#include "platform/iostreams/EndRecordSearch.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using namespace iostreams::zip;
using support::FailingSystemCalls;
using support::little;
using support::ZipBuilder;

namespace {

ZipBuilder good()
{
    ZipBuilder zip;
    zip.addStored("a", "hello");
    zip.addDeflated("bb", support::textBytes(1000, 1));
    return zip;
}

/// What a search finds in a file of this content; its `end` is 0 when it finds nothing.
EndRecord search(const std::string& content)
{
    const support::TempDir dir;
    support::writeFile(dir / "z.zip", content);
    try {
        return findEndRecord(platform::File::open(dir / "z.zip", O_RDONLY));
    } catch (const HEXAll& error) {
        EXPECT_EQ(std::string(error.what()),
                  (dir / "z.zip") + ": no end of central directory record: no zip archive, or one cut off");
        return {};
    }
}

constexpr std::size_t bufferBytes = 256 * 1024;

}  // namespace

TEST(EndRecordSearch, findsTheArchiveInFrontOfDebris)
{
    ZipBuilder zip = good();
    zip.comment = "kept";
    const std::string archive = zip.build();
    const EndRecord record = search(archive + std::string(1000, '\0') + archive.substr(0, 60));
    EXPECT_EQ(record.end, archive.size());
    EXPECT_EQ(record.entryCount, 2U);
    EXPECT_EQ(record.comment, "kept");
}

TEST(EndRecordSearch, findsZip64Archives)
{
    ZipBuilder zip = good();
    zip.zip64 = true;
    const std::string archive = zip.build();
    const EndRecord record = search(archive + "debris");
    EXPECT_EQ(record.end, archive.size());
    EXPECT_EQ(record.position, archive.size() - 22 - 20 - 56);
}

TEST(EndRecordSearch, findsTheOldStateBehindEachPartOfItsCopy)
{
    const std::string archive = good().build();
    const std::size_t directory = archive.find(little(0x02014b50, 4));
    const std::string gap(500, '\0');
    std::string copy = archive.substr(directory);
    copy.replace(copy.size() - 6, 4, little(archive.size() + gap.size(), 4));
    for (std::size_t size = 0; size < copy.size(); ++size) {
        EXPECT_EQ(search(archive + gap + copy.substr(0, size)).end, archive.size()) << size;
    }
    EXPECT_EQ(search(archive + gap + copy).end, archive.size() + gap.size() + copy.size());
}

TEST(EndRecordSearch, takesTheLastOfSeveralArchives)
{
    const std::string first = good().build();
    // Both members of the first archive are members of the second.
    ZipBuilder both = good();
    both.addStored("copy", first.substr(first.size() - 22));
    const std::string second = both.build();
    EXPECT_EQ(search(second + "debris").entryCount, 3U);
}

TEST(EndRecordSearch, findsARecordAcrossTheEdgeOfItsBuffer)
{
    const std::string archive = good().build();
    for (std::size_t behind = 0; behind < 24; ++behind) {
        const std::string debris(bufferBytes - behind, '\x06');
        EXPECT_EQ(search(archive + debris).end, archive.size()) << behind;
    }
}

TEST(EndRecordSearch, findsTheArchiveBehindManyBuffers)
{
    const std::string archive = good().build();
    EXPECT_EQ(search(archive + support::randomBytes(5 * bufferBytes + 17, 3)).end, archive.size());
}

TEST(EndRecordSearch, doesNotTakeAMemberForTheArchive)
{
    for (const std::size_t before : {0U, 1U}) {
        ZipBuilder outer;
        if (before > 0) {
            outer.addStored("first", "x");
        }
        outer.addStored("inner.zip", good().build());
        outer.addStored("last", support::textBytes(1000, 1));
        const std::string archive = outer.build();
        for (const std::size_t cut : {1U, 22U, 200U, 500U}) {
            EXPECT_EQ(search(archive.substr(0, archive.size() - cut)).end, 0U) << before << " " << cut;
        }
    }
}

TEST(EndRecordSearch, passesArchivesBehindOtherBytes)
{
    ZipBuilder zip = good();
    zip.prefix = little(0x04034b50, 4) + "prefix";
    EXPECT_EQ(search(zip.build() + "debris").end, 0U);
    // Where the directory would be without the other bytes, something stands that looks like one.
    const std::size_t directory = zip.build().find(little(0x02014b50, 4)) - zip.prefix.size();
    ZipBuilder fake;
    fake.prefix = zip.prefix;
    fake.addStored("m", std::string(directory - 31 - zip.prefix.size(), 'x') + little(0x02014b50, 4) +
                            std::string(zip.prefix.size() - 4, 'x'));
    EXPECT_EQ(search(fake.build() + "debris").end, 0U);
}

TEST(EndRecordSearch, passesArchivesThatLackALocalHeader)
{
    std::string archive = good().build();
    archive[archive.rfind(little(0x04034b50, 4))] = 'Q';
    EXPECT_EQ(search(archive + "debris").end, 0U);
}

TEST(EndRecordSearch, passesDirectoriesThatAreNotWhole)
{
    ZipBuilder zip = good();
    zip.end.entries = 1;
    zip.end.entriesOnDisk = 1;
    EXPECT_EQ(search(zip.build() + "debris").end, 0U);
}

TEST(EndRecordSearch, findsAnEmptyArchiveOnlyAtTheStart)
{
    const std::string empty = ZipBuilder().build();
    EXPECT_EQ(search(empty + "debris").end, empty.size());
    EXPECT_EQ(search(little(0x04034b50, 4) + empty + "debris").end, 0U);
}

TEST(EndRecordSearch, goesOnBehindRecordsThatNameNothing)
{
    const std::string archive = good().build();
    const std::string fake = little(0x06054b50, 4) + std::string(18, '\0');
    std::string debris;
    for (int count = 0; count < 1000; ++count) {
        debris += fake;
    }
    EXPECT_EQ(search(archive + debris + "x").end, archive.size());
}

TEST(EndRecordSearch, givesUpAfterManyDirectoriesThatAreWrong)
{
    // Each record names the good directory, and a member too many in it.
    const std::string archive = good().build();
    const std::size_t directory = archive.find(little(0x02014b50, 4));
    std::string debris;
    for (int count = 0; count < 65; ++count) {
        const std::size_t size = archive.size() + debris.size() - directory;
        debris += little(0x06054b50, 4) + little(0, 4) + little(3, 2) + little(3, 2) + little(size, 4) +
                  little(directory, 4) + little(0, 2);
    }
    EXPECT_EQ(search(archive + debris.substr(0, 60 * 22) + "x").end, archive.size());
    EXPECT_EQ(search(archive + debris + "x").end, 0U);
}

TEST(EndRecordSearch, doesNotReadThroughFilesThatDoNotBeginAsArchives)
{
    const support::TempDir dir;
    support::writeFile(dir / "image", std::string(4 << 20U, 'x'));
    const platform::File file = platform::File::open(dir / "image", O_RDONLY);
    FailingSystemCalls calls;
    EXPECT_THROW(findEndRecord(file), HEXAll);
    EXPECT_LE(calls.count(FailingSystemCalls::READ), 3U);
}
