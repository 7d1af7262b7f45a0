// Copies of files into directories.

#include "platform/HUTFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"
#include "support/WithoutPrivileges.h"

using support::FailingSystemCalls;

namespace {

void link(const std::string& to, const std::string& path)
{
    ASSERT_EQ(::symlink(to.c_str(), path.c_str()), 0) << path;
}

unsigned modeOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

}  // namespace

TEST(HUTFile, copiesContentAndPermissions)
{
    const support::TempDir dir;
    const std::string content = support::randomBytes(300000, 1);
    support::writeFile(dir / "top.bit", content);
    support::writeFile(dir / "out/other", "x");
    ASSERT_EQ(::chmod((dir / "top.bit").c_str(), 0540), 0);
    EXPECT_TRUE(HUTFile(dir / "top.bit").copyToDir(dir / "out", HUTFile::COPY_OVERWRITE));
    EXPECT_EQ(support::readFile(dir / "out/top.bit"), content);
    EXPECT_EQ(modeOf(dir / "out/top.bit"), 0540u);
    EXPECT_EQ(support::readFile(dir / "top.bit"), content);
}

TEST(HUTFile, replacesACopyWhenTheModeAllowsIt)
{
    const support::TempDir dir;
    support::writeFile(dir / "top.bit", "new");
    support::writeFile(dir / "out/top.bit", "old and longer");
    EXPECT_TRUE(HUTFile(dir / "top.bit").copyToDir(dir / "out", 3));
    EXPECT_EQ(support::readFile(dir / "out/top.bit"), "new");
}

TEST(HUTFile, keepsAFileWhenTheModeSaysSo)
{
    const support::TempDir dir;
    support::writeFile(dir / "top.bit", "new");
    support::writeFile(dir / "out/top.bit", "old");
    std::string reason;
    EXPECT_FALSE(HUTFile(dir / "top.bit").copyToDir(dir / "out", HUTFile::COPY_KEEP_EXISTING, &reason));
    EXPECT_EQ(reason, (dir / "out/top.bit") + ": can't copy " + (dir / "top.bit") +
                          " there: it exists and is to be kept");
    EXPECT_EQ(support::readFile(dir / "out/top.bit"), "old");
}

TEST(HUTFile, replacesALinkAtTheCopysPlaceAndNotWhatItPointsTo)
{
    const support::TempDir dir;
    support::writeFile(dir / "top.bit", "new");
    support::writeFile(dir / "outside", "precious");
    support::writeFile(dir / "out/other", "");
    link(dir / "outside", dir / "out/top.bit");
    EXPECT_TRUE(HUTFile(dir / "top.bit").copyToDir(dir / "out", HUTFile::COPY_OVERWRITE));
    EXPECT_EQ(support::readFile(dir / "outside"), "precious");
    EXPECT_EQ(support::readFile(dir / "out/top.bit"), "new");
}

TEST(HUTFile, copiesAFileOntoItselfWithoutLoss)
{
    const support::TempDir dir;
    support::writeFile(dir / "top.bit", "content");
    EXPECT_TRUE(HUTFile(dir / "top.bit").copyToDir(dir.path(), HUTFile::COPY_OVERWRITE));
    EXPECT_EQ(support::readFile(dir / "top.bit"), "content");
    EXPECT_EQ(dir.list(), "top.bit");
}

TEST(HUTFile, copiesNothingButRegularFiles)
{
    const support::TempDir dir;
    support::writeFile(dir / "out/other", "");
    ASSERT_EQ(::mkfifo((dir / "fifo").c_str(), 0600), 0);
    ASSERT_TRUE(HUTFile::mkDirRecursive(dir / "directory"));
    for (const char* name : {"fifo", "directory", "missing"}) {
        std::string reason;
        EXPECT_FALSE(HUTFile(dir / name).copyToDir(dir / "out", HUTFile::COPY_OVERWRITE, &reason)) << name;
        EXPECT_EQ(reason.find(dir / name), 0u) << reason;
        EXPECT_FALSE(HUTFile((dir / "out/") + name).exists());
    }
}

TEST(HUTFile, copiesOnlyIntoAnExistingDirectory)
{
    const support::TempDir dir;
    support::writeFile(dir / "top.bit", "x");
    std::string reason;
    EXPECT_FALSE(HUTFile(dir / "top.bit").copyToDir(dir / "missing", HUTFile::COPY_OVERWRITE, &reason));
    EXPECT_EQ(reason,
              (dir / "missing") + ": can't copy " + (dir / "top.bit") + " there: not an existing directory");
    EXPECT_FALSE(HUTFile(dir / "top.bit").copyToDir(dir / "top.bit", HUTFile::COPY_OVERWRITE));
}

TEST(HUTFile, leavesTheOldFileWhenAnyStepOfACopyFails)
{
    const support::TempDir dir;
    support::writeFile(dir / "top.bit", "new");
    support::writeFile(dir / "out/top.bit", "old");
    const HUTFile source(dir / "top.bit");
    unsigned steps = 1;  // the first call looks for the directory
    for (unsigned step = 2; step <= steps + 1; ++step) {
        FailingSystemCalls calls;
        calls.fail(FailingSystemCalls::ANY & ~FailingSystemCalls::UNLINK, step, ENOSPC);
        std::string reason;
        if (source.copyToDir(dir / "out", HUTFile::COPY_OVERWRITE, &reason)) {
            continue;
        }
        steps = step;
        EXPECT_NE(reason.find("No space left on device"), std::string::npos) << reason;
        EXPECT_EQ(support::readFile(dir / "out/top.bit"), "old") << step;
        EXPECT_EQ(std::filesystem::remove(dir / "out/top.bit"), true);
        EXPECT_TRUE(std::filesystem::is_empty(dir / "out")) << step;
        EXPECT_EQ(calls.openDescriptors(), 0) << step;
        support::writeFile(dir / "out/top.bit", "old");
    }
    EXPECT_GE(steps, 7u);
    EXPECT_EQ(support::readFile(dir / "out/top.bit"), "new");
}
