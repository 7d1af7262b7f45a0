#include "hwdef/container/HHDFCTmpDirObject.h"

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <cstdlib>

#include "platform/HUTEnv.h"
#include "support/Messages.h"
#include "support/TempDir.h"
#include "support/WithoutPrivileges.h"

namespace fs = boost::filesystem;

namespace {

std::string nameOf(const std::string& path)
{
    return fs::path(path).filename().string();
}

}  // namespace

TEST(HHDFCTmpDirObject, makesItsDirectoryBelowTheScratchRoot)
{
    const HHDFCTmpDirObject directory("design.hdf");

    EXPECT_TRUE(fs::is_directory(directory.getDir()));
    EXPECT_TRUE(fs::path(directory.getDir()).is_absolute());
    EXPECT_EQ(fs::path(directory.getDir()).parent_path().string(), HUTEnv::getHDITmpDir());
    EXPECT_EQ(nameOf(directory.getDir()).compare(0, 10, "design.hdf"), 0) << directory.getDir();
}

TEST(HHDFCTmpDirObject, isNamedHWHWithoutAName)
{
    const HHDFCTmpDirObject directory("");

    EXPECT_EQ(nameOf(directory.getDir()).compare(0, 3, "HWH"), 0) << directory.getDir();
}

TEST(HHDFCTmpDirObject, givesTwoObjectsOfOneNameTwoDirectories)
{
    const HHDFCTmpDirObject first("design.hdf");
    const HHDFCTmpDirObject second("design.hdf");

    EXPECT_NE(first.getDir(), second.getDir());
}

TEST(HHDFCTmpDirObject, takesTheLongestNameAFileCanHave)
{
    const std::string name(255, 'n');
    const HHDFCTmpDirObject directory(name);

    EXPECT_TRUE(fs::is_directory(directory.getDir())) << directory.getDir();
}

TEST(HHDFCTmpDirObject, holdsNoDirectoryWithoutAScratchRoot)
{
    // The child process has no scratch root yet.
    const auto openWithoutRoot = [] {
        ::setenv("TMPDIR", "/nonexistent", 1);
        const support::Messages messages;
        HHDFCTmpDirObject directory("design.hdf");
        const bool isEmpty = directory.getDir().empty() && !directory.createTmpDir("design.hdf");
        std::_Exit(isEmpty && messages.all().size() == 2 ? 0 : 1);
    };
    EXPECT_EXIT(openWithoutRoot(), testing::ExitedWithCode(0), "");
}

TEST(HHDFCTmpDirObject, opensNoSecondDirectory)
{
    HHDFCTmpDirObject directory("design.hdf");
    const std::string path = directory.getDir();

    directory.open("other.hdf");

    EXPECT_EQ(directory.getDir(), path);
}

TEST(HHDFCTmpDirObject, removesTheDirectoryWithAllItHoldsAtItsEnd)
{
    std::string path;
    {
        const HHDFCTmpDirObject directory("design.hdf");
        path = directory.getDir();
        support::writeFile(path + "/sub/file", "content");
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST(HHDFCTmpDirObject, keepsThePathWhenOnlyTheDirectoryIsDeleted)
{
    HHDFCTmpDirObject directory("design.hdf");
    const std::string path = directory.getDir();

    directory.deleteTmpDir();
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(directory.getDir(), path);

    directory.open("design.hdf");
    EXPECT_FALSE(fs::exists(path));
}

TEST(HHDFCTmpDirObject, forgetsThePathOnCloseAndCanBeOpenedAgain)
{
    HHDFCTmpDirObject directory("design.hdf");
    directory.close();
    EXPECT_EQ(directory.getDir(), "");

    directory.open("design.hdf");
    EXPECT_TRUE(fs::is_directory(directory.getDir()));
}

TEST(HHDFCTmpDirObject, saysWhetherTheNewDirectoryCanBeWrittenTo)
{
    HHDFCTmpDirObject directory("design.hdf");
    directory.close();

    EXPECT_TRUE(directory.createTmpDir("design.hdf"));
}

TEST(HHDFCTmpDirObject, isSilentWhenSomeoneElseRemovedTheDirectory)
{
    const support::Messages messages;
    {
        const HHDFCTmpDirObject directory("design.hdf");
        fs::remove_all(directory.getDir());
    }
    EXPECT_EQ(messages.joined(), "");
}

TEST(HHDFCTmpDirObject, leavesAFileAloneThatTookTheDirectorysPlace)
{
    const support::Messages messages;
    HHDFCTmpDirObject directory("design.hdf");
    const std::string path = directory.getDir();
    fs::remove_all(path);
    support::writeFile(path, "content");

    directory.close();

    EXPECT_EQ(support::readFile(path), "content");
    EXPECT_EQ(messages.joined(), "");
    fs::remove(path);
}

TEST(HHDFCTmpDirObject, sendsANoticeForADirectoryThatCantBeRemoved)
{
    const support::Messages messages;
    HHDFCTmpDirObject directory("design.hdf");
    const std::string path = directory.getDir();
    {
        const support::WithoutPrivileges withoutPrivileges(HUTEnv::getHDITmpDir());
        directory.close();
    }
    EXPECT_EQ(messages.joined(), "hdf @64-28@%s 08000000 [" + path + "]\n");
    EXPECT_EQ(directory.getDir(), "");
    EXPECT_TRUE(fs::is_directory(path));
    fs::remove(path);
}
