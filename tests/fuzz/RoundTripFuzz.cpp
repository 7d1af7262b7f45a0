// What opens and is rewritten opens again with the same facts, and a second rewriting changes nothing.

#include <boost/filesystem/operations.hpp>
#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "fuzz/FuzzInput.h"
#include "hwdef/hwdef.h"

namespace {

std::string bytesOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::unique_ptr<HHDFHwDef> open(const std::string& path)
try {
    return HHDFHwDefUtils::getHDF(path);
} catch (const boost::bad_lexical_cast&) {
    return nullptr;
} catch (const std::invalid_argument&) {
    return nullptr;
} catch (const std::out_of_range&) {
    return nullptr;
}

void tell(std::ostream& facts, const HHDFHwDef::HHDFResourceInfo& info)
{
    facts << info.lut << ' ' << info.ff << ' ' << info.bram << ' ' << info.dsp << '\n';
}

void tellEntries(std::ostream& facts, const HHDFHwDef& def)
{
    std::vector<HHDFHwDefFile*> files;
    def.getBomFiles(files);
    for (const HHDFHwDefFile* file : files) {
        facts << file->getFileName() << ' ' << HHDFHwDefFileTypes::getHWHFileTypeStr(file->getFileType()) << ' '
              << file->getHierPath() << ' '
              << (file->getHwSrcDB().empty() ? "input.hdf" : file->getHwSrcDB());  // what writing fills in
        for (const auto& [name, value] : file->getFileAttrs()) {
            facts << ' ' << name << '=' << value;
        }
        facts << '\n';
    }
}

/// All that a BOM tells of a design and that rewriting keeps by contract.
std::string factsOf(const HHDFHwDef& def)
{
    std::ostringstream facts;
    facts << def.getToolVersion() << '\n' << def.getBoard() << '\n' << def.getPart() << '\n' << def.getArch()
          << '\n' << def.getPackage() << '\n' << def.getDevice() << '\n' << def.getSpeed() << '\n'
          << def.getHierTopModuleName() << '\n';
    tell(facts, def.getUsedResourceInfo());
    tell(facts, def.getSystemResourceInfo());
    tellEntries(facts, def);
    HHDFHwDef::Texts attributes;
    def.getWDIAttrs(attributes);
    for (const auto& [name, value] : attributes) {
        facts << name << '=' << value << '\n';
    }
    for (const auto& [path, partition] : def.getPartitionInfo()) {
        facts << path << ' ' << partition->getDefaultRmName() << '\n';
    }
    for (const auto& [name, config] : def.getPartitionConfigs()) {
        facts << name << ' ' << config->getPartitionCellRMs().size() << '\n';
    }
    return facts.str();
}

void requireSame(const std::string& before, const std::string& after)
{
    if (before != after) {
        std::fprintf(stderr, "before:\n%s\nafter:\n%s\n", before.c_str(), after.c_str());
    }
    fuzz::require(before == after, "rewriting keeps the facts");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool quiet = (fuzz::dropMessages(), true);
    static_cast<void>(quiet);
    const std::string path = fuzz::writeContainer(fuzz::view(data, size));
    const auto first = open(path);
    if (first == nullptr) {
        return 0;
    }
    if (first->getModeType() == HHDFHwDefFileTypes::MODE_UNSET) {
        first->setModeType(HHDFHwDefFileTypes::POST_SYNTHESIS);  // as which it is read back
    }
    first->write(true);
    const auto second = open(path);
    fuzz::require(second != nullptr, "what was written opens");
    requireSame(factsOf(*first), factsOf(*second));
    const std::string once = bytesOf(path);
    fuzz::require(second->write(true), "what was written can be rewritten");
    fuzz::require(bytesOf(path) == once, "a second rewriting changes nothing");
    return 0;
}
