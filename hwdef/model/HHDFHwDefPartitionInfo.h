#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/Export.h"

/// One reconfigurable partition: the modules that can fill it, with their files, and the default one.
class HWDEF_API HHDFHwDefPartitionInfo {
public:
    /// A partition with the one module `rmName`, which is its default when `isDefault` is set.
    HHDFHwDefPartitionInfo(std::string& rmName, std::string& file, bool isDefault);

    /// Adds a module, or a file to a module already there. Linear in the files of that module.
    ///
    /// A module's only file that is the empty text is replaced by the new one; a file already listed
    /// is not repeated. With `isDefault` the module becomes the default (the last one wins); without,
    /// the default stays. Always true.
    bool addPartitionInfo(std::string& rmName, std::string& file, bool isDefault);

    /// Empty until a module was added as default.
    const std::string& getDefaultRmName() const { return defaultRmName_; }
    /// Module name to its files in insertion order.
    const std::map<std::string, std::vector<std::string>>& getRmToFilesMap() const { return rmToFiles_; }

private:
    std::map<std::string, std::vector<std::string>> rmToFiles_;
    std::string defaultRmName_;
};
