// What opens and is rewritten opens again with the same facts, and a second rewriting changes nothing.

#include <algorithm>
#include <boost/filesystem/operations.hpp>
#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <cstdio>
#include <fstream>
#include <initializer_list>
#include <iomanip>
#include <iterator>
#include <limits>
#include <set>
#include <sstream>
#include <stdexcept>

#include "fuzz/FuzzInput.h"
#include "hwdef/hwdef.h"
#include "platform/HPAParamMgr.h"
#include "platform/HSTStringUtils.h"

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

/// One line of facts, each quoted, so that no two lists of texts look alike.
void tell(std::ostream& facts, std::initializer_list<std::string> texts)
{
    for (const std::string& text : texts) {
        facts << std::quoted(text) << ' ';
    }
    facts << '\n';
}

void tell(std::ostream& facts, const char* what, const HHDFHwDef::Texts& texts)
{
    for (const auto& [name, value] : texts) {
        tell(facts, {what, name, value});
    }
}

void tell(std::ostream& facts, const HHDFHwDef::HHDFResourceInfo& info)
{
    tell(facts, {"resources", info.lut, info.ff, info.bram, info.dsp});
}

void tellProperties(std::ostream& facts, const HHDFHwDef& def)
{
    tell(facts, {"version", std::to_string(def.getMajorVersion()), std::to_string(def.getMinorVersion()),
                 def.getToolVersion(), def.getDigest(), def.getModeName()});
    tell(facts, {"device", def.getBoard(), def.getPart(), def.getArch(), def.getPackage(), def.getDevice(),
                 def.getSpeed(), def.isTIER() ? "stacked" : "", std::to_string(def.getSLRNo())});
    tell(facts, {"design", def.getHierTopModuleName()});
    tell(facts, def.getUsedResourceInfo());
    tell(facts, def.getSystemResourceInfo());
    HHDFHwDef::Texts attributes;
    def.getWDIAttrs(attributes);
    tell(facts, "attribute", attributes);
}

// The digests of single files are read and never written.
void tellEntries(std::ostream& facts, const HHDFHwDef& def)
{
    std::vector<HHDFHwDefFile*> files;
    def.getBomFiles(files);
    for (const HHDFHwDefFile* file : files) {
        tell(facts, {"file", file->getFileName(), HHDFHwDefFileTypes::getHWHFileTypeStr(file->getFileType()),
                     HHDFHwDefFileTypes::getHWHBDTypeStr(file->getBDFileType()), file->getHierPath(),
                     // What writing fills in.
                     file->getHwSrcDB().empty() ? "input.hdf" : file->getHwSrcDB()});
        tell(facts, "of the file", file->getFileAttrs());
    }
}

bool speaksOfDrivers(const HHDFHwDefDriver& driver)
{
    return driver.getRelativeName().find("drivers") != std::string::npos;
}

void tellDrivers(std::ostream& facts, const HHDFHwDef& def)
{
    for (const auto& [name, files] : def.getDriverFilesMap()) {
        std::set<std::string> told;
        for (const HHDFHwDefDriver& file : files) {
            // A name that doesn't speak of "drivers" is written below that directory; two names may be
            // one then, and of two equal files the reader keeps the first.
            const std::string path = (speaksOfDrivers(file) ? "" : "drivers/") + file.getRelativeName();
            if (told.insert(path).second) {
                tell(facts, {"driver", name, path});
            }
        }
    }
    // Which driver sources there are isn't written, only that there are some.
    HHDFHwDef::Texts sources;
    tell(facts, {"sources", def.getDriverFiles(sources) == 0 ? "none" : "some"});
}

// No BOM tells of boards, though the reader could read of them: opening finds none, before and after.
void tellBoards(std::ostream& facts, const HHDFHwDef& def)
{
    tell(facts, {"boards", std::to_string(def.getBoardFilesMap().size()), def.getBaseBoard(),
                 def.isIntegratedBoard() ? "integrated" : "", std::to_string(def.getJumpers().size())});
    tell(facts, "connection", def.getBoardConnections());
}

// File names of modules and cells aren't read back: each module has the one file "bitFile", each cell one
// without a name.
void tellPartitions(std::ostream& facts, const HHDFHwDef& def)
{
    for (const auto& [path, partition] : def.getPartitionInfo()) {
        tell(facts, {"partition", path, partition->getDefaultRmName()});
        for (const auto& [module, files] : partition->getRmToFilesMap()) {
            tell(facts, {"module", module});
        }
    }
    for (const auto& [name, config] : def.getPartitionConfigs()) {
        tell(facts, {"configuration", name, config->getName(), config->isActive() ? "active" : ""});
        for (const auto& [path, cell] : config->getPartitionCellRMs()) {
            tell(facts, {"cell", path, cell->getRmName()});
        }
        for (const std::string& path : config->getGrayBoxCells()) {
            tell(facts, {"gray box", path});
        }
    }
}

/// All that a BOM tells of a design and that rewriting keeps by contract.
std::string factsOf(const HHDFHwDef& def)
{
    std::ostringstream facts;
    tellProperties(facts, def);
    tellEntries(facts, def);
    tellDrivers(facts, def);
    tellBoards(facts, def);
    tellPartitions(facts, def);
    return facts.str();
}

/// Gives the definition the form in which what is written of it is read back.
void settle(HHDFHwDef& def)
{
    if (def.getModeType() == HHDFHwDefFileTypes::MODE_UNSET) {
        def.setModeType(HHDFHwDefFileTypes::POST_SYNTHESIS);
    }
    if (def.getMinorVersion() == std::numeric_limits<std::uint32_t>::max()) {
        def.setMinorVersion(1);  // the number of a version that isn't set
    }
    // A default is found in any case, and of several modules that match the last one in order counts.
    for (const auto& [path, partition] : def.getPartitionInfo()) {
        const std::string chosen = partition->getDefaultRmName();
        for (const auto& [module, files] : partition->getRmToFilesMap()) {
            std::string name = module;
            std::string file = files.front();
            if (HSTStringUtils::iequals(name, chosen)) {
                partition->addPartitionInfo(name, file, true);
            }
        }
    }
}

/// Whether the version is written with more than reading takes: one that was read from a negative
/// number is written without its sign, beyond the numbers that are read.
bool hasUnreadableVersion(const HHDFHwDef& def)
{
    return def.getMinorVersion() > std::uint32_t{std::numeric_limits<std::int32_t>::max()};
}

/// Whether some driver's file is a member of another name than is written for it. The second rewriting
/// finds the member under its old name and gives it the new one.
bool hasMisnamedDrivers(const HHDFHwDef& def)
{
    const auto drivers = def.getDriverFilesMap();
    return std::any_of(drivers.begin(), drivers.end(), [](const auto& driver) {
        return !std::all_of(driver.second.begin(), driver.second.end(), speaksOfDrivers);
    });
}

void requireSame(const std::string& before, const std::string& after)
{
    if (before != after) {
        std::fprintf(stderr, "before:\n%s\nafter:\n%s\n", before.c_str(), after.c_str());
    }
    fuzz::require(before == after, "rewriting keeps the facts");
}

/// Drops messages, lets dies be written, and puts a driver source where an unpacked container has it.
bool prepare()
{
    fuzz::dropMessages();
    HPAParamMgr::getParamMgr()->setValue("project.generateAiePrimitive", "true");
    const std::string sources = fuzz::directory() + "/input/drivers";
    boost::filesystem::create_directories(sources);
    std::ofstream(sources + "/source.c") << "source";
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool prepared = prepare();
    static_cast<void>(prepared);
    const std::string path = fuzz::writeContainer(fuzz::view(data, size));
    const auto first = open(path);
    if (first == nullptr) {
        return 0;
    }
    settle(*first);
    if (hasUnreadableVersion(*first)) {
        return 0;
    }
    first->write(true);
    auto second = open(path);
    fuzz::require(second != nullptr, "what was written opens");
    requireSame(factsOf(*first), factsOf(*second));
    if (hasMisnamedDrivers(*first)) {
        second->write(true);
        second = open(path);
        fuzz::require(second != nullptr, "what was written twice opens");
        requireSame(factsOf(*first), factsOf(*second));
    }
    const std::string once = bytesOf(path);
    fuzz::require(second->write(true), "what was written can be rewritten");
    fuzz::require(bytesOf(path) == once, "a second rewriting changes nothing");
    return 0;
}
