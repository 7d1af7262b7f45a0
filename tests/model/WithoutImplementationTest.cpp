#include <gtest/gtest.h>

#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/model/HHDFHwDef.h"
#include "hwdef/model/HHDFHwDefImp.h"

namespace {

using Types = HHDFHwDefFileTypes;
using Names = std::vector<std::string>;
using Files = std::vector<HHDFHwDefFile*>;

class Bare : public HHDFHwDef {
public:
    Bare() : HHDFHwDef(std::unique_ptr<HHDFHwDefImp>()) {}
};

}  // namespace

TEST(HHDFHwDef, answersEmptyTextsWithoutImplementation)
{
    const Bare def;
    EXPECT_EQ(def.implementation(), nullptr);
    EXPECT_EQ(def.getToolVersion(), "");
    EXPECT_EQ(def.getBoard(), "");
    EXPECT_EQ(def.getPart(), "");
    EXPECT_EQ(def.getArch(), "");
    EXPECT_EQ(def.getPackage(), "");
    EXPECT_EQ(def.getDevice(), "");
    EXPECT_EQ(def.getSpeed(), "");
    EXPECT_EQ(def.getBaseBoard(), "");
    EXPECT_EQ(def.getHierTopModuleName(), "");
    EXPECT_EQ(def.getModeName(), "");
}

TEST(HHDFHwDef, answersFallbackValuesWithoutImplementation)
{
    const Bare def;
    EXPECT_EQ(def.getMajorVersion(), 0xFFFFFFFFU);
    EXPECT_EQ(def.getMinorVersion(), 0xFFFFFFFFU);
    EXPECT_EQ(def.getModeType(), Types::MODE_UNSET);
    EXPECT_FALSE(def.isTIER());
    EXPECT_EQ(def.getSLRNo(), -1);
    EXPECT_FALSE(def.isIntegratedBoard());
    EXPECT_FALSE(def.doesHwdefHaveCDO());
}

TEST(HHDFHwDef, refusesEveryGuardedSetterWithoutImplementation)
{
    Bare def;
    std::string digest = "1";
    EXPECT_FALSE(def.setToolVersion("x"));
    EXPECT_FALSE(def.setBoard("x"));
    EXPECT_FALSE(def.setPart("x"));
    EXPECT_FALSE(def.setBaseBoard("x"));
    EXPECT_FALSE(def.setArch("x"));
    EXPECT_FALSE(def.setPackage("x"));
    EXPECT_FALSE(def.setDevice("x"));
    EXPECT_FALSE(def.setSpeed("x"));
    EXPECT_FALSE(def.setMajorVersion(1));
    EXPECT_FALSE(def.setMinorVersion(1));
    EXPECT_FALSE(def.setTIER(true));
    EXPECT_FALSE(def.setSLRNo(1));
    EXPECT_FALSE(def.setIntegratedBoard(true));
    EXPECT_FALSE(def.setDigest(digest));
    EXPECT_FALSE(def.setJumpers({}));
    EXPECT_FALSE(def.setBoardConnections({}));
    EXPECT_FALSE(def.setModeType(Types::PRE_SYNTHESIS));
    EXPECT_EQ(def.getToolVersion(), "");
    EXPECT_EQ(def.getMajorVersion(), 0xFFFFFFFFU);
}

TEST(HHDFHwDef, leavesTheCallersContainersAloneWithoutImplementation)
{
    Bare def;
    std::vector<std::pair<std::string, bool>> jumpers = {{"J1", true}};
    HHDFHwDef::Texts attrs = {{"k", "a"}};
    def.updateJumpers("J2", false);
    EXPECT_FALSE(def.addBoardConnections("x", "y"));
    EXPECT_FALSE(def.getJumpers(jumpers));
    EXPECT_EQ(jumpers.size(), 1U);
    def.getWDIAttrs(attrs);
    EXPECT_EQ(attrs, (HHDFHwDef::Texts{{"k", "a"}}));
}

TEST(HHDFHwDef, addsAndRemovesNothingWithoutImplementation)
{
    Bare def;
    HHDFHwDefFile file("/x/top.bit");
    EXPECT_FALSE(def.addFileToBom("/x/top.bit", Types::BIT));
    EXPECT_FALSE(def.addFileToBom("/x/top.bit", Types::BIT, "top", Types::DEFAULT_BD));
    EXPECT_FALSE(def.addFileToBom("/x/top.bit"));
    EXPECT_FALSE(def.addFileToBom(&file));
    EXPECT_FALSE(def.removeFileFromBom(&file));
    EXPECT_FALSE(def.copyFrom(&def));
}

TEST(HHDFHwDef, findsNothingWithoutImplementation)
{
    Bare def;
    std::string name = "top.bit";
    std::string found = "old";
    HHDFHwDef::Texts attrs = {{"k", "a"}};
    EXPECT_EQ(def.getBomFile(name), nullptr);
    EXPECT_FALSE(def.isBomFileExistsWithName(name));
    EXPECT_EQ(def.getBomFileHierarchy(name), "");
    EXPECT_EQ(def.getBomFileType(name), "");
    EXPECT_EQ(def.getBomFileHwDefPath(name), "");
    def.getBomFileForHierarchy("", found);
    EXPECT_EQ(found, "");
    EXPECT_FALSE(def.doesHwDefExist(""));
    def.setHwSrcDB(name, "db");
    EXPECT_FALSE(def.addFileAttrs(name, attrs));
}

TEST(HHDFHwDef, emptiesTheListsOfPathsAndEntriesWithoutImplementation)
{
    const Bare def;
    HHDFHwDefFile file("/x/top.bit");
    Names paths = {"old"};
    Files all = {&file};
    Files ofType = {&file};
    EXPECT_EQ(def.getBomFiles(Types::BIT, paths), 0U);
    EXPECT_EQ(def.getBomFiles(all), 0U);
    EXPECT_EQ(def.getBomFiles(Types::UNKNOWN, ofType), 0U);
    EXPECT_TRUE(paths.empty());
    EXPECT_TRUE(all.empty());
    EXPECT_TRUE(ofType.empty());
}

TEST(HHDFHwDef, keepsTheOtherListsWithoutImplementation)
{
    const Bare def;
    HHDFHwDefFile file("/x/top.bit");
    Names names = {"old"};
    Names paths = {"old", "older"};
    Files files = {&file};
    EXPECT_EQ(def.getBomFiles(names), 1U);
    EXPECT_EQ(def.getBomFiles(Types::DEFAULT_BD, paths), 2U);
    EXPECT_EQ(def.getBomFiles(Types::DEFAULT_BD, files), 1U);
    EXPECT_EQ(names, (Names{"old"}));
    EXPECT_EQ(files, (Files{&file}));
}
