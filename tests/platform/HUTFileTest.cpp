#include "platform/HUTFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "support/SmallStack.h"
#include "support/TempDir.h"
#include "support/WithoutPrivileges.h"

namespace {

std::string canonical(const std::string& path)
{
    std::string name = "before";
    const bool told = HUTFile(path).getCanonicalName(name);
    EXPECT_EQ(told, !name.empty()) << path;
    return name;
}

std::string nameOf(const std::string& path)
{
    std::string name = "before";
    const bool told = HUTFile(path).getName(name);
    EXPECT_EQ(told, !name.empty()) << path;
    EXPECT_EQ(HUTFile(path).name(), name);
    return name;
}

std::string extensionOf(const std::string& path)
{
    std::string extension = "before";
    const bool told = HUTFile(path).getExt(extension);
    EXPECT_EQ(told, !extension.empty()) << path;
    return extension;
}

void link(const std::string& to, const std::string& path)
{
    ASSERT_EQ(::symlink(to.c_str(), path.c_str()), 0) << path;
}

}  // namespace

TEST(HUTFile, existsForFilesAndDirectories)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "");
    EXPECT_TRUE(HUTFile(dir / "file").exists());
    EXPECT_TRUE(HUTFile(dir.path()).exists());
    EXPECT_FALSE(HUTFile(dir / "other").exists());
    EXPECT_FALSE(HUTFile(dir / "file/below").exists());
    EXPECT_FALSE(HUTFile("").exists());
}

TEST(HUTFile, isADirectoryForDirectoriesAndLinksToThem)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "");
    link(dir.path(), dir / "link");
    EXPECT_TRUE(HUTFile(dir.path()).isDir());
    EXPECT_TRUE(HUTFile(dir / "link").isDir());
    EXPECT_FALSE(HUTFile(dir / "file").isDir());
    EXPECT_FALSE(HUTFile(dir / "other").isDir());
    EXPECT_FALSE(HUTFile("").isDir());
}

TEST(HUTFile, namesNothingByAPathWithANul)
{
    const support::TempDir dir;
    const std::string nul("\0", 1);
    support::writeFile(dir / "file", "x");
    EXPECT_FALSE(HUTFile((dir / "file") + nul).exists());
    EXPECT_FALSE(HUTFile(dir.path() + nul).isDir());
    EXPECT_FALSE(HUTFile::mkDirRecursive((dir / "made") + nul + "/x"));
    EXPECT_FALSE(HUTFile::rmRecursive((dir / "file") + nul));
    EXPECT_FALSE(HUTFile((dir / "file") + nul).copyToDir(dir.path(), HUTFile::COPY_OVERWRITE));
    EXPECT_EQ(dir.list(), "file");
}

TEST(HUTFile, normalisesTheCanonicalName)
{
    EXPECT_EQ(canonical("/a/../../b"), "/b");
    EXPECT_EQ(canonical("/a/b/../c"), "/a/c");
    EXPECT_EQ(canonical("/a//b"), "/a/b");
    EXPECT_EQ(canonical("/a/b/"), "/a/b");
    EXPECT_EQ(canonical("//a/b"), "/a/b");
    EXPECT_EQ(canonical("/a/./b/."), "/a/b");
    EXPECT_EQ(canonical("/a/b/.."), "/a");
    EXPECT_EQ(canonical("/.."), "/");
    EXPECT_EQ(canonical("/"), "/");
    EXPECT_EQ(canonical("//"), "/");
}

TEST(HUTFile, keepsACanonicalName)
{
    EXPECT_EQ(canonical("/a/b.c/..d/.e/f."), "/a/b.c/..d/.e/f.");
    EXPECT_EQ(canonical("/a"), "/a");
}

TEST(HUTFile, startsTheCanonicalNameOfARelativePathAtTheWorkingDirectory)
{
    const std::string here = std::filesystem::current_path().string();
    EXPECT_EQ(canonical("a//b/./c"), here + "/a/b/c");
    EXPECT_EQ(canonical("."), here);
    EXPECT_EQ(canonical(".."), std::filesystem::path(here).parent_path().string());
}

TEST(HUTFile, leavesLinksInTheCanonicalName)
{
    const support::TempDir dir;
    link("/usr", dir / "link");
    EXPECT_EQ(canonical(dir / "link/x"), dir / "link/x");
    EXPECT_EQ(canonical(dir / "link/../x"), dir / "x");
}

TEST(HUTFile, hasNoCanonicalNameForAnEmptyPath)
{
    EXPECT_EQ(canonical(""), "");
}

TEST(HUTFile, hasNoCanonicalNameForARelativePathInARemovedDirectory)
{
    const auto here = std::filesystem::current_path();
    {
        const support::TempDir dir;
        std::filesystem::current_path(dir.path());
    }
    EXPECT_EQ(canonical("a"), "");
    EXPECT_EQ(canonical("/a"), "/a");
    std::filesystem::current_path(here);
}

TEST(HUTFile, answersTheFullPathAsPassed)
{
    std::string path;
    EXPECT_TRUE(HUTFile("a/../b//").getFullPath(path));
    EXPECT_EQ(path, "a/../b//");
    EXPECT_FALSE(HUTFile("").getFullPath(path));
    EXPECT_EQ(path, "");
}

TEST(HUTFile, namesTheLastComponent)
{
    EXPECT_EQ(nameOf("/a/b.bit"), "b.bit");
    EXPECT_EQ(nameOf("b.bit"), "b.bit");
    EXPECT_EQ(nameOf("/a/b/"), "b");
    EXPECT_EQ(nameOf("a//"), "a");
    EXPECT_EQ(nameOf("/a/."), ".");
    EXPECT_EQ(nameOf("/a/.."), "..");
}

TEST(HUTFile, hasNoNameForTheRootAndTheEmptyPath)
{
    EXPECT_EQ(nameOf("/"), "");
    EXPECT_EQ(nameOf("//"), "");
    EXPECT_EQ(nameOf(""), "");
}

TEST(HUTFile, answersTheTimeOfTheLastModification)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "");
    const timespec times[] = {{1, 0}, {1234567890, 999}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (dir / "file").c_str(), times, 0), 0);
    long seconds = 5;
    EXPECT_TRUE(HUTFile(dir / "file").getLastMod(seconds));
    EXPECT_EQ(seconds, 1234567890);
    EXPECT_FALSE(HUTFile(dir / "other").getLastMod(seconds));
    EXPECT_EQ(seconds, 1234567890);
}

TEST(HUTFile, takesTheExtensionFromTheNameAlone)
{
    EXPECT_EQ(extensionOf("design.dsa"), "dsa");
    EXPECT_EQ(extensionOf("/a.b/design.tar.DSA/"), "DSA");
    EXPECT_EQ(extensionOf("/a.b/design"), "");
    EXPECT_EQ(extensionOf(""), "");
}

TEST(HUTFile, takesNoExtensionFromALeadingOrTrailingDot)
{
    EXPECT_EQ(extensionOf("/a/.dsa"), "");
    EXPECT_EQ(extensionOf("design."), "");
    EXPECT_EQ(extensionOf("a/.."), "");
    EXPECT_EQ(extensionOf("a/."), "");
    EXPECT_EQ(extensionOf(".a.dsa"), "dsa");
}

TEST(HUTFile, separatesBySlash)
{
    EXPECT_EQ(HUTFile::getDirSeparator(), "/");
}

TEST(HUTFile, makesADirectoryWithItsParents)
{
    const support::TempDir dir;
    EXPECT_TRUE(HUTFile::mkDirRecursive(dir / "a/b//c/"));
    EXPECT_TRUE(HUTFile(dir / "a/b/c").isDir());
    EXPECT_TRUE(HUTFile::mkDirRecursive(dir / "a/b/c"));
}

TEST(HUTFile, makesNoDirectoryWhereAFileStands)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "x");
    EXPECT_FALSE(HUTFile::mkDirRecursive(dir / "file"));
    EXPECT_FALSE(HUTFile::mkDirRecursive(dir / "file/below"));
    EXPECT_FALSE(HUTFile::mkDirRecursive(""));
    EXPECT_EQ(support::readFile(dir / "file"), "x");
}

TEST(HUTFile, refusesAPathTooLongForTheSystem)
{
    const support::TempDir dir;
    std::string path = dir.path();
    for (int i = 0; i < 30000; ++i) {
        path += "/a";
    }
    support::onSmallStack([&] {
        EXPECT_FALSE(HUTFile::mkDirRecursive(path));
        EXPECT_FALSE(HUTFile::ensureWritableDirectory(path));
        EXPECT_EQ(canonical(path), path);
    });
    EXPECT_EQ(dir.list(), "");
}

TEST(HUTFile, ensuresADirectoryByMakingIt)
{
    const support::TempDir dir;
    EXPECT_TRUE(HUTFile::ensureWritableDirectory(dir / "a/b"));
    EXPECT_TRUE(HUTFile(dir / "a/b").isDir());
}

TEST(HUTFile, takesTheEmptyPathForTheWorkingDirectoryWhenEnsuring)
{
    EXPECT_TRUE(HUTFile::ensureWritableDirectory(""));
}

TEST(HUTFile, tellsADirectoryThatCanNotBeWrittenTo)
{
    const support::TempDir dir;
    const support::WithoutPrivileges without(dir.path());
    EXPECT_FALSE(HUTFile::ensureWritableDirectory(dir.path()));
    EXPECT_FALSE(HUTFile::ensureWritableDirectory(dir / "new"));
}

TEST(HUTFile, removesADirectoryWithAllItHolds)
{
    const support::TempDir dir;
    support::writeFile(dir / "a/b/file", "x");
    support::writeFile(dir / "a/.hidden", "x");
    EXPECT_TRUE(HUTFile::rmRecursive(dir / "a"));
    EXPECT_EQ(dir.list(), "");
}

TEST(HUTFile, removesAFile)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "x");
    EXPECT_TRUE(HUTFile::rmRecursive(dir / "file"));
    EXPECT_EQ(dir.list(), "");
}

TEST(HUTFile, hasNothingToRemoveWhereNothingIs)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "x");
    EXPECT_TRUE(HUTFile::rmRecursive(dir / "other"));
    EXPECT_TRUE(HUTFile::rmRecursive(dir / "file/below"));
    EXPECT_TRUE(HUTFile::rmRecursive(""));
    EXPECT_EQ(dir.list(), "file");
}

TEST(HUTFile, removesLinksAndNotWhatTheyPointTo)
{
    const support::TempDir dir;
    support::writeFile(dir / "kept/file", "x");
    support::writeFile(dir / "a/b/file", "x");
    link(dir / "kept", dir / "a/b/link");
    link(dir / "kept", dir / "top");
    EXPECT_TRUE(HUTFile::rmRecursive(dir / "a"));
    EXPECT_TRUE(HUTFile::rmRecursive(dir / "top/"));
    EXPECT_EQ(dir.list(), "kept");
    EXPECT_EQ(support::readFile(dir / "kept/file"), "x");
}

TEST(HUTFile, removesNeitherTheRootNorDots)
{
    const support::TempDir dir;
    support::writeFile(dir / "a/file", "x");
    EXPECT_FALSE(HUTFile::rmRecursive(dir / "a/."));
    EXPECT_FALSE(HUTFile::rmRecursive(dir / "a/../"));
    EXPECT_EQ(support::readFile(dir / "a/file"), "x");
}

TEST(HUTFile, tellsWhenSomethingCouldNotBeRemoved)
{
    const support::TempDir dir;
    support::writeFile(dir / "a/file", "x");
    const support::WithoutPrivileges without(dir / "a");
    EXPECT_FALSE(HUTFile::rmRecursive(dir / "a"));
    EXPECT_TRUE(HUTFile(dir / "a/file").exists());
}
