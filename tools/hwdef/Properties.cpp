#include "Properties.h"

#include <charconv>

#include "CommandError.h"
#include "Text.h"

namespace {

using Types = HHDFHwDefFileTypes;
using Resources = HHDFHwDef::HHDFResourceInfo;

constexpr const char* attributePrefix = "attribute.";

/// A property that is a text with a getter and a setter of the definition.
template <auto Get, auto Set>
constexpr Property textProperty(const char* key, const char* title)
{
    return {key, title, [](const HHDFHwDef& definition) -> std::string { return (definition.*Get)(); },
            [](HHDFHwDef& definition, const std::string& text) {
                (definition.*Set)(text);
                return true;
            },
            ""};
}

template <std::string Resources::*Count>
constexpr Property usedCount(const char* key)
{
    return {key, "", [](const HHDFHwDef& definition) { return definition.getUsedResourceInfo().*Count; },
            [](HHDFHwDef& definition, const std::string& text) {
                Resources info = definition.getUsedResourceInfo();
                info.*Count = text;
                definition.setUsedResourceInfo(info);
                return true;
            },
            ""};
}

template <std::string Resources::*Count>
constexpr Property availableCount(const char* key)
{
    return {key, "", [](const HHDFHwDef& definition) { return definition.getSystemResourceInfo().*Count; },
            [](HHDFHwDef& definition, const std::string& text) {
                Resources info = definition.getSystemResourceInfo();
                info.*Count = text;
                definition.setSystemResourceInfo(info);
                return true;
            },
            ""};
}

std::string getMode(const HHDFHwDef& definition)
{
    return definition.getModeName();
}

bool setMode(HHDFHwDef& definition, const std::string& text)
{
    const bool isPre = text == "Pre-Synthesis" || text == "pre";
    const bool isPost = text == "Post-Synthesis" || text == "post";
    if (!isPre && !isPost && !text.empty()) {
        return false;
    }
    return definition.setModeType(isPre    ? Types::PRE_SYNTHESIS
                                  : isPost ? Types::POST_SYNTHESIS
                                           : Types::MODE_UNSET);
}

std::string getVersion(const HHDFHwDef& definition)
{
    return std::to_string(definition.getMajorVersion()) + "." + std::to_string(definition.getMinorVersion());
}

bool setVersion(HHDFHwDef& definition, const std::string& text)
{
    // Only definitions of version 1 are read when a container is opened.
    constexpr std::string_view major = "1.";
    int minor = 0;
    const auto [end, error] =
        std::from_chars(text.data() + std::min(major.size(), text.size()), text.data() + text.size(), minor);
    if (!text.starts_with(major) || error != std::errc() || end != text.data() + text.size() || minor < 0) {
        return false;
    }
    return definition.setMajorVersion(1) && definition.setMinorVersion(static_cast<std::uint32_t>(minor));
}

constexpr Property table[] = {
    textProperty<&HHDFHwDef::getPart, &HHDFHwDef::setPart>("part", "Part"),
    textProperty<&HHDFHwDef::getArch, &HHDFHwDef::setArch>("arch", "Architecture"),
    textProperty<&HHDFHwDef::getDevice, &HHDFHwDef::setDevice>("device", "Device"),
    textProperty<&HHDFHwDef::getPackage, &HHDFHwDef::setPackage>("package", "Package"),
    textProperty<&HHDFHwDef::getSpeed, &HHDFHwDef::setSpeed>("speed", "Speed"),
    textProperty<&HHDFHwDef::getBoard, &HHDFHwDef::setBoard>("board", "Board"),
    {"mode", "Mode", getMode, setMode, "Pre-Synthesis (pre), Post-Synthesis (post) or nothing"},
    {"version", "Version", getVersion, setVersion, "1 and a minor version, as 1.7"},
    textProperty<&HHDFHwDef::getToolVersion, &HHDFHwDef::setToolVersion>("tool", "Tool"),
    textProperty<&HHDFHwDef::getHierTopModuleName, &HHDFHwDef::setHierTopModuleName>("top", "Top module"),
    usedCount<&Resources::lut>("used.lut"),
    usedCount<&Resources::ff>("used.ff"),
    usedCount<&Resources::bram>("used.bram"),
    usedCount<&Resources::dsp>("used.dsp"),
    availableCount<&Resources::lut>("available.lut"),
    availableCount<&Resources::ff>("available.ff"),
    availableCount<&Resources::bram>("available.bram"),
    availableCount<&Resources::dsp>("available.dsp"),
};

CommandError unknownKey(const std::string& key)
{
    std::vector<std::string> keys = {attributePrefix};
    std::string all;
    for (const Property& property : table) {
        keys.emplace_back(property.key);
        all += std::string(property.key) + ", ";
    }
    return CommandError("there is no property \"" + printable(key) + "\"" + didYouMean(key, keys) +
                        "\nProperties are " + all + "and attribute.NAME.");
}

}  // namespace

std::span<const Property> properties()
{
    return table;
}

const Property* findProperty(const std::string& key)
{
    for (const Property& property : table) {
        if (key == property.key) {
            return &property;
        }
    }
    return nullptr;
}

Assignment parseAssignment(const std::string& text, const char* form)
{
    const std::size_t sign = text.find('=');
    if (sign == std::string::npos || sign == 0) {
        throw CommandError("\"" + printable(text) + "\" is not of the form " + form);
    }
    return {text.substr(0, sign), text.substr(sign + 1)};
}

void assign(HHDFHwDef& definition, const Assignment& assignment)
{
    const auto& [key, value] = assignment;
    const std::string_view prefix = attributePrefix;
    if (key.starts_with(prefix) && key.size() > prefix.size()) {
        definition.addWDIAttr(key.substr(prefix.size()), value);
        return;
    }
    const Property* const property = findProperty(key);
    if (property == nullptr) {
        throw unknownKey(key);
    }
    if (!property->set(definition, value)) {
        throw CommandError(key + " can't be \"" + printable(value) + "\"; it is " + property->help);
    }
}
