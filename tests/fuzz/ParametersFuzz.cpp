// The parameter reader: any text as a software-parameter member.

#include <stdexcept>

#include "fuzz/FuzzInput.h"
#include "hwdef/hwdef.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool quiet = (fuzz::dropMessages(), true);
    static_cast<void>(quiet);
    const std::string path =
        fuzz::writeContainer(fuzz::inputOf({{"io.json", std::string(fuzz::view(data, size))}}));
    std::string refName = "before";
    std::map<std::string, std::string> attributes = {{"before", ""}};
    try {
        SWParamReader::parseAttributeJsonFile("io.json", path, refName, attributes);
    } catch (const std::out_of_range&) {  // a setting too short
        return 0;
    }
    fuzz::require(refName != "before" && !attributes.contains("before"), "both outputs are emptied first");
    return 0;
}
