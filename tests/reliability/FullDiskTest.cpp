// Disks that are full, files that may grow no further, and directories that can't be written to.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/Aftermath.h"
#include "support/Messages.h"
#include "support/WithoutPrivileges.h"

using support::Aftermath;
using support::Operation;
using support::TempDir;

namespace {

/// While it lives, no file of this process grows beyond so many bytes.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        ::signal(SIGXFSZ, SIG_IGN);
        EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &earlier_), 0);
        const rlimit limit = {bytes, earlier_.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~FileSizeLimit()
    {
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &earlier_), 0);
        ::signal(SIGXFSZ, SIG_DFL);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit earlier_ = {};
};

/// A file system of its own in memory, of so many bytes; not there when the system doesn't allow it.
class SmallDisk {
public:
    explicit SmallDisk(const std::string& bytes)
        : isThere_(::mount("tmpfs", dir_.path().c_str(), "tmpfs", 0, ("size=" + bytes).c_str()) == 0)
    {
    }
    ~SmallDisk()
    {
        if (isThere_) {
            EXPECT_EQ(::umount2(dir_.path().c_str(), MNT_DETACH), 0);
        }
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool isThere() const { return isThere_; }
    const TempDir& dir() const { return dir_; }
    /// Writes a file that leaves so many bytes.
    void fillUpTo(std::uintmax_t leftBytes) const
    {
        const std::uintmax_t free = std::filesystem::space(dir_.path()).available;
        std::ofstream(dir_ / "filler", std::ios::binary) << std::string(free - leftBytes, 'f');
    }

private:
    const TempDir dir_;
    const bool isThere_;
};

class FullDisk : public testing::TestWithParam<Operation> {
protected:
    Aftermath aftermath_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Of, FullDisk, testing::ValuesIn(support::operations()),
                         [](const auto& info) { return info.param.name; });

}  // namespace

TEST_P(FullDisk, leavesTheOldOrTheNewStateWhereverItEnds)
{
    // Files that are larger at the start are still read, and grow no more.
    int reported = 0;
    const rlim_t most = std::max<rlim_t>(6000, aftermath_.largestBytes());
    for (rlim_t bytes = 0; bytes <= most; bytes += bytes < 200 ? 8 : bytes < 6000 ? 97 : 20011) {
        aftermath_.reset();
        Aftermath::Outcome outcome;
        {
            const FileSizeLimit limit(bytes);
            outcome = aftermath_.run();
        }
        aftermath_.expectOldOrNew(outcome);
        aftermath_.expectNoScratch();
        ASSERT_FALSE(HasFailure()) << bytes;
        reported += outcome.isReported();
    }
    EXPECT_EQ(reported > 0, GetParam().tellsOfWrites && aftermath_.writes());
}

TEST(FullDiskOfItsOwn, keepsTheContainerAndTellsTheReason)
{
    const SmallDisk disk("256k");
    if (!disk.isThere()) {
        GTEST_SKIP() << "this system doesn't let the test mount a disk";
    }
    const TempDir in;
    support::writeFile(in / "a", support::randomBytes(20000, 1));
    support::writeFile(in / "b", support::randomBytes(60000, 2));
    const std::string path = disk.dir() / "design.hdf";
    ASSERT_TRUE(HHDFHwDefUtils::writeFileToHDF(in / "a", "a", path));
    const std::string old = support::readFile(path);
    disk.fillUpTo(32 * 1024);

    const support::Messages messages;
    EXPECT_FALSE(HHDFHwDefUtils::writeFileToHDF(in / "b", "b", path));
    EXPECT_NE(messages.joined().find("No space left on device"), std::string::npos) << messages.joined();
    EXPECT_TRUE(support::readFile(path) == old);
    const auto def = HHDFHwDefUtils::createHDF(path);
    def->addFileToBom(in / "b", HHDFHwDefFileTypes::BIT);
    EXPECT_FALSE(def->write(true));
    EXPECT_TRUE(support::readFile(path) == old);
    EXPECT_EQ(disk.dir().list(), "design.hdf filler");

    std::filesystem::remove(disk.dir() / "filler");
    EXPECT_TRUE(HHDFHwDefUtils::writeFileToHDF(in / "b", "b", path));
    EXPECT_EQ(support::namesIn(path), "a b");
}

TEST(ReadOnlyDirectory, keepsTheContainerAndTellsTheReason)
{
    const TempDir dir;
    support::writeFile(dir / "new", "content");
    support::writeArchive(dir / "design.hdf", {{"hwdef.xml", support::bomOfFiles("0", {"a"})}, {"a", "x"}});
    const std::string old = support::readFile(dir / "design.hdf");
    const support::Messages messages;
    {
        const support::WithoutPrivileges here(dir.path());
        const auto def = HHDFHwDefUtils::getHDF(dir / "design.hdf");
        ASSERT_NE(def, nullptr);
        EXPECT_FALSE(def->write(true));
        EXPECT_NE(messages.joined().find("Permission denied"), std::string::npos) << messages.joined();
        EXPECT_FALSE(HHDFHwDefUtils::writeFileToHDF(dir / "new", "new", dir / "other.hdf"));
        EXPECT_FALSE(HHDFHwDefUtils::writeHDF(dir / "other.hdf", {}, true, {}, {}));
        EXPECT_EQ(HHDFHwDefUtils::getFileBufferFromHDF("a", dir / "design.hdf"), "x");
    }
    EXPECT_TRUE(support::readFile(dir / "design.hdf") == old);
    EXPECT_EQ(dir.list(), "design.hdf new");
}
