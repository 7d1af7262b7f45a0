#include <gtest/gtest.h>

#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/model/HHDFHwDef.h"
#include "hwdef/model/HHDFHwDefImp.h"

namespace {

using Types = HHDFHwDefFileTypes;
using Texts = HHDFHwDef::Texts;

HHDFHwDef::HHDFResourceInfo resources(const std::string& lut, const std::string& last)
{
    HHDFHwDef::HHDFResourceInfo info;
    info.lut = lut;
    info.extra.back() = last;
    return info;
}

/// Gives every property that a copy takes a value of its own.
void setCopiedProperties(HHDFHwDef& def)
{
    def.setMajorVersion(3);
    def.setMinorVersion(9);
    def.setModeType(Types::POST_SYNTHESIS);
    def.setToolVersion("tool");
    def.setSystemResourceInfo(resources("s1", "s10"));
    def.setBoard("board");
    def.setArch("arch");
    def.setPackage("package");
    def.setDevice("device");
    def.setSpeed("speed");
    def.setPart("part");
    def.setUsedResourceInfo(resources("u1", "u10"));
    def.setHierTopModuleName("top");
}

std::string namesOf(const HHDFHwDef& def)
{
    std::vector<std::string> names;
    def.getBomFiles(names);
    std::string joined;
    for (const std::string& name : names) {
        joined += name + " ";
    }
    return joined;
}

}  // namespace

TEST(HHDFHwDef, copiesTheProperties)
{
    HHDFHwDef other("other.hdf");
    setCopiedProperties(other);
    HHDFHwDef def("design.hdf");
    EXPECT_TRUE(def.copyFrom(&other));
    EXPECT_EQ(def.getMajorVersion(), 3U);
    EXPECT_EQ(def.getMinorVersion(), 9U);
    EXPECT_EQ(def.getToolVersion(), "tool");
    EXPECT_EQ(def.getBoard(), "board");
    EXPECT_EQ(def.getArch(), "arch");
    EXPECT_EQ(def.getPackage(), "package");
    EXPECT_EQ(def.getDevice(), "device");
    EXPECT_EQ(def.getSpeed(), "speed");
    EXPECT_EQ(def.getPart(), "part");
    EXPECT_EQ(def.getHierTopModuleName(), "top");
}

TEST(HHDFHwDef, copiesBothResourceRecordsWhole)
{
    HHDFHwDef other("other.hdf");
    setCopiedProperties(other);
    HHDFHwDef def("design.hdf");
    def.copyFrom(&other);
    EXPECT_EQ(def.getSystemResourceInfo().lut, "s1");
    EXPECT_EQ(def.getSystemResourceInfo().extra.back(), "s10");
    EXPECT_EQ(def.getUsedResourceInfo().lut, "u1");
    EXPECT_EQ(def.getUsedResourceInfo().extra.back(), "u10");
}

TEST(HHDFHwDef, copiesEmptyPropertiesToo)
{
    HHDFHwDef def("design.hdf");
    setCopiedProperties(def);
    def.copyFrom(std::make_unique<HHDFHwDef>("other.hdf").get());
    EXPECT_EQ(def.getPart(), "");
    EXPECT_EQ(def.getHierTopModuleName(), "");
    EXPECT_EQ(def.getModeType(), Types::MODE_UNSET);
    EXPECT_EQ(def.getUsedResourceInfo().extra.back(), "");
}

TEST(HHDFHwDef, copiesTheModeWithoutTheBomName)
{
    HHDFHwDef other("other.hdf");
    setCopiedProperties(other);
    HHDFHwDef def("design.hdf");
    def.copyFrom(&other);
    EXPECT_EQ(def.getModeName(), "Post-Synthesis");
    EXPECT_EQ(def.implementation()->bomName, "hwdef.xml");
}

TEST(HHDFHwDef, leavesWhatACopyDoesNotTake)
{
    HHDFHwDef other("other.hdf");
    std::string text = "x";
    other.setBaseBoard("base");
    other.setIntegratedBoard(true);
    other.setTIER(true);
    other.setSLRNo(4);
    other.updateJumpers("J1", true);
    other.addBoardConnections("x", "y");
    other.setDigest(text);
    other.setBoardTopDir("/b");
    other.setDriversTopDir("/d");
    other.addPartitionInfo(text, text, text, true);
    other.addPartitionCell("c", "i", "r", "f", true);
    other.addBoardFileToBom("b", "/b/x", "x", "");
    HHDFHwDef def("design.hdf");
    EXPECT_TRUE(def.copyFrom(&other));
    EXPECT_EQ(def.getBaseBoard(), "");
    EXPECT_FALSE(def.isIntegratedBoard());
    EXPECT_FALSE(def.isTIER());
    EXPECT_EQ(def.getSLRNo(), -1);
    EXPECT_TRUE(def.getJumpers().empty());
    EXPECT_TRUE(def.getBoardConnections().empty());
    EXPECT_EQ(def.getDigest(), "");
    EXPECT_EQ(def.getBoardTopDir(), "");
    EXPECT_EQ(def.getDriversTopDir(), "");
    EXPECT_TRUE(def.getPartitionInfo().empty());
    EXPECT_TRUE(def.getPartitionConfigs().empty());
    EXPECT_TRUE(def.getBoardFilesMap().empty());
}

TEST(HHDFHwDef, appendsCopiedEntriesAfterItsOwn)
{
    HHDFHwDef other("other.hdf");
    other.addFileToBom("/x/b", Types::BIT, "top", Types::SCOPED_BD, "/c/other.hdf");
    other.addFileToBom("/x/a", Types::PDI);
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/z", Types::ELF);
    def.addFileToBom("/x/b", Types::ELF);
    EXPECT_TRUE(def.copyFrom(&other));
    EXPECT_EQ(namesOf(def), "z b b a ");
    std::vector<HHDFHwDefFile*> copies;
    std::vector<HHDFHwDefFile*> originals;
    def.getBomFiles(copies);
    other.getBomFiles(originals);
    EXPECT_TRUE(*copies.at(2) == *originals.at(0));
    EXPECT_NE(copies.at(2), originals.at(0));
}

TEST(HHDFHwDef, replacesDriversAndFreeAttributes)
{
    HHDFHwDef other("other.hdf");
    other.addDrivers("uart", "/x/uart");
    other.addDrivers("uart", std::vector<HHDFHwDefDriver>{{"/x/a.c", "a.c", ""}, {"/x/a.c", "a.c", ""}});
    other.addWDIAttr("k", "a");
    HHDFHwDef def("design.hdf");
    def.addDrivers("gpio", "/x/gpio");
    def.addDriverFileToBom("gpio", "/x", "b.c", "");
    def.addWDIAttr("old", "x");
    EXPECT_TRUE(def.copyFrom(&other));
    Texts directories;
    Texts attrs;
    EXPECT_EQ(def.getDriverFiles(directories), 1U);
    def.getWDIAttrs(attrs);
    EXPECT_EQ(directories, (Texts{{"uart", "/x/uart"}}));
    EXPECT_EQ(attrs, (Texts{{"k", "a"}}));
    EXPECT_EQ(def.getDriverFilesMap().size(), 1U);
    EXPECT_EQ(def.getDriverFilesMap().at("uart").size(), 2U);
}

TEST(HHDFHwDef, doublesItsEntriesWhenItCopiesItself)
{
    HHDFHwDef def("design.hdf");
    def.setPart("part");
    def.addFileToBom("/x/a", Types::BIT);
    def.addFileToBom("/x/b", Types::BIT);
    EXPECT_TRUE(def.copyFrom(&def));
    EXPECT_EQ(namesOf(def), "a b a b ");
    EXPECT_EQ(def.getPart(), "part");
}

TEST(HHDFHwDef, copiesFromNothing)
{
    HHDFHwDef def("design.hdf");
    def.setPart("part");
    EXPECT_FALSE(def.copyFrom(nullptr));
    EXPECT_EQ(def.getPart(), "part");
}
