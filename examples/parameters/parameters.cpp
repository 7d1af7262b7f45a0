// Writes a software-parameter file, carries it in a container and looks it up by its file type.
#include <hwdef/hwdef.h>

#include "support/Expect.h"

int main(int argc, char** argv)
{
    expect(argc == 2, "usage: parameters CONTAINER");
    const std::string container = argv[1];
    const std::string file = container + ".ps_config.json";
    SWParamWriter::writeParamInfo(file, "ps_0", "pss_power",
                                  "(*PSS_POWER= \"rail0 0.85V\\\n rail1 1.80V\" *)");
    expect(HHDFHwDefUtils::writeHDF(container, {{file, HHDFHwDefFileTypes::PS_CONFIG}}, true, {}, {}),
           "writing the container");

    std::string refName;
    std::map<std::string, std::string> attributes;
    expect(HHDFHwDefUtils::getSWParamInfo("PS_CONFIG", container, refName, attributes),
           "finding the parameters");
    expect(refName == "ps_0", "the reference name");
    expect(attributes["pss_power"] == "rail0 0.85V rail1 1.80V", "the power setting, unwrapped");
    std::cout << refName << ": pss_power = " << attributes["pss_power"] << "\n";
}
