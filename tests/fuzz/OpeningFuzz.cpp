// Opening a container with its integrity checked, and reading what it tells. Nothing may appear or
// change beside the container.

#include <boost/filesystem/operations.hpp>
#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "fuzz/FuzzInput.h"
#include "hwdef/hwdef.h"

namespace {

/// Whatever the members are called, only the directory that is named here is written to.
void extract(const HHDFHwDef& def)
{
    const std::string target = fuzz::directory() + "/out/inner";
    boost::filesystem::create_directories(target);
    def.unzipDrivers(target);
    boost::filesystem::directory_iterator beside(fuzz::directory() + "/out");
    fuzz::require(beside->path() == target && ++beside == boost::filesystem::directory_iterator(),
                  "nothing is written outside the target");
    boost::filesystem::remove_all(fuzz::directory() + "/out");
}

void query(HHDFHwDef& def, const std::string& path)
{
    std::vector<HHDFHwDefFile*> files;
    def.getBomFiles(files);
    for (HHDFHwDefFile* file : files) {
        std::string name = file->getFileName();
        def.getBomFile(name);
        def.getBomFileHierarchy(name);
        HHDFHwDefUtils::getFileBufferFromHDF(name, path);
    }
    std::string digest, message;
    HHDFHwDef::Texts digests;
    def.calculateDigest(digest, digests);
    def.compareDigest(digest, digests, message);
    std::string refName;
    HHDFHwDefUtils::Attributes attributes;
    HHDFHwDefUtils::getSWParamInfo("IO_DATA", path, refName, attributes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool quiet = (fuzz::dropMessages(), true);
    static_cast<void>(quiet);
    const std::string path = fuzz::writeContainer(fuzz::view(data, size));
    try {
        if (const auto def = HHDFHwDefUtils::getHDF(path, true)) {
            query(*def, path);
            extract(*def);
        }
    } catch (const boost::bad_lexical_cast&) {  // a number of dies that is none
    } catch (const std::invalid_argument&) {    // a version that is no number
    } catch (const std::out_of_range&) {        // one too large, or a setting too short
    }
    return 0;
}
