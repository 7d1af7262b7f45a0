// The texts of processing-system settings, with and without their markers.

#include <stdexcept>

#include "fuzz/FuzzInput.h"
#include "hwdef/hwdef.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(fuzz::view(data, size));
    std::string io = text;
    try {
        processIOString(io);
    } catch (const std::out_of_range&) {
        fuzz::require(io == text, "a setting that is too short stays as it is");
    }
    fuzz::require(io.size() <= text.size() + 1, "unwrapping adds nothing but a newline");
    std::string power = text;
    processPowerString(power);
    fuzz::require(power.size() <= text.size(), "unwrapping adds nothing");
    SWParamReader::trimWithArgument(text, text.substr(0, text.size() / 2));
    return 0;
}
