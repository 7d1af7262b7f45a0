// The verbs that look into a container: what they say, and what they end with.
#include <gtest/gtest.h>

#include "support/Container.h"
#include "support/TempDir.h"
#include "tools/Command.h"
#include "tools/Designs.h"

using support::TempDir;
using tools::CommandRun;
using tools::runCommand;

namespace {

/// A directory with one of the designs, and what the command says there.
class InDirectory {
public:
    explicit InDirectory(void (*write)(const std::string& dir)) { write(dir_.path()); }

    /// What a run that succeeds says; nothing may come on standard error.
    std::string out(const std::vector<std::string>& words) const
    {
        const CommandRun run = runCommand(dir_.path(), words);
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_EQ(run.error, "");
        return run.out;
    }

    /// What a run that fails says.
    std::string error(const std::vector<std::string>& words) const
    {
        const CommandRun run = runCommand(dir_.path(), words);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.out, "");
        return run.error;
    }

    std::string operator/(const std::string& name) const { return dir_ / name; }

private:
    TempDir dir_;
};

}  // namespace

TEST(Info, tellsWhatAContainerIs)
{
    std::string text = InDirectory(tools::writeDesign).out({"info", "design.hdf"});
    // What deflate makes of the files is the processor's affair.
    const std::size_t packed = text.find(", packed ");
    text.erase(packed, text.find('\n', packed) - packed);
    EXPECT_EQ(text,
              "design.hdf\n"
              "  Part        part-1\n"
              "  Mode        Post-Synthesis\n"
              "  Version     1.3\n"
              "  Tool        1.0\n"
              "  Top module  top\n"
              "  Integrity   intact: the archive has the digest that it records\n"
              "Resources\n"
              "  LUT  25  of 100  [########......................]  25.0 %\n"
              "  FF   80  of 100  [########################......]  80.0 %\n"
              "4 files, 7 members of 5.93 KiB\n"
              "  1  BIT\n"
              "  1  HW_HANDOFF\n"
              "  1  PS_CONFIG\n"
              "  1  PS_FSBL_INIT\n"
              "1 driver of 2 files\n"
              "Attributes\n"
              "  flow  fast\n");
}

TEST(Info, tellsPartitions)
{
    const std::string text = InDirectory(tools::writePartial).out({"info", "partial.hdf"});
    EXPECT_NE(text.find("2 partitions, 2 configurations\n"
                        "  top/filter, default fir\n"
                        "  top/link, default uart\n"),
              std::string::npos);
}

TEST(Info, tellsThatAnArchiveWasChanged)
{
    const InDirectory dir(tools::writeDesign);
    support::patchFile(dir / "design.hdf", "<EDKSYSTEM/>", "<edksystem/>");
    const std::string text = dir.out({"info", "design.hdf"});
    EXPECT_NE(text.find("  Integrity   the archive was changed after it was written: its digest is wrong\n"),
              std::string::npos);
}

TEST(Info, tellsThatAnArchiveRecordsNoDigest)
{
    const std::string text = InDirectory(tools::writeOther).out({"info", "other.hdf"});
    EXPECT_NE(text.find("  Integrity  the archive records no digest\n"), std::string::npos);
}

TEST(List, tellsFilesAndDriversWithTypeAndSize)
{
    EXPECT_EQ(InDirectory(tools::writeDesign).out({"list", "design.hdf"}),
              "HW_HANDOFF        12 B  top.hwh\n"
              "BIT           4.88 KiB  top.bit\n"
              "PS_FSBL_INIT      32 B  ps_init.c\n"
              "PS_CONFIG         40 B  params.json\n"
              "DRIVER_SRC        26 B  drivers/gpio_v1/data/gpio.mdd\n"
              "DRIVER_SRC        19 B  drivers/gpio_v1/src/gpio.c\n"
              "6 files, 5.01 KiB\n");
}

TEST(List, tellsTheFilesOfOneTypeInAnyCase)
{
    const InDirectory dir(tools::writeDesign);
    EXPECT_EQ(dir.out({"list", "design.hdf", "--type", "BIT"}), "BIT  4.88 KiB  top.bit\n1 file, 4.88 KiB\n");
    EXPECT_EQ(dir.out({"list", "design.hdf", "-t", "bit"}), "BIT  4.88 KiB  top.bit\n1 file, 4.88 KiB\n");
    EXPECT_EQ(dir.out({"list", "design.hdf", "-t", "CDO"}), "0 files, 0 B\n");
}

TEST(List, tellsMoreWhenAskedFor)
{
    const InDirectory dir(tools::writeDesign);
    EXPECT_EQ(dir.out({"list", "design.hdf", "--type", "HW_HANDOFF", "--long"}),
              "HW_HANDOFF  12 B  12 B  2be7ea0e  top.hwh  DEFAULT_BD at top/bd\n1 file, 12 B\n");
    const std::string bit = dir.out({"list", "design.hdf", "--type", "BIT", "--long"});
    EXPECT_NE(bit.find("  top.bit  compressed=true\n"), std::string::npos);
}

TEST(List, tellsMembersThatTheBomDoesNotList)
{
    const InDirectory dir(tools::writeOther);
    EXPECT_EQ(dir.out({"list", "other.hdf"}), "BIT  12 B  a.bit\n1 file, 12 B\n");
    const std::string all = dir.out({"list", "other.hdf", "--all"});
    EXPECT_NE(all.find("(unlisted)   10 B  notes.txt\n"), std::string::npos);
    EXPECT_NE(all.find("(BOM)"), std::string::npos);
}

TEST(List, tellsFilesThatTheArchiveLacks)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"hwdef.xml", support::bomOfFiles("0", {"gone.bit"})}});
    EXPECT_EQ(runCommand(dir.path(), {"list", "a.hdf"}).out, "BIT  missing  gone.bit\n1 file, 0 B\n");
}

TEST(Cat, writesAMemberAsItIs)
{
    const InDirectory dir(tools::writeDesign);
    EXPECT_EQ(dir.out({"cat", "design.hdf", "top.bit"}), support::readFile(dir / "in/top.bit"));
    EXPECT_EQ(dir.out({"cat", "design.hdf", "sysdef.xml"}).substr(0, 38),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
}

TEST(Cat, suggestsTheNearestMember)
{
    EXPECT_EQ(InDirectory(tools::writeDesign).error({"cat", "design.hdf", "top.bti"}),
              "hwdef: error: design.hdf: there is no member \"top.bti\"; did you mean \"top.bit\"?\n");
}

TEST(Cat, takesANameInBracketsAsItIs)
{
    const TempDir dir;
    support::writeArchive(
        dir / "a.hdf", {{"hwdef.xml", support::bomOfFiles("0", {})}, {"[x,y]", "brackets"}, {"-x", "dash"}});
    EXPECT_EQ(runCommand(dir.path(), {"cat", "a.hdf", "[x,y]"}).out, "brackets");
    EXPECT_EQ(runCommand(dir.path(), {"cat", "--", "a.hdf", "-x"}).out, "dash");
}

TEST(Cat, failsAtADamagedMember)
{
    const InDirectory dir(tools::writeDesign);
    support::patchFile(dir / "design.hdf", "<EDKSYSTEM/>", "<edksystem/>");
    const CommandRun run = runCommand(dir / "", {"cat", "design.hdf", "top.hwh"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.error.find("member \"top.hwh\": CRC-32 is "), std::string::npos);
}

TEST(Extract, writesAllMembersBelowTheDirectory)
{
    const InDirectory dir(tools::writeDesign);
    EXPECT_EQ(dir.out({"extract", "design.hdf", "-C", "to/there"}),
              "7 files, 5.93 KiB, written to to/there\n");
    EXPECT_EQ(support::readFile(dir / "to/there/top.bit"), support::readFile(dir / "in/top.bit"));
    EXPECT_EQ(support::readFile(dir / "to/there/drivers/gpio_v1/src/gpio.c"), "void gpio(void) {}\n");
}

TEST(Extract, writesTheMembersNamed)
{
    const InDirectory dir(tools::writeDesign);
    EXPECT_EQ(dir.out({"extract", "design.hdf", "*.c", "top.hwh", "-C", "out"}),
              "3 files, 63 B, written to out\n");
    EXPECT_TRUE(support::exists(dir / "out/ps_init.c"));
    EXPECT_TRUE(support::exists(dir / "out/drivers/gpio_v1/src/gpio.c"));
    EXPECT_FALSE(support::exists(dir / "out/top.bit"));
    EXPECT_EQ(dir.error({"extract", "design.hdf", "top.bit", "nope.bin", "-C", "none"}),
              "hwdef: error: design.hdf: there is no member \"nope.bin\"\n");
    EXPECT_FALSE(support::exists(dir / "none"));
}

TEST(Extract, refusesNamesThatLeadOutOfTheDirectory)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf",
                          {{"hwdef.xml", support::bomOfFiles("0", {})}, {"../evil", "x"}, {"good", "y"}});
    const CommandRun run = runCommand(dir.path(), {"extract", "a.hdf", "-C", "out"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.error,
              "hwdef: error: out: member \"../evil\" is not extracted: the name climbs out by \"..\"\n");
    EXPECT_FALSE(support::exists(dir / "evil"));
    EXPECT_EQ(support::readFile(dir / "out/good"), "y");
}

TEST(Extract, makesNoFileOfADirectory)
{
    const TempDir dir;
    support::writeArchive(
        dir / "a.hdf",
        {{"hwdef.xml", "<Project Version=\"1\" Minor=\"0\"/>"}, {"deep/", ""}, {"deep/b.elf", "b"}});
    const CommandRun run = runCommand(dir.path(), {"extract", "a.hdf", "-C", "out"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.error, "");
    EXPECT_EQ(support::readFile(dir / "out/deep/b.elf"), "b");
}

TEST(Drivers, listsDriversWithTheirFiles)
{
    EXPECT_EQ(InDirectory(tools::writeDesign).out({"drivers", "design.hdf"}),
              "gpio\n"
              "  26 B  drivers/gpio_v1/data/gpio.mdd\n"
              "  19 B  drivers/gpio_v1/src/gpio.c\n");
}

TEST(Drivers, extractsTheirFiles)
{
    const InDirectory dir(tools::writeDesign);
    dir.out({"drivers", "design.hdf", "-C", "out"});
    EXPECT_EQ(support::readFile(dir / "out/drivers/gpio_v1/src/gpio.c"), "void gpio(void) {}\n");
    EXPECT_FALSE(support::exists(dir / "out/top.bit"));
}

TEST(Drivers, failsWhenAFileCantBeWritten)
{
    const InDirectory dir(tools::writeDesign);
    support::writeFile(dir / "out/drivers", "a file in the way");
    const CommandRun run = runCommand(dir / "", {"drivers", "design.hdf", "-C", "out"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.error, "");
}

TEST(Partitions, showsTreesWithDefaultAndActiveMarked)
{
    EXPECT_EQ(InDirectory(tools::writePartial).out({"partitions", "partial.hdf"}),
              "2 partitions\n"
              "├── top/filter\n"
              "│   ├── fir (default): fir.bit\n"
              "│   └── iir: iir.bit\n"
              "└── top/link\n"
              "    └── uart (default): uart.bit\n"
              "2 configurations\n"
              "├── both (active)\n"
              "│   ├── top/filter: fir\n"
              "│   └── top/link: uart\n"
              "└── half\n"
              "    ├── top/filter: iir\n"
              "    └── top/link: gray box\n");
}

TEST(Params, showsTheParametersOfAType)
{
    EXPECT_EQ(InDirectory(tools::writeDesign).out({"params", "design.hdf", "ps_config"}),
              "ps_0\n  clock  12000000\n");
}

TEST(Params, failsWithoutAFileOfTheType)
{
    const InDirectory dir(tools::writeDesign);
    EXPECT_EQ(dir.error({"params", "design.hdf", "PS_KMV_INIT"}),
              "hwdef: error: design.hdf: there is no file of the type PS_KMV_INIT\n");
    const std::string text = dir.error({"params", "design.hdf", "BIT"});
    EXPECT_NE(
        text.find("hwdef: error: design.hdf: the first file of the type BIT holds no software parameters\n"),
        std::string::npos);
}
