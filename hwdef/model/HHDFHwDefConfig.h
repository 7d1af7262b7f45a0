#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hwdef/model/HHDFHwDefFileTypes.h"
#include "hwdef/model/HHDFHwDefPartitionCell.h"
#include "platform/Export.h"

/// One named configuration: a module or a gray box for every reconfigurable cell.
class HWDEF_API HHDFHwDefConfig {
public:
    /// A configuration without cells.
    HHDFHwDefConfig(const std::string& name, bool isActive);
    ~HHDFHwDefConfig();
    HHDFHwDefConfig(const HHDFHwDefConfig&) = delete;
    HHDFHwDefConfig& operator=(const HHDFHwDefConfig&) = delete;

    /// Chooses a module for the cell at `instPath` and stores the file under its type. A cell that
    /// is already there keeps its module name.
    void addPartitionCellRM(const std::string& instPath, const std::string& rmName, const std::string& file,
                            HHDFHwDefFileTypes::HWHFileType type);
    /// Appends a cell left as a gray box; repeats are kept.
    void addGrayBoxCell(const std::string& instPath);

    /// The cell of that instance path, owned by the configuration; null when there is none.
    HHDFHwDefPartitionCell* getPartitionCell(const std::string& instPath) const;
    /// Instance path to cell; the cells belong to the configuration.
    const std::map<std::string, HHDFHwDefPartitionCell*>& getPartitionCellRMs() const { return cells_; }
    /// Instance paths in insertion order.
    const std::vector<std::string>& getGrayBoxCells() const { return grayBoxCells_; }
    /// Fixed when the configuration is made.
    /// @{
    const std::string& getName() const { return name_; }
    bool isActive() const { return active_; }
    /// @}

    /// Writes the configuration to standard output.
    void print() const;

private:
    std::vector<std::string> grayBoxCells_;
    std::map<std::string, HHDFHwDefPartitionCell*> cells_;
    std::vector<std::unique_ptr<HHDFHwDefPartitionCell>> owned_;
    std::string name_;
    bool active_;
};
