// Opens a container with its integrity check, shows what it holds, and extracts the bitstream.
#include <hwdef/hwdef.h>

#include <iomanip>

#include "support/Expect.h"

namespace {

void showCount(const char* name, const std::string& used, const std::string& available)
{
    if (!used.empty()) {
        std::cout << "  " << std::setw(4) << std::left << name << " " << std::setw(6) << std::right << used
                  << (available.empty() ? "" : " of " + available) << "\n";
    }
}

void show(const HHDFHwDef& definition)
{
    std::cout << "  " << (definition.getPart().empty() ? "(no device named)" : definition.getPart()) << ", "
              << definition.getModeName() << ", top module " << definition.getHierTopModuleName() << "\n";
    const auto& used = definition.getUsedResourceInfo();
    const auto& available = definition.getSystemResourceInfo();
    showCount("LUT", used.lut, available.lut);
    showCount("FF", used.ff, available.ff);
    showCount("BRAM", used.bram, available.bram);
    showCount("DSP", used.dsp, available.dsp);

    std::vector<HHDFHwDefFile*> files;
    definition.getBomFiles(files);
    for (const HHDFHwDefFile* file : files) {
        std::cout << "  " << std::setw(14) << std::left
                  << HHDFHwDefFileTypes::getHWHFileTypeStr(file->getFileType()) << file->getFileName()
                  << "\n";
    }
}

}  // namespace

int main(int argc, char** argv)
{
    expect(argc == 4, "usage: blinky_consumer CONTAINER MEMBER DESTINATION");
    const std::string container = argv[1];
    const auto definition = HHDFHwDefUtils::getHDF(container, true);
    if (definition == nullptr) {
        return 2;  // the reason was sent by the message manager
    }
    std::cout << container << "\n";
    show(*definition);
    expect(HHDFHwDefUtils::writeFileFromHDF(argv[3], argv[2], container), "extracting a member");
    std::cout << "  extracted " << argv[2] << " to " << argv[3] << "\n";
}
