#include "platform/HUTPathUtils.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "support/TempDir.h"

TEST(HUTPathUtils, seesFilesAndDirectories)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "");
    EXPECT_TRUE(HUTPathUtils::exists(dir / "file"));
    EXPECT_TRUE(HUTPathUtils::exists(dir.path()));
    EXPECT_FALSE(HUTPathUtils::exists(dir / "other"));
    EXPECT_FALSE(HUTPathUtils::exists(""));
}

TEST(HUTPathUtils, seesNothingBehindALinkThatLeadsNowhere)
{
    const support::TempDir dir;
    ASSERT_EQ(::symlink("nowhere", (dir / "link").c_str()), 0);
    EXPECT_FALSE(HUTPathUtils::exists(dir / "link"));
}

TEST(HUTPathUtils, makesAPathBelowTheBaseRelative)
{
    EXPECT_EQ(HUTPathUtils::makeRelativePath("/d/drivers/uart/src/u.c", "/d/drivers"), "uart/src/u.c");
    EXPECT_EQ(HUTPathUtils::makeRelativePath("/d/u.c", "/d/"), "u.c");
    EXPECT_EQ(HUTPathUtils::makeRelativePath("d/u.c", "d"), "u.c");
    EXPECT_EQ(HUTPathUtils::makeRelativePath("/u.c", "/"), "u.c");
}

TEST(HUTPathUtils, takesDotsAndRepeatedSeparatorsLexically)
{
    EXPECT_EQ(HUTPathUtils::makeRelativePath("/d//x/../u.c", "/d/./"), "u.c");
    EXPECT_EQ(HUTPathUtils::makeRelativePath("./d/u.c", "."), "d/u.c");
    EXPECT_EQ(HUTPathUtils::makeRelativePath("d/u.c", "./e/../d"), "u.c");
}

TEST(HUTPathUtils, climbsFromTheBaseWhereItMust)
{
    EXPECT_EQ(HUTPathUtils::makeRelativePath("/d/b/u.c", "/d/a/x"), "../../b/u.c");
    EXPECT_EQ(HUTPathUtils::makeRelativePath("/driversX/u.c", "/drivers"), "../driversX/u.c");
}

TEST(HUTPathUtils, answersADotForTheBaseItself)
{
    EXPECT_EQ(HUTPathUtils::makeRelativePath("/d/a", "/d/a"), ".");
    EXPECT_EQ(HUTPathUtils::makeRelativePath("/d/a", "/d/a/"), ".");
}

TEST(HUTPathUtils, leavesAPathThatHasNothingInCommonWithTheBase)
{
    EXPECT_EQ(HUTPathUtils::makeRelativePath("a/u.c", "/d"), "a/u.c");
    EXPECT_EQ(HUTPathUtils::makeRelativePath("/d//u.c", "d"), "/d//u.c");
    EXPECT_EQ(HUTPathUtils::makeRelativePath("a/u.c", "../d"), "a/u.c");
}
