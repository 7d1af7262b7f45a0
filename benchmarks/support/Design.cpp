#include "support/Design.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <string_view>

namespace bench {

namespace {

using Types = HHDFHwDefFileTypes;

struct SuffixType {
    std::string_view suffix;
    Types::HWHFileType type;
};

constexpr std::array<SuffixType, 6> types = {{
    {".bit", Types::BIT},
    {".c", Types::PS_FSBL_INIT},
    {".h", Types::PS_FSBL_INIT_GPL},
    {".xml", Types::HW_HANDOFF},
    {".tcl", Types::BD_TCL},
    {".mmi", Types::MMI},
}};

Types::HWHFileType typeOf(const std::filesystem::path& path)
{
    const auto* const found = std::find_if(
        types.begin(), types.end(), [&](const SuffixType& type) { return path.extension() == type.suffix; });
    return found == types.end() ? Types::PARTIAL_BIT : found->type;
}

void setProperties(HHDFHwDef& def)
{
    def.setMinorVersion(3);
    def.setModeType(Types::PRE_SYNTHESIS);
    def.setToolVersion("yosys and nextpnr-ice40");
    def.setHierTopModuleName("blinky");
    def.setPart("ice40hx8k-ct256");
    def.setArch("ice40");
    def.setPackage("ct256");
    def.setDevice("hx8k");
    def.setSpeed("hx");
    def.setUsedResourceInfo({"376", "256", "1", "0", {}});
    def.setSystemResourceInfo({"7680", "7680", "32", "0", {}});
    def.addWDIAttr("design", "blinky");
}

}  // namespace

Files filesOf(const std::string& dir, std::size_t count)
{
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
        if (entry.is_regular_file()) {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    if (paths.size() < std::max<std::size_t>(count, 1)) {
        throw std::runtime_error(dir + " has too few files");
    }
    paths.resize(count == 0 ? paths.size() : count);
    Files files;
    for (const auto& path : paths) {
        files.emplace_back(path.string(), typeOf(path));
    }
    return files;
}

std::unique_ptr<HHDFHwDef> design(const std::string& path, const Files& files)
{
    std::unique_ptr<HHDFHwDef> def = HHDFHwDefUtils::createHDF(path);
    setProperties(*def);
    for (std::size_t i = 0; i < files.size(); ++i) {
        const auto& [file, type] = files[i];
        if (i % 10 == 3) {
            def->addFileToBom(file, Types::HW_HANDOFF, "blinky/u" + std::to_string(i), Types::SCOPED_BD);
        } else {
            def->addFileToBom(file, type);
        }
        if (i % 4 == 0) {
            HHDFHwDef::Texts attributes = {{"instance", "u" + std::to_string(i)}};
            def->addFileAttrs(nameOf(file), attributes);
        }
    }
    return def;
}

std::string nameOf(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

}  // namespace bench
