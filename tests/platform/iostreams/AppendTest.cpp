#include "platform/iostreams/Append.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/HUTFile.h"
#include "platform/iostreams/ArchiveWriter.h"
#include "platform/iostreams/EndRecord.h"
#include "platform/iostreams/EntryHeaders.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"
#include "support/WithoutPrivileges.h"
#include "support/ZipBuilder.h"

using iostreams::device::detail::zip_exception;
using iostreams::zip::appendFile;
using iostreams::zip::appendMember;
using iostreams::zip::ArchiveReader;
using support::Members;

namespace {

class Append : public testing::Test {
protected:
    /// Adds content by way of a file on disk.
    bool append(const std::string& name, const std::string& content)
    {
        support::writeFile(dir_ / "source", content);
        return appendFile(dir_ / "source", name, path_, reason_);
    }

    support::TempDir dir_;
    const std::string path_ = dir_ / "a.hdf";
    std::string reason_;
};

/// Counts the bytes that reach files.
struct CountingCalls : platform::SystemCalls {
    CountingCalls() : earlier_(replace(this)) {}
    ~CountingCalls() override { replace(earlier_); }
    ssize_t pwrite(int file, const void* buffer, std::size_t size, off_t offset) override
    {
        written += size;
        return SystemCalls::pwrite(file, buffer, size, offset);
    }
    ssize_t copyFileRange(int from, off_t* fromOffset, int to, off_t* toOffset, std::size_t size) override
    {
        written += size;
        return SystemCalls::copyFileRange(from, fromOffset, to, toOffset, size);
    }
    std::size_t written = 0;
    platform::SystemCalls* earlier_;
};

}  // namespace

TEST_F(Append, createsAnArchiveWhereThereIsNone)
{
    EXPECT_TRUE(append("a", "content"));
    EXPECT_EQ(support::readArchive(path_), (Members{{"a", "content"}}));
    EXPECT_EQ(dir_.list(), "a.hdf source");
}

TEST_F(Append, addsBehindTheOtherMembers)
{
    support::writeArchive(path_, {{"b", "content of b"}, {"a", "content of a"}});
    EXPECT_TRUE(append("c", support::textBytes(5000, 1)));
    EXPECT_TRUE(append("d", ""));
    EXPECT_EQ(
        support::readArchive(path_),
        (Members{
            {"b", "content of b"}, {"a", "content of a"}, {"c", support::textBytes(5000, 1)}, {"d", ""}}));
}

TEST_F(Append, addsLargeFiles)
{
    const std::string noise = support::randomBytes(1000000, 1);
    const std::string text = support::textBytes(3000000, 1);
    support::writeArchive(path_, {{"a", "content of a"}});
    EXPECT_TRUE(append("noise", noise));
    EXPECT_TRUE(append("text", text));
    EXPECT_TRUE(support::readArchive(path_) ==
                (Members{{"a", "content of a"}, {"noise", noise}, {"text", text}}));
}

TEST_F(Append, storesWhatDeflateWouldMakeLarger)
{
    // Samples of these chunks promise much, but what they have in common lies too far apart.
    constexpr std::size_t chunk = 256 * 1024;
    std::string content = support::randomBytes(40 * chunk, 1);
    for (std::size_t at = 0; at < content.size(); at += chunk) {
        for (std::size_t i = 1; i < 4; ++i) {
            content.replace(at + (chunk - 4096) / 3 * i, 4096, content.substr(at, 4096));
        }
    }
    support::writeArchive(path_, {{"a", "content of a"}});
    EXPECT_TRUE(append("b", content));
    EXPECT_TRUE(support::memberOf(path_, "b") == content);
    EXPECT_EQ(ArchiveReader(path_).find("b")->method, iostreams::zip::METHOD_STORED);
}

TEST_F(Append, leavesNoBytesOfAFirstTryBehindInACopy)
{
    support::ZipBuilder builder;
    builder.prefix = "#!/bin/sh\n";
    builder.addStored("a", "content of a");
    builder.write(path_);
    // The first chunks are stored, until they promise enough for the whole.
    const std::string large(20000000, 'x');  // NOLINT(bugprone-string-constructor): so large on purpose
    EXPECT_TRUE(append("b", large));
    EXPECT_LT(support::readFile(path_).size(), 256000U);
    EXPECT_EQ(ArchiveReader(path_).find("b")->method, iostreams::zip::METHOD_DEFLATED);
}

TEST_F(Append, keepsTheOtherBytesAsTheyAre)
{
    support::writeArchive(path_, {{"a", "content of a"}, {"b", "content of b"}});
    const std::string before = support::readFile(path_);
    const std::size_t directory = before.find("PK\1\2");
    const std::string records = before.substr(directory, before.size() - 22 - directory);
    EXPECT_TRUE(append("c", "content of c"));
    const std::string after = support::readFile(path_);
    EXPECT_EQ(after.substr(0, directory), before.substr(0, directory));
    EXPECT_EQ(after.substr(after.find("PK\1\2"), records.size()), records);
}

TEST_F(Append, givesTheBytesOfAnArchiveWrittenAtOnce)
{
    EXPECT_TRUE(append("a", support::textBytes(400000, 2)));
    EXPECT_TRUE(append("b", support::randomBytes(400000, 2)));
    const std::string appended = support::readFile(path_);
    iostreams::zip::ArchiveWriter writer(path_);
    support::writeFile(dir_ / "source", support::textBytes(400000, 2));
    EXPECT_TRUE(writer.addFile(dir_ / "source", "a", reason_));
    support::writeFile(dir_ / "source", support::randomBytes(400000, 2));
    EXPECT_TRUE(writer.addFile(dir_ / "source", "b", reason_));
    writer.commit();
    EXPECT_TRUE(support::readFile(path_) == appended);
}

TEST_F(Append, replacesAMemberOfTheSameName)
{
    support::writeArchive(path_, {{"a", "content of a"}, {"b", "content of b"}});
    EXPECT_TRUE(append("a", "new content"));
    EXPECT_EQ(support::readArchive(path_), (Members{{"b", "content of b"}, {"a", "new content"}}));
    EXPECT_TRUE(append("a", "newer content"));
    EXPECT_EQ(support::readArchive(path_), (Members{{"b", "content of b"}, {"a", "newer content"}}));
}

TEST_F(Append, replacesAllMembersOfANameThatIsListedTwice)
{
    support::ZipBuilder builder;
    builder.addStored("a", "first");
    builder.addStored("b", "other");
    builder.addStored("a", "second");
    builder.write(path_);
    EXPECT_TRUE(append("a", "third"));
    EXPECT_EQ(support::readArchive(path_), (Members{{"b", "other"}, {"a", "third"}}));
}

TEST_F(Append, writesWhatIsAddedWhateverTheArchiveHolds)
{
    std::size_t written[2] = {0, 0};
    for (const int large : {0, 1}) {
        support::writeArchive(path_, {{"a", std::string(large != 0 ? 8000000 : 10, 'x')}});
        CountingCalls calls;
        ASSERT_TRUE(append("b", support::randomBytes(1000, 3)));
        ASSERT_TRUE(append("c", support::randomBytes(1000, 4)));
        written[large] = calls.written;
    }
    EXPECT_EQ(written[0], written[1]);
    EXPECT_LT(written[1], 3500U);
}

TEST_F(Append, readsNoMemberData)
{
    support::writeArchive(path_, {{"a", support::randomBytes(3000000, 5)}});
    support::writeFile(dir_ / "source", "x");
    support::FailingSystemCalls calls;
    EXPECT_TRUE(appendFile(dir_ / "source", "b", path_, reason_));
    EXPECT_LE(calls.count(support::FailingSystemCalls::READ), 10U);
    EXPECT_EQ(calls.openDescriptors(), 0);
}

TEST_F(Append, leavesTheArchiveWhenTheSourceIsMissing)
{
    support::writeArchive(path_, {{"a", "content of a"}});
    const std::string before = support::readFile(path_);
    EXPECT_FALSE(appendFile(dir_ / "missing", "b", path_, reason_));
    EXPECT_EQ(reason_, (dir_ / "missing") + ": can't open: No such file or directory");
    EXPECT_EQ(support::readFile(path_), before);
    EXPECT_FALSE(appendFile(dir_ / "missing", "b", dir_ / "none.hdf", reason_));
    EXPECT_EQ(dir_.list(), "a.hdf");
}

TEST_F(Append, refusesWhatIsNoArchive)
{
    support::writeFile(path_, "not an archive");
    EXPECT_THROW(append("a", "content"), zip_exception);
    EXPECT_EQ(support::readFile(path_), "not an archive");
    ASSERT_EQ(::mkfifo((dir_ / "fifo").c_str(), 0600), 0);
    EXPECT_THROW(appendFile(dir_ / "source", "a", dir_ / "fifo", reason_), zip_exception);
    EXPECT_THROW(appendFile(dir_ / "source", "a", dir_.path(), reason_), zip_exception);
    EXPECT_THROW(appendFile(dir_ / "source", "a", dir_ / "none/a.hdf", reason_), zip_exception);
}

TEST_F(Append, refusesAnArchiveThatMustNotBeWritten)
{
    support::writeArchive(path_, {{"a", "content of a"}});
    support::writeFile(dir_ / "source", "x");
    ASSERT_EQ(::chmod(path_.c_str(), 0444), 0);
    const support::WithoutPrivileges unprivileged(dir_.path());
    EXPECT_THROW(appendFile(dir_ / "source", "b", path_, reason_), zip_exception);
    EXPECT_EQ(support::namesIn(path_), "a");
}

TEST_F(Append, changesWhatALinkPointsTo)
{
    support::writeArchive(path_, {{"a", "content of a"}});
    ASSERT_EQ(::symlink(path_.c_str(), (dir_ / "link").c_str()), 0);
    support::writeFile(dir_ / "source", "x");
    EXPECT_TRUE(appendFile(dir_ / "source", "b", dir_ / "link", reason_));
    EXPECT_EQ(support::namesIn(path_), "a b");
    EXPECT_EQ(HUTFile(dir_ / "link").exists(), true);
    char target[4096];
    EXPECT_GT(::readlink((dir_ / "link").c_str(), target, sizeof target), 0);
}

TEST_F(Append, keepsTheArchivesPermissions)
{
    support::writeArchive(path_, {{"a", "content of a"}});
    ASSERT_EQ(::chmod(path_.c_str(), 0640), 0);
    EXPECT_TRUE(append("b", "x"));
    struct stat status = {};
    ASSERT_EQ(::stat(path_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST_F(Append, dropsADigestAndKeepsOtherComments)
{
    support::ZipBuilder builder;
    builder.addStored("a", "content of a");
    builder.comment = "made by hand, hwdef-sha256:" + std::string(64, '0');
    builder.write(path_);
    EXPECT_TRUE(append("b", "x"));
    EXPECT_EQ(iostreams::zip::findEndRecord(platform::File::open(path_, O_RDONLY)).comment, "made by hand, ");
}

TEST_F(Append, keepsACommentThatOnlyLooksLikeADigest)
{
    support::ZipBuilder builder;
    builder.addStored("a", "content of a");
    builder.comment = "hwdef-sha256:" + std::string(64, 'X');
    builder.write(path_);
    EXPECT_TRUE(append("b", "x"));
    EXPECT_EQ(iostreams::zip::findEndRecord(platform::File::open(path_, O_RDONLY)).comment, builder.comment);
}

TEST_F(Append, keepsBytesInFrontOfTheArchive)
{
    support::ZipBuilder builder;
    builder.prefix = "#!/bin/sh\nexit 0\n";
    builder.addStored("a", "content of a");
    builder.write(path_);
    EXPECT_TRUE(append("b", "content of b"));
    EXPECT_EQ(support::readFile(path_).substr(0, builder.prefix.size()), builder.prefix);
    const ArchiveReader reader(path_);
    ASSERT_EQ(reader.entries().size(), 2U);
    EXPECT_EQ(reader.read(*reader.find("a"), 100), "content of a");
    EXPECT_EQ(reader.read(*reader.find("b"), 100), "content of b");
    EXPECT_EQ(iostreams::zip::findEndRecord(reader.file()).prefixSize, builder.prefix.size());
}

TEST_F(Append, keepsAProgramThatTheOffsetsCountIn)
{
    support::ZipBuilder builder;
    builder.write(path_);  // no members at all: nothing but an end record
    std::string bytes = "#!/bin/sh\nexit 0\n" + support::readFile(path_);
    bytes[bytes.size() - 6] = 17;
    support::writeFile(path_, bytes);
    EXPECT_TRUE(append("a", "content of a"));
    EXPECT_EQ(support::readFile(path_).substr(0, 17), "#!/bin/sh\nexit 0\n");
    EXPECT_EQ(support::readArchive(path_), (Members{{"a", "content of a"}}));
}

TEST_F(Append, addsToAnArchiveWithoutMembers)
{
    iostreams::zip::ArchiveWriter(path_).commit();
    EXPECT_TRUE(append("a", "content of a"));
    EXPECT_EQ(support::readArchive(path_), (Members{{"a", "content of a"}}));
}

TEST_F(Append, keepsDataDescriptors)
{
    support::ZipBuilder builder;
    builder.addDeflated("a", support::textBytes(5000, 6)).setDescriptor(true, 4);
    builder.addStored("b", "content of b").setDescriptor(false, 4);
    builder.write(path_);
    const std::string before = support::readFile(path_);
    EXPECT_TRUE(append("c", "content of c"));
    const std::size_t directory = before.find("PK\1\2");
    EXPECT_EQ(support::readFile(path_).substr(0, directory), before.substr(0, directory));
    EXPECT_EQ(support::namesIn(path_), "a b c");
}

TEST_F(Append, copiesAMemberOfAnotherArchive)
{
    const std::string large = support::randomBytes(500000, 7);
    support::writeArchive(dir_ / "from.hdf", {{"small", "content"}, {"large", large}});
    support::writeArchive(path_, {{"a", "content of a"}});
    const ArchiveReader from(dir_ / "from.hdf");
    EXPECT_TRUE(appendMember(from, *from.find("large"), "dir/large", path_, reason_)) << reason_;
    EXPECT_TRUE(appendMember(from, *from.find("small"), "small", path_, reason_)) << reason_;
    EXPECT_TRUE(support::readArchive(path_) ==
                (Members{{"a", "content of a"}, {"dir/large", large}, {"small", "content"}}));
}

TEST_F(Append, copiesAMemberWithinAnArchive)
{
    const std::string large = support::randomBytes(500000, 8);
    support::writeArchive(path_, {{"small", "content"}, {"large", large}});
    const ArchiveReader from(path_);
    EXPECT_TRUE(appendMember(from, *from.find("large"), "large2", path_, reason_)) << reason_;
    EXPECT_TRUE(appendMember(from, *from.find("small"), "small2", path_, reason_)) << reason_;
    EXPECT_TRUE(support::readArchive(path_) ==
                (Members{{"small", "content"}, {"large", large}, {"large2", large}, {"small2", "content"}}));
}

TEST_F(Append, copiesAMemberOntoItself)
{
    support::writeArchive(path_, {{"a", "content of a"}, {"b", "content of b"}});
    const ArchiveReader from(path_);
    EXPECT_TRUE(appendMember(from, *from.find("a"), "a", path_, reason_)) << reason_;
    EXPECT_EQ(support::readArchive(path_), (Members{{"b", "content of b"}, {"a", "content of a"}}));
}

TEST_F(Append, addsAnArchiveToItself)
{
    support::writeArchive(path_, {{"a", support::randomBytes(500000, 9)}});
    const std::string before = support::readFile(path_);
    EXPECT_TRUE(appendFile(path_, "itself", path_, reason_)) << reason_;
    EXPECT_TRUE(support::memberOf(path_, "itself") == before);
    EXPECT_EQ(support::namesIn(path_), "a itself");
}

TEST_F(Append, refusesToCopyWhatItCanNotVouchFor)
{
    support::ZipBuilder builder;
    builder.addStored("locked", "content").setFlag(1);
    auto& strange = builder.addStored("strange", "content");
    strange.local.method = strange.listed.method = 12;
    builder.write(dir_ / "from.hdf");
    const ArchiveReader from(dir_ / "from.hdf");
    EXPECT_FALSE(appendMember(from, *from.find("locked"), "m", path_, reason_));
    EXPECT_EQ(reason_, (dir_ / "from.hdf") + ": member \"locked\": is encrypted, which isn't supported");
    EXPECT_FALSE(appendMember(from, *from.find("strange"), "m", path_, reason_));
    EXPECT_EQ(
        reason_,
        (dir_ / "from.hdf") +
            ": member \"strange\": has compression method 12, supported are 0 (stored) and 8 (deflated)");
    EXPECT_EQ(dir_.list(), "from.hdf");
}

TEST_F(Append, writesOffsetsBeyondFourGigabytes)
{
    // Sparse: two members with a hole between them that no disk has to hold.
    namespace zip = iostreams::zip;
    constexpr std::uint64_t far = 5ULL << 30U;
    const platform::File file = platform::File::open(path_, O_RDWR | O_CREAT);
    zip::Entry entry;
    entry.size = entry.compressedSize = 1;
    entry.crc = support::crc32("x");
    std::string directory;
    for (const std::uint64_t offset : {std::uint64_t{0}, far}) {
        entry.name = offset == 0 ? "near" : "far";
        std::string member;
        zip::appendLocalHeader(member, entry);
        file.writeAt((member + "x").data(), member.size() + 1, offset);
        zip::appendDirectoryRecord(directory, entry, offset);
    }
    zip::EndRecord end;
    end.entryCount = 2;
    end.directorySize = directory.size();
    end.directoryOffset = file.size();
    zip::appendEndRecord(directory, end);
    file.writeAt(directory.data(), directory.size(), file.size());

    EXPECT_TRUE(append("new", "content")) << reason_;
    EXPECT_EQ(support::readArchive(path_), (Members{{"near", "x"}, {"far", "x"}, {"new", "content"}}));
    EXPECT_GT(ArchiveReader(path_).find("new")->headerOffset, far);
}
