#include "platform/HUTFileUtils.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "support/TempDir.h"

namespace {

std::string uniquified(std::string path)
{
    HUTFileUtils::uniquifyFilenameInDir(path);
    return path;
}

/// The number that uniquified() appended last.
int numberOf(const std::string& path)
{
    return std::atoi(path.substr(path.rfind('-') + 1).c_str());
}

std::string absolute(std::string path)
{
    HUTFileUtils::makeAbsolutePath(path);
    return path;
}

}  // namespace

TEST(HUTFileUtils, appendsANumberToTheLastComponent)
{
    const std::string path = uniquified("/nowhere/design.hdf");
    EXPECT_EQ(path, "/nowhere/design.hdf-" + std::to_string(numberOf(path)));
    EXPECT_GT(numberOf(path), 0);
}

TEST(HUTFileUtils, neverGivesTheSamePathTwice)
{
    EXPECT_NE(uniquified("/nowhere/design"), uniquified("/nowhere/design"));
}

TEST(HUTFileUtils, skipsNamesThatExist)
{
    const support::TempDir dir;
    const int last = numberOf(uniquified(dir / "HWH"));
    support::writeFile(dir / ("HWH-" + std::to_string(last + 1)), "");
    ASSERT_EQ(::symlink("nowhere", (dir / ("HWH-" + std::to_string(last + 2))).c_str()), 0);
    EXPECT_EQ(uniquified(dir / "HWH"), dir / ("HWH-" + std::to_string(last + 3)));
}

TEST(HUTFileUtils, takesTrailingSeparatorsOff)
{
    const std::string path = uniquified("/nowhere/HWH//");
    EXPECT_EQ(path, "/nowhere/HWH-" + std::to_string(numberOf(path)));
    const std::string root = uniquified("/");
    EXPECT_EQ(root, "/-" + std::to_string(numberOf(root)));
}

TEST(HUTFileUtils, keepsTheNameWithinWhatTheSystemTakes)
{
    const support::TempDir dir;
    const std::string path = uniquified(dir / std::string(255, 'n'));
    const std::string suffix = "-" + std::to_string(numberOf(path));
    EXPECT_EQ(path, dir / (std::string(255 - suffix.size(), 'n') + suffix));
    support::writeFile(path, "");
    EXPECT_TRUE(support::exists(path));
}

TEST(HUTFileUtils, endsForAPathWithANul)
{
    const support::TempDir dir;
    EXPECT_NE(uniquified(dir.path() + std::string("\0x", 2)), "");
}

TEST(HUTFileUtils, givesEachThreadPathsOfItsOwn)
{
    std::vector<std::string> theirs;
    std::vector<std::string> ours;
    const auto collect = [](std::vector<std::string>& paths) {
        for (int i = 0; i < 500; ++i) {
            paths.push_back(uniquified("/nowhere/design"));
        }
    };
    std::thread other([&] { collect(theirs); });
    collect(ours);
    other.join();
    std::set<std::string> all(theirs.begin(), theirs.end());
    all.insert(ours.begin(), ours.end());
    EXPECT_EQ(all.size(), 1000u);
}

TEST(HUTFileUtils, makesPathsAbsolute)
{
    const std::string here = std::filesystem::current_path().string();
    EXPECT_EQ(absolute("a//b/./c"), here + "/a/b/c");
    EXPECT_EQ(absolute("/a/../b/"), "/b");
}

TEST(HUTFileUtils, leavesAnEmptyPathAsItIs)
{
    EXPECT_EQ(absolute(""), "");
}
