// Hands the blinky design over twice: in one call, and object by object.
#include <hwdef/hwdef.h>

#include <boost/property_tree/json_parser.hpp>

#include "support/Expect.h"

namespace {

using Types = HHDFHwDefFileTypes;
using Files = std::vector<std::pair<std::string, Types::HWHFileType>>;

Files filesOf(const std::string& built)
{
    return {
        {built + "/blinky.hwh", Types::HW_HANDOFF},        {built + "/blinky.bit", Types::BIT},
        {built + "/blinky_seed2.bit", Types::PARTIAL_BIT}, {built + "/blinky_init.c", Types::PS_FSBL_INIT},
        {built + "/blinky_params.json", Types::PS_CONFIG}, {built + "/blinky.netlist.json", Types::PLATFORM},
    };
}

boost::property_tree::ptree json(const std::string& path)
{
    boost::property_tree::ptree tree;
    boost::property_tree::read_json(path, tree);
    return tree;
}

HHDFHwDef::HHDFResourceInfo counts(const boost::property_tree::ptree& tree)
{
    return {tree.get<std::string>("LUT"),
            tree.get<std::string>("FF"),
            tree.get<std::string>("BRAM"),
            tree.get<std::string>("DSP"),
            {}};
}

/// Everything in one call.
bool packInOneCall(const std::string& built, const std::string& container)
{
    const std::map<std::string, HHDFHwDefUtils::Attributes> attributes = {
        {built + "/blinky.bit", {{"compressed", "false"}, {"seed", "1"}}}};
    return HHDFHwDefUtils::writeHDF(container, filesOf(built), true, attributes, {{"design", "blinky"}});
}

/// The same files object by object, with the device's properties and the archive digest's guard.
bool packObjectByObject(const std::string& built, const std::string& container)
{
    const auto device = json(built + "/device.json");
    const auto resources = json(built + "/resources.json");

    auto definition = HHDFHwDefUtils::createHDF(container);
    expect(definition != nullptr, "a definition for " + container);
    definition->setMinorVersion(3);  // a container of version 1.3 is guarded by its archive digest
    definition->setModeType(Types::POST_SYNTHESIS);
    definition->setToolVersion("yosys and nextpnr-ice40");
    definition->setHierTopModuleName("blinky");
    definition->setPart(device.get<std::string>("part"));
    definition->setArch(device.get<std::string>("arch"));
    definition->setPackage(device.get<std::string>("package"));
    definition->setDevice(device.get<std::string>("device"));
    definition->setSpeed(device.get<std::string>("speed"));
    definition->setUsedResourceInfo(counts(resources.get_child("used")));
    definition->setSystemResourceInfo(counts(resources.get_child("available")));
    definition->addWDIAttr("design", "blinky");
    for (const auto& [path, type] : filesOf(built)) {
        definition->addFileToBom(path, type);
    }
    return definition->write(true);
}

}  // namespace

int main(int argc, char** argv)
{
    expect(argc == 4, "usage: blinky_producer BUILT_DIR ONE_CALL.hdf OBJECT_BY_OBJECT.hdf");
    expect(packInOneCall(argv[1], argv[2]), std::string("writing ") + argv[2]);
    expect(packObjectByObject(argv[1], argv[3]), std::string("writing ") + argv[3]);
    std::cout << "wrote " << argv[2] << " in one call, " << argv[3] << " object by object\n";
}
