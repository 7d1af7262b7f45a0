#include "platform/iostreams/ArchiveWriter.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::device::detail::zip_exception;
using iostreams::zip::ArchiveReader;
using Writer = iostreams::zip::ArchiveWriter;
using support::FailingSystemCalls;

namespace {

constexpr std::size_t CHUNK = 256 * 1024;

class ArchiveWriter : public testing::Test {
protected:
    /// Adds content by way of a file on disk.
    bool add(Writer& writer, const std::string& name, const std::string& content)
    {
        support::writeFile(dir_ / "source", content);
        return writer.addFile(dir_ / "source", name, reason_);
    }

    /// The entry of an archive of one member with this content.
    iostreams::zip::Entry entryOf(const std::string& content)
    {
        Writer writer(path_);
        EXPECT_TRUE(add(writer, "m", content)) << reason_;
        writer.commit(false);
        const ArchiveReader reader(path_);
        EXPECT_EQ(reader.entries().size(), 1U);
        iostreams::zip::Entry entry = reader.entries().front();
        EXPECT_TRUE(support::memberOf(path_, "m") == content);
        EXPECT_TRUE(reader.read(entry, content.size()) == content);
        entry.name = {};
        entry.record = {};
        return entry;
    }

    bool copy(Writer& writer, const ArchiveReader& from, const std::string& name)
    {
        return writer.addMember(from, *from.find(name), name, reason_);
    }

    support::TempDir dir_;
    const std::string path_ = dir_ / "new.hdf";
    std::string reason_;
};

/// Makes a file shorter just before the nth read.
struct TruncatingCalls : platform::SystemCalls {
    TruncatingCalls(std::string path, int nth, off_t size)
        : path_(std::move(path)), nth_(nth), size_(size), earlier_(replace(this))
    {
    }
    ~TruncatingCalls() override { replace(earlier_); }
    ssize_t pread(int file, void* buffer, std::size_t size, off_t offset) override
    {
        if (--nth_ == 0) {
            EXPECT_EQ(::truncate(path_.c_str(), size_), 0);
        }
        return SystemCalls::pread(file, buffer, size, offset);
    }
    std::string path_;
    int nth_;
    off_t size_;
    platform::SystemCalls* earlier_;
};

}  // namespace

TEST_F(ArchiveWriter, writesMembersInTheOrderAdded)
{
    Writer writer(path_);
    EXPECT_TRUE(add(writer, "sysdef.xml", "<a/>"));
    EXPECT_TRUE(add(writer, "b.bit", support::randomBytes(5000, 1)));
    EXPECT_TRUE(add(writer, "a.txt", support::textBytes(5000, 1)));
    writer.commit(false);
    EXPECT_EQ(support::namesIn(path_), "sysdef.xml b.bit a.txt");
}

TEST_F(ArchiveWriter, writesAnArchiveWithoutMembers)
{
    Writer(path_).commit(false);
    EXPECT_EQ(support::readFile(path_).size(), 22U);
    EXPECT_EQ(ArchiveReader(path_).entries().size(), 0U);
}

TEST_F(ArchiveWriter, storesAnEmptyFile)
{
    const auto entry = entryOf("");
    EXPECT_EQ(entry.method, iostreams::zip::METHOD_STORED);
    EXPECT_EQ(entry.crc, 0U);
}

TEST_F(ArchiveWriter, deflatesSmallTextAndStoresSmallNoise)
{
    EXPECT_EQ(entryOf(support::textBytes(5000, 1)).method, iostreams::zip::METHOD_DEFLATED);
    const auto entry = entryOf(support::randomBytes(5000, 1));
    EXPECT_EQ(entry.method, iostreams::zip::METHOD_STORED);
    EXPECT_EQ(entry.compressedSize, 5000U);
}

TEST_F(ArchiveWriter, deflatesWholeFilesAroundTheSizeOfAChunk)
{
    for (const std::size_t size : {CHUNK - 1, CHUNK, CHUNK + 1, 2 * CHUNK, 2 * CHUNK + 1}) {
        const auto entry = entryOf(support::textBytes(size, 1));
        EXPECT_EQ(entry.method, iostreams::zip::METHOD_DEFLATED) << size;
        EXPECT_EQ(entry.size, size);
    }
}

TEST_F(ArchiveWriter, storesLargeNoise)
{
    const auto entry = entryOf(support::randomBytes(5 * CHUNK + 17, 2));
    EXPECT_EQ(entry.method, iostreams::zip::METHOD_STORED);
}

TEST_F(ArchiveWriter, startsAMemberAnewWhenLaterChunksShrink)
{
    const auto entry = entryOf(support::randomBytes(3 * CHUNK, 3) + support::textBytes(2 * CHUNK, 3));
    EXPECT_EQ(entry.method, iostreams::zip::METHOD_DEFLATED);
    EXPECT_LT(entry.compressedSize, 4 * CHUNK);
}

TEST_F(ArchiveWriter, storesAMemberAfterAllWhenDeflateGainsNothing)
{
    // Deflate sees 32 KiB back: the samples, which stand side by side while they are tried, promise
    // more than the pieces that they are taken from keep.
    std::string content = support::randomBytes(2 * CHUNK, 4);
    for (std::size_t chunk = 1; chunk <= 8; ++chunk) {
        std::string more = support::randomBytes(CHUNK, static_cast<unsigned>(100 + chunk));
        for (std::size_t i = 1; i < 4; ++i) {
            more.replace((CHUNK - 4096) / 3 * i, 4096, more.substr(0, 4096));
        }
        content += more;
    }
    const auto entry = entryOf(content);
    EXPECT_EQ(entry.method, iostreams::zip::METHOD_STORED);
}

TEST_F(ArchiveWriter, storesLargeNoiseWithALittleText)
{
    const auto entry = entryOf(support::randomBytes(4 * CHUNK, 3) + support::textBytes(10000, 3));
    EXPECT_EQ(entry.method, iostreams::zip::METHOD_STORED);
}

TEST_F(ArchiveWriter, seesRepetitionsFurtherApartThanAPieceOfASample)
{
    const std::string block = support::randomBytes(5000, 3);
    std::string content;
    while (content.size() < 2 * CHUNK) {
        content += block;
    }
    EXPECT_EQ(entryOf(content).method, iostreams::zip::METHOD_DEFLATED);
}

TEST_F(ArchiveWriter, readsALargeFileOnce)
{
    for (const std::string& content :
         {support::randomBytes(40 * CHUNK, 5), support::randomBytes(100 * CHUNK, 5)}) {
        support::writeFile(dir_ / "source", content);
        FailingSystemCalls calls;
        Writer writer(path_);
        ASSERT_TRUE(writer.addFile(dir_ / "source", "m", reason_));
        EXPECT_LE(calls.count(FailingSystemCalls::READ), content.size() / CHUNK + 1);
    }
}

TEST_F(ArchiveWriter, writesManySmallMembersWithFewCalls)
{
    support::writeFile(dir_ / "source", "content");
    FailingSystemCalls calls;
    Writer writer(path_);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_TRUE(writer.addFile(dir_ / "source", "member" + std::to_string(i), reason_));
    }
    writer.commit(false);
    EXPECT_LE(calls.count(FailingSystemCalls::WRITE), 2U);
    EXPECT_EQ(ArchiveReader(path_).entries().size(), 1000U);
}

TEST_F(ArchiveWriter, givesTheSameBytesForTheSameInput)
{
    std::string bytes[2];
    for (std::string& result : bytes) {
        Writer writer(path_);
        add(writer, "a", support::textBytes(600000, 6));
        add(writer, "b", support::randomBytes(600000, 6));
        writer.commit(true);
        result = support::readFile(path_);
    }
    EXPECT_TRUE(bytes[0] == bytes[1]);
}

TEST_F(ArchiveWriter, replacesAMemberOfTheSameName)
{
    Writer writer(path_);
    add(writer, "a", "first");
    add(writer, "b", "other");
    add(writer, "a", "second");
    writer.commit(false);
    EXPECT_EQ(support::namesIn(path_), "b a");
    EXPECT_EQ(support::memberOf(path_, "a"), "second");
}

TEST_F(ArchiveWriter, cutsTheLastMemberWhenItIsReplaced)
{
    const std::string large = support::randomBytes(3 * CHUNK, 7);
    std::string bytes[2];
    for (const int replaced : {0, 1}) {
        Writer writer(path_);
        add(writer, "a", "first");
        if (replaced == 1) {
            add(writer, "b", large);
        }
        add(writer, "b", large + "2");
        add(writer, "c", "last");
        if (replaced == 1) {
            add(writer, "c", "last");
        }
        writer.commit(false);
        bytes[replaced] = support::readFile(path_);
    }
    EXPECT_TRUE(bytes[0] == bytes[1]);
}

TEST_F(ArchiveWriter, knowsWhatWasAdded)
{
    Writer writer(path_);
    add(writer, "a", "first");
    EXPECT_TRUE(writer.contains("a"));
    EXPECT_FALSE(writer.contains("A"));
}

TEST_F(ArchiveWriter, goesOnAfterASourceThatIsMissing)
{
    Writer writer(path_);
    add(writer, "a", "first");
    EXPECT_FALSE(writer.addFile(dir_ / "missing", "a", reason_));
    EXPECT_EQ(reason_, (dir_ / "missing") + ": can't open: No such file or directory");
    EXPECT_FALSE(writer.addFile(dir_.path(), "d", reason_));
    EXPECT_EQ(reason_, dir_.path() + ": can't open as a regular file: Invalid argument");
    writer.commit(false);
    EXPECT_EQ(support::namesIn(path_), "a");
    EXPECT_EQ(support::memberOf(path_, "a"), "first");
}

TEST_F(ArchiveWriter, doesNotWaitForAFifo)
{
    ASSERT_EQ(::mkfifo((dir_ / "fifo").c_str(), 0600), 0);
    Writer writer(path_);
    EXPECT_FALSE(writer.addFile(dir_ / "fifo", "f", reason_));
    EXPECT_EQ(reason_, (dir_ / "fifo") + ": can't open as a regular file: Invalid argument");
}

TEST_F(ArchiveWriter, refusesNamesThatNoArchiveCanHold)
{
    Writer writer(path_);
    EXPECT_FALSE(add(writer, "", "x"));
    EXPECT_EQ(reason_, "a member must have a name, but it is empty");
    EXPECT_FALSE(add(writer, std::string(65536, 'n'), "x"));
    EXPECT_EQ(reason_,
              "member \"" + std::string(40, 'n') + "...\": its name has 65536 bytes, allowed are 65535");
    EXPECT_TRUE(add(writer, std::string(65535, 'n'), "x"));
    writer.commit(false);
    EXPECT_EQ(ArchiveReader(path_).entries().front().name.size(), 65535U);
}

TEST_F(ArchiveWriter, takesBackAMemberWhoseSourceFailsHalfWay)
{
    support::writeFile(dir_ / "large", support::randomBytes(4 * CHUNK, 8));
    Writer writer(path_);
    add(writer, "a", "first");
    {
        FailingSystemCalls calls;
        calls.fail(FailingSystemCalls::READ, 3, EIO);
        EXPECT_FALSE(writer.addFile(dir_ / "large", "a", reason_));
        EXPECT_EQ(reason_, (dir_ / "large") + ": can't read: Input/output error");
    }
    add(writer, "b", "last");
    writer.commit(false);
    EXPECT_EQ(support::namesIn(path_), "a b");
    EXPECT_LT(support::readFile(path_).size(), 1000U);
}

TEST_F(ArchiveWriter, packsWhatWasReadOfAFileThatShrinks)
{
    const std::string content = support::randomBytes(4 * CHUNK, 9);
    support::writeFile(dir_ / "source", content);
    Writer writer(path_);
    {
        const TruncatingCalls calls(dir_ / "source", 2, CHUNK + 1000);
        ASSERT_TRUE(writer.addFile(dir_ / "source", "m", reason_)) << reason_;
    }
    writer.commit(false);
    EXPECT_TRUE(support::memberOf(path_, "m") == content.substr(0, CHUNK + 1000));
}

TEST_F(ArchiveWriter, storesAFileThatShrinksToNoiseWhileItIsDeflated)
{
    const std::string noise = support::randomBytes(CHUNK, 9);
    support::writeFile(dir_ / "source", noise + support::textBytes(CHUNK, 9));
    Writer writer(path_);
    {
        // Two chunks are read before deflate is found worthwhile, then again from the start.
        const TruncatingCalls calls(dir_ / "source", 4, CHUNK);
        ASSERT_TRUE(writer.addFile(dir_ / "source", "m", reason_)) << reason_;
    }
    writer.commit(false);
    EXPECT_TRUE(support::memberOf(path_, "m") == noise);
    EXPECT_EQ(ArchiveReader(path_).entries().front().method, iostreams::zip::METHOD_STORED);
}

TEST_F(ArchiveWriter, refusesAFileThatShrinksSoMuchThatItsHeaderDoes)
{
    support::writeFile(dir_ / "source", "");
    ASSERT_EQ(::truncate((dir_ / "source").c_str(), 5LL << 30), 0);
    Writer writer(path_);
    {
        const TruncatingCalls calls(dir_ / "source", 2, CHUNK + 1000);
        EXPECT_FALSE(writer.addFile(dir_ / "source", "m", reason_));
    }
    EXPECT_EQ(reason_, (dir_ / "source") + ": has 263144 bytes, had 5368709120 when it was opened");
    writer.commit(false);
    EXPECT_EQ(support::readFile(path_).size(), 22U);
}

TEST_F(ArchiveWriter, readsFilesThatDoNotTellTheirSize)
{
    Writer writer(path_);
    ASSERT_TRUE(writer.addFile("/proc/self/comm", "comm", reason_)) << reason_;
    writer.commit(false);
    EXPECT_EQ(support::memberOf(path_, "comm"), support::readFile("/proc/self/comm"));
}

TEST_F(ArchiveWriter, leavesTheOldFileUntilCommit)
{
    support::writeFile(path_, "old");
    Writer writer(path_);
    add(writer, "a", "first");
    EXPECT_EQ(support::readFile(path_), "old");
    writer.commit(false);
    EXPECT_EQ(support::namesIn(path_), "a");
}

TEST_F(ArchiveWriter, leavesNoTraceWithoutCommit)
{
    {
        Writer writer(path_);
        add(writer, "a", support::randomBytes(3 * CHUNK, 10));
    }
    EXPECT_EQ(dir_.list(), "source");
}

TEST_F(ArchiveWriter, saysWhichArchiveCanNotBeMade)
{
    try {
        Writer writer(dir_ / "none/new.hdf");
        FAIL() << "made an archive in a directory that doesn't exist";
    } catch (const zip_exception& error) {
        EXPECT_EQ(std::string(error.what()).find(dir_ / "none/new.hdf: "), 0U) << error.what();
    }
}

TEST_F(ArchiveWriter, copiesMembersAsTheyAreCompressed)
{
    const std::string text = support::textBytes(5000, 11);
    const std::string large = support::textBytes(3000000, 11);
    {
        Writer writer(dir_ / "from.hdf");
        add(writer, "text", text);
        add(writer, "empty", "");
        add(writer, "large", large);
        add(writer, "noise", support::randomBytes(400000, 11));
        writer.commit(false);
    }
    const ArchiveReader from(dir_ / "from.hdf");
    Writer writer(path_);
    for (const auto& entry : from.entries()) {
        ASSERT_TRUE(writer.addMember(from, entry, std::string(entry.name), reason_)) << reason_;
    }
    writer.commit(false);
    EXPECT_TRUE(support::readFile(path_) == support::readFile(dir_ / "from.hdf"));
}

TEST_F(ArchiveWriter, copiesAMemberUnderAnotherName)
{
    support::writeArchive(dir_ / "from.hdf", {{"a", "content of a"}, {"b", "content of b"}});
    const ArchiveReader from(dir_ / "from.hdf");
    Writer writer(path_);
    ASSERT_TRUE(writer.addMember(from, *from.find("b"), "dir/new", reason_));
    writer.commit(false);
    EXPECT_EQ(support::readArchive(path_), (support::Members{{"dir/new", "content of b"}}));
}

TEST_F(ArchiveWriter, mayReplaceTheArchiveThatItCopiesFrom)
{
    support::writeArchive(path_, {{"a", "content of a"}, {"b", "content of b"}});
    const ArchiveReader from(path_);
    Writer writer(path_);
    EXPECT_TRUE(copy(writer, from, "b"));
    EXPECT_TRUE(add(writer, "c", "new"));
    EXPECT_TRUE(copy(writer, from, "a"));
    writer.commit(false);
    EXPECT_EQ(support::readArchive(path_),
              (support::Members{{"b", "content of b"}, {"c", "new"}, {"a", "content of a"}}));
}

TEST_F(ArchiveWriter, readsSmallNeighboursTogether)
{
    support::Members members;
    for (int i = 0; i < 1000; ++i) {
        members.emplace_back("member" + std::to_string(i), "content " + std::to_string(i));
    }
    support::writeArchive(dir_ / "from.hdf", members);
    const ArchiveReader from(dir_ / "from.hdf");
    FailingSystemCalls calls;
    Writer writer(path_);
    for (const auto& entry : from.entries()) {
        ASSERT_TRUE(writer.addMember(from, entry, std::string(entry.name), reason_)) << reason_;
    }
    writer.commit(false);
    EXPECT_LE(calls.count(FailingSystemCalls::READ | FailingSystemCalls::STATUS), 5U);
    EXPECT_EQ(support::readArchive(path_), members);
}

TEST_F(ArchiveWriter, tellsArchivesApartThatStandAtTheSameAddress)
{
    support::writeArchive(dir_ / "1.hdf", {{"m", "content 1"}});
    support::writeArchive(dir_ / "2.hdf", {{"m", "content 2"}});
    Writer writer(path_);
    for (const std::string name : {"1", "2"}) {
        const ArchiveReader from(dir_ / (name + ".hdf"));
        ASSERT_TRUE(writer.addMember(from, *from.find("m"), name, reason_)) << reason_;
    }
    writer.commit(false);
    EXPECT_EQ(support::readArchive(path_), (support::Members{{"1", "content 1"}, {"2", "content 2"}}));
}

TEST_F(ArchiveWriter, copiesMembersWithLongLocalHeaders)
{
    support::ZipBuilder builder;
    for (const std::string name : {"a", "b"}) {
        builder.addStored(name, "content of " + name).local.extra =
            support::little(0x7777, 2) + support::little(3000, 2) + std::string(3000, 'e');
    }
    builder.write(dir_ / "from.hdf");
    const ArchiveReader from(dir_ / "from.hdf");
    Writer writer(path_);
    EXPECT_TRUE(copy(writer, from, "b")) << reason_;
    EXPECT_TRUE(copy(writer, from, "a")) << reason_;
    writer.commit(false);
    EXPECT_EQ(support::readArchive(path_), (support::Members{{"b", "content of b"}, {"a", "content of a"}}));
    EXPECT_LT(support::readFile(path_).size(), 300U);
}

TEST_F(ArchiveWriter, copiesNoMemberThatRunsIntoTheNext)
{
    for (const std::size_t size : {10U, 100000U}) {
        support::ZipBuilder builder;
        builder.addStored("a", std::string(size, 'a')).local.extra = std::string(4, '\0');
        builder.addStored("b", "content of b");
        builder.write(dir_ / "from.hdf");
        std::string bytes = support::readFile(dir_ / "from.hdf");
        bytes[28] = 8;  // length of the extra field of "a"
        support::writeFile(dir_ / "from.hdf", bytes);
        const ArchiveReader from(dir_ / "from.hdf");
        Writer writer(path_);
        EXPECT_FALSE(copy(writer, from, "a"));
        EXPECT_EQ(reason_, (dir_ / "from.hdf") + ": member \"a\": " + std::to_string(size) +
                               " bytes at 39 run into what begins at " + std::to_string(35 + size));
    }
}

TEST_F(ArchiveWriter, copiesNoStoredMemberOfTwoSizes)
{
    support::ZipBuilder builder;
    auto& member = builder.addStored("a", "content of a");
    member.local.size = member.listed.size = 13;
    builder.write(dir_ / "from.hdf");
    const ArchiveReader from(dir_ / "from.hdf");
    Writer writer(path_);
    EXPECT_FALSE(copy(writer, from, "a"));
    EXPECT_EQ(reason_,
              (dir_ / "from.hdf") + ": member \"a\": is stored, yet has size 13 and compressed size 12");
}

TEST_F(ArchiveWriter, makesNoShortMemberOfAnArchiveThatShrinks)
{
    support::ZipBuilder builder;
    builder.addStored("a", "content of a").local.extra =
        support::little(0x7777, 2) + support::little(3000, 2) + std::string(3000, 'e');
    builder.write(dir_ / "from.hdf");
    const ArchiveReader from(dir_ / "from.hdf");
    // The first read finds out how long the header is, the second one gets it.
    using Lengths = std::vector<std::size_t>;
    for (const Lengths& lengths : {Lengths{0}, Lengths{107, 0}, Lengths{107, 3035, 0, 0}}) {
        Writer writer(path_);
        FailingSystemCalls calls;
        for (unsigned nth = 1; nth <= lengths.size(); ++nth) {
            calls.shorten(FailingSystemCalls::READ, nth, lengths[nth - 1]);
        }
        EXPECT_FALSE(copy(writer, from, "a"));
        EXPECT_EQ(calls.count(FailingSystemCalls::READ), lengths.size());
        writer.commit(false);
        EXPECT_EQ(support::readFile(path_).size(), 22U);
    }
}

TEST_F(ArchiveWriter, refusesToCopyAMemberWhoseHeaderDisagrees)
{
    support::writeArchive(dir_ / "from.hdf", {{"good", "content of good"}, {"bad_", "content of bad_"}});
    support::patchFile(dir_ / "from.hdf", "bad_", "evil");
    const ArchiveReader from(dir_ / "from.hdf");
    Writer writer(path_);
    EXPECT_FALSE(copy(writer, from, "bad_"));
    EXPECT_EQ(reason_, (dir_ / "from.hdf") + ": member \"bad_\": local header has the name \"evil\"");
    EXPECT_TRUE(copy(writer, from, "good"));
    writer.commit(false);
    EXPECT_EQ(support::namesIn(path_), "good");
}

TEST_F(ArchiveWriter, attachesADigestOfAllItsOtherBytes)
{
    Writer writer(path_);
    add(writer, "large", support::textBytes(2000000, 12));
    writer.commit(true);
    const std::string bytes = support::readFile(path_);
    EXPECT_EQ(bytes.substr(bytes.size() - 77, 13), "hwdef-sha256:");
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(path_)), HUTZip::INTACT);
    EXPECT_EQ(support::namesIn(path_), "large");
}

TEST_F(ArchiveWriter, putsACommentInFrontOfTheDigest)
{
    Writer writer(path_);
    writer.setComment("a comment ");
    writer.commit(true);
    const std::string bytes = support::readFile(path_);
    EXPECT_EQ(bytes.substr(22, 23), "a comment hwdef-sha256:");
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(path_)), HUTZip::INTACT);
}

TEST_F(ArchiveWriter, refusesACommentThatNoArchiveCanHold)
{
    for (const bool attachDigest : {false, true}) {
        const std::size_t most = attachDigest ? 65535 - 77 : 65535;
        Writer fits(path_);
        fits.setComment(std::string(most, 'c'));
        fits.commit(attachDigest);
        Writer tooLong(path_);
        tooLong.setComment(std::string(most + 1, 'c'));
        EXPECT_THROW(tooLong.commit(attachDigest), zip_exception);
        EXPECT_EQ(support::readFile(path_).size(), 22U + 65535U);
    }
}

TEST_F(ArchiveWriter, keepsTheOldArchiveWhenAnyCallFails)
{
    support::writeArchive(path_, {{"old", "old content"}});
    support::writeFile(dir_ / "source", support::randomBytes(3 * CHUNK, 13));
    const std::string before = support::readFile(path_);
    const auto write = [&] {
        Writer writer(path_);
        writer.addFile(dir_ / "source", "m", reason_);
        writer.commit(true);
    };
    FailingSystemCalls counted;
    counted.fail(FailingSystemCalls::RENAME, 1, EIO);
    EXPECT_THROW(write(), zip_exception);
    const unsigned all = counted.count(FailingSystemCalls::CHANGES);
    ASSERT_GE(all, 5U);
    for (unsigned nth = 1; nth < all - 1; ++nth) {
        FailingSystemCalls calls;
        calls.fail(FailingSystemCalls::CHANGES, nth, ENOSPC);
        EXPECT_THROW(write(), zip_exception) << nth;
        EXPECT_TRUE(support::readFile(path_) == before) << nth;
        EXPECT_EQ(dir_.list(), "new.hdf source") << nth;
    }
}

TEST_F(ArchiveWriter, showsTheOldOrTheNewArchiveWhereverItDies)
{
    support::writeFile(dir_ / "source", support::randomBytes(3 * CHUNK, 14));
    int shown[2] = {0, 0};
    for (unsigned nth = 1;; ++nth) {
        support::writeArchive(path_, {{"old", "old content"}});
        FailingSystemCalls calls;
        calls.dieAt(FailingSystemCalls::CHANGES, nth, 1000);
        try {
            Writer writer(path_);
            writer.addFile(dir_ / "source", "m", reason_);
            writer.commit(true);
        } catch (const zip_exception&) {
        }
        const bool died = calls.died();
        calls.restart();
        const std::string names = support::namesIn(path_);
        EXPECT_TRUE(names == "old" || names == "m") << nth << ": " << names;
        ++shown[names == "m"];
        if (!died) {
            EXPECT_EQ(names, "m");
            break;
        }
    }
    EXPECT_GE(shown[0], 5);
}
