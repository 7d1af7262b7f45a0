#include "hwdef/model/HHDFHwDefConfig.h"

#include <iostream>

namespace {

constexpr const char* ruler = "----------------------------";

}  // namespace

HHDFHwDefConfig::HHDFHwDefConfig(const std::string& name, bool isActive) : name_(name), active_(isActive) {}

HHDFHwDefConfig::~HHDFHwDefConfig() = default;

void HHDFHwDefConfig::addPartitionCellRM(const std::string& instPath, const std::string& rmName,
                                         const std::string& file, HHDFHwDefFileTypes::HWHFileType type)
{
    HHDFHwDefPartitionCell* cell = getPartitionCell(instPath);
    if (!cell) {
        cell = owned_.emplace_back(std::make_unique<HHDFHwDefPartitionCell>(rmName)).get();
        cells_.emplace(instPath, cell);
    }
    cell->addFile(file, type);
}

void HHDFHwDefConfig::addGrayBoxCell(const std::string& instPath)
{
    grayBoxCells_.push_back(instPath);
}

HHDFHwDefPartitionCell* HHDFHwDefConfig::getPartitionCell(const std::string& instPath) const
{
    const auto found = cells_.find(instPath);
    return found == cells_.end() ? nullptr : found->second;
}

void HHDFHwDefConfig::print() const
{
    std::cout << ruler << std::endl;
    // The flag is a digit whatever the stream's format says.
    std::cout << "config name: " << name_ << " isActive: " << (active_ ? '1' : '0') << std::endl;
    for (const auto& [instPath, cell] : cells_) {
        std::cout << "InstPath : " << instPath << std::endl;
        cell->print();
    }
    for (const std::string& instPath : grayBoxCells_) {
        std::cout << "Graybox inst: " << instPath << std::endl;
    }
    std::cout << ruler << std::endl;
}
