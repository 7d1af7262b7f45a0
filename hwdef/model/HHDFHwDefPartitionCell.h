#pragma once

#include <map>
#include <string>

#include "hwdef/model/HHDFHwDefFileTypes.h"
#include "platform/Export.h"

/// The module chosen for one reconfigurable cell of a configuration.
class HWDEF_API HHDFHwDefPartitionCell {
public:
    /// A cell without files, filled by the module of that name.
    explicit HHDFHwDefPartitionCell(const std::string& rmName);

    /// Stores a file under its type, replacing an earlier one of that type.
    void addFile(const std::string& file, HHDFHwDefFileTypes::HWHFileType type);

    /// The module's name; fixed when the cell is made.
    const std::string& getRmName() const { return rmName_; }
    /// One file path per file type.
    const std::map<HHDFHwDefFileTypes::HWHFileType, std::string>& getFilesMap() const { return files_; }

    /// Writes module name and files to standard output, one line each.
    void print() const;

private:
    std::string rmName_;
    std::map<HHDFHwDefFileTypes::HWHFileType, std::string> files_;
};
