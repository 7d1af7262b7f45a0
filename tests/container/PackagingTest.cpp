#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"

namespace fs = boost::filesystem;
using support::memberOf;
using support::Messages;
using support::namesIn;
using support::TempDir;
using support::writeArchive;
using support::writeFile;

namespace {

const auto bit = HHDFHwDefFileTypes::BIT;

}  // namespace

TEST(Packaging, putsTheBomFirstThenFilesInListOrderThenDriversInKeyOrder)
{
    const TempDir dir;
    HHDFHwDef def(dir / "design.hdf");
    for (const char* name : {"z.bit", "a.bit"}) {
        writeFile(dir / name, name);
        def.addFileToBom(dir / name, bit);
    }
    for (const char* name : {"y.mdd", "b.mdd"}) {
        writeFile(dir / ("tree/" + std::string(name)), name);
    }
    def.addDriverFileToBom("ip2", dir / "tree", "b.mdd", "");
    def.addDriverFileToBom("ip1", dir / "tree", "y.mdd", "");
    def.addDriverFileToBom("ip1", dir / "tree", "b.mdd", "");

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(namesIn(dir / "design.hdf"), "hwdef.xml z.bit a.bit y.mdd b.mdd");
    EXPECT_EQ(memberOf(dir / "design.hdf", "a.bit"), "a.bit");
}

TEST(Packaging, namesTheBomByTheMode)
{
    const TempDir dir;
    HHDFHwDef def(dir / "design.hdf");
    def.setModeType(HHDFHwDefFileTypes::POST_SYNTHESIS);

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(namesIn(dir / "design.hdf"), "sysdef.xml");
}

TEST(Packaging, keepsTheTreeOfDrivers)
{
    const TempDir dir;
    writeFile(dir / "tree/src/x.c", "source");
    writeFile(dir / "tree/data/x.mdd", "description");
    HHDFHwDef def(dir / "design.hdf");
    def.addDriverFileToBom("ip", dir / "tree", "src/x.c", "");
    def.addDriverFileToBom("ip", dir / "tree", "data/x.mdd", "");

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(memberOf(dir / "design.hdf", "src/x.c"), "source");
    EXPECT_EQ(memberOf(dir / "design.hdf", "data/x.mdd"), "description");
}

TEST(Packaging, givesTheSameArchiveForEitherFlag)
{
    const TempDir dir;
    writeFile(dir / "a.bit", support::textBytes(100000, 1));
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "a.bit", bit);

    ASSERT_TRUE(def.write(true));
    const std::string first = support::readFile(dir / "design.hdf");
    ASSERT_TRUE(def.write(false));
    EXPECT_TRUE(support::readFile(dir / "design.hdf") == first);
}

TEST(Packaging, attachesTheArchiveDigest)
{
    const TempDir dir;
    HHDFHwDef def(dir / "design.hdf");

    ASSERT_TRUE(def.write(true));
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(dir / "design.hdf")), HUTZip::INTACT);
}

TEST(Packaging, replacesWhatStoodAtThePath)
{
    const TempDir dir;
    writeArchive(dir / "design.hdf", {{"old.bit", "old"}});
    HHDFHwDef def(dir / "design.hdf");

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(namesIn(dir / "design.hdf"), "hwdef.xml");
    EXPECT_EQ(dir.list(), "design.hdf");
}

TEST(Packaging, takesMembersOfOtherContainers)
{
    const TempDir dir;
    writeFile(dir / "a.bit", "on disk");
    writeArchive(dir / "other.hdf", {{"a.bit", "in other.hdf"}, {"drivers/x.mdd", "driver"}});
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "a.bit", bit, dir / "other.hdf");
    def.addDriverFileToBom("ip", "/nowhere", "drivers/x.mdd", dir / "other.hdf");

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(memberOf(dir / "design.hdf", "a.bit"), "in other.hdf");
    EXPECT_EQ(memberOf(dir / "design.hdf", "drivers/x.mdd"), "driver");
}

TEST(Packaging, takesFilesInsideCoreContainers)
{
    const TempDir dir;
    writeArchive(dir / "core.zip", {{"sub/a.bit", "in core"}, {"drivers/x.mdd", "driver"}});
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "core.zip/sub/a.bit", bit);
    def.addDriverFileToBom("ip", dir / "core.zip", "drivers/x.mdd", "");

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(memberOf(dir / "design.hdf", "a.bit"), "in core");
    EXPECT_EQ(memberOf(dir / "design.hdf", "drivers/x.mdd"), "driver");
    EXPECT_EQ(messages.joined(), "");
    EXPECT_TRUE(fs::exists(def.implementation()->tmpDir->getDir() + "/a.bit"));
}

TEST(Packaging, keepsFilesOfOneNameInTwoCoreContainersApart)
{
    const TempDir dir;
    writeArchive(dir / "one.zip", {{"x/a.c", "one"}});
    writeArchive(dir / "two.zip", {{"y/a.c", "two"}});
    HHDFHwDef def(dir / "design.hdf");
    def.addDriverFileToBom("ip", dir / "one.zip", "x/a.c", "");
    def.addDriverFileToBom("ip", dir / "two.zip", "y/a.c", "");
    def.addDriverFileToBom("ip", dir / "two.zip", "z/a.c", "");

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(namesIn(dir / "design.hdf"), "hwdef.xml x/a.c y/a.c");
    EXPECT_EQ(memberOf(dir / "design.hdf", "x/a.c"), "one");
    EXPECT_EQ(memberOf(dir / "design.hdf", "y/a.c"), "two");
}

TEST(Packaging, takesAMemberFromItsContainerEvenWhenTheDiskPathLiesInACoreContainer)
{
    const TempDir dir;
    writeArchive(dir / "core.zip", {{"a.bit", "in core"}});
    writeArchive(dir / "other.hdf", {{"a.bit", "in other"}});
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "core.zip/a.bit", bit, dir / "other.hdf");

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(memberOf(dir / "design.hdf", "a.bit"), "in other");
}

// --- What can't be added.
