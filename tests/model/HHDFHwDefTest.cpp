#include "hwdef/model/HHDFHwDef.h"

#include <gtest/gtest.h>

#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/model/HHDFHwDefImp.h"

namespace {

using Types = HHDFHwDefFileTypes;
using Texts = HHDFHwDef::Texts;
using Jumpers = std::vector<std::pair<std::string, bool>>;

struct TextProperty {
    const char* name;
    const std::string& (HHDFHwDef::*get)() const;
    bool (HHDFHwDef::*set)(const std::string&);
};

const std::vector<TextProperty> textProperties = {
    {"tool version", &HHDFHwDef::getToolVersion, &HHDFHwDef::setToolVersion},
    {"board", &HHDFHwDef::getBoard, &HHDFHwDef::setBoard},
    {"part", &HHDFHwDef::getPart, &HHDFHwDef::setPart},
    {"arch", &HHDFHwDef::getArch, &HHDFHwDef::setArch},
    {"package", &HHDFHwDef::getPackage, &HHDFHwDef::setPackage},
    {"device", &HHDFHwDef::getDevice, &HHDFHwDef::setDevice},
    {"speed", &HHDFHwDef::getSpeed, &HHDFHwDef::setSpeed},
    {"base board", &HHDFHwDef::getBaseBoard, &HHDFHwDef::setBaseBoard},
};

HHDFHwDef::HHDFResourceInfo resources(const std::string& prefix)
{
    HHDFHwDef::HHDFResourceInfo info;
    info.lut = prefix + "1";
    info.ff = prefix + "2";
    info.bram = prefix + "3";
    info.dsp = prefix + "4";
    for (std::size_t i = 0; i < info.extra.size(); ++i) {
        info.extra[i] = prefix + std::to_string(5 + i);
    }
    return info;
}

std::string joined(const HHDFHwDef::HHDFResourceInfo& info)
{
    std::string text = info.lut + " " + info.ff + " " + info.bram + " " + info.dsp;
    for (const std::string& extra : info.extra) {
        text += " " + extra;
    }
    return text;
}

}  // namespace

TEST(HHDFHwDef, startsWithEmptyTexts)
{
    const HHDFHwDef def("design.hdf");
    for (const TextProperty& property : textProperties) {
        EXPECT_EQ((def.*property.get)(), "") << property.name;
    }
    EXPECT_EQ(def.getHierTopModuleName(), "");
    EXPECT_EQ(def.getBoardTopDir(), "");
    EXPECT_EQ(def.getDriversTopDir(), "");
    EXPECT_EQ(def.getDigest(), "");
}

TEST(HHDFHwDef, startsAsVersionOneSevenWithoutMode)
{
    const HHDFHwDef def("design.hdf");
    EXPECT_EQ(def.getMajorVersion(), 1U);
    EXPECT_EQ(def.getMinorVersion(), 7U);
    EXPECT_EQ(def.getModeType(), Types::MODE_UNSET);
    EXPECT_EQ(def.getModeName(), "");
    EXPECT_EQ(def.implementation()->bomName, "hwdef.xml");
}

TEST(HHDFHwDef, startsWithEmptyContainersAndFlags)
{
    const HHDFHwDef def("design.hdf");
    Texts attrs = {{"k", "a"}};
    def.getWDIAttrs(attrs);
    EXPECT_FALSE(def.isTIER());
    EXPECT_EQ(def.getSLRNo(), -1);
    EXPECT_FALSE(def.isIntegratedBoard());
    EXPECT_TRUE(def.getBoardConnections().empty());
    EXPECT_TRUE(def.getJumpers().empty());
    EXPECT_TRUE(attrs.empty());
    EXPECT_EQ(joined(def.getUsedResourceInfo()), "         ");
    EXPECT_EQ(joined(def.getSystemResourceInfo()), "         ");
}

TEST(HHDFHwDef, storesEachTextInAFieldOfItsOwn)
{
    HHDFHwDef def("design.hdf");
    for (const TextProperty& property : textProperties) {
        EXPECT_TRUE((def.*property.set)(property.name));
    }
    def.setHierTopModuleName("top");
    def.setBoardTopDir("/b");
    def.setDriversTopDir("/d");
    for (const TextProperty& property : textProperties) {
        EXPECT_EQ((def.*property.get)(), property.name);
    }
    EXPECT_EQ(def.getHierTopModuleName(), "top");
    EXPECT_EQ(def.getBoardTopDir(), "/b");
    EXPECT_EQ(def.getDriversTopDir(), "/d");
}

TEST(HHDFHwDef, takesTheEmptyTextForEveryProperty)
{
    HHDFHwDef def("design.hdf");
    for (const TextProperty& property : textProperties) {
        (def.*property.set)("x");
        EXPECT_TRUE((def.*property.set)("")) << property.name;
        EXPECT_EQ((def.*property.get)(), "") << property.name;
    }
}

TEST(HHDFHwDef, storesVersionsCountsAndFlags)
{
    HHDFHwDef def("design.hdf");
    EXPECT_TRUE(def.setMajorVersion(2));
    EXPECT_TRUE(def.setMinorVersion(4294967295U));
    EXPECT_TRUE(def.setTIER(true));
    EXPECT_TRUE(def.setSLRNo(4));
    EXPECT_TRUE(def.setIntegratedBoard(true));
    EXPECT_EQ(def.getMajorVersion(), 2U);
    EXPECT_EQ(def.getMinorVersion(), 4294967295U);
    EXPECT_TRUE(def.isTIER());
    EXPECT_EQ(def.getSLRNo(), 4);
    EXPECT_TRUE(def.isIntegratedBoard());
}

TEST(HHDFHwDef, namesItsModeAndTheBomDocument)
{
    HHDFHwDef def("design.hdf");
    EXPECT_TRUE(def.setModeType(Types::POST_SYNTHESIS));
    EXPECT_EQ(def.getModeType(), Types::POST_SYNTHESIS);
    EXPECT_EQ(def.getModeName(), "Post-Synthesis");
    EXPECT_EQ(def.implementation()->bomName, "sysdef.xml");
    EXPECT_TRUE(def.setModeType(Types::PRE_SYNTHESIS));
    EXPECT_EQ(def.getModeName(), "Pre-Synthesis");
    EXPECT_EQ(def.implementation()->bomName, "hwdef.xml");
}

TEST(HHDFHwDef, keepsTheBomNameForAnyOtherMode)
{
    HHDFHwDef def("design.hdf");
    def.setModeType(Types::POST_SYNTHESIS);
    EXPECT_TRUE(def.setModeType(Types::MODE_UNSET));
    EXPECT_EQ(def.getModeType(), Types::MODE_UNSET);
    EXPECT_EQ(def.getModeName(), "");
    EXPECT_EQ(def.implementation()->bomName, "sysdef.xml");
    EXPECT_TRUE(def.setModeType(static_cast<Types::HWHModeType>(7)));
    EXPECT_EQ(std::uint32_t{def.getModeType()}, 7U);
    EXPECT_EQ(def.getModeName(), "");
    EXPECT_EQ(def.implementation()->bomName, "sysdef.xml");
}

TEST(HHDFHwDef, keepsAllTenTextsOfTheResources)
{
    HHDFHwDef def("design.hdf");
    def.setUsedResourceInfo(resources("u"));
    def.setSystemResourceInfo(resources("s"));
    EXPECT_EQ(joined(def.getUsedResourceInfo()), "u1 u2 u3 u4 u5 u6 u7 u8 u9 u10");
    EXPECT_EQ(joined(def.getSystemResourceInfo()), "s1 s2 s3 s4 s5 s6 s7 s8 s9 s10");
}

TEST(HHDFHwDef, keepsTheFirstBoardConnectionOfAKey)
{
    HHDFHwDef def("design.hdf");
    EXPECT_TRUE(def.addBoardConnections("x", "y"));
    EXPECT_TRUE(def.addBoardConnections("x", "z"));
    EXPECT_TRUE(def.addBoardConnections("", ""));
    EXPECT_EQ(def.getBoardConnections(), (Texts{{"", ""}, {"x", "y"}}));
}

TEST(HHDFHwDef, replacesAllBoardConnections)
{
    HHDFHwDef def("design.hdf");
    def.addBoardConnections("x", "y");
    EXPECT_TRUE(def.setBoardConnections({{"a", "b"}}));
    EXPECT_EQ(def.getBoardConnections(), (Texts{{"a", "b"}}));
}

TEST(HHDFHwDef, listsAJumperAsOftenAsItIsUpdated)
{
    HHDFHwDef def("design.hdf");
    def.updateJumpers("J2", false);
    def.updateJumpers("J1", true);
    def.updateJumpers("J1", true);
    EXPECT_EQ(def.getJumpers(), (Jumpers{{"J2", false}, {"J1", true}, {"J1", true}}));
}

TEST(HHDFHwDef, replacesAndCopiesAllJumpers)
{
    HHDFHwDef def("design.hdf");
    def.updateJumpers("J1", true);
    EXPECT_TRUE(def.setJumpers({{"J3", false}}));
    Jumpers jumpers = {{"old", true}};
    EXPECT_TRUE(def.getJumpers(jumpers));
    EXPECT_EQ(jumpers, (Jumpers{{"J3", false}}));
}

TEST(HHDFHwDef, keepsTheLastValueOfAFreeAttribute)
{
    HHDFHwDef def("design.hdf");
    def.addWDIAttr("k", "a");
    def.addWDIAttr("k", "b");
    def.addWDIAttr("", "");
    Texts attrs = {{"old", "x"}};
    def.getWDIAttrs(attrs);
    EXPECT_EQ(attrs, (Texts{{"", ""}, {"k", "b"}}));
}

TEST(HHDFHwDef, hasCdoByItsVersionAlone)
{
    struct Row {
        std::uint32_t major;
        std::uint32_t minor;
        bool expected;
    };
    const std::vector<Row> rows = {
        {1, 7, true}, {1, 4, true},  {1, 3, false},           {2, 0, false},
        {2, 4, true}, {0, 7, false}, {1, 0xFFFFFFFFU, false}, {0xFFFFFFFFU, 7, false}};
    HHDFHwDef def("design.hdf");
    EXPECT_TRUE(def.doesHwdefHaveCDO());
    for (const Row& row : rows) {
        def.setMajorVersion(row.major);
        def.setMinorVersion(row.minor);
        EXPECT_EQ(def.doesHwdefHaveCDO(), row.expected) << row.major << "." << row.minor;
    }
}
