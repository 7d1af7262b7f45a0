// A design with two reconfigurable partitions, three modules and two configurations, one of which
// leaves a cell as a gray box: written, read back and listed.
#include <hwdef/hwdef.h>

#include "support/Expect.h"

namespace {

void addModule(HHDFHwDef& definition, std::string partition, std::string module, std::string file,
               bool isDefault)
{
    definition.addPartitionInfo(partition, module, file, isDefault);
}

void describe(HHDFHwDef& definition)
{
    addModule(definition, "top/filter", "rm_fir", "filter_fir.bit", true);
    addModule(definition, "top/filter", "rm_iir", "filter_iir.bit", false);
    addModule(definition, "top/link", "rm_uart", "link_uart.bit", true);

    definition.addPartitionCell("config_fir", "top/filter", "rm_fir", "filter_fir.bit", true);
    definition.addPartitionCell("config_fir", "top/link", "rm_uart", "link_uart.bit", true);
    definition.addPartitionCell("config_iir", "top/filter", "rm_iir", "filter_iir.bit", false);
    definition.addPartitionCell("config_iir", "top/link", "", "", false);  // no module: a gray box
}

}  // namespace

int main(int argc, char** argv)
{
    expect(argc == 2, "usage: reconfigurable CONTAINER");
    const auto written = HHDFHwDefUtils::createHDF(argv[1]);
    describe(*written);
    expect(written->write(true), "writing the container");

    const auto read = HHDFHwDefUtils::getHDF(argv[1]);
    expect(read != nullptr, "opening the container");
    expect(read->getPartitionInfo().size() == 2, "two partitions");
    expect(read->getPartitionInfo().at("top/filter")->getRmToFilesMap().size() == 2,
           "two modules of the filter");
    expect(read->getPartitionInfo().at("top/filter")->getDefaultRmName() == "rm_fir", "the default module");
    const auto& configurations = read->getPartitionConfigs();
    expect(configurations.size() == 2 && configurations.at("config_fir")->isActive(),
           "an active configuration");
    expect(configurations.at("config_iir")->getGrayBoxCells() == std::vector<std::string>{"top/link"},
           "the gray box");
    read->printPartitionInfo();
}
