#include "tools/Designs.h"

#include <gtest/gtest.h>

#include "hwdef/hwdef.h"
#include "support/Container.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using support::writeFile;
using Types = HHDFHwDefFileTypes;

namespace tools {

namespace {

void writeInputs(const std::string& dir)
{
    writeFile(dir + "/in/top.hwh", "<EDKSYSTEM/>");
    writeFile(dir + "/in/top.bit", support::textBytes(5000, 1));
    writeFile(dir + "/in/ps_init.c", "int ps_init(void) { return 0; }\n");
    writeFile(dir + "/in/params.json", "{\"refName\": \"ps_0\", \"clock\": \"12000000\"}");
    writeFile(dir + "/in/gpio_v1/data/gpio.mdd", "OPTION psf_version = 2.1;\n");
    writeFile(dir + "/in/gpio_v1/src/gpio.c", "void gpio(void) {}\n");
}

void setProperties(HHDFHwDef& def)
{
    def.setMinorVersion(3);
    def.setModeType(Types::POST_SYNTHESIS);
    def.setToolVersion("1.0");
    def.setPart("part-1");
    def.setHierTopModuleName("top");
    def.setUsedResourceInfo({"25", "80", "", "", {}});
    def.setSystemResourceInfo({"100", "100", "", "", {}});
    def.addWDIAttr("flow", "fast");
}

}  // namespace

void writeDesign(const std::string& dir)
{
    writeInputs(dir);
    const auto def = HHDFHwDefUtils::createHDF(dir + "/design.hdf");
    setProperties(*def);
    def->addFileToBom(dir + "/in/top.hwh", Types::HW_HANDOFF, "top/bd", Types::DEFAULT_BD);
    def->addFileToBom(dir + "/in/top.bit", Types::BIT);
    def->addFileToBom(dir + "/in/ps_init.c", Types::PS_FSBL_INIT);
    def->addFileToBom(dir + "/in/params.json", Types::PS_CONFIG);
    HHDFHwDef::Texts attributes = {{"compressed", "true"}};
    def->addFileAttrs("top.bit", attributes);
    def->addDrivers("gpio", {{dir + "/in/gpio_v1/data/gpio.mdd", "drivers/gpio_v1/data/gpio.mdd", ""},
                             {dir + "/in/gpio_v1/src/gpio.c", "drivers/gpio_v1/src/gpio.c", ""}});
    ASSERT_TRUE(def->write(true));
}

void writePartial(const std::string& dir)
{
    const auto def = HHDFHwDefUtils::createHDF(dir + "/partial.hdf");
    const auto add = [&](std::string path, std::string module, std::string file, bool isDefault) {
        def->addPartitionInfo(path, module, file, isDefault);
    };
    add("top/filter", "fir", "fir.bit", true);
    add("top/filter", "iir", "iir.bit", false);
    add("top/link", "uart", "uart.bit", true);
    def->addPartitionCell("both", "top/filter", "fir", "fir.bit", true);
    def->addPartitionCell("both", "top/link", "uart", "uart.bit", true);
    def->addPartitionCell("half", "top/filter", "iir", "iir.bit", false);
    def->addPartitionCell("half", "top/link", "", "", false);
    ASSERT_TRUE(def->write(true));
}

void writeOther(const std::string& dir)
{
    support::writeArchive(
        dir + "/other.hdf",
        {{"a.bit", "content of a"},
         {"hwdef.xml",
          support::bomDocument("Version=\"1\" Minor=\"0\"",
                               "<!-- by hand --><File Type=\"BIT\" Name=\"a.bit\"/><UNKNOWN Why=\"x\"/>")},
         {"notes.txt", "not listed"}});
}

void writeDamaged(const std::string& dir)
{
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", support::bomOfFiles("7", {"a.bit"}));
    support::ZipMember& member = zip.addStored("a.bit", "bits");
    member.local.crc = member.listed.crc = 1;
    zip.write(dir + "/damaged.hdf");
}

}  // namespace tools
