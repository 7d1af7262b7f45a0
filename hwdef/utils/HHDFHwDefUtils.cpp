#include "hwdef/utils/HHDFHwDefUtils.h"

#include <algorithm>

#include "platform/HUTFile.h"

namespace {

/// The definition, or nothing when its container has no canonical path.
std::unique_ptr<HHDFHwDef> ifNamed(std::unique_ptr<HHDFHwDef> def)
{
    std::string canonical;
    def->getContainerFullPath(canonical);
    return canonical.empty() ? nullptr : std::move(def);
}

}  // namespace

std::unique_ptr<HHDFHwDef> HHDFHwDefUtils::createHDF(const std::string& path)
{
    return path.empty() ? nullptr : ifNamed(std::make_unique<HHDFHwDef>(path));
}

std::unique_ptr<HHDFHwDef> HHDFHwDefUtils::getHDF(const std::string& path, bool checkIntegrity,
                                                  std::string driverPath)
{
    // Any other path is for init to judge, which says what it finds.
    if (path.empty() && !HUTFile(path).exists()) {
        return nullptr;
    }
    auto def = std::make_unique<HHDFHwDef>(path);
    return def->init(checkIntegrity, std::move(driverPath)) ? ifNamed(std::move(def)) : nullptr;
}

void HHDFHwDefUtils::releaseHDFs(const std::vector<HHDFHwDef*>& definitions)
{
    for (HHDFHwDef* def : definitions) {
        delete def;
    }
}

bool HHDFHwDefUtils::isAlreadyPresent(const std::vector<HHDFHwDefDriver>& list, const HHDFHwDefDriver& record)
{
    return std::any_of(list.begin(), list.end(), [&record](const HHDFHwDefDriver& present) {
        return present.getFilePath() == record.getFilePath() &&
               present.getRelativeName() == record.getRelativeName() &&
               present.getHwDefFilePath() == record.getHwDefFilePath();
    });
}
