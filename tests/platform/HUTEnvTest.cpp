#include "platform/HUTEnv.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <regex>
#include <string>
#include <thread>

#include "platform/HEXAll.h"
#include "platform/HUTFile.h"
#include "support/TempDir.h"

namespace {

/// Runs `work` in a child process that then ends normally, its scratch roots below `parent`; the
/// child's exit code.
int inChild(const std::string& parent, const std::function<int()>& work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::setenv("TMPDIR", parent.c_str(), 1);
        std::exit(work());
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool liesBelow(const std::string& path, const std::string& parent)
{
    return path.compare(0, parent.size() + 1, parent + "/") == 0;
}

/// Asks for the root as late as a static object can, and leaves a file there.
void useScratchRootLate()
{
    support::writeFile(HUTEnv::getHDITmpDir() + "/late", "x");
}

}  // namespace

TEST(HUTEnv, makesTheScratchRootBelowTmpdir)
{
    const support::TempDir dir;
    EXPECT_EQ(inChild(dir.path(),
                      [&] {
                          const std::string root = HUTEnv::getHDITmpDir();
                          return liesBelow(root, dir.path()) && HUTFile(root).isDir() ? 7 : 1;
                      }),
              7);
}

TEST(HUTEnv, makesTheScratchRootBelowTmpWithoutTmpdir)
{
    EXPECT_EQ(inChild("", [] { return liesBelow(HUTEnv::getHDITmpDir(), "/tmp") ? 7 : 1; }), 7);
}

TEST(HUTEnv, answersAnAbsoluteRootForARelativeTmpdir)
{
    const support::TempDir dir;
    EXPECT_EQ(inChild("here/..",
                      [&] {
                          if (::chdir(dir.path().c_str()) != 0) {
                              return 1;
                          }
                          return liesBelow(HUTEnv::getHDITmpDir(), dir.path()) ? 7 : 2;
                      }),
              7);
    EXPECT_EQ(dir.list(), "");
}

TEST(HUTEnv, keepsTheScratchRootFromOtherUsers)
{
    struct stat status = {};
    ASSERT_EQ(::stat(HUTEnv::getHDITmpDir().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700u);
    EXPECT_EQ(status.st_uid, ::geteuid());
}

TEST(HUTEnv, answersTheSameScratchRootEachTime)
{
    EXPECT_EQ(HUTEnv::getHDITmpDir(), HUTEnv::getHDITmpDir());
}

TEST(HUTEnv, answersTheSameScratchRootToSeveralThreads)
{
    const support::TempDir dir;
    EXPECT_EQ(inChild(dir.path(),
                      [] {
                          std::string theirs;
                          std::thread other([&] { theirs = HUTEnv::getHDITmpDir(); });
                          const std::string ours = HUTEnv::getHDITmpDir();
                          other.join();
                          return ours == theirs ? 7 : 1;
                      }),
              7);
    EXPECT_EQ(dir.list(), "");
}

TEST(HUTEnv, removesTheScratchRootWithAllItHoldsWhenTheProcessEnds)
{
    const support::TempDir dir;
    EXPECT_EQ(inChild(dir.path(),
                      [&] {
                          support::writeFile(HUTEnv::getHDITmpDir() + "/a/b/file", "x");
                          return dir.list().empty() ? 1 : 7;
                      }),
              7);
    EXPECT_EQ(dir.list(), "");
}

TEST(HUTEnv, removesAScratchRootThatIsMadeWhileTheProcessEnds)
{
    const support::TempDir dir;
    EXPECT_EQ(inChild(dir.path(), [] { return std::atexit(useScratchRootLate) == 0 ? 7 : 1; }), 7);
    EXPECT_EQ(dir.list(), "");
}

TEST(HUTEnv, keepsTheScratchRootForWhatEndsLaterThanItsMaker)
{
    const support::TempDir dir;
    EXPECT_EQ(inChild(dir.path(),
                      [] {
                          const bool registered = std::atexit(useScratchRootLate) == 0;
                          return registered && !HUTEnv::getHDITmpDir().empty() ? 7 : 1;
                      }),
              7);
    EXPECT_EQ(dir.list(), "");
}

TEST(HUTEnv, givesAForkedChildAScratchRootOfItsOwn)
{
    const support::TempDir dir;
    const std::string ours = HUTEnv::getHDITmpDir();
    EXPECT_EQ(inChild(dir.path(), [&] { return liesBelow(HUTEnv::getHDITmpDir(), dir.path()) ? 7 : 1; }), 7);
    EXPECT_TRUE(HUTFile(ours).isDir());
    EXPECT_EQ(HUTEnv::getHDITmpDir(), ours);
}

TEST(HUTEnv, leavesTheParentsScratchRootWhenAForkedChildEnds)
{
    const std::string ours = HUTEnv::getHDITmpDir();
    EXPECT_EQ(inChild("", [] { return 7; }), 7);
    EXPECT_TRUE(HUTFile(ours).isDir());
}

TEST(HUTEnv, makesAnotherScratchRootWhenItWasRemoved)
{
    const support::TempDir dir;
    EXPECT_EQ(inChild(dir.path(),
                      [] {
                          const std::string first = HUTEnv::getHDITmpDir();
                          HUTFile::rmRecursive(first);
                          // What stands there now is not the root: a link could lead anywhere.
                          if (::symlink("/", first.c_str()) != 0) {
                              return 1;
                          }
                          const std::string second = HUTEnv::getHDITmpDir();
                          ::unlink(first.c_str());
                          return second != first && HUTFile(second).isDir() ? 7 : 2;
                      }),
              7);
    EXPECT_EQ(dir.list(), "");
}

TEST(HUTEnv, throwsWhenTheScratchRootCanNotBeMade)
{
    const support::TempDir dir;
    EXPECT_EQ(inChild(dir / "missing",
                      [&] {
                          try {
                              HUTEnv::getHDITmpDir();
                          } catch (const HEXAll& error) {
                              const std::string text = error.what();
                              return text.find(dir / "missing/hwdef-") == 0 &&
                                             text.find("No such file or directory") != std::string::npos
                                         ? 7
                                         : 2;
                          }
                          return 1;
                      }),
              7);
}

TEST(HUTEnv, answersTheVersionInThreeNumbers)
{
    EXPECT_TRUE(std::regex_match(HUTEnv::getProductVersion(), std::regex("[0-9]+\\.[0-9]+\\.[0-9]+")));
}
