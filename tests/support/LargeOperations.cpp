#include "support/LargeOperations.h"

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/BomDocument.h"
#include "support/Container.h"
#include "support/TempDir.h"

namespace support {

namespace {

using Types = HHDFHwDefFileTypes;
using Utils = HHDFHwDefUtils;
using Result = std::optional<std::string>;

Result ifTrue(bool done)
{
    return done ? Result("done") : std::nullopt;
}

/// What begins as if it could be compressed, so that it is stored at the second try.
std::string deceptiveBytes(unsigned seed)
{
    return textBytes(150000, seed) + randomBytes(300000, seed);
}

void writeInputs(const std::string& dir)
{
    writeFile(dir + "/in/r.bit", randomBytes(150000, 1));
    writeFile(dir + "/in/t.elf", textBytes(300000, 2));
    writeFile(dir + "/in/d.bit", deceptiveBytes(3));
}

bool package(const std::string& dir, const std::string& name)
{
    const auto def = Utils::createHDF(dir + "/" + name);
    if (!def) {
        return false;
    }
    def->setMajorVersion(1);
    def->setMinorVersion(3);  // its archive carries a digest
    def->setModeType(Types::PRE_SYNTHESIS);
    def->addFileToBom(dir + "/in/r.bit", Types::BIT);
    def->addFileToBom(dir + "/in/t.elf", Types::ELF);
    def->addFileToBom(dir + "/in/d.bit", Types::BIT);
    return def->write(true);
}

/// A container at DIR/design.hdf, and a file DIR/more beside it.
void writeDesign(const std::string& dir)
{
    writeInputs(dir);
    package(dir, "design.hdf");
    writeFile(dir + "/more", deceptiveBytes(4));
}

Result exportOver(const std::string& dir)
{
    const auto def = Utils::getHDF(dir + "/design.hdf");
    return ifTrue(def && def->write(dir + "/out.dsa"));
}

Result append(const std::string& dir, const std::string& member)
{
    return ifTrue(Utils::writeFileToHDF(dir + "/more", member, dir + "/design.hdf"));
}

Result copyWithin(const std::string& dir)
{
    const std::string design = dir + "/design.hdf";
    return ifTrue(Utils::writeFileFromHDFToHDF("r.bit", design, "copy", design));
}

}  // namespace

std::vector<Operation> largeOperations()
{
    return {
        {"packageLarge", writeInputs, [](auto& dir) { return ifTrue(package(dir, "new.hdf")); }},
        {"packageLargeOpened", writeDesign, packageOpened},
        {"exportLargeToOldArchive",
         [](auto& dir) {
             writeDesign(dir);
             writeArchive(dir + "/out.dsa", {{"hwdef.xml", "<Project/>"}, {"kept", randomBytes(100000, 5)}});
         },
         exportOver},
        {"appendDeceptive", writeDesign, [](auto& dir) { return append(dir, "more"); }},
        {"appendLargeReplacing", writeDesign, [](auto& dir) { return append(dir, "d.bit"); }},
        {"copyLargeWithin", writeDesign, copyWithin},
    };
}

}  // namespace support
