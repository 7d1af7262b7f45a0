#include "platform/iostreams/MemberReader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

#include "platform/iostreams/EntryHeaders.h"
#include "platform/iostreams/ZipException.h"
#include "support/FailingSystemCalls.h"
#include "support/Parameter.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using namespace iostreams::zip;
using support::FailingSystemCalls;
using support::little;
using support::ZipBuilder;
using support::ZipMember;

namespace {

/// An archive on disk, open.
class OnDisk {
public:
    explicit OnDisk(const ZipBuilder& zip) : path_(dir_ / "z.zip")
    {
        zip.write(path_);
        archive_ = std::make_unique<ArchiveReader>(path_);
    }

    const std::string& path() const { return path_; }
    const ArchiveReader& archive() const { return *archive_; }
    const Entry& first() const { return archive_->entries().front(); }

    /// The first member's content, read into a buffer of this size.
    std::string read(std::size_t bufferBytes) const
    {
        std::string content;
        readInto(content, bufferBytes);
        return content;
    }
    void readInto(std::string& content, std::size_t bufferBytes) const
    {
        MemberReader reader(*archive_, first());
        std::string buffer(bufferBytes, '\0');
        while (const std::size_t got = reader.read(buffer.data(), buffer.size())) {
            content.append(buffer, 0, got);
        }
    }

private:
    support::TempDir dir_;
    std::string path_;
    std::unique_ptr<ArchiveReader> archive_;
};

/// What reading the first member fails with. Before it fails, no byte behind the last but one of the
/// declared size may have come out, whatever the buffer's size.
std::string failureOf(const ZipBuilder& zip)
{
    const OnDisk file(zip);
    std::string failure;
    for (const std::size_t bufferBytes : {1U, 4096U, 1U << 20U}) {
        std::string content;
        failure = support::zipFailure(file.path(), [&] { file.readInto(content, bufferBytes); });
        EXPECT_LE(content.size(), file.first().size == 0 ? 0 : file.first().size - 1);
    }
    return failure;
}

/// An archive of the member "m" and another one behind it.
ZipBuilder stored(const std::string& content)
{
    ZipBuilder zip;
    zip.addStored("m", content);
    zip.addStored("next", "other content");
    return zip;
}

ZipBuilder deflated(const std::string& content)
{
    ZipBuilder zip;
    zip.addDeflated("m", content);
    zip.addStored("next", "other content");
    return zip;
}

const std::string text = support::textBytes(10000, 1);

}  // namespace

TEST(MemberReader, readsMembersIntoBuffersOfAnySize)
{
    const std::string content = text + support::randomBytes(300000, 2);
    const OnDisk asStored(stored(content));
    const OnDisk asDeflated(deflated(content));
    for (const std::size_t bufferBytes : {1U, 7U, 4096U, 65536U, 131072U, 131073U, 1U << 20U}) {
        EXPECT_TRUE(asStored.read(bufferBytes) == content) << bufferBytes;
        EXPECT_TRUE(asDeflated.read(bufferBytes) == content) << bufferBytes;
    }
}

TEST(MemberReader, readsEmptyMembers)
{
    EXPECT_EQ(OnDisk(stored("")).read(10), "");
    EXPECT_EQ(OnDisk(deflated("")).read(10), "");
}

TEST(MemberReader, readsASmallMemberWithOneCall)
{
    const OnDisk file(deflated(text));
    const Entry entry = file.first();
    FailingSystemCalls calls;
    file.archive().read(entry, text.size());
    EXPECT_EQ(calls.count(FailingSystemCalls::READ), 1U);
}

TEST(MemberReader, deliversNothingToABufferOfNoBytes)
{
    const OnDisk file(deflated("hello"));
    MemberReader reader(file.archive(), file.first());
    char buffer[8] = {};
    EXPECT_EQ(reader.read(buffer, 0), 0U);
    EXPECT_EQ(reader.read(buffer, 8), 5U);
    EXPECT_EQ(reader.read(buffer, 8), 0U);
}

TEST(MemberReader, findsDataBehindALongLocalHeader)
{
    ZipBuilder zip = deflated(text);
    for (support::ZipHeader* header : {&zip.members[0].local, &zip.members[0].listed}) {
        header->name = std::string(0xffff, 'n');
    }
    zip.members[0].local.extra = std::string(0xffff, 'x');
    EXPECT_TRUE(OnDisk(zip).read(1000) == text);
}

TEST(MemberReader, readsDataBehindAPrefix)
{
    ZipBuilder zip = deflated(text);
    zip.prefix = "#!/bin/sh\nexit\n";
    EXPECT_TRUE(OnDisk(zip).read(1000) == text);
}

TEST(MemberReader, readsMembersThatEndInADescriptor)
{
    for (const bool signature : {false, true}) {
        for (const int sizeBytes : {4, 8}) {
            ZipBuilder zip = deflated(text);
            zip.members[0].setDescriptor(signature, sizeBytes);
            EXPECT_TRUE(OnDisk(zip).read(1000) == text);
            zip.members.pop_back();
            EXPECT_TRUE(OnDisk(zip).read(1000) == text) << "before the directory";
        }
    }
}

TEST(MemberReader, readsADescriptorBehindDataThatFillsTheBuffer)
{
    for (std::size_t size = 131072 - 150; size < 131072 + 50; ++size) {
        ZipBuilder zip = stored(std::string(size, 's'));
        zip.members[0].setDescriptor(true, 4);
        EXPECT_EQ(OnDisk(zip).read(5000).size(), size);
    }
}

TEST(MemberReader, refusesADescriptorThatDisagrees)
{
    ZipBuilder zip = stored("hello");
    zip.members[0].setDescriptor(true, 4);
    zip.members[0].descriptor[4] ^= '\1';
    EXPECT_EQ(
        failureOf(zip),
        "member \"m\": data descriptor doesn't agree with the directory's CRC-32 3610a686, compressed size 5 "
        "and size 5: it begins with 08074b50");
}

TEST(MemberReader, refusesADescriptorThatIsMissing)
{
    ZipBuilder zip = deflated("hello");
    zip.members[0].setDescriptor(true, 4);
    zip.members[0].descriptor.clear();
    EXPECT_NE(failureOf(zip).find("data descriptor doesn't agree"), std::string::npos);
    zip.members.pop_back();
    EXPECT_NE(failureOf(zip).find("data descriptor doesn't agree"), std::string::npos);
}

TEST(MemberReader, refusesAWrongCrc)
{
    for (ZipBuilder zip : {stored("hello"), deflated("hello")}) {
        zip.members[0].local.crc = 0x99887766;
        zip.members[0].listed.crc = 0x99887766;
        EXPECT_EQ(failureOf(zip), "member \"m\": CRC-32 is 3610a686, directory says 99887766");
    }
}

TEST(MemberReader, refusesAWrongCrcOfAnEmptyMember)
{
    for (ZipBuilder zip : {stored(""), deflated("")}) {
        zip.members[0].local.crc = 1;
        zip.members[0].listed.crc = 1;
        EXPECT_EQ(failureOf(zip), "member \"m\": CRC-32 is 00000000, directory says 00000001");
    }
}

TEST(MemberReader, refusesDataThatWasChanged)
{
    ZipBuilder zip = stored(text);
    zip.members[0].data.back() ^= '\1';
    EXPECT_NE(failureOf(zip).find("CRC-32 is"), std::string::npos);
}

TEST(MemberReader, refusesDataThatUnpacksToLess)
{
    ZipBuilder zip = deflated(text);
    zip.members[0].local.size += 1;
    zip.members[0].listed.size += 1;
    EXPECT_EQ(failureOf(zip), "member \"m\": unpacks to 10000 bytes, directory says 10001");
}

TEST(MemberReader, refusesDataThatUnpacksToMore)
{
    for (const std::uint32_t size : {0U, 1U, 9999U}) {
        ZipBuilder zip = deflated(text);
        zip.members[0].local.size = size;
        zip.members[0].listed.size = size;
        EXPECT_EQ(failureOf(zip), "member \"m\": unpacks to more than the " + std::to_string(size) +
                                      " bytes that the directory says");
    }
}

TEST(MemberReader, refusesBytesBehindTheEndOfTheStream)
{
    ZipBuilder zip = deflated(text);
    ZipMember& member = zip.members[0];
    const std::size_t right = member.data.size();
    for (const std::size_t more : {1U, 8U, 300000U}) {
        member.data.resize(right + more, 'x');
        member.local.compressedSize = static_cast<std::uint32_t>(member.data.size());
        member.listed.compressedSize = member.local.compressedSize;
        EXPECT_EQ(failureOf(zip), "member \"m\": deflated data ends after " + std::to_string(right) +
                                      " bytes, directory says " + std::to_string(right + more));
    }
}

TEST(MemberReader, refusesAStreamThatIsCutOff)
{
    ZipBuilder zip = deflated(text);
    ZipMember& member = zip.members[0];
    while (member.data.size() > 1) {
        member.data.resize(member.data.size() > 20 ? member.data.size() - 20 : member.data.size() - 1);
        member.local.compressedSize = static_cast<std::uint32_t>(member.data.size());
        member.listed.compressedSize = member.local.compressedSize;
        EXPECT_EQ(failureOf(zip), "member \"m\": deflated data doesn't end within the compressed size of " +
                                      std::to_string(member.data.size()));
    }
}

TEST(MemberReader, refusesDeflatedDataOfNoBytes)
{
    ZipBuilder zip = stored("");
    zip.members[0].local.method = 8;
    zip.members[0].listed.method = 8;
    EXPECT_EQ(failureOf(zip), "member \"m\": deflated data doesn't end within the compressed size of 0");
}

TEST(MemberReader, refusesDamagedStreams)
{
    ZipBuilder zip = deflated(text);
    zip.members[0].data[0] = '\7';
    EXPECT_EQ(failureOf(zip), "member \"m\": deflated data is damaged: invalid block");
}

TEST(MemberReader, staysDamaged)
{
    ZipBuilder zip = stored("hello");
    zip.members[0].data[0] = 'j';
    const OnDisk file(zip);
    MemberReader reader(file.archive(), file.first());
    char buffer[8] = {};
    for (int again = 0; again < 3; ++again) {
        EXPECT_THROW(reader.read(buffer, again == 0 ? 5 : 1), zip_exception);
    }
}

TEST(MemberReader, losesNoBytesWhenItIsReadAgainAfterAFailure)
{
    const OnDisk file(stored(support::randomBytes(400000, 1)));
    MemberReader reader(file.archive(), file.first());
    std::string buffer(300000, '\0');
    {
        FailingSystemCalls calls;
        calls.fail(FailingSystemCalls::READ, 1, EIO);
        EXPECT_THROW(reader.read(buffer.data(), buffer.size()), zip_exception);
    }
    EXPECT_THROW(reader.read(buffer.data(), buffer.size()), zip_exception);
}

TEST(MemberReader, readsOneMemberAfterTheOther)
{
    ZipBuilder zip;
    const std::string noise = support::randomBytes(300000, 3);
    const std::vector<std::string> contents = {text, noise, "", "short", text + text};
    for (const std::string& content : contents) {
        zip.addDeflated("deflated", content);
        zip.addStored("stored", content);
    }
    const OnDisk file(zip);
    MemberReader reader;
    std::string buffer(1U << 20U, '\0');
    for (std::size_t i = 0; i < 2 * contents.size(); ++i) {
        reader.open(file.archive(), file.archive().entries()[i]);
        const std::size_t got = reader.read(buffer.data(), buffer.size());
        EXPECT_TRUE(buffer.substr(0, got) == contents[i / 2]) << i;
    }
}

TEST(MemberReader, leavesAMemberBeforeItsEndForAnother)
{
    ZipBuilder zip = deflated(text);
    zip.addDeflated("last", "another stream");
    const OnDisk file(zip);
    MemberReader reader;
    char buffer[64] = {};
    for (const std::size_t taken : {0U, 1U, 64U}) {
        reader.open(file.archive(), file.first());
        EXPECT_EQ(reader.read(buffer, taken), taken);
        reader.open(file.archive(), file.archive().entries()[2]);
        EXPECT_EQ(std::string(buffer, reader.read(buffer, sizeof buffer)), "another stream");
    }
}

TEST(MemberReader, readsOnAfterADamagedMember)
{
    ZipBuilder zip = deflated("hello");
    zip.members[0].data[0] = '\7';
    zip.addDeflated("last", "good");
    const OnDisk file(zip);
    MemberReader reader;
    char buffer[8] = {};
    reader.open(file.archive(), file.first());
    EXPECT_THROW(reader.read(buffer, sizeof buffer), zip_exception);
    reader.open(file.archive(), file.archive().entries()[2]);
    EXPECT_EQ(std::string(buffer, reader.read(buffer, sizeof buffer)), "good");
}

TEST(MemberReader, readsOnAfterAMemberThatCantBeOpened)
{
    ZipBuilder zip = deflated("hello");
    zip.members[0].setFlag(FLAG_ENCRYPTED);
    const OnDisk file(zip);
    const Entry& next = file.archive().entries()[1];
    MemberReader reader;
    char buffer[32] = {};
    EXPECT_THROW(reader.open(file.archive(), file.first()), zip_exception);
    {
        FailingSystemCalls calls;
        calls.fail(FailingSystemCalls::READ, 1, EIO);
        EXPECT_THROW(reader.open(file.archive(), next), zip_exception);
    }
    reader.open(file.archive(), next);
    EXPECT_EQ(std::string(buffer, reader.read(buffer, sizeof buffer)), "other content");
}

TEST(MemberReader, checksTheCrcOfEachMember)
{
    ZipBuilder zip = stored("hello");
    zip.members[1].data[0] = 'O';
    const OnDisk file(zip);
    MemberReader reader;
    char buffer[32] = {};
    reader.open(file.archive(), file.first());
    EXPECT_EQ(reader.read(buffer, sizeof buffer), 5u);
    reader.open(file.archive(), file.archive().entries()[1]);
    EXPECT_THROW(reader.read(buffer, sizeof buffer), zip_exception);
}

TEST(MemberReader, refusesOtherMethods)
{
    ZipBuilder zip = stored("hello");
    zip.members[0].local.method = 12;
    zip.members[0].listed.method = 12;
    EXPECT_EQ(failureOf(zip),
              "member \"m\": has compression method 12, supported are 0 (stored) and 8 (deflated)");
}

TEST(MemberReader, refusesEncryption)
{
    ZipBuilder zip = stored("hello");
    zip.members[0].setFlag(FLAG_ENCRYPTED);
    EXPECT_EQ(failureOf(zip), "member \"m\": is encrypted, which isn't supported");
}

TEST(MemberReader, refusesALocalHeaderThatDisagrees)
{
    ZipBuilder zip = stored("hello");
    zip.members[0].local.name = "n";
    EXPECT_EQ(failureOf(zip), "member \"m\": local header has the name \"n\"");
}

TEST(MemberReader, refusesDataThatRunsIntoTheNextMember)
{
    ZipBuilder zip = stored("hello");
    zip.members[0].local.extra = "pad";
    zip.members[1].offset = 30 + 1 + 5;  // as if there was no extra field
    zip.members[1].local = zip.members[1].listed;
    EXPECT_EQ(failureOf(zip), "member \"m\": 5 bytes at 34 run into what begins at 36");
}

TEST(MemberReader, refusesDataThatRunsIntoTheDirectory)
{
    ZipBuilder zip;
    zip.addStored("m", "hello");
    std::string archive = zip.build();
    archive.replace(28, 2, little(5, 2));  // the whole data is an extra field
    const support::TempDir dir;
    support::writeFile(dir / "z.zip", archive);
    const ArchiveReader reader(dir / "z.zip");
    EXPECT_EQ(support::zipFailure(dir / "z.zip", [&] { MemberReader(reader, reader.entries()[0]); }),
              "member \"m\": 5 bytes at 36 run into what begins at 36");
    archive.replace(28, 2, little(6, 2));
    support::writeFile(dir / "z.zip", archive);
    const ArchiveReader again(dir / "z.zip");
    EXPECT_EQ(support::zipFailure(dir / "z.zip", [&] { MemberReader(again, again.entries()[0]); }),
              "member \"m\": local header is cut off after 36 bytes");
}

TEST(MemberReader, refusesAFileThatBecomesShorter)
{
    const std::string content = support::randomBytes(400000, 1);
    for (const ZipBuilder& zip : {stored(content), deflated(content)}) {
        const OnDisk file(zip);
        MemberReader reader(file.archive(), file.first());
        std::string buffer(1000, '\0');
        EXPECT_EQ(reader.read(buffer.data(), buffer.size()), buffer.size());
        ASSERT_EQ(::truncate(file.path().c_str(), 200000), 0);
        const std::string failure = support::zipFailure(file.path(), [&] {
            while (reader.read(buffer.data(), buffer.size()) > 0) {
            }
        });
        EXPECT_NE(failure.find("member \"m\": the file has become shorter"), std::string::npos) << failure;
    }
}

TEST(MemberReader, reportsAReadThatTheSystemRefuses)
{
    const OnDisk file(stored(support::randomBytes(400000, 1)));
    const Entry entry = file.first();
    FailingSystemCalls calls;
    calls.fail(FailingSystemCalls::READ, 1, EIO);
    EXPECT_EQ(support::zipFailure(file.path(), [&] { MemberReader(file.archive(), entry); }),
              "member \"m\": can't read: Input/output error");
    calls.fail(FailingSystemCalls::READ, 3, EIO);
    EXPECT_EQ(support::zipFailure(file.path(), [&] { file.read(1000); }),
              "member \"m\": can't read: Input/output error");
}

TEST(MemberReader, keepsToATimeWhateverTheDataHolds)
{
    ZipBuilder zip;
    support::putEmptyBlocks(zip.addDeflated("a", "content"), 200'000);
    zip.addDeflated("b", "more");
    const OnDisk disk(zip);
    const support::Parameter limit("hwdef.maxUnpackSeconds", "0");
    UnpackTime time(1);
    MemberReader reader;
    reader.limitTime(&time);
    std::string buffer(10, '\0');

    for (const char* name : {"a", "b"}) {
        reader.open(disk.archive(), *disk.archive().find(name));
        for (int times = 0; times < 2; ++times) {
            try {
                reader.read(buffer.data(), buffer.size());
                ADD_FAILURE() << name;
            } catch (const TimeError& error) {
                EXPECT_EQ(error.what(), disk.path() + ": member \"" + name +
                                            "\": takes longer to unpack than the 0.00 seconds allowed");
            }
        }
    }
    reader.limitTime(nullptr);
    reader.open(disk.archive(), disk.first());
    EXPECT_EQ(reader.read(buffer.data(), buffer.size()), 7U);
}

TEST(MemberReader, asksForNoTimeThatDataTakes)
{
    ZipBuilder zip;
    support::putEmptyBlocks(zip.addDeflated("a", "content"), 20'000);
    const OnDisk disk(zip);
    UnpackTime time(0.25);
    time.allow(64 << 20);
    EXPECT_DOUBLE_EQ(time.allowedSeconds(), 1.0);
    time.allow(32 << 20);
    EXPECT_DOUBLE_EQ(time.allowedSeconds(), 2.0);
    MemberReader reader;
    reader.limitTime(&time);
    reader.open(disk.archive(), disk.first());
    std::string buffer(10, '\0');
    EXPECT_EQ(reader.read(buffer.data(), buffer.size()), 7U);
}
