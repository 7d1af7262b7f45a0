// Carries a tree of two drivers in a container and unpacks it again.
#include <hwdef/hwdef.h>

#include <boost/filesystem.hpp>

#include "support/Expect.h"

namespace {

namespace fs = boost::filesystem;

/// Registers every file below tree/drivers under the driver whose directory holds it.
void addTree(HHDFHwDef& definition, const fs::path& tree)
{
    for (const fs::directory_entry& driver : fs::directory_iterator(tree / "drivers")) {
        for (const fs::directory_entry& file : fs::recursive_directory_iterator(driver.path())) {
            if (fs::is_regular_file(file.status())) {
                definition.addDriverFileToBom("example.org:ip:" + driver.path().filename().string(),
                                              tree.string(), fs::relative(file.path(), tree).string(), "");
            }
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    expect(argc == 4, "usage: drivers TREE CONTAINER OUTPUT_DIR");
    const auto written = HHDFHwDefUtils::createHDF(argv[2]);
    addTree(*written, argv[1]);
    expect(written->write(true), "writing the container");

    const auto read = HHDFHwDefUtils::getHDF(argv[2]);
    expect(read != nullptr, "opening the container");
    expect(read->getDriverFilesMap().size() == 2, "two drivers");
    expect(read->unzipDrivers(argv[3]), "unpacking the drivers");
    for (const auto& [name, files] : read->getDriverFilesMap()) {
        std::cout << name << "\n";
        for (const HHDFHwDefDriver& file : files) {
            const fs::path unpacked = fs::path(argv[3]) / file.getRelativeName();
            expect(fs::file_size(unpacked) == fs::file_size(fs::path(argv[1]) / file.getRelativeName()),
                   "the size of " + unpacked.string());
            std::cout << "  " << file.getRelativeName() << "\n";
        }
    }
}
