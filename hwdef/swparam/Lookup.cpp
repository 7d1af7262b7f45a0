#include <vector>

#include "hwdef/model/HHDFHwDef.h"
#include "hwdef/model/HHDFHwDefFileTypes.h"
#include "hwdef/swparam/SWParamReader.h"
#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/HUTFile.h"

bool HHDFHwDefUtils::getSWParamInfo(const std::string& typeToken, const std::string& container,
                                    std::string& refName, Attributes& attributes)
{
    refName.clear();
    attributes.clear();
    if (container.empty() || !HUTFile(container).exists()) {
        return false;
    }
    const auto type = HHDFHwDefFileTypes::getHWHFileType(typeToken);
    if (type == HHDFHwDefFileTypes::UNKNOWN) {
        return false;
    }
    const auto definition = getHDF(container, false, "");
    if (!definition) {
        return false;
    }
    std::vector<std::string> paths;
    definition->getBomFiles(type, paths);
    if (paths.empty()) {
        return false;
    }
    std::string member;
    HUTFile(paths.front()).getName(member);
    SWParamReader::parseAttributeJsonFile(member, container, refName, attributes);
    return true;
}
