#include "hwdef/model/HHDFHwDefFileTypes.h"

#include <array>
#include <string_view>

namespace {

struct Tokens {
    std::string_view written;
    std::string_view read;
};

// By value. Containers in use depend on the rows that do not read back as themselves.
constexpr std::array<Tokens, HHDFHwDefFileTypes::UNKNOWN> fileTypes = {{
    {"HW_HANDOFF", "HW_HANDOFF"},
    {"HW_SVD", "HW_SVD"},
    {"PS_FSBL_INIT", "PS_FSBL_INIT"},
    {"PS_PMU_INIT", "PS_PMU_INIT"},
    {"PS_FSBL_INIT_GPL", "PS_FSBL_INIT_GPL"},
    {"PS_KMV_INIT", "PS_KMV_INIT"},
    {"PS_INIT_HELP", "PS_INIT_HELP"},
    {"CDO", "CDO"},
    {"ELF", "ELF"},
    {"BIT", "BIT"},
    {"PDI", "PDI"},
    {"PARTIAL_PDI", "PARTIAL_PDI"},
    {"PL_PDI", "PL_PDI"},
    {"BMM", "BMM"},
    {"MMI", "MMI"},
    {"LTX", "LTX"},
    {"PLATFORM", "PLATFORM"},
    {"PS_CONFIG", "PS_CONFIG"},
    {"BD_TCL", "BD_TCL"},
    {"DRIVER_SRC", "DRIVER_SRC"},
    {"BOARD", "BOARD"},
    {"POWER_DATA", "POWER_DATA"},
    {"IO_DATA", "IO_DATA"},
    {"SYSMON_DATA", "SYSMON_DATA"},
    {"BDA", "BDA"},
    {"BDA", "BDA"},  // BDA_VARIANT: the row above is found first, so this one is never read
    {"AIE_PRIMITIVE", "AIE_PRIMITIVE"},
    {"PARTIAL_BIT", "ISS"},
    {"PARTIAL_BIT", "PARTIAL_BIT"},
}};

constexpr std::array<std::string_view, HHDFHwDefFileTypes::UNKNOWN_BD> bdTypes = {
    "DEFAULT_BD", "REFERENCE_BD", "SCOPED_BD"};

constexpr const char* unknownToken = "UNKNOWN";

}  // namespace

HHDFHwDefFileTypes::HWHFileType HHDFHwDefFileTypes::getHWHFileType(const std::string& token)
{
    if (token == "BVA") {
        return BDA;
    }
    std::uint32_t value = 0;
    while (value < fileTypes.size() && fileTypes[value].read != token) {
        ++value;
    }
    return static_cast<HWHFileType>(value);
}

std::string HHDFHwDefFileTypes::getHWHFileTypeStr(HWHFileType type)
{
    return type < fileTypes.size() ? std::string(fileTypes[type].written) : unknownToken;
}

HHDFHwDefFileTypes::HWHBDType HHDFHwDefFileTypes::getHWHBDType(const std::string& token)
{
    std::uint32_t value = 0;
    while (value < bdTypes.size() && bdTypes[value] != token) {
        ++value;
    }
    return static_cast<HWHBDType>(value);
}

std::string HHDFHwDefFileTypes::getHWHBDTypeStr(HWHBDType type)
{
    return type < bdTypes.size() ? std::string(bdTypes[type]) : unknownToken;
}
