#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "hwdef/model/BomList.h"
#include "hwdef/model/DriverMap.h"
#include "hwdef/model/FileDigests.h"
#include "hwdef/model/HHDFHwDef.h"
#include "platform/HUTFile.h"

class HHDFCTmpDirObject;

/// The data of one hardware definition. Fields are open to the library's own parts; what spans
/// subsystems is implemented in the folder that owns the work (`container/`).
class HHDFHwDefImp {
public:
    /// Makes the scratch directory, named after the container's file.
    HHDFHwDefImp(const std::string& path, HHDFHwDef* owner);
    ~HHDFHwDefImp();
    HHDFHwDefImp(const HHDFHwDefImp&) = delete;
    HHDFHwDefImp& operator=(const HHDFHwDefImp&) = delete;

    // Implemented in model/.
    bool addPartitionInfo(std::string& partitionPath, std::string& rmName, std::string& file, bool isDefault);
    /// The configuration of that name, made with that flag when there is none.
    HHDFHwDefConfig& configNamed(const std::string& name, bool isActive);
    /// Adds a cell: a gray box when no module fills it.
    static void addPartitionCell(HHDFHwDefConfig& config, const std::string& instPath,
                                 const std::string& rmName, const std::string& file);
    void printPartitionInfo() const;

    // Implemented in container/.
    bool init(bool checkIntegrity, const std::string& driverPath);
    bool runDRC() const;
    /// Of which members digests were computed: SOME when one was left out because of the limit.
    enum class Digested { ALL, SOME, CANCELLED };
    /// As the definition's own.
    Digested calculateDigest(std::string& overall, HHDFHwDef::Texts& digestMap) const;
    bool packageHDFContainer(bool flag);
    bool write(const std::string& path);
    void removeUnnecessaryFilesForQVA();

    std::string toolVersion;
    HHDFHwDefFileTypes::HWHModeType mode = HHDFHwDefFileTypes::MODE_UNSET;
    std::string bomName = "hwdef.xml";
    std::string board;
    std::string part;
    std::string arch;
    std::string package;
    std::string device;
    std::string speed;
    bool tier = false;
    int slrCount = -1;
    bool integratedBoard = false;
    std::string baseBoard;
    std::map<std::string, std::string> boardConnections;
    std::string boardTopDir;
    std::vector<std::pair<std::string, bool>> jumpers;
    HHDFHwDef::HHDFResourceInfo usedResources;
    HHDFHwDef::HHDFResourceInfo systemResources;
    std::string unzipDir;
    std::string hierTopModuleName;
    BomList bom;
    std::vector<std::unique_ptr<HHDFHwDefFile>> strippedFiles;  // off the list; callers may still hold them
    std::map<std::string, std::string> driverDirs;              // driver name to directory
    DriverMap drivers;
    std::map<std::string, std::vector<HHDFHwDefBoard>> boardFiles;
    std::string driversTopDir;
    std::uint32_t majorVersion = 1;
    std::uint32_t minorVersion = 7;
    std::map<std::string, std::string> wdiAttrs;
    std::map<std::string, HHDFHwDefPartitionInfo*> partitionInfo;  // owned
    std::map<std::string, HHDFHwDefConfig*> partitionConfigs;      // owned
    std::string digest;
    FileDigests fileDigests;  // as stored in the BOM
    std::string productVersion;
    std::vector<std::string> qvaExclusions;  // file-type tokens
    std::unique_ptr<HHDFCTmpDirObject> tmpDir;
    std::unique_ptr<HUTFile> container;
    HHDFHwDef* owner;
};
