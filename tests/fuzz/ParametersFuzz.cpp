// The parameter reader: any text as a software-parameter member.

#include <stdexcept>
#include <utility>

#include "fuzz/FuzzInput.h"
#include "hwdef/hwdef.h"

namespace {

using Attributes = std::map<std::string, std::string>;

/// What the outputs hold once the member was read into them; nothing for a setting that is too short.
std::pair<std::string, Attributes> readInto(std::string name, Attributes attributes, const std::string& path)
try {
    SWParamReader::parseAttributeJsonFile("io.json", path, name, attributes);
    return {name, attributes};
} catch (const std::out_of_range&) {
    return {};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool quiet = (fuzz::dropMessages(), true);
    static_cast<void>(quiet);
    const std::string path =
        fuzz::writeContainer(fuzz::inputOf({{"io.json", std::string(fuzz::view(data, size))}}));
    const auto [emptyName, emptyAttributes] = readInto("", {}, path);
    const auto [name, attributes] = readInto("before", {{"before", "before"}}, path);
    fuzz::require(name == emptyName && attributes == emptyAttributes, "both outputs are emptied first");
    return 0;
}
