#include "hwdef/container/SafePath.h"

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include "support/TempDir.h"

namespace fs = boost::filesystem;
using support::TempDir;

namespace {

/// A directory "out" to write into, beside another one, "secret".
class SafePathTest : public testing::Test {
protected:
    SafePathTest()
    {
        fs::create_directories(dir_ / "out/sub");
        fs::create_directory(dir_ / "secret");
    }

    void link(const std::string& name, const std::string& target)
    {
        fs::create_symlink(target, dir_ / ("out/" + name));
    }

    std::string objection(const std::string& name) const { return SafePath(dir_ / "out").objection(name); }

    const TempDir dir_;
};

}  // namespace

TEST_F(SafePathTest, allowsNamesThatStayBelow)
{
    for (const char* name : {"a", "sub/a", "new/deep/a", "..a/b..", "./a", "sub//a", "sub/./a"}) {
        EXPECT_EQ(objection(name), "") << name;
    }
}

TEST_F(SafePathTest, refusesNamesThatSayTheyLeave)
{
    EXPECT_EQ(objection("/etc/passwd"), "the name is absolute");
    for (const char* name : {"..", "../a", "sub/../../a", "sub/..", "sub/../a", "a/.."}) {
        EXPECT_EQ(objection(name), "the name climbs out by \"..\"") << name;
    }
}

TEST_F(SafePathTest, refusesNamesThatNoFileCanHave)
{
    EXPECT_EQ(objection(""), "the name is empty");
    EXPECT_EQ(objection("sub/"), "the name is that of a directory");
    EXPECT_EQ(objection("sub/."), "the name is that of a directory");
    EXPECT_EQ(objection(std::string("a\0b", 3)), "the name holds a null character");
}

TEST_F(SafePathTest, refusesNamesThatNoMemberCanHave)
{
    EXPECT_EQ(objection(std::string(65'536, 'a')), "the name has 65536 bytes, allowed are 65535");
    EXPECT_EQ(SafePath(dir_ / "missing").objection(std::string(65'535, 'a')), "");
}

TEST_F(SafePathTest, refusesToPassThroughALinkThatLeaves)
{
    link("absolute", dir_ / "secret");
    link("relative", "../secret");
    link("self", ".");

    for (const char* name : {"absolute/a", "relative/a", "self/relative/a", "sub/../relative/a"}) {
        EXPECT_NE(objection(name), "") << name;
    }
    EXPECT_EQ(objection("self/sub/a"), "");
}

TEST_F(SafePathTest, refusesAFileThatIsALinkThatLeaves)
{
    support::writeFile(dir_ / "secret/file", "content");
    link("file", "../secret/file");

    EXPECT_EQ(objection("file"),
              fs::canonical(dir_ / "out").string() + "/file is a link that leaves the directory");
}

TEST_F(SafePathTest, refusesALinkThatOnlyComesBackLater)
{
    link("leaves", "../secret");
    fs::create_symlink("../out/sub", dir_ / "secret/back");

    EXPECT_NE(objection("leaves/back/a"), "");
}

TEST_F(SafePathTest, refusesLinksThatLeadNowhere)
{
    link("dangling", "../secret/not-there");
    link("circle", "circle");

    EXPECT_NE(objection("dangling"), "");
    EXPECT_NE(objection("circle/a"), "");
}

TEST_F(SafePathTest, allowsLinksThatStay)
{
    link("relative", "sub");
    link("absolute", dir_ / "out/sub");

    EXPECT_EQ(objection("relative/a"), "");
    EXPECT_EQ(objection("absolute/a"), "");
}

TEST_F(SafePathTest, takesALinkToADirectoryForTheDirectory)
{
    fs::create_symlink("out", dir_ / "link");
    link("leaves", "../secret");
    const SafePath safePath(dir_ / "link");

    EXPECT_EQ(safePath.objection("sub/a"), "");
    EXPECT_NE(safePath.objection("leaves/a"), "");
}

TEST_F(SafePathTest, isNotFooledByADirectoryWhoseNameBeginsTheSame)
{
    fs::create_directory(dir_ / "outside");
    link("near", "../outside");

    EXPECT_NE(objection("near/a"), "");
}

TEST_F(SafePathTest, judgesByTheNameAloneWhereNothingExists)
{
    const SafePath safePath(dir_ / "missing");

    EXPECT_EQ(safePath.objection("sub/a"), "");
    EXPECT_NE(safePath.objection("../a"), "");
}
