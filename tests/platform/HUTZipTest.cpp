#include "platform/HUTZip.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/HUTFile.h"
#include "platform/iostreams/Append.h"
#include "platform/iostreams/zip.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::device::detail::zip_exception;
using support::FailingSystemCalls;
using support::Members;

namespace {

class HUTZipTest : public testing::Test {
protected:
    void SetUp() override { support::writeFile(source_, "<a/>"); }

    int check() const { return HUTZip::checkIntegrity(archive_); }

    support::TempDir dir_;
    const std::string path_ = dir_ / "a.hdf";
    const std::string source_ = dir_ / "in/sysdef.xml";
    const HUTFile archive_{path_};
};

}  // namespace

TEST_F(HUTZipTest, compressesOneFileUnderItsLastComponent)
{
    HUTZip::compress(archive_, source_, HUTZip::ZIP_DEFAULT);
    EXPECT_EQ(support::readArchive(path_), (Members{{"sysdef.xml", "<a/>"}}));
}

TEST_F(HUTZipTest, compressesUnderTheWholePathWhenAskedTo)
{
    HUTZip::compress(archive_, source_, HUTZip::ZIP_REPLACE);
    EXPECT_EQ(support::namesIn(path_), source_.substr(1));
}

TEST_F(HUTZipTest, replacesAnArchiveOnlyWhenAskedTo)
{
    support::writeArchive(path_, {{"old", "old"}});
    EXPECT_THROW(HUTZip::compress(archive_, source_, HUTZip::ZIP_NAME_ONLY), zip_exception);
    EXPECT_EQ(support::namesIn(path_), "old");
    HUTZip::compress(archive_, source_, HUTZip::ZIP_DEFAULT);
    EXPECT_EQ(support::namesIn(path_), "sysdef.xml");
}

TEST_F(HUTZipTest, keepsTheOldArchiveWhenTheFileCanNotBeRead)
{
    support::writeArchive(path_, {{"old", "old"}});
    try {
        HUTZip::compress(archive_, dir_ / "missing", HUTZip::ZIP_DEFAULT);
        FAIL() << "compressed a missing file";
    } catch (const zip_exception& error) {
        EXPECT_EQ(error.what(),
                  path_ + ": " + (dir_ / "missing") + ": can't open: No such file or directory");
    }
    EXPECT_EQ(support::namesIn(path_), "old");
    EXPECT_EQ(dir_.list(), "a.hdf in");
}

TEST_F(HUTZipTest, findsAnArchiveIntactOnceItHasADigest)
{
    support::writeArchive(path_, {{"a", "content of a"}});
    EXPECT_EQ(check(), HUTZip::NO_DIGEST);
    HUTZip::attachDigest(archive_);
    EXPECT_EQ(check(), HUTZip::INTACT);
    EXPECT_EQ(support::readArchive(path_), (Members{{"a", "content of a"}}));
}

TEST_F(HUTZipTest, recordsADigestThatTheShellFindsAsWell)
{
    HUTZip::compress(archive_, source_, HUTZip::ZIP_DEFAULT);
    HUTZip::attachDigest(archive_);
    const std::string command = "test \"$(head -c -64 '" + path_ +
                                "' | sha256sum | cut -c -64)\" = \"$(tail -c 64 '" + path_ + "')\"";
    EXPECT_EQ(std::system(command.c_str()), 0);
    const std::string bytes = support::readFile(path_);
    EXPECT_EQ(bytes.substr(bytes.size() - 77, 13), "hwdef-sha256:");
}

TEST_F(HUTZipTest, noticesEachChangedByte)
{
    HUTZip::compress(archive_, source_, HUTZip::ZIP_DEFAULT);
    HUTZip::attachDigest(archive_);
    const std::string bytes = support::readFile(path_);
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        std::string changed = bytes;
        changed[at] = static_cast<char>(changed[at] ^ 1);
        support::writeFile(path_, changed);
        EXPECT_NE(check(), HUTZip::INTACT) << at;
    }
    support::writeFile(path_, bytes);
    EXPECT_EQ(check(), HUTZip::INTACT);
}

TEST_F(HUTZipTest, tellsAWrongDigestFromADamagedArchive)
{
    HUTZip::compress(archive_, source_, HUTZip::ZIP_DEFAULT);
    HUTZip::attachDigest(archive_);
    const std::string bytes = support::readFile(path_);
    support::patchFile(path_, "<a/>", "<b/>");
    EXPECT_EQ(check(), HUTZip::WRONG_DIGEST);
    support::writeFile(path_, bytes + "x");
    EXPECT_EQ(check(), HUTZip::WRONG_DIGEST);
    support::writeFile(path_, bytes.substr(0, bytes.size() - 1));
    EXPECT_EQ(check(), HUTZip::UNREADABLE);
}

TEST_F(HUTZipTest, replacesAnEarlierDigestAndKeepsOtherComments)
{
    support::ZipBuilder builder;
    builder.addStored("a", "content of a");
    builder.comment = "made by hand ";
    builder.write(path_);
    HUTZip::attachDigest(archive_);
    const std::string once = support::readFile(path_);
    EXPECT_EQ(once.substr(once.size() - 90, 26), "made by hand hwdef-sha256:");
    HUTZip::attachDigest(archive_);
    EXPECT_EQ(support::readFile(path_), once);
    EXPECT_EQ(check(), HUTZip::INTACT);
}

TEST_F(HUTZipTest, refusesADigestWhereTheCommentLeavesNoRoom)
{
    support::ZipBuilder builder;
    builder.addStored("a", "content of a");
    builder.comment = std::string(65535 - 77, 'c');
    builder.write(path_);
    HUTZip::attachDigest(archive_);
    EXPECT_EQ(check(), HUTZip::INTACT);
    builder.comment += "c";
    builder.write(path_);
    EXPECT_THROW(HUTZip::attachDigest(archive_), zip_exception);
    EXPECT_EQ(support::namesIn(path_), "a");
}

TEST_F(HUTZipTest, attachesADigestToAnArchiveWithBytesInFront)
{
    support::ZipBuilder builder;
    builder.prefix = "#!/bin/sh\n";
    builder.addStored("a", "content of a");
    builder.write(path_);
    HUTZip::attachDigest(archive_);
    EXPECT_EQ(check(), HUTZip::INTACT);
    EXPECT_TRUE(HUTZip::containsFile(archive_, "a"));
}

TEST_F(HUTZipTest, losesTheDigestWhenAMemberIsAdded)
{
    HUTZip::compress(archive_, source_, HUTZip::ZIP_DEFAULT);
    HUTZip::attachDigest(archive_);
    std::string reason;
    ASSERT_TRUE(iostreams::zip::appendFile(source_, "b", path_, reason));
    EXPECT_EQ(check(), HUTZip::NO_DIGEST);
}

TEST_F(HUTZipTest, callsUnreadableWhatIsNoArchive)
{
    EXPECT_EQ(check(), HUTZip::UNREADABLE);
    support::writeFile(path_, "not an archive");
    EXPECT_EQ(check(), HUTZip::UNREADABLE);
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(dir_.path())), HUTZip::UNREADABLE);
    ASSERT_EQ(::mkfifo((dir_ / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(dir_ / "fifo")), HUTZip::UNREADABLE);
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile("")), HUTZip::UNREADABLE);
}

TEST_F(HUTZipTest, callsUnreadableWhatTheSystemDoesNotGive)
{
    HUTZip::compress(archive_, source_, HUTZip::ZIP_DEFAULT);
    HUTZip::attachDigest(archive_);
    FailingSystemCalls calls;
    check();
    const unsigned reads = calls.count(FailingSystemCalls::READ);
    for (unsigned nth = 1; nth <= reads; ++nth) {
        calls.restart();
        calls.fail(FailingSystemCalls::READ, nth, EIO);
        EXPECT_EQ(check(), HUTZip::UNREADABLE) << nth;
    }
}

TEST_F(HUTZipTest, keepsTheArchiveWhenTheDigestCanNotBeAttached)
{
    support::writeArchive(path_, {{"a", "content of a"}});
    const std::string before = support::readFile(path_);
    for (unsigned nth = 1;; ++nth) {
        FailingSystemCalls calls;
        calls.fail(FailingSystemCalls::CHANGES, nth, ENOSPC);
        try {
            HUTZip::attachDigest(archive_);
            EXPECT_GT(nth, 4U);
            break;
        } catch (const zip_exception&) {
        }
        EXPECT_EQ(support::readFile(path_), before) << nth;
        EXPECT_EQ(dir_.list(), "a.hdf in") << nth;
    }
    EXPECT_EQ(check(), HUTZip::INTACT);
}

TEST_F(HUTZipTest, knowsWhichMembersThereAre)
{
    HUTZip::compress(archive_, source_, HUTZip::ZIP_DEFAULT);
    EXPECT_TRUE(HUTZip::containsFile(archive_, "sysdef.xml"));
    EXPECT_FALSE(HUTZip::containsFile(archive_, "hwdef.xml"));
    EXPECT_FALSE(HUTZip::containsFile(HUTFile(dir_ / "missing"), "sysdef.xml"));
    EXPECT_FALSE(HUTZip::containsFile(HUTFile(source_), "sysdef.xml"));
}
