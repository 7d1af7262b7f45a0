// The verb that merges containers: what it tells, writes and refuses.
#include <gtest/gtest.h>

#include "hwdef/hwdef.h"
#include "support/Container.h"
#include "support/TempDir.h"
#include "tools/Command.h"
#include "tools/Designs.h"

using support::readFile;
using support::TempDir;
using support::writeFile;
using tools::CommandRun;
using tools::contains;
using tools::expectDone;
using tools::expectError;
using tools::runCommand;

namespace {

/// DIR/design.hdf, and DIR/overlay.hdf with another top.bit and the same top.hwh.
void writeMeeting(const TempDir& dir)
{
    tools::writeDesign(dir.path());
    writeFile(dir / "new/top.bit", "new bits");
    expectDone(runCommand(dir.path(), {"build", "-o", "overlay.hdf", "new/top.bit:BIT",
                                       "in/top.hwh:HW_HANDOFF", "-s", "attribute.flow=slow"}));
}

constexpr const char* meetingReport =
    "properties from design.hdf\n"
    "design.hdf   4 files   1 driver\n"
    "overlay.hdf  2 files  0 drivers\n"
    "  file       top.bit  different  from overlay.hdf\n"
    "  file       top.hwh  the same   from overlay.hdf\n"
    "  attribute  flow     different  from overlay.hdf\n";

}  // namespace

TEST(Merge, tellsWhatCameFromWhereAndWhatMet)
{
    const TempDir dir;
    writeMeeting(dir);
    const CommandRun run = runCommand(dir.path(), {"merge", "design.hdf", "overlay.hdf", "-o", "all.hdf"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, std::string(meetingReport) + "written to all.hdf\n");
    EXPECT_EQ(support::memberOf(dir / "all.hdf", "top.bit"), "new bits");
    EXPECT_EQ(HHDFHwDefUtils::getHDF(dir / "all.hdf", true)->getPart(), "part-1");
}

TEST(Merge, writesNothingWhenItRunsDry)
{
    const TempDir dir;
    writeMeeting(dir);
    const CommandRun run = runCommand(dir.path(), {"merge", "design.hdf", "overlay.hdf", "--dry-run"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, std::string(meetingReport) + "nothing was written\n");
    EXPECT_EQ(runCommand(dir.path(), {"merge", "design.hdf", "design.hdf", "-n"}).exitCode, 0);
}

TEST(Merge, refusesDifferentBytesWhenItIsStrict)
{
    const TempDir dir;
    writeMeeting(dir);
    writeFile(dir / "all.hdf", "old");
    const CommandRun run =
        runCommand(dir.path(), {"merge", "design.hdf", "overlay.hdf", "-o", "all.hdf", "--strict"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.error, "hwdef: files of one name carry different bytes, which --strict refuses\n");
    EXPECT_EQ(readFile(dir / "all.hdf"), "old");
    expectError(runCommand(dir.path(), {"merge", "design.hdf"}),
                "merge: the container to write is missing: -o OUT");
    expectError(runCommand(dir.path(), {"merge", "design.hdf", "gone.hdf", "-o", "all.hdf"}),
                "gone.hdf: there is no such file");
}

TEST(Merge, findsDifferentFilesOfADriver)
{
    const TempDir dir;
    // The library packs them without the directory that the bill of materials has in front.
    for (const std::string name : {"a", "b"}) {
        writeFile(dir / name + "/gpio/x.mdd", "driver " + name);
        const auto def = HHDFHwDefUtils::createHDF(dir / name + ".hdf");
        def->addDrivers("gpio", {{dir / name + "/gpio/x.mdd", "gpio/x.mdd", ""}});
        ASSERT_TRUE(def->write(true));
    }
    ASSERT_EQ(support::memberOf(dir / "b.hdf", "gpio/x.mdd"), "driver b");
    const CommandRun run = runCommand(dir.path(), {"merge", "a.hdf", "b.hdf", "--strict", "-n"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(contains(run.out, "  file    drivers/gpio/x.mdd  different  from b.hdf\n")) << run.out;
}
