#include "Resources.h"

#include <charconv>
#include <cmath>
#include <cstdint>

namespace {

std::optional<std::uint64_t> numberIn(const std::string& text)
{
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<double> Resource::percent() const
{
    const auto part = numberIn(used);
    const auto whole = numberIn(available);
    if (!part || !whole || *whole == 0) {
        return {};
    }
    return 100 * static_cast<double>(*part) / static_cast<double>(*whole);
}

std::vector<Resource> resourcesOf(const HHDFHwDef& definition)
{
    const auto& used = definition.getUsedResourceInfo();
    const auto& available = definition.getSystemResourceInfo();
    std::vector<Resource> resources = {{"LUT", used.lut, available.lut},
                                       {"FF", used.ff, available.ff},
                                       {"BRAM", used.bram, available.bram},
                                       {"DSP", used.dsp, available.dsp}};
    std::erase_if(resources, [](const Resource& one) { return one.used.empty() && one.available.empty(); });
    return resources;
}

std::string percentText(double percent)
{
    const auto tenths = static_cast<std::uint64_t>(std::llround(percent * 10));
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " %";
}
