// Builds the seeds of all targets: fuzz_seeds DIR writes DIR/TARGET/NAME.

#include <boost/filesystem/operations.hpp>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "fuzz/FuzzInput.h"
#include "hwdef/hwdef.h"
#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
#include "support/ZipBuilder.h"

namespace fs = boost::filesystem;

namespace {

fs::path seeds;

void seed(const char* target, const std::string& name, const std::string& input)
{
    fs::create_directories(seeds / target);
    std::ofstream file((seeds / target / name).native(), std::ios::binary);
    if (!file.write(input.data(), static_cast<std::streamsize>(input.size())).flush()) {
        throw std::runtime_error("cannot write seed " + name);
    }
}

std::string bytesOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string sourceFile(const std::string& name, const std::string& content)
{
    const fs::path path = fs::path(fuzz::directory()) / "sources" / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path.native(), std::ios::binary) << content;
    return path.native();
}

std::string numbered(const char* text, int count)
{
    std::string result;
    for (int i = 0; i < count; ++i) {
        result += text + std::to_string(i);
    }
    return result;
}

/// A container with something of everything, as the library writes it.
std::string fullContainer()
{
    const std::string path = fuzz::directory() + "/full.hdf";
    fs::remove(path);
    const auto def = HHDFHwDefUtils::createHDF(path);
    def->setModeType(HHDFHwDefFileTypes::PRE_SYNTHESIS);
    def->setPart("p-1");
    def->setHierTopModuleName("top");
    def->setUsedResourceInfo({"1", "2", "3", "4", {}});
    def->addFileToBom(sourceFile("top.bit", numbered("frame ", 400)), HHDFHwDefFileTypes::BIT);
    def->addFileToBom(sourceFile("io.json", R"({"refName":"ps","pss_io":"x"})"), HHDFHwDefFileTypes::IO_DATA);
    def->addFileToBom(sourceFile("top.hwh", "<hwh/>"), HHDFHwDefFileTypes::HW_HANDOFF, "top/ps",
                      HHDFHwDefFileTypes::DEFAULT_BD);
    HHDFHwDef::Texts attributes{{"ip_type", "VELD"}};
    def->addFileAttrs("top.bit", attributes);
    def->addWDIAttr("key", "value");
    sourceFile("drivers/gpio/data/gpio.mdd", "driver");
    def->addDriverFileToBom("gpio", fuzz::directory() + "/sources", "drivers/gpio/data/gpio.mdd", "");
    std::string partition = "top/rp0", module = "rm_a", file = "a.bit";
    def->addPartitionInfo(partition, module, file, true);
    def->addPartitionCell("config", "top/rp0", "rm_a", "a.bit", true);
    def->addPartitionCell("config", "top/rp1", "", "", true);
    def->write(true);
    return bytesOf(path);
}

const char* const bomOfEverything = R"(<?xml version="1.0"?>
<!-- by hand --><Project Version='1' Minor='2' DIGEST='3f2a'>
  <TOOL_VERSION Version='1.0'/><MODE Name='Pre-Synthesis'/>
  <SYSTEMINFO BOARD='b' PART='p-1' ARCH='a' PACKAGE='k' DEVICE='d' SPEED='-1' LUT='9' FF='8' BRAM='1' DSP='2'/>
  <PART Name='p-1'><TIER IS_TIER='1'/><NUM_OF_SLRS Value='3'/></PART>
  <HIERARCHY Name='top'/>
  <File Type='HW_HANDOFF' Name='a.hwh' src_db='d.hdf' DESIGN_HIERARCHY='top/x' BD_TYPE='DEFAULT_BD' DIGEST='00'/>
  <File Type='BIT' Name='a.bit'><FILEATTR ATTRNAME='compressed' ATTRVAL='tr&#117;e &amp; more'/></File>
  <File Type='IO_DATA' Name='io.json'/><File Type='DRIVER_SRC' Name='src'/>
  <DRIVERS><DRIVER IP_VLNV='v:ip:gpio:2.0'><File PATH='drivers/gpio/src/gpio.c' DIGEST='11'/></DRIVER></DRIVERS>
  <USEDRESOURCES LUT='1' FF='2' BRAM='3' DSP='4'/><WDIATTRS><WDIATTR ATTRNAME='n' ATTRVAL='v'/></WDIATTRS>
  <Instance_Paths><Reconfigurable_Partition Instance_Path='top/rp0' DEFALUT_CONFIG_RM='rm_a'>
    <File RM_NAME='rm_a' Name='p.bit'/></Reconfigurable_Partition></Instance_Paths>
  <PRConfigurations><PRConfiguration Name='c' Active='true'>
    <PartitionInstMap Instance_Path='top/rp0' RM_NAME='rm_a'/><GrayBoxInst Name='top/rp1'/></PRConfiguration></PRConfigurations>
</Project>
)";

/// No mode, a version that isn't set, a driver's file beside "drivers" in one of two spellings, a default
/// module that two match: what rewriting gives another form.
const char* const bomThatRewritingChanges = R"(<Project Version='2' Minor='-1'>
  <DRIVERS><DRIVER IP_VLNV='gpio'><File PATH='src/gpio.c'/><File PATH='drivers/src/gpio.c'/></DRIVER></DRIVERS>
  <Instance_Paths><Reconfigurable_Partition Instance_Path='top/rp0' DEFALUT_CONFIG_RM='rm'>
    <File RM_NAME='RM' Name='1.bit'/><File RM_NAME='Rm' Name='2.bit'/></Reconfigurable_Partition></Instance_Paths>
</Project>
)";

const char* const board = R"(<Board Type='Integrated'><BASEBOARD Name='b'><File PATH='x//y.xml'/></BASEBOARD>
<DAUGHTERBOARD Name='d' Connector='j1'><File PATH='/z'/></DAUGHTERBOARD>
<JUMPERS><JUMPER Name='j' Value='1'/></JUMPERS></Board>)";

const char* const ioSetting = "(*PSS_IO= \\\"pin 1, mode \\n\\\nx pin 2\\n\\\nx\\\" *)\\n\\\n";
const char* const powerSetting = "(*PSS_POWER= \"core 1.0 \\\naux 1.8\\\\\n\\\n\" *)";

void archiveSeeds()
{
    seed("Archive", "full", fullContainer());
    support::ZipBuilder plain;
    plain.addStored("stored", "content");
    plain.addDeflated("deflated", numbered("text ", 300));
    plain.addDeflated("descriptor", "12345").setDescriptor(true, 4);
    plain.addStored("", "");
    plain.addStored("stored", "again");
    plain.members.front().local.extra = support::zip64Extra({7, 7});
    plain.comment = "a comment";
    seed("Archive", "plain", plain.build());
    plain.zip64 = true;
    plain.prefix = "in front";
    seed("Archive", "zip64", plain.build());
    plain.members.back().setFlag(1);
    plain.members.front().local.name = "other";
    seed("Archive", "strange", plain.build());
    seed("Archive", "empty", support::ZipBuilder().build());
}

/// What opening and rewriting share.
void containerSeeds(const char* target)
{
    seed(target, "full", fullContainer());
    seed(target, "everything",
         fuzz::inputOf(
             {{"hwdef.xml", bomOfEverything}, {"a.bit", "bits"}, {"a.hwh", "<h/>"}, {"io.json", "{}"}}));
    seed(target, "names",
         fuzz::inputOf({{"sysdef.xml",
                         "<Project Version='1' Minor='0'><File Type='BIT' Name='../x'/>"
                         "<File Type='BIT' Name='/abs'/><File Type='BIT' Name='a/b'/>"
                         "<DRIVERS><DRIVER IP_VLNV='v'><File PATH='drivers/../../x'/>"
                         "<File PATH='drivers/a//b'/></DRIVER></DRIVERS></Project>"},
                        {"../x", "1"},
                        {"/abs", "2"},
                        {"a/b", "3"},
                        {"drivers/../../x", "4"},
                        {"drivers/a//b", "5"}}));
    seed(target, "renamed", fuzz::inputOf({{"hwdef.xml", bomThatRewritingChanges}, {"src/gpio.c", "1"}}));
    seed(target, "negative", fuzz::inputOf({{"hwdef.xml", "<Project Version='1' Minor='-2'/>"}}));
    seed(target, "integrity", fuzz::inputOf({{"hwdef.xml", "<a Version='1' Minor='3' DIGEST='x'/>"}}));
}

void textSeeds()
{
    seed("Bom", "everything", bomOfEverything);
    seed("Bom", "board", board);
    seed("Bom", "doctype",
         "<!DOCTYPE a [<!ENTITY e \"x\">]><a Version='1' b='&e;'><![CDATA[<b/>]]><?p q?></a>");
    seed("Bom", "numbers", "<a Version='1' Minor='99999999999'><PART><NUM_OF_SLRS Value='x'/></PART></a>");
    seed("Parameters", "typical",
         R"json({"refName": "ps", "pss_io": "(*PSS_IO= \"a\nb\" *)", "pss_power": "p"})json");
    seed(
        "Parameters", "kinds",
        R"json({"refName":"x","n":null,"t":true,"i":-1,"d":1.5e300,"a":[1,[2]],"o":{"k":"\u00e4"},"s":""})json");
    seed(
        "Parameters", "wrapped",
        R"json({"pss_io":"(*PSS_IO= \"a\\n\\\nb\" *)\n","refName":"r","pss_power":"(*PSS_POWER= \"c\\\nd\" *)"})json");
    seed("Parameters", "broken", R"json({"refName":"x","a":[[[[)json");
    seed("Settings", "io", ioSetting);
    seed("Settings", "power", powerSetting);
    seed("Settings", "short", "(*PSS_IO=");
}

}  // namespace

int main(int count, char** arguments)
try {
    if (count != 2) {
        std::fprintf(stderr, "usage: fuzz_seeds DIR\n");
        return 2;
    }
    seeds = arguments[1];
    archiveSeeds();
    containerSeeds("Opening");
    containerSeeds("RoundTrip");
    textSeeds();
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
