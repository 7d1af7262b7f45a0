#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/HPAParamMgr.h"
#include "platform/HUTEnv.h"

namespace {

/// File-type tokens that a QVA archive must not carry.
std::vector<std::string> qvaExclusionList()
{
    std::vector<std::string> tokens = {"SYSMON_DATA", "POWER_DATA", "IO_DATA"};
    if (HPAParamMgr::getParamMgr()->getValueIfExistAsBool("project.removeVELDFilesFromQVA", false)) {
        tokens.insert(tokens.end(), {"CDO", "ELF"});
    }
    tokens.push_back("BD_TCL");
    return tokens;
}

}  // namespace

HHDFHwDefImp::HHDFHwDefImp(const std::string& path, HHDFHwDef* ownerDef)
    : productVersion(HUTEnv::getProductVersion()),
      qvaExclusions(qvaExclusionList()),
      container(std::make_unique<HUTFile>(path)),
      owner(ownerDef)
{
    std::string name;
    container->getName(name);
    tmpDir = std::make_unique<HHDFCTmpDirObject>(name);
}

HHDFHwDefImp::~HHDFHwDefImp()
{
    for (const auto& [path, info] : partitionInfo) {
        delete info;
    }
    for (const auto& [name, config] : partitionConfigs) {
        delete config;
    }
}
