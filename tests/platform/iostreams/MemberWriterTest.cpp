#include "platform/iostreams/MemberWriter.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/iostreams/ArchiveWriter.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"

using iostreams::zip::ArchiveReader;
using Writer = iostreams::zip::ArchiveWriter;
using support::FailingSystemCalls;

namespace {

constexpr std::size_t CHUNK = 256 * 1024;

class MemberWriter : public testing::Test {
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
        writer.commit();
        const ArchiveReader reader(path_);
        EXPECT_EQ(reader.entries().size(), 1U);
        iostreams::zip::Entry entry = reader.entries().front();
        EXPECT_TRUE(support::memberOf(path_, "m") == content);
        EXPECT_TRUE(reader.read(entry, content.size()) == content);
        entry.name = {};
        entry.record = {};
        return entry;
    }

    support::TempDir dir_;
    const std::string path_ = dir_ / "new.hdf";
    std::string reason_;
};

/// Says of each file that it is empty, as the files of /proc do.
struct SizelessCalls : FailingSystemCalls {
    int fstat(int file, struct stat* status) override
    {
        const int result = FailingSystemCalls::fstat(file, status);
        status->st_size = 0;
        return result;
    }
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

TEST_F(MemberWriter, storesAnEmptyFile)
{
    const auto entry = entryOf("");
    EXPECT_EQ(entry.method, iostreams::zip::METHOD_STORED);
    EXPECT_EQ(entry.crc, 0U);
}

TEST_F(MemberWriter, deflatesSmallTextAndStoresSmallNoise)
{
    EXPECT_EQ(entryOf(support::textBytes(5000, 1)).method, iostreams::zip::METHOD_DEFLATED);
    const auto entry = entryOf(support::randomBytes(5000, 1));
    EXPECT_EQ(entry.method, iostreams::zip::METHOD_STORED);
    EXPECT_EQ(entry.compressedSize, 5000U);
}

TEST_F(MemberWriter, deflatesWholeFilesAroundTheSizeOfAChunk)
{
    for (const std::size_t size : {CHUNK - 1, CHUNK, CHUNK + 1, 2 * CHUNK, 2 * CHUNK + 1}) {
        const auto entry = entryOf(support::textBytes(size, 1));
        EXPECT_EQ(entry.method, iostreams::zip::METHOD_DEFLATED) << size;
        EXPECT_EQ(entry.size, size);
    }
}

TEST_F(MemberWriter, storesLargeNoise)
{
    const auto entry = entryOf(support::randomBytes(5 * CHUNK + 17, 2));
    EXPECT_EQ(entry.method, iostreams::zip::METHOD_STORED);
}

TEST_F(MemberWriter, startsAMemberAnewWhenLaterChunksShrink)
{
    const auto entry = entryOf(support::randomBytes(3 * CHUNK, 3) + support::textBytes(2 * CHUNK, 3));
    EXPECT_EQ(entry.method, iostreams::zip::METHOD_DEFLATED);
    EXPECT_LT(entry.compressedSize, 4 * CHUNK);
}

TEST_F(MemberWriter, storesAMemberAfterAllWhenDeflateGainsNothing)
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

TEST_F(MemberWriter, storesLargeNoiseWithALittleText)
{
    const auto entry = entryOf(support::randomBytes(4 * CHUNK, 3) + support::textBytes(10000, 3));
    EXPECT_EQ(entry.method, iostreams::zip::METHOD_STORED);
}

TEST_F(MemberWriter, seesRepetitionsFurtherApartThanAPieceOfASample)
{
    const std::string block = support::randomBytes(5000, 3);
    std::string content;
    while (content.size() < 2 * CHUNK) {
        content += block;
    }
    EXPECT_EQ(entryOf(content).method, iostreams::zip::METHOD_DEFLATED);
}

TEST_F(MemberWriter, readsALargeFileOnce)
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

TEST_F(MemberWriter, packsWhatWasReadOfAFileThatShrinks)
{
    const std::string content = support::randomBytes(4 * CHUNK, 9);
    support::writeFile(dir_ / "source", content);
    Writer writer(path_);
    {
        const TruncatingCalls calls(dir_ / "source", 2, CHUNK + 1000);
        ASSERT_TRUE(writer.addFile(dir_ / "source", "m", reason_)) << reason_;
    }
    writer.commit();
    EXPECT_TRUE(support::memberOf(path_, "m") == content.substr(0, CHUNK + 1000));
}

TEST_F(MemberWriter, storesAFileThatShrinksToNoiseWhileItIsDeflated)
{
    const std::string noise = support::randomBytes(CHUNK, 9);
    support::writeFile(dir_ / "source", noise + support::textBytes(CHUNK, 9));
    Writer writer(path_);
    {
        // Two chunks are read before deflate is found worthwhile, then again from the start.
        const TruncatingCalls calls(dir_ / "source", 4, CHUNK);
        ASSERT_TRUE(writer.addFile(dir_ / "source", "m", reason_)) << reason_;
    }
    writer.commit();
    EXPECT_TRUE(support::memberOf(path_, "m") == noise);
    EXPECT_EQ(ArchiveReader(path_).entries().front().method, iostreams::zip::METHOD_STORED);
}

TEST_F(MemberWriter, refusesAFileThatShrinksSoMuchThatItsHeaderDoes)
{
    support::writeFile(dir_ / "source", "");
    ASSERT_EQ(::truncate((dir_ / "source").c_str(), 5LL << 30), 0);
    Writer writer(path_);
    {
        const TruncatingCalls calls(dir_ / "source", 2, CHUNK + 1000);
        EXPECT_FALSE(writer.addFile(dir_ / "source", "m", reason_));
    }
    EXPECT_EQ(reason_, (dir_ / "source") + ": has 263144 bytes, had 5368709120 when it was opened");
    writer.commit();
    EXPECT_EQ(support::readFile(path_).size(), 22U);
}

TEST_F(MemberWriter, readsFilesThatDoNotTellTheirSize)
{
    Writer writer(path_);
    ASSERT_TRUE(writer.addFile("/proc/self/comm", "comm", reason_)) << reason_;
    writer.commit();
    EXPECT_EQ(support::memberOf(path_, "comm"), support::readFile("/proc/self/comm"));
}

TEST_F(MemberWriter, takesAFileThatSaysItIsEmptyUpToOneChunk)
{
    Writer writer(path_);
    {
        SizelessCalls calls;
        EXPECT_TRUE(add(writer, "small", std::string(CHUNK - 1, 'x'))) << reason_;
        EXPECT_FALSE(add(writer, "large", std::string(CHUNK, 'x')));
    }
    EXPECT_EQ(reason_, dir_ / "source" + ": its size is given as 0, yet it holds 262144 bytes or more");
    writer.commit();
    EXPECT_EQ(support::namesIn(path_), "small");
}
