#include "hwdef/bom/HHDFHwDefBomWriter.h"

#include <gtest/gtest.h>

#include <locale>
#include <sstream>

#include "hwdef/model/HHDFHwDefImp.h"
#include "support/BomDocument.h"
#include "support/Messages.h"
#include "support/Parameter.h"
#include "support/TempDir.h"

using support::definition;
using support::outline;
using support::Parameter;
using support::writtenBom;

namespace {

/// The lines of the definition's document that hold `text`, one after the other.
std::string linesWith(const HHDFHwDef& def, const std::string& text)
{
    std::string lines;
    std::istringstream document(outline(writtenBom(def)));
    for (std::string line; std::getline(document, line);) {
        if (line.find(text) != std::string::npos) {
            lines += line + "\n";
        }
    }
    return lines;
}

struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};

std::unique_ptr<HHDFHwDef> fullDefinition()
{
    auto def = definition();
    std::string digest = "12345";
    def->setDigest(digest);
    def->setToolVersion("2024.1");
    def->setModeType(HHDFHwDefFileTypes::POST_SYNTHESIS);
    def->setPart("part-1");
    def->setSpeed("-1");
    HHDFHwDef::HHDFResourceInfo system;
    system.lut = "900";
    system.dsp = "220";
    system.extra[0] = "carried only";
    def->setSystemResourceInfo(system);
    def->setHierTopModuleName("top");
    def->addFileToBom("/src/top.hwh", HHDFHwDefFileTypes::HW_HANDOFF, "top/u0",
                      HHDFHwDefFileTypes::SCOPED_BD);
    def->addFileToBom("/src/top.bit", HHDFHwDefFileTypes::BIT);
    HHDFHwDef::Texts attributes{{"z", "<&"}, {"a", "\"'"}};
    def->addFileAttrs("top.bit", attributes);
    def->setHwSrcDB("top.bit", "other.hdf");
    def->addDriverFileToBom("gpio", "/src", "gpio.c", "");
    def->addDriverFileToBom("gpio", "/src", "drivers/gpio.h", "");
    def->addDrivers("gpio", "/src/gpio");
    HHDFHwDef::HHDFResourceInfo used;
    used.ff = "2";
    used.bram = "3";
    def->setUsedResourceInfo(used);
    def->addWDIAttr("k", "v");
    std::string path = "top/rp", module = "rm_a", file = "a.bit";
    def->addPartitionInfo(path, module, file, true);
    def->addPartitionCell("c", "top/g", "", "", true);
    def->addPartitionCell("c", "top/rp", "rm_a", "a.bit", true);
    return def;
}

}  // namespace

TEST(HHDFHwDefBomWriter, refusesAMissingDefinitionAndWritesNothing)
{
    const support::TempDir temp;

    EXPECT_FALSE(HHDFHwDefBomWriter().write(nullptr, temp / "hwdef.xml"));
    EXPECT_EQ(temp.list(), "");
}

TEST(HHDFHwDefBomWriter, writesEveryElementInItsPlace)
{
    EXPECT_EQ(writtenBom(*fullDefinition()), R"(<?xml version="1.0" encoding="UTF-8"?>
<Project Version="1" Minor="7" DIGEST="12345">
  <TOOL_VERSION Version="2024.1" />
  <MODE Name="Post-Synthesis" />
  <SYSTEMINFO BOARD="" PART="part-1" ARCH="" PACKAGE="" DEVICE="" SPEED="-1" LUT="900" DSP="220" />
  <HIERARCHY Name="top" />
  <File Type="HW_HANDOFF" Name="top.hwh" src_db="design.hdf" DESIGN_HIERARCHY="top/u0" BD_TYPE="SCOPED_BD"></File>
  <File Type="BIT" Name="top.bit" src_db="other.hdf">
    <FILEATTR ATTRNAME="a" ATTRVAL="&quot;'" />
    <FILEATTR ATTRNAME="z" ATTRVAL="&lt;&amp;" />
  </File>
  <DRIVERS>
    <DRIVER IP_VLNV="gpio">
      <File PATH="drivers/gpio.c" />
      <File PATH="drivers/gpio.h" />
    </DRIVER>
  </DRIVERS>
  <File Type="DRIVER_SRC" Name="drivers" />
  <USEDRESOURCES FF="2" BRAM="3" />
  <WDIATTRS>
    <WDIATTR ATTRNAME="k" ATTRVAL="v" />
  </WDIATTRS>
  <Instance_Paths>
    <Reconfigurable_Partition Instance_Path="top/rp" DEFALUT_CONFIG_RM="rm_a">
      <File RM_NAME="rm_a" Name="a.bit" />
    </Reconfigurable_Partition>
  </Instance_Paths>
  <PRConfigurations>
    <PRConfiguration Name="c" Active="true">
      <PartitionInstMap Instance_Path="top/rp" RM_NAME="rm_a">
        <File Name="a.bit" />
      </PartitionInstMap>
      <GrayBoxInst Name="top/g" />
    </PRConfiguration>
  </PRConfigurations>
</Project>
)");
}

TEST(HHDFHwDefBomWriter, leavesOutWhatADefinitionDoesNotHave)
{
    const auto def = definition();
    def->addFileToBom("/src/a", HHDFHwDefFileTypes::ELF);

    EXPECT_EQ(outline(writtenBom(*def)),
              "Project Version='1' Minor='7' DIGEST=''\n"
              "  TOOL_VERSION Version=''\n"
              "  MODE Name=''\n"
              "  SYSTEMINFO BOARD='' PART='' ARCH='' PACKAGE='' DEVICE='' SPEED=''\n"
              "  HIERARCHY Name=''\n"
              "  File Type='ELF' Name='a' src_db='design.hdf'\n"
              "  USEDRESOURCES\n");
}

TEST(HHDFHwDefBomWriter, writesUnsetVersionsAsOne)
{
    const auto def = definition();
    def->setMajorVersion(4294967295u);
    def->setMinorVersion(4294967295u);
    EXPECT_EQ(linesWith(*def, "Project"), "Project Version='1' Minor='1' DIGEST=''\n");

    def->setMajorVersion(4294967294u);
    def->setMinorVersion(0);
    EXPECT_EQ(linesWith(*def, "Project"), "Project Version='4294967294' Minor='0' DIGEST=''\n");
}

TEST(HHDFHwDefBomWriter, writesNumbersTheSameInEveryLocale)
{
    const Parameter on("project.generateAiePrimitive", "true");
    const auto def = definition();
    def->setMajorVersion(1234567);
    def->setSLRNo(1000);
    const std::locale earlier = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    const std::string document = writtenBom(*def);
    std::locale::global(earlier);

    EXPECT_NE(document.find("Version=\"1234567\""), std::string::npos);
    EXPECT_NE(document.find("Value=\"1000\""), std::string::npos);
}

TEST(HHDFHwDefBomWriter, writesThePartOnlyWhenTheParameterAsksForIt)
{
    const auto def = definition();
    def->setPart("p");
    def->setTIER(true);
    EXPECT_EQ(linesWith(*def, "TIER"), "");
    {
        const Parameter off("project.generateAiePrimitive", "false");
        EXPECT_EQ(linesWith(*def, "TIER"), "");
    }
    const Parameter on("project.generateAiePrimitive", "true");
    EXPECT_NE(outline(writtenBom(*def))
                  .find("  PART Name='p'\n"
                        "    TIER IS_TIER='1'\n"
                        "    NUM_OF_SLRS Value='-1'\n"
                        "  HIERARCHY"),
              std::string::npos);
    def->setTIER(false);
    def->setSLRNo(4);
    EXPECT_EQ(linesWith(*def, "IS_TIER"), "    TIER IS_TIER='0'\n");
    EXPECT_EQ(linesWith(*def, "NUM_OF_SLRS"), "    NUM_OF_SLRS Value='4'\n");
}

TEST(HHDFHwDefBomWriter, writesAllFourResourceCounts)
{
    const auto def = definition();
    HHDFHwDef::HHDFResourceInfo info;
    info.lut = "1";
    info.ff = "2";
    info.bram = "3";
    info.dsp = "4";
    def->setUsedResourceInfo(info);
    def->setSystemResourceInfo(info);

    EXPECT_EQ(linesWith(*def, "LUT"),
              "  SYSTEMINFO BOARD='' PART='' ARCH='' PACKAGE='' DEVICE='' SPEED='' LUT='1' FF='2' BRAM='3' "
              "DSP='4'\n"
              "  USEDRESOURCES LUT='1' FF='2' BRAM='3' DSP='4'\n");
}

TEST(HHDFHwDefBomWriter, passesOverNullEntries)
{
    const auto def = definition();
    def->addFileToBom("/src/a", HHDFHwDefFileTypes::ELF);
    def->implementation()->bom.add(nullptr);
    def->addFileToBom("/src/b", HHDFHwDefFileTypes::ISS);

    EXPECT_EQ(linesWith(*def, "File"),
              "  File Type='ELF' Name='a' src_db='design.hdf'\n"
              "  File Type='PARTIAL_BIT' Name='b' src_db='design.hdf'\n");
}

TEST(HHDFHwDefBomWriter, writesRoleAndHierarchyForHandoffFilesOnly)
{
    const auto def = definition();
    def->addFileToBom("/src/a", HHDFHwDefFileTypes::HW_HANDOFF);
    def->addFileToBom("/src/b", HHDFHwDefFileTypes::BIT, "top", HHDFHwDefFileTypes::SCOPED_BD);

    EXPECT_EQ(linesWith(*def, "File"),
              "  File Type='HW_HANDOFF' Name='a' src_db='design.hdf' DESIGN_HIERARCHY='' BD_TYPE='UNKNOWN'\n"
              "  File Type='BIT' Name='b' src_db='design.hdf'\n");
}

TEST(HHDFHwDefBomWriter, putsDriversBelowTheirDirectoryUnlessTheirNameSpeaksOfIt)
{
    const auto def = definition();
    for (const char* name : {"a.c", "drivers/b.c", "mydrivers_x/c.c", "DRIVERS/d.c"}) {
        def->addDriverFileToBom("two", "/src", name, "");
    }
    def->addDrivers("one", std::vector<HHDFHwDefDriver>{HHDFHwDefDriver("/src/", "", "")});

    EXPECT_NE(outline(writtenBom(*def))
                  .find("  DRIVERS\n"
                        "    DRIVER IP_VLNV='one'\n"
                        "      File PATH='drivers/'\n"
                        "    DRIVER IP_VLNV='two'\n"
                        "      File PATH='drivers/a.c'\n"
                        "      File PATH='drivers/b.c'\n"
                        "      File PATH='mydrivers_x/c.c'\n"
                        "      File PATH='drivers/DRIVERS/d.c'\n"
                        "  USEDRESOURCES"),
              std::string::npos);
}

TEST(HHDFHwDefBomWriter, marksDriverSourcesOnce)
{
    const auto def = definition();
    def->addDrivers("a", "/src/a");
    def->addDrivers("b", "/src/b");

    EXPECT_EQ(linesWith(*def, "drivers"), "  File Type='DRIVER_SRC' Name='drivers'\n");
    EXPECT_EQ(linesWith(*def, "DRIVERS"), "");
}

TEST(HHDFHwDefBomWriter, writesEveryFileOfEveryModule)
{
    const auto def = definition();
    std::string path = "p", b = "rm_b", a = "rm_a", first = "2.bit", second = "1.bit";
    def->addPartitionInfo(path, b, first, false);
    def->addPartitionInfo(path, b, second, false);
    def->addPartitionInfo(path, a, first, false);

    EXPECT_NE(outline(writtenBom(*def))
                  .find("  Instance_Paths\n"
                        "    Reconfigurable_Partition Instance_Path='p' DEFALUT_CONFIG_RM=''\n"
                        "      File RM_NAME='rm_a' Name='2.bit'\n"
                        "      File RM_NAME='rm_b' Name='2.bit'\n"
                        "      File RM_NAME='rm_b' Name='1.bit'\n"),
              std::string::npos);
}

TEST(HHDFHwDefBomWriter, ordersConfigurationsByNameAndModulesBeforeGrayBoxes)
{
    const auto def = definition();
    def->addPartitionCell("b", "g2", "", "", false);
    def->addPartitionCell("b", "g1", "", "", false);
    def->addPartitionCell("b", "z", "rm_z", "z.bit", false);
    def->addPartitionCell("b", "y", "rm_y", "", false);
    def->addPartitionCell("a", "g", "", "", true);

    EXPECT_NE(outline(writtenBom(*def))
                  .find("  PRConfigurations\n"
                        "    PRConfiguration Name='a' Active='true'\n"
                        "      GrayBoxInst Name='g'\n"
                        "    PRConfiguration Name='b' Active='false'\n"
                        "      PartitionInstMap Instance_Path='y' RM_NAME='rm_y'\n"
                        "        File Name=''\n"
                        "      PartitionInstMap Instance_Path='z' RM_NAME='rm_z'\n"
                        "        File Name='z.bit'\n"
                        "      GrayBoxInst Name='g2'\n"
                        "      GrayBoxInst Name='g1'\n"),
              std::string::npos);
}

TEST(HHDFHwDefBomWriter, writesTheSameBytesAgain)
{
    const auto def = fullDefinition();

    EXPECT_EQ(writtenBom(*def), writtenBom(*def));
}

TEST(HHDFHwDefBomWriter, replacesWhatStoodThere)
{
    const support::TempDir temp;
    support::writeFile(temp / "hwdef.xml", std::string(100000, 'x'));
    const auto def = definition();

    EXPECT_TRUE(HHDFHwDefBomWriter().write(def.get(), temp / "hwdef.xml"));
    EXPECT_EQ(support::readFile(temp / "hwdef.xml"), writtenBom(*def));
    EXPECT_EQ(temp.list(), "hwdef.xml");
}

TEST(HHDFHwDefBomWriter, tellsWhyAFileCannotBeWritten)
{
    support::Messages messages;
    const support::TempDir temp;
    const auto def = definition();

    EXPECT_FALSE(HHDFHwDefBomWriter().write(def.get(), temp / "missing/hwdef.xml"));
    ASSERT_EQ(messages.all().size(), 1u);
    EXPECT_EQ(messages.all()[0].id, "");
    EXPECT_NE(messages.all()[0].text.find(temp / "missing/hwdef.xml"), std::string::npos)
        << messages.joined();
}

TEST(HHDFHwDefBomWriter, tellsWhichTextXmlCannotCarryAndKeepsTheOldFile)
{
    support::Messages messages;
    const support::TempDir temp;
    support::writeFile(temp / "hwdef.xml", "old");
    const auto def = definition();
    def->addWDIAttr("key", "bell\a");

    EXPECT_FALSE(HHDFHwDefBomWriter().write(def.get(), temp / "hwdef.xml"));
    ASSERT_EQ(messages.all().size(), 1u);
    const std::string text = messages.all()[0].text;
    EXPECT_NE(text.find("\"WDIATTR\", attribute \"ATTRVAL\", byte 5"), std::string::npos) << text;
    EXPECT_EQ(support::readFile(temp / "hwdef.xml"), "old");
    EXPECT_EQ(temp.list(), "hwdef.xml");
}
