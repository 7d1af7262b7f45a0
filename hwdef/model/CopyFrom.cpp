#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/model/HHDFHwDef.h"
#include "hwdef/model/HHDFHwDefImp.h"

namespace {

/// The mode goes without the BOM document's name, which a copied definition does not take over.
void copyProperties(const HHDFHwDefImp& from, HHDFHwDefImp& to)
{
    to.majorVersion = from.majorVersion;
    to.minorVersion = from.minorVersion;
    to.mode = from.mode;
    to.toolVersion = from.toolVersion;
    to.systemResources = from.systemResources;
    to.board = from.board;
    to.arch = from.arch;
    to.package = from.package;
    to.device = from.device;
    to.speed = from.speed;
    to.part = from.part;
    to.usedResources = from.usedResources;
    to.hierTopModuleName = from.hierTopModuleName;
}

}  // namespace

bool HHDFHwDef::copyFrom(const HHDFHwDef* other)
{
    if (!implementation_ || !other || !other->implementation_) {
        return false;
    }
    const HHDFHwDefImp& from = *other->implementation_;
    copyProperties(from, *implementation_);
    std::vector<HHDFHwDefFile*> files;  // fixed before the first copy: `other` may be this definition
    other->getBomFiles(files);
    for (const HHDFHwDefFile* file : files) {
        addFileToBom(file);
    }
    implementation_->driverDirs = from.driverDirs;
    implementation_->drivers.replaceAll(from.drivers.files());
    implementation_->wdiAttrs = from.wdiAttrs;
    return true;
}
