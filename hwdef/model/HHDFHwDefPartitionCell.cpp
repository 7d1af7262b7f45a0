#include "hwdef/model/HHDFHwDefPartitionCell.h"

#include <iostream>

HHDFHwDefPartitionCell::HHDFHwDefPartitionCell(const std::string& rmName) : rmName_(rmName) {}

void HHDFHwDefPartitionCell::addFile(const std::string& file, HHDFHwDefFileTypes::HWHFileType type)
{
    files_[type] = file;
}

void HHDFHwDefPartitionCell::print() const
{
    std::cout << " RM Name : " << rmName_ << std::endl;
    for (const auto& [type, file] : files_) {
        std::cout << "file: " << file << std::endl;
    }
}
