#include "platform/iostreams/ArchiveReader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
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

constexpr std::uint64_t noLimit = 1U << 30U;

std::string openFailure(const std::string& path)
{
    return support::zipFailure(path, [&] { ArchiveReader reader(path); });
}

std::string namesIn(const ArchiveReader& archive)
{
    std::string names;
    for (const Entry& entry : archive.entries()) {
        names += std::string(entry.name) + " ";
    }
    return names;
}

/// A small archive with a member of each kind.
ZipBuilder small()
{
    ZipBuilder zip;
    zip.addStored("stored", "hello");
    zip.addDeflated("deflated", support::textBytes(200, 1));
    zip.addDeflated("later", support::textBytes(100, 2)).setDescriptor(true, 4);
    zip.addStored("dir/", "");
    return zip;
}

/// The contents of small()'s members, in their order.
std::vector<std::string> contents()
{
    return {"hello", support::textBytes(200, 1), support::textBytes(100, 2), ""};
}

/// Opens a file that may be damaged and reads all that it lists. What can be read must be what small()
/// holds, all else must fail with a zip_exception. Returns whether nothing failed.
bool readsRightOrFails(const std::string& path)
{
    try {
        const ArchiveReader archive(path);
        for (std::size_t at = 0; at < archive.entries().size(); ++at) {
            EXPECT_EQ(archive.read(archive.entries()[at], noLimit), contents().at(at));
        }
        return true;
    } catch (const zip_exception&) {
        return false;
    }
}

/// Where a change of an archive's bytes need not be noticed: in versions, times, attributes, flags that
/// change no reading, the count of disks, and in deflate streams, where another one may unpack to the
/// same bytes.
std::vector<bool> meaningless(const std::string& archive)
{
    struct Part {
        std::uint32_t signature;
        std::size_t begin;
        std::size_t end;
    };
    std::vector<bool> marked(archive.size());
    for (const Part& part :
         {Part{0x04034b50, 4, 8}, Part{0x04034b50, 10, 14}, Part{0x02014b50, 4, 10}, Part{0x02014b50, 12, 16},
          Part{0x02014b50, 36, 42}, Part{0x06064b50, 12, 16}, Part{0x07064b50, 16, 17}}) {
        const std::string signature = little(part.signature, 4);
        for (std::size_t at = archive.find(signature); at != std::string::npos;
             at = archive.find(signature, at + 1)) {
            std::fill(marked.begin() + static_cast<std::ptrdiff_t>(at + part.begin),
                      marked.begin() + static_cast<std::ptrdiff_t>(at + part.end), true);
        }
    }
    for (const std::string& content : contents()) {
        const std::string stream = support::deflated(content);
        if (const std::size_t at = archive.find(stream); !content.empty() && at != std::string::npos) {
            std::fill_n(marked.begin() + static_cast<std::ptrdiff_t>(at), stream.size(), true);
        }
    }
    return marked;
}

}  // namespace

TEST(ArchiveReader, listsMembersInDirectoryOrder)
{
    const support::TempDir dir;
    small().write(dir / "z.zip");
    const ArchiveReader archive(dir / "z.zip");
    EXPECT_EQ(archive.path(), dir / "z.zip");
    EXPECT_EQ(namesIn(archive), "stored deflated later dir/ ");
}

TEST(ArchiveReader, findsMembersByTheirExactNames)
{
    const support::TempDir dir;
    small().write(dir / "z.zip");
    for (const char* first : {"later", "missing"}) {
        const ArchiveReader archive(dir / "z.zip");
        archive.find(first);
        for (const char* name : {"stored", "later", "dir/"}) {
            const Entry* entry = archive.find(name);
            ASSERT_NE(entry, nullptr);
            EXPECT_EQ(entry->name, name);
        }
        EXPECT_EQ(archive.find("dir"), nullptr);
        EXPECT_EQ(archive.find("Stored"), nullptr);
    }
}

TEST(ArchiveReader, keepsWhatItFoundFirst)
{
    const support::TempDir dir;
    small().write(dir / "z.zip");
    const ArchiveReader archive(dir / "z.zip");
    const Entry* first = archive.find("stored");
    archive.find("deflated");
    archive.entries();
    EXPECT_EQ(first->name, "stored");
}

TEST(ArchiveReader, findsTheLastMemberOfAName)
{
    const support::TempDir dir;
    ZipBuilder zip = small();
    zip.addStored("stored", "newer");
    zip.write(dir / "z.zip");
    const ArchiveReader archive(dir / "z.zip");
    EXPECT_EQ(archive.entries().size(), 5U);
    for (int again = 0; again < 3; ++again) {
        EXPECT_EQ(archive.read(*archive.find("stored"), noLimit), "newer");
    }
    EXPECT_EQ(archive.read(archive.entries().front(), noLimit), "hello");
}

TEST(ArchiveReader, keepsNamesOfAnyBytes)
{
    const support::TempDir dir;
    const std::string odd("a\0b\xff\n", 5);
    ZipBuilder zip;
    zip.addStored(odd, "odd");
    zip.addStored("a", "plain");
    zip.addStored("", "nameless");
    zip.write(dir / "z.zip");
    const ArchiveReader archive(dir / "z.zip");
    EXPECT_EQ(archive.read(*archive.find(odd), noLimit), "odd");
    EXPECT_EQ(archive.read(*archive.find("a"), noLimit), "plain");
    EXPECT_EQ(archive.read(*archive.find(""), noLimit), "nameless");
}

TEST(ArchiveReader, showsControlCharactersInMessages)
{
    const support::TempDir dir;
    ZipBuilder zip;
    zip.addStored(std::string("a\0b\n", 4), "odd").setFlag(1);
    zip.write(dir / "z.zip");
    const ArchiveReader archive(dir / "z.zip");
    EXPECT_EQ(support::zipFailure(dir / "z.zip", [&] { archive.read(archive.entries()[0], noLimit); }),
              "member \"a\\x00b\\x0a\": is encrypted, which isn't supported");
}

TEST(ArchiveReader, readsWholeMembers)
{
    const support::TempDir dir;
    const std::string large = support::textBytes(40000000, 3);
    ZipBuilder zip = small();
    zip.addDeflated("large", large);
    zip.write(dir / "z.zip");
    const ArchiveReader archive(dir / "z.zip");
    EXPECT_EQ(archive.read(*archive.find("stored"), 5), "hello");
    EXPECT_EQ(archive.read(*archive.find("dir/"), 0), "");
    EXPECT_TRUE(archive.read(*archive.find("large"), large.size()) == large);
}

TEST(ArchiveReader, readsNoMoreThanAllowed)
{
    const support::TempDir dir;
    small().write(dir / "z.zip");
    const ArchiveReader archive(dir / "z.zip");
    EXPECT_EQ(support::zipFailure(dir / "z.zip", [&] { archive.read(*archive.find("stored"), 4); }),
              "member \"stored\": has 5 bytes, allowed are 4");
}

TEST(ArchiveReader, takesNoMemoryForASizeThatCantBe)
{
    const support::TempDir dir;
    ZipBuilder zip;
    support::ZipMember& member = zip.addDeflated("m", "hello");
    for (support::ZipHeader* header : {&member.local, &member.listed}) {
        header->size = 0xffffffff;
    }
    member.listed.extra = support::zip64Extra({1ULL << 60U});
    member.local.extra = support::zip64Extra({1ULL << 60U});
    zip.write(dir / "z.zip");
    const ArchiveReader archive(dir / "z.zip");
    EXPECT_EQ(support::zipFailure(dir / "z.zip", [&] { archive.read(archive.entries()[0], ~0ULL); }),
              "member \"m\": unpacks to 5 bytes, directory says 1152921504606846976");
}

TEST(ArchiveReader, isNothingWhereNothingExists)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "content");
    EXPECT_EQ(ArchiveReader::openIfExists(dir / "missing"), nullptr);
    EXPECT_EQ(ArchiveReader::openIfExists(dir / "file/below"), nullptr);
    EXPECT_EQ(ArchiveReader::openIfExists(""), nullptr);
    EXPECT_EQ(openFailure(dir / "missing"), "can't open: No such file or directory");
}

TEST(ArchiveReader, isNothingAtALinkThatLeadsNowhere)
{
    const support::TempDir dir;
    ASSERT_EQ(::symlink("nowhere", (dir / "link").c_str()), 0);
    EXPECT_EQ(ArchiveReader::openIfExists(dir / "link"), nullptr);
    ASSERT_EQ(::symlink("loop", (dir / "loop").c_str()), 0);
    EXPECT_EQ(openFailure(dir / "loop"), "can't open: Too many levels of symbolic links");
}

TEST(ArchiveReader, opensThroughLinks)
{
    const support::TempDir dir;
    small().write(dir / "z.zip");
    ASSERT_EQ(::symlink("z.zip", (dir / "link").c_str()), 0);
    EXPECT_EQ(ArchiveReader(dir / "link").entries().size(), 4U);
}

TEST(ArchiveReader, opensNothingButRegularFiles)
{
    const support::TempDir dir;
    ASSERT_EQ(::mkfifo((dir / "fifo").c_str(), 0600), 0);
    FailingSystemCalls calls;
    for (const std::string& path :
         {dir / "fifo", dir.path(), std::string("/dev/null"), std::string("/dev/zero")}) {
        EXPECT_EQ(openFailure(path), "can't open as a regular file: Invalid argument");
        EXPECT_EQ(support::zipFailure(path, [&] { ArchiveReader::openIfExists(path); }),
                  "can't open as a regular file: Invalid argument");
    }
    EXPECT_EQ(calls.count(), 0U);
}

TEST(ArchiveReader, closesItsFileWhenItCantBeRead)
{
    const support::TempDir dir;
    support::writeFile(dir / "z.zip", "no archive");
    FailingSystemCalls calls;
    EXPECT_THROW(ArchiveReader(dir / "z.zip"), zip_exception);
    EXPECT_EQ(calls.openDescriptors(), 0);
}

TEST(ArchiveReader, reportsEveryCallThatTheSystemRefuses)
{
    const support::TempDir dir;
    ZipBuilder zip = small();
    zip.comment = std::string(20000, 'c');
    zip.write(dir / "z.zip");
    FailingSystemCalls calls;
    {
        const ArchiveReader archive(dir / "z.zip");
    }
    const unsigned kinds = FailingSystemCalls::OPEN | FailingSystemCalls::STATUS | FailingSystemCalls::READ;
    const unsigned count = calls.count(kinds);
    EXPECT_GE(count, 4U);
    for (unsigned nth = 1; nth <= count; ++nth) {
        calls.restart();
        calls.fail(kinds, nth, EIO);
        EXPECT_NE(openFailure(dir / "z.zip").find("Input/output error"), std::string::npos) << nth;
    }
    EXPECT_EQ(calls.openDescriptors(), 0);
}

TEST(ArchiveReader, listsMembersThatItCantRead)
{
    const support::TempDir dir;
    ZipBuilder zip = small();
    zip.members[0].setFlag(1);
    for (support::ZipHeader* header : {&zip.members[1].local, &zip.members[1].listed}) {
        header->method = 14;
    }
    zip.write(dir / "z.zip");
    const ArchiveReader archive(dir / "z.zip");
    EXPECT_EQ(namesIn(archive), "stored deflated later dir/ ");
    EXPECT_THROW(archive.read(archive.entries()[0], noLimit), zip_exception);
    EXPECT_THROW(archive.read(archive.entries()[1], noLimit), zip_exception);
    EXPECT_EQ(archive.read(archive.entries()[2], noLimit), support::textBytes(100, 2));
}

TEST(ArchiveReader, readsNothingWrongFromAnyPartOfAnArchive)
{
    const support::TempDir dir;
    const std::string whole = small().build();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        support::writeFile(dir / "z.zip", whole.substr(0, size));
        EXPECT_FALSE(readsRightOrFails(dir / "z.zip")) << size;
    }
    support::writeFile(dir / "z.zip", whole);
    EXPECT_TRUE(readsRightOrFails(dir / "z.zip"));
}

TEST(ArchiveReader, noticesEveryChangedByteThatMeansAnything)
{
    const support::TempDir dir;
    ZipBuilder zip64 = small();
    zip64.zip64 = true;
    for (const std::string& whole : {small().build(), zip64.build()}) {
        const std::vector<bool> mayChange = meaningless(whole);
        support::writeFile(dir / "z.zip", whole);
        const platform::File file = platform::File::open(dir / "z.zip", O_WRONLY);
        for (std::size_t at = 0; at < whole.size(); ++at) {
            for (const int change : {0x01, 0x80, 0xff, 0x10}) {
                const char changed = static_cast<char>(whole[at] ^ change);
                file.writeAt(&changed, 1, at);
                const bool unnoticed = readsRightOrFails(dir / "z.zip");
                EXPECT_TRUE(!unnoticed || mayChange[at]) << "byte " << at << " changed by " << change;
            }
            file.writeAt(&whole[at], 1, at);
        }
    }
}

TEST(ArchiveReader, opensAnArchiveOfManyMembers)
{
    const support::TempDir dir;
    ZipBuilder zip;
    zip.zip64 = true;
    for (int count = 0; count < 100000; ++count) {
        zip.addStored("dir/member" + std::to_string(count), std::to_string(count));
    }
    zip.write(dir / "z.zip");
    const ArchiveReader archive(dir / "z.zip");
    EXPECT_EQ(archive.read(*archive.find("dir/member77777"), noLimit), "77777");
    EXPECT_EQ(archive.read(*archive.find("dir/member99999"), noLimit), "99999");
    EXPECT_EQ(archive.find("dir/member100000"), nullptr);
}
