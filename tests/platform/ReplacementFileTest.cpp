#include "platform/ReplacementFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"

using platform::FileError;
using platform::ReplacementFile;
using support::FailingSystemCalls;

namespace {

void replaceBy(const std::string& content, const std::string& path,
               ReplacementFile::Links links = ReplacementFile::Links::FOLLOWED)
{
    ReplacementFile replacement(path, links);
    replacement.file().write(content.data(), content.size());
    replacement.commit();
}

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

/// The errno of the FileError that making a replacement throws; 0 when it throws none.
int errorOf(const std::string& path)
{
    try {
        ReplacementFile replacement(path);
    } catch (const FileError& error) {
        return error.error();
    }
    return 0;
}

}  // namespace

TEST(ReplacementFile, makesANewFile)
{
    const support::TempDir dir;
    replaceBy("new", dir / "file");
    EXPECT_EQ(support::readFile(dir / "file"), "new");
    EXPECT_EQ(dir.list(), "file");
}

TEST(ReplacementFile, leavesTheTargetUntouchedUntilCommit)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "old");
    {
        ReplacementFile replacement(dir / "file");
        replacement.file().write("new", 3);
        EXPECT_EQ(support::readFile(dir / "file"), "old");
    }
    EXPECT_EQ(support::readFile(dir / "file"), "old");
    EXPECT_EQ(dir.list(), "file");
}

TEST(ReplacementFile, replacesTheTargetAtCommit)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "old and longer");
    replaceBy("new", dir / "file");
    EXPECT_EQ(support::readFile(dir / "file"), "new");
    EXPECT_EQ(dir.list(), "file");
}

TEST(ReplacementFile, replacesABareNameInTheWorkingDirectory)
{
    const support::TempDir dir;
    const auto here = std::filesystem::current_path();
    std::filesystem::current_path(dir.path());
    replaceBy("new", "file");
    std::filesystem::current_path(here);
    EXPECT_EQ(support::readFile(dir / "file"), "new");
}

TEST(ReplacementFile, keepsThePermissionsOfTheTarget)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "old");
    ASSERT_EQ(::chmod((dir / "file").c_str(), 0640), 0);
    replaceBy("new", dir / "file");
    EXPECT_EQ(modeOf(dir / "file"), 0640u);
}

TEST(ReplacementFile, givesANewFileThePermissionsOfTheUmask)
{
    const support::TempDir dir;
    const mode_t earlier = ::umask(027);
    replaceBy("new", dir / "file");
    ::umask(earlier);
    EXPECT_EQ(modeOf(dir / "file"), 0640u);
}

TEST(ReplacementFile, givesThePermissionsAskedFor)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "old");
    ReplacementFile replacement(dir / "file", ReplacementFile::Links::FOLLOWED, 0751);
    replacement.commit();
    EXPECT_EQ(modeOf(dir / "file"), 0751u);
}

TEST(ReplacementFile, isNeverReadableByMoreThanTheTargetWas)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "old");
    ASSERT_EQ(::chmod((dir / "file").c_str(), 0600), 0);
    FailingSystemCalls calls;
    calls.dieAt(FailingSystemCalls::MODE, 1);
    EXPECT_THROW(ReplacementFile replacement(dir / "file"), FileError);
    const std::string names = dir.list();
    EXPECT_EQ(modeOf(dir / names.substr(0, names.find(' '))), 0600u) << names;
}

TEST(ReplacementFile, followsLinksToTheFileBehindThem)
{
    const support::TempDir dir;
    support::writeFile(dir / "real/file", "old");
    link("real/file", dir / "second");
    link(dir / "second", dir / "first");
    replaceBy("new", dir / "first");
    EXPECT_TRUE(std::filesystem::is_symlink(dir / "first"));
    EXPECT_TRUE(std::filesystem::is_symlink(dir / "second"));
    EXPECT_EQ(support::readFile(dir / "real/file"), "new");
}

TEST(ReplacementFile, makesTheFileThatALinkPointsTo)
{
    const support::TempDir dir;
    link("file", dir / "link");
    replaceBy("new", dir / "link");
    EXPECT_TRUE(std::filesystem::is_symlink(dir / "link"));
    EXPECT_EQ(support::readFile(dir / "file"), "new");
}

TEST(ReplacementFile, replacesALinkItselfOnRequest)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "old");
    link("file", dir / "link");
    replaceBy("new", dir / "link", ReplacementFile::Links::REPLACED);
    EXPECT_FALSE(std::filesystem::is_symlink(dir / "link"));
    EXPECT_EQ(support::readFile(dir / "link"), "new");
    EXPECT_EQ(support::readFile(dir / "file"), "old");
}

TEST(ReplacementFile, refusesLinksInACircle)
{
    const support::TempDir dir;
    link("b", dir / "a");
    link("a", dir / "b");
    EXPECT_EQ(errorOf(dir / "a"), ELOOP);
}

TEST(ReplacementFile, refusesWhatIsNoRegularFile)
{
    const support::TempDir dir;
    ASSERT_EQ(::mkfifo((dir / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(errorOf(dir / "fifo"), EINVAL);
    EXPECT_EQ(errorOf(dir.path()), EISDIR);
    EXPECT_EQ(errorOf(""), ENOENT);
    EXPECT_EQ(errorOf((dir / "file") + std::string("\0x", 2)), EINVAL);
    EXPECT_EQ(dir.list(), "fifo");
}

TEST(ReplacementFile, refusesAPlaceWhereNothingCanBeMade)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "");
    EXPECT_EQ(errorOf(dir / "missing/file"), ENOENT);
    EXPECT_EQ(errorOf(dir / "file/below"), ENOTDIR);
}

TEST(ReplacementFile, takesANameAsLongAsTheSystemAllows)
{
    const support::TempDir dir;
    const std::string name(255, 'n');
    replaceBy("new", dir / name);
    EXPECT_EQ(support::readFile(dir / name), "new");
}

TEST(ReplacementFile, replacesNothingThatItCantLookAt)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "old");
    link("file", dir / "link");
    for (unsigned nth = 1; nth <= 4; ++nth) {  // link, its target, the file twice
        FailingSystemCalls calls;
        calls.fail(FailingSystemCalls::LOOK, nth, EIO);
        EXPECT_EQ(errorOf(dir / "link"), EIO) << nth;
    }
    EXPECT_EQ(dir.list(), "file link");
}

TEST(ReplacementFile, passesOverATemporaryFileThatAKilledProcessLeft)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    calls.fail(FailingSystemCalls::CREATE, 1, EEXIST);
    replaceBy("new", dir / "file");
    EXPECT_EQ(calls.count(FailingSystemCalls::CREATE), 2u);
    EXPECT_EQ(support::readFile(dir / "file"), "new");
}

TEST(ReplacementFile, leavesTheOldFileWhenAnyStepFails)
{
    for (const unsigned kind :
         {FailingSystemCalls::CREATE, FailingSystemCalls::MODE, FailingSystemCalls::WRITE,
          FailingSystemCalls::CLOSE, FailingSystemCalls::RENAME}) {
        const support::TempDir dir;
        support::writeFile(dir / "file", "old");
        FailingSystemCalls calls;
        calls.fail(kind, 1, ENOSPC);
        EXPECT_THROW(replaceBy("new", dir / "file"), FileError) << kind;
        EXPECT_EQ(support::readFile(dir / "file"), "old") << kind;
        EXPECT_EQ(dir.list(), "file") << kind;
        EXPECT_EQ(calls.openDescriptors(), 0) << kind;
    }
}

TEST(ReplacementFile, showsTheOldFileOrTheNewOneWhereverTheProcessDies)
{
    FailingSystemCalls calls;
    const support::TempDir first;
    support::writeFile(first / "file", "old");
    replaceBy("new", first / "file");
    const unsigned steps = calls.count(FailingSystemCalls::CHANGES);
    ASSERT_EQ(steps, 4u);
    for (unsigned step = 1; step <= steps + 1; ++step) {
        const support::TempDir dir;
        support::writeFile(dir / "file", "old");
        calls.restart();
        calls.dieAt(FailingSystemCalls::CHANGES, step, 2);
        try {
            replaceBy("new", dir / "file");
        } catch (const FileError&) {
            EXPECT_TRUE(calls.died());
        }
        EXPECT_EQ(support::readFile(dir / "file"), step > steps ? "new" : "old") << step;
    }
}
