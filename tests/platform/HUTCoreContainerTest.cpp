#include "platform/HUTCoreContainer.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/HUTFile.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using support::FailingSystemCalls;
using support::Members;

namespace {

class HUTCoreContainerTest : public testing::Test {
protected:
    void SetUp() override
    {
        support::writeArchive(core_, {{"a", "content of a"}, {"dir/b", "content of b"}});
        support::writeFile(disk_, "content on disk");
    }

    static bool isInside(const std::string& path)
    {
        return HUTCoreContainer::hasParentCoreContainer(path, false);
    }

    bool copy(const std::string& from, const std::string& to, bool overwrite = true)
    {
        return HUTCoreContainer::cp(from, to, overwrite, &reason_);
    }

    support::TempDir dir_;
    const std::string core_ = dir_ / "core.xsa";
    const std::string disk_ = dir_ / "disk.txt";
    std::string reason_;
};

/// Makes a directory the working one while it lives.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const std::string& path)
    {
        EXPECT_NE(::getcwd(earlier_, sizeof earlier_), nullptr);
        EXPECT_EQ(::chdir(path.c_str()), 0);
    }
    ~WorkingDirectory() { EXPECT_EQ(::chdir(earlier_), 0); }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

private:
    char earlier_[4096] = {};
};

}  // namespace

TEST_F(HUTCoreContainerTest, holdsWhatLiesBelowAnArchive)
{
    EXPECT_TRUE(isInside(core_ + "/a"));
    EXPECT_TRUE(isInside(core_ + "/none/such/member"));
    EXPECT_TRUE(isInside(core_ + "//./a"));
    EXPECT_TRUE(HUTCoreContainer::hasParentCoreContainer(core_ + "/a", true));
}

TEST_F(HUTCoreContainerTest, doesNotHoldTheArchiveItself)
{
    EXPECT_FALSE(isInside(core_));
    EXPECT_FALSE(isInside(core_ + "/"));
    EXPECT_FALSE(isInside(core_ + "/."));
}

TEST_F(HUTCoreContainerTest, doesNotHoldWhatLeadsOutAgain)
{
    EXPECT_FALSE(isInside(core_ + "/.."));
    EXPECT_FALSE(isInside(core_ + "/../disk.txt"));
    EXPECT_FALSE(isInside(core_ + "/a/../../disk.txt"));
}

TEST_F(HUTCoreContainerTest, isNoOrdinaryFileOrDirectory)
{
    EXPECT_FALSE(isInside(disk_ + "/a"));
    EXPECT_FALSE(isInside(dir_ / "none/a"));
    EXPECT_FALSE(isInside(disk_));
    EXPECT_FALSE(isInside("relative"));
    EXPECT_FALSE(isInside("/"));
    EXPECT_FALSE(isInside(""));
    ASSERT_EQ(::mkfifo((dir_ / "fifo").c_str(), 0600), 0);
    EXPECT_FALSE(isInside(dir_ / "fifo/a"));
}

TEST_F(HUTCoreContainerTest, mayBeNamedByARelativePathOrALink)
{
    const WorkingDirectory inside(dir_.path());
    EXPECT_TRUE(isInside("core.xsa/a"));
    ASSERT_EQ(::symlink("core.xsa", "link"), 0);
    EXPECT_TRUE(isInside("link/a"));
}

TEST_F(HUTCoreContainerTest, opensNoFileBelowAPlainDirectory)
{
    FailingSystemCalls calls;
    EXPECT_FALSE(isInside(disk_));
    EXPECT_EQ(calls.count(), 0U);
}

TEST_F(HUTCoreContainerTest, copiesFromDiskToDisk)
{
    ASSERT_TRUE(copy(disk_, dir_ / "new/dir/copy.txt")) << reason_;
    EXPECT_EQ(support::readFile(dir_ / "new/dir/copy.txt"), "content on disk");
}

TEST_F(HUTCoreContainerTest, givesACopyTheSourcesPermissions)
{
    ASSERT_EQ(::chmod(disk_.c_str(), 0750), 0);
    ASSERT_TRUE(copy(disk_, dir_ / "copy.txt")) << reason_;
    struct stat status = {};
    ASSERT_EQ(::stat((dir_ / "copy.txt").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0750U);
}

TEST_F(HUTCoreContainerTest, copiesFromDiskIntoAnArchive)
{
    ASSERT_TRUE(copy(disk_, core_ + "/dir/new")) << reason_;
    EXPECT_EQ(support::readArchive(core_),
              (Members{{"a", "content of a"}, {"dir/b", "content of b"}, {"dir/new", "content on disk"}}));
}

TEST_F(HUTCoreContainerTest, copiesOutOfAnArchive)
{
    ASSERT_TRUE(copy(core_ + "/dir/b", dir_ / "new/dir/b")) << reason_;
    EXPECT_EQ(support::readFile(dir_ / "new/dir/b"), "content of b");
}

TEST_F(HUTCoreContainerTest, copiesFromOneArchiveToAnother)
{
    support::writeArchive(dir_ / "other.xsa", {{"x", "content of x"}});
    ASSERT_TRUE(copy(core_ + "/dir/b", dir_ / "other.xsa/y")) << reason_;
    EXPECT_EQ(support::readArchive(dir_ / "other.xsa"),
              (Members{{"x", "content of x"}, {"y", "content of b"}}));
}

TEST_F(HUTCoreContainerTest, replacesOnlyWhenAskedTo)
{
    support::writeFile(dir_ / "there", "there");
    for (const std::string& to : {dir_ / "there", core_ + "/a"}) {
        EXPECT_FALSE(copy(disk_, to, false));
        EXPECT_EQ(reason_, to + ": exists already and must not be replaced");
        EXPECT_TRUE(copy(disk_, to, true)) << reason_;
    }
    EXPECT_EQ(support::readFile(dir_ / "there"), "content on disk");
    EXPECT_EQ(support::memberOf(core_, "a"), "content on disk");
    EXPECT_TRUE(copy(disk_, core_ + "/new", false)) << reason_;
}

TEST_F(HUTCoreContainerTest, takesTheRestOfThePathForTheMembersNameEvenBelowAnArchive)
{
    ASSERT_TRUE(copy(core_, core_ + "/inner.xsa")) << reason_;
    EXPECT_FALSE(copy(core_ + "/inner.xsa/a", dir_ / "out"));
    EXPECT_EQ(reason_, core_ + ": has no member \"inner.xsa/a\"");
}

TEST_F(HUTCoreContainerTest, saysWhyACopyCanNotBeMade)
{
    EXPECT_FALSE(copy(core_ + "/none", dir_ / "out"));
    EXPECT_EQ(reason_, core_ + ": has no member \"none\"");
    EXPECT_FALSE(copy(dir_ / "none", dir_ / "out"));
    EXPECT_EQ(reason_, (dir_ / "none") + ": can't open: No such file or directory");
    EXPECT_FALSE(copy(dir_ / "none", core_ + "/new"));
    EXPECT_EQ(reason_, (dir_ / "none") + ": can't open: No such file or directory");
    EXPECT_FALSE(copy(disk_, disk_ + "/below"));
    EXPECT_EQ(reason_, disk_ + "/below: its directory can't be made or written to");
    EXPECT_FALSE(HUTCoreContainer::cp(dir_ / "none", dir_ / "out", true));
    EXPECT_EQ(dir_.list(), "core.xsa disk.txt");
}

TEST_F(HUTCoreContainerTest, makesNoFileOfADamagedMember)
{
    support::patchFile(core_, "content of b", "Content of b");
    EXPECT_FALSE(copy(core_ + "/dir/b", dir_ / "out"));
    EXPECT_NE(reason_.find("CRC-32"), std::string::npos) << reason_;
    EXPECT_EQ(dir_.list(), "core.xsa disk.txt");
}

TEST_F(HUTCoreContainerTest, leavesTheDestinationWhenACallFails)
{
    support::writeFile(dir_ / "to", "old");
    const std::string core = support::readFile(core_);
    for (const auto& [from, to] :
         {std::pair(disk_, dir_ / "to"), std::pair(core_ + "/a", dir_ / "to"),
          std::pair(disk_, core_ + "/new"), std::pair(core_ + "/a", core_ + "/new")}) {
        for (unsigned nth = 1;; ++nth) {
            support::writeFile(dir_ / "to", "old");
            FailingSystemCalls calls;
            calls.fail(FailingSystemCalls::CHANGES, nth, ENOSPC);
            if (copy(from, to)) {
                EXPECT_GT(nth, 2U);
                break;
            }
            EXPECT_EQ(support::readFile(dir_ / "to"), "old") << nth;
            EXPECT_TRUE(support::readFile(core_) == core) << nth;
            EXPECT_EQ(dir_.list(), "core.xsa disk.txt to") << nth;
        }
        support::writeFile(core_, core);
    }
}
