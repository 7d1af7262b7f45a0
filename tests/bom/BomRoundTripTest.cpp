// What the writer writes and the reader reads back, and documents written by other hands.

#include <gtest/gtest.h>

#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/HPAParamMgr.h"
#include "support/BomDocument.h"
#include "support/Messages.h"

using support::definition;
using support::driversOf;
using support::entriesOf;
using support::outline;
using support::readBomText;
using support::writtenBom;

namespace {

std::unique_ptr<HHDFHwDef> writtenAndRead(const HHDFHwDef& def)
{
    auto read = definition();
    EXPECT_TRUE(readBomText(*read, writtenBom(def)));
    return read;
}

const char* const example = R"(<?xml version="1.0"?>
<Project Version='1' Minor='0' DIGEST='3f2a'>
  <TOOL_VERSION Version='1.0'/>
  <MODE Name='Post-Synthesis'/>
  <SYSTEMINFO BOARD='' PART='p-1' ARCH='arch1' PACKAGE='pkg' DEVICE='dev' SPEED='-1' LUT='900' FF='850' BRAM='140' DSP='220'/>
  <HIERARCHY Name='design_top'/>
  <File Type='HW_HANDOFF' Name='design_top.hwh' src_db='design.hdf' DESIGN_HIERARCHY='' BD_TYPE='DEFAULT_BD'></File>
  <File Type='BIT' Name='design_top.bit' src_db='design.hdf'>
    <FILEATTR ATTRNAME='compressed' ATTRVAL='true'/>
  </File>
  <DRIVERS>
    <DRIVER IP_VLNV='vendor:ip:gpio:2.0'>
      <File PATH='drivers/gpio_v2_0/src/gpio.c'/>
    </DRIVER>
  </DRIVERS>
  <USEDRESOURCES LUT='1200' FF='2400' BRAM='4' DSP='0'/>
  <Instance_Paths>
    <Reconfigurable_Partition Instance_Path='top/rp0' DEFALUT_CONFIG_RM='rm_a'>
      <File RM_NAME='rm_a' Name='rp0_rm_a_partial.bit'/>
    </Reconfigurable_Partition>
  </Instance_Paths>
</Project>
)";

/// The document with every element's name turned by `convert`.
std::string withNames(const std::string& document, int (*convert)(int))
{
    std::string result = document;
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (result[i] != '<' || result[i + 1] == '?') {
            continue;
        }
        for (++i; result[i] != ' ' && result[i] != '>'; ++i) {
            result[i] = static_cast<char>(convert(result[i]));
        }
    }
    return result;
}

/// A text with everything that XML has to write in another way.
const std::string awkward = " <a href=\"x\">'&amp;'\n\r\n\t\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80]]> ";

}  // namespace

TEST(BomRoundTrip, writesAnExampleAsItWasRead)
{
    const auto def = definition();
    ASSERT_TRUE(readBomText(*def, example));

    std::string expected = outline(example);
    const std::string file = "rp0_rm_a_partial.bit";
    expected.replace(expected.find(file), file.size(), "bitFile");
    EXPECT_EQ(outline(writtenBom(*def)), expected);
}

TEST(BomRoundTrip, readsElementsInAnyCaseTheSame)
{
    const auto asWritten = definition();
    const auto upper = definition();
    const auto lower = definition();
    ASSERT_TRUE(readBomText(*asWritten, example));
    ASSERT_TRUE(readBomText(*upper, withNames(example, &std::toupper)));
    ASSERT_TRUE(readBomText(*lower, withNames(example, &std::tolower)));

    EXPECT_EQ(writtenBom(*upper), writtenBom(*asWritten));
    EXPECT_EQ(writtenBom(*lower), writtenBom(*asWritten));
}

TEST(BomRoundTrip, isStableFromTheSecondTimeOn)
{
    const auto def = definition();
    def->addFileToBom("/src/a", HHDFHwDefFileTypes::ISS);
    def->addFileToBom("/src/b", HHDFHwDefFileTypes::BDA_VARIANT);
    def->addDriverFileToBom("v", "/src", "x.c", "");
    std::string path = "p", module = "m", file = "f.bit";
    def->addPartitionInfo(path, module, file, true);
    def->addPartitionCell("c", "i", "m", "f.bit", true);

    const auto first = writtenAndRead(*def);
    EXPECT_NE(writtenBom(*first), writtenBom(*def));
    EXPECT_EQ(writtenBom(*writtenAndRead(*first)), writtenBom(*first));
}

TEST(BomRoundTrip, keepsAwkwardTexts)
{
    const auto def = definition();
    def->setToolVersion(awkward);
    def->setBoard(awkward);
    def->setHierTopModuleName(awkward);
    def->addFileToBom("/src/a", HHDFHwDefFileTypes::HW_HANDOFF, awkward, HHDFHwDefFileTypes::DEFAULT_BD);
    HHDFHwDef::Texts attributes{{awkward, awkward}};
    def->addFileAttrs("a", attributes);
    def->setHwSrcDB("a", awkward);
    def->addWDIAttr(awkward, awkward);
    def->addPartitionCell(awkward, awkward, awkward, "", true);

    const auto read = writtenAndRead(*def);
    EXPECT_EQ(read->getToolVersion(), awkward);
    EXPECT_EQ(read->getBoard(), awkward);
    EXPECT_EQ(read->getHierTopModuleName(), awkward);
    EXPECT_EQ(entriesOf(*read), "/data/design/a HW_HANDOFF DEFAULT_BD '" + awkward + "' '" + awkward + "' [" +
                                    awkward + "=" + awkward + "]\n");
    EXPECT_EQ(read->implementation()->wdiAttrs, attributes);
    EXPECT_EQ(read->getPartitionConfigs().at(awkward)->getPartitionCell(awkward)->getRmName(), awkward);
}

TEST(BomRoundTrip, writesAwkwardTextsAsOtherParsersReadThem)
{
    const auto def = definition();
    def->setToolVersion(awkward);

    EXPECT_NE(outline(writtenBom(*def)).find("TOOL_VERSION Version='" + awkward + "'\n"), std::string::npos);
}

TEST(BomRoundTrip, keepsTheStackedDevice)
{
    HPAParamMgr::getParamMgr()->setValue("project.generateAiePrimitive", "true");
    const auto def = definition();
    def->setTIER(true);
    def->setSLRNo(3);
    const auto read = writtenAndRead(*def);
    HPAParamMgr::getParamMgr()->removeValue("project.generateAiePrimitive");

    EXPECT_TRUE(read->isTIER());
    EXPECT_EQ(read->getSLRNo(), 3);
}

TEST(BomRoundTrip, givesBackPrefixedDriverNames)
{
    const auto def = definition();
    def->addDriverFileToBom("v", "/src", "x.c", "");
    def->addDriverFileToBom("v", "/src", "drivers/y.c", "");

    EXPECT_EQ(driversOf(*writtenAndRead(*def)),
              "v: /data/design/drivers/drivers/x.c, drivers/x.c, /data/design.hdf\n"
              "v: /data/design/drivers/drivers/y.c, drivers/y.c, /data/design.hdf\n");
}

TEST(BomRoundTrip, looksForDriverSourcesWhereTheMarkSays)
{
    support::Messages messages;
    const auto def = definition();
    def->addDrivers("v", "/src");

    const auto read = definition("/nowhere/at/all");
    EXPECT_TRUE(readBomText(*read, writtenBom(*def)));
    EXPECT_EQ(messages.joined(), "hdf @64-5@%s 20000000 [/nowhere/at/all/drivers]\n");
}

TEST(BomRoundTrip, survivesDocumentsOfTheWrongShape)
{
    support::Messages messages;
    for (const char* document : {
             "<a Version='1' Minor='1'/>",
             "<a Version='1' Minor='1'>text<b/><!-- comment --><?pi?><![CDATA[x]]></a>",
             "<Project Version='1' Minor='1'><FILE><FILE "
             "Name='x'/></FILE><DRIVERS><File/></DRIVERS></Project>",
             "<File Version='1' Minor='1' Name='x' Type='BIT'/>",
             "<Project Version='1' Minor='1'><PRConfigurations PRConfiguration='x'><GrayBoxInst Name='g'/>"
             "</PRConfigurations><Instance_Paths><File RM_NAME='x'/></Instance_Paths></Project>",
         }) {
        const auto def = definition();
        EXPECT_TRUE(readBomText(*def, document)) << document;
        EXPECT_EQ(entriesOf(*def), "") << document;
        EXPECT_EQ(driversOf(*def), "") << document;
        EXPECT_TRUE(def->getPartitionInfo().empty() && def->getPartitionConfigs().empty()) << document;
    }
    EXPECT_EQ(messages.joined(), "");
}
