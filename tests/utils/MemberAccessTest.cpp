// One member of a container at a time: to memory, to disk, into a container, across containers.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/filesystem.hpp>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"
#include "support/WithoutPrivileges.h"

using support::Messages;
using support::TempDir;
using Utils = HHDFHwDefUtils;

namespace {

class MemberAccess : public testing::Test {
protected:
    MemberAccess()
    {
        support::writeArchive(container, {{"a.bit", "bits"}, {"empty", ""}, {"dir/b", "below"}});
    }

    /// Makes the content of "a.bit" another one than its CRC-32 says.
    void damage() { support::patchFile(container, "bits", "bots"); }

    const TempDir dir;
    const std::string container = dir / "c.hdf";
    Messages messages;
};

}  // namespace

TEST_F(MemberAccess, readsAMemberIntoMemory)
{
    EXPECT_EQ(Utils::getFileBufferFromHDF("a.bit", container), "bits");
    EXPECT_EQ(Utils::getFileBufferFromHDF("dir/b", container), "below");
}

TEST_F(MemberAccess, readsNothingSilentlyWhereThereIsNothing)
{
    EXPECT_EQ(Utils::getFileBufferFromHDF("none", container), "");
    EXPECT_EQ(Utils::getFileBufferFromHDF("empty", container), "");
    EXPECT_EQ(Utils::getFileBufferFromHDF("a.bit", dir / "none.hdf"), "");
    EXPECT_EQ(Utils::getFileBufferFromHDF("", ""), "");
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(MemberAccess, saysWhyADamagedMemberIsNotRead)
{
    damage();
    EXPECT_EQ(Utils::getFileBufferFromHDF("a.bit", container), "");
    ASSERT_EQ(messages.all().size(), 1u);
    EXPECT_EQ(messages.all()[0].id, "");
    EXPECT_NE(messages.all()[0].text.find("\"a.bit\": CRC-32"), std::string::npos) << messages.joined();
}

TEST_F(MemberAccess, saysWhyWhatIsNoArchiveIsNotRead)
{
    support::writeFile(dir / "text", "not an archive");
    EXPECT_EQ(Utils::getFileBufferFromHDF("a.bit", dir / "text"), "");
    EXPECT_FALSE(Utils::writeFileFromHDF(dir / "out", "a.bit", dir / "text"));
    EXPECT_FALSE(Utils::writeFileToHDF(container, "a.bit", dir / "text"));
    EXPECT_EQ(messages.all().size(), 3u);
    EXPECT_EQ(support::readFile(dir / "text"), "not an archive");
}

TEST_F(MemberAccess, copiesAMemberToAFileAndMakesItsDirectories)
{
    EXPECT_TRUE(Utils::writeFileFromHDF(dir / "x/y/a.out", "a.bit", container));
    EXPECT_EQ(support::readFile(dir / "x/y/a.out"), "bits");
}

TEST_F(MemberAccess, truncatesTheFileThatWasThere)
{
    support::writeFile(dir / "a.out", "something longer");
    EXPECT_TRUE(Utils::writeFileFromHDF(dir / "a.out", "a.bit", container));
    EXPECT_EQ(support::readFile(dir / "a.out"), "bits");
}

TEST_F(MemberAccess, refusesEmptyArgumentsSilently)
{
    EXPECT_FALSE(Utils::writeFileFromHDF("", "a.bit", container));
    EXPECT_FALSE(Utils::writeFileFromHDF(dir / "o", "", container));
    EXPECT_FALSE(Utils::writeFileFromHDF(dir / "o", "a.bit", ""));
    EXPECT_FALSE(Utils::writeFileFromHDFToDir("", container, "o", dir.path()));
    EXPECT_FALSE(Utils::writeFileFromHDFToDir("a.bit", "", "o", dir.path()));
    EXPECT_FALSE(Utils::writeFileFromHDFToDir("a.bit", container, "", dir.path()));
    EXPECT_FALSE(Utils::writeFileFromHDFToDir("a.bit", container, "o", ""));
    EXPECT_FALSE(Utils::writeFileToHDF("", "m", container));
    EXPECT_FALSE(Utils::writeFileToHDF(container, "", container));
    EXPECT_FALSE(Utils::writeFileToHDF(container, "m", ""));
    EXPECT_FALSE(Utils::writeFileFromHDFToHDF("", container, "m", dir / "o"));
    EXPECT_FALSE(Utils::writeFileFromHDFToHDF("a.bit", "", "m", dir / "o"));
    EXPECT_FALSE(Utils::writeFileFromHDFToHDF("a.bit", container, "", dir / "o"));
    EXPECT_FALSE(Utils::writeFileFromHDFToHDF("a.bit", container, "m", ""));
    EXPECT_EQ(dir.list(), "c.hdf");
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(MemberAccess, isFalseSilentlyForAMissingContainerOrMember)
{
    EXPECT_FALSE(Utils::writeFileFromHDF(dir / "o", "a.bit", dir / "none.hdf"));
    EXPECT_FALSE(Utils::writeFileFromHDF(dir / "o", "none", container));
    EXPECT_FALSE(Utils::writeFileFromHDFToDir("a.bit", dir / "none.hdf", "o", dir.path()));
    EXPECT_FALSE(Utils::writeFileFromHDFToHDF("none", container, "m", dir / "o"));
    EXPECT_EQ(dir.list(), "c.hdf");
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(MemberAccess, isTrueEvenWhenTheDestinationCantBeCreated)
{
    boost::filesystem::create_directories(dir / "taken");
    EXPECT_TRUE(Utils::writeFileFromHDF(dir / "taken", "a.bit", container));
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(MemberAccess, leavesTheOldFileWhenTheMemberIsDamaged)
{
    damage();
    support::writeFile(dir / "a.out", "old");
    EXPECT_FALSE(Utils::writeFileFromHDF(dir / "a.out", "a.bit", container));
    EXPECT_EQ(messages.all().size(), 1u);
    EXPECT_EQ(support::readFile(dir / "a.out"), "old");
    EXPECT_EQ(dir.list(), "a.out c.hdf");
}

TEST_F(MemberAccess, joinsDirectoryAndNameAsTheyAre)
{
    EXPECT_TRUE(Utils::writeFileFromHDFToDir("a.bit", container, "x.bit", dir / "new/"));
    EXPECT_EQ(support::readFile(dir / "new/x.bit"), "bits");
    EXPECT_TRUE(Utils::writeFileFromHDFToDir("dir/b", container, "sub/y", dir / "new"));
    EXPECT_EQ(support::readFile(dir / "new/sub/y"), "below");
}

TEST_F(MemberAccess, createsAContainerAndAddsFurtherMembers)
{
    support::writeFile(dir / "one", "1");
    support::writeFile(dir / "two", "2");
    EXPECT_TRUE(Utils::writeFileToHDF(dir / "one", "m/one", dir / "new.hdf"));
    EXPECT_TRUE(Utils::writeFileToHDF(dir / "two", "two", dir / "new.hdf"));
    EXPECT_EQ(support::readArchive(dir / "new.hdf"), (support::Members{{"m/one", "1"}, {"two", "2"}}));
}

TEST_F(MemberAccess, replacesAMemberThatIsThere)
{
    support::writeFile(dir / "new", "newer bits");
    EXPECT_TRUE(Utils::writeFileToHDF(dir / "new", "a.bit", container));
    EXPECT_EQ(support::memberOf(container, "a.bit"), "newer bits");
    EXPECT_EQ(support::namesIn(container), "empty dir/b a.bit");
}

TEST_F(MemberAccess, leavesTheContainerAloneWhenTheSourceCantBeRead)
{
    const std::string before = support::readFile(container);
    EXPECT_FALSE(Utils::writeFileToHDF(dir / "none", "m", container));
    EXPECT_FALSE(Utils::writeFileToHDF(dir / "none", "m", dir / "new.hdf"));
    EXPECT_EQ(support::readFile(container), before);
    EXPECT_EQ(dir.list(), "c.hdf");
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(MemberAccess, copiesAMemberAcrossContainers)
{
    EXPECT_TRUE(Utils::writeFileFromHDFToHDF("a.bit", container, "copy", dir / "other.hdf"));
    EXPECT_TRUE(Utils::writeFileFromHDFToHDF("a.bit", container, "copy", container));
    EXPECT_EQ(support::readArchive(dir / "other.hdf"), (support::Members{{"copy", "bits"}}));
    EXPECT_EQ(support::memberOf(container, "copy"), "bits");
}

TEST_F(MemberAccess, writesIntoADestinationThatIsNoRegularFile)
{
    ASSERT_EQ(::mkfifo((dir / "fifo").c_str(), 0600), 0);
    const int reader = ::open((dir / "fifo").c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_TRUE(Utils::writeFileFromHDF(dir / "fifo", "a.bit", container));
    char buffer[8] = {};
    EXPECT_EQ(::read(reader, buffer, sizeof buffer), 4);
    EXPECT_EQ(std::string(buffer), "bits");
    ::close(reader);
    EXPECT_TRUE(boost::filesystem::is_other(dir / "fifo"));
}

TEST_F(MemberAccess, writesAFileInADirectoryThatTakesNoNewOnes)
{
    boost::filesystem::create_directory(dir / "ro");
    support::writeFile(dir / "ro/a.out", "longer than before");
    ASSERT_EQ(::chmod((dir / "ro/a.out").c_str(), 0666), 0);
    {
        const support::WithoutPrivileges without(dir / "ro");
        EXPECT_TRUE(Utils::writeFileFromHDF(dir / "ro/a.out", "a.bit", container));
        EXPECT_TRUE(Utils::writeFileFromHDF(dir / "ro/new", "a.bit", container));
    }
    EXPECT_EQ(support::readFile(dir / "ro/a.out"), "bits");
    EXPECT_FALSE(support::exists(dir / "ro/new"));
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(MemberAccess, leavesAFileThatItCouldOnlyOverwriteWhenTheMemberIsDamaged)
{
    damage();
    boost::filesystem::create_directory(dir / "ro");
    support::writeFile(dir / "ro/a.out", "old");
    ASSERT_EQ(::chmod((dir / "ro/a.out").c_str(), 0666), 0);
    {
        const support::WithoutPrivileges without(dir / "ro");
        EXPECT_FALSE(Utils::writeFileFromHDF(dir / "ro/a.out", "a.bit", container));
    }
    EXPECT_EQ(support::readFile(dir / "ro/a.out"), "old");
    EXPECT_EQ(messages.all().size(), 1u);
}

TEST_F(MemberAccess, keepsALinkAndReplacesWhatItPointsTo)
{
    support::writeFile(dir / "real", "old");
    boost::filesystem::create_symlink("real", dir / "link");
    EXPECT_TRUE(Utils::writeFileFromHDF(dir / "link", "a.bit", container));
    EXPECT_EQ(support::readFile(dir / "real"), "bits");
    EXPECT_TRUE(boost::filesystem::is_symlink(dir / "link"));
}

TEST_F(MemberAccess, leavesTheDestinationContainerAloneWhenTheSourceIsNoArchive)
{
    support::writeFile(dir / "text", "not an archive");
    EXPECT_FALSE(Utils::writeFileFromHDFToHDF("a.bit", dir / "text", "copy", container));
    EXPECT_FALSE(Utils::writeFileFromHDFToDir("a.bit", dir / "text", "o", dir.path()));
    EXPECT_EQ(messages.all().size(), 2u);
    EXPECT_EQ(support::namesIn(container), "a.bit empty dir/b");
    EXPECT_FALSE(support::exists(dir / "o"));
}

TEST_F(MemberAccess, saysWhyAMemberCantBeCopiedAcross)
{
    // The local header, which comes first in the file, now names another member.
    support::patchFile(container, "a.bit", "x.bit");
    EXPECT_FALSE(Utils::writeFileFromHDFToHDF("a.bit", container, "copy", dir / "other.hdf"));
    ASSERT_EQ(messages.all().size(), 1u);
    EXPECT_NE(messages.all()[0].text.find("a.bit"), std::string::npos) << messages.joined();
    EXPECT_FALSE(support::exists(dir / "other.hdf"));
}
