// The scratch directory among strangers: others' left-overs and traps below the same parent.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/filesystem.hpp>
#include <csignal>
#include <cstdlib>

#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/HUTEnv.h"
#include "support/Container.h"
#include "support/MeasuredChild.h"
#include "support/Messages.h"
#include "support/TempDir.h"

namespace fs = boost::filesystem;
using support::measureInChild;
using support::TempDir;

namespace {

constexpr std::uint64_t noLimit = std::uint64_t{8} << 30U;

unsigned modeOf(const std::string& path)
{
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_mode : 0;
}

/// Makes a definition whose process is then killed.
void leaveBehind(const std::string& parent, const std::string& container)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::setenv("TMPDIR", parent.c_str(), 1);
        const auto def = HHDFHwDefUtils::createHDF(container);
        ::kill(::getpid(), SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
}

}  // namespace

TEST(ScratchDir, isItsUsersAloneWhateverTheMaskAndGoesAtTheEnd)
{
    const TempDir dir;
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(measureInChild(dir.path(), noLimit,
                                 [&] {
                                     ::umask(0);
                                     const auto def = HHDFHwDefUtils::createHDF(dir / "design.hdf");
                                     const std::string root = HUTEnv::getHDITmpDir();

                                     return (modeOf(root) & 07777U) == 0700U && S_ISDIR(modeOf(root)) ? 7 : 1;
                                 })
                      .exitCode,
                  7);
    }
    EXPECT_EQ(dir.list(), "");
}

TEST(ScratchDir, goesWithADefinitionThatCantBeOpened)
{
    const TempDir dir;
    support::writeArchive(dir / "design.hdf", {{"hwdef.xml", "no document"}});
    const support::Messages messages;
    const std::string root = HUTEnv::getHDITmpDir();
    const auto count = [&] { return std::distance(fs::directory_iterator(root), fs::directory_iterator()); };
    const auto before = count();

    EXPECT_EQ(HHDFHwDefUtils::getHDF(dir / "design.hdf"), nullptr);
    EXPECT_EQ(HHDFHwDefUtils::getHDF(dir / "missing.hdf"), nullptr);
    EXPECT_EQ(count(), before);
}

TEST(ScratchDir, isNotHinderedByWhatKilledProcessesLeft)
{
    const TempDir dir;
    for (int run = 0; run < 20; ++run) {
        leaveBehind(dir.path(), dir / "design.hdf");
    }
    const std::string left = dir.list();
    EXPECT_NE(left, "");
    EXPECT_EQ(measureInChild(dir.path(), noLimit,
                             [&] {
                                 const auto def = HHDFHwDefUtils::createHDF(dir / "design.hdf");
                                 return def != nullptr && def->write(true) ? 7 : 1;
                             })
                  .exitCode,
              7);
    // Another process's left-overs may be in use for all this one knows.
    EXPECT_EQ(dir.list(), "design.hdf " + left);
}

TEST(ScratchDir, isNotLedAwayByALinkThatTookItsPlace)
{
    const TempDir dir;
    fs::create_directories(dir / "parent");
    support::writeFile(dir / "precious/file", "precious");
    EXPECT_EQ(measureInChild(dir / "parent", noLimit,
                             [&] {
                                 const std::string root = HUTEnv::getHDITmpDir();
                                 fs::rename(root, root + "-moved");
                                 fs::create_symlink(dir / "precious", root);
                                 const auto def = HHDFHwDefUtils::createHDF(dir / "design.hdf");
                                 const std::string& scratch = def->implementation()->tmpDir->getDir();
                                 return HUTEnv::getHDITmpDir() != root && scratch.find(root + "/") != 0 ? 7
                                                                                                        : 1;
                             })
                  .exitCode,
              7);
    EXPECT_EQ(support::readFile(dir / "precious/file"), "precious");
}
