#include "hwdef/model/HHDFHwDefPartitionInfo.h"

#include <algorithm>

HHDFHwDefPartitionInfo::HHDFHwDefPartitionInfo(std::string& rmName, std::string& file, bool isDefault)
{
    addPartitionInfo(rmName, file, isDefault);
}

bool HHDFHwDefPartitionInfo::addPartitionInfo(std::string& rmName, std::string& file, bool isDefault)
{
    std::vector<std::string>& files = rmToFiles_[rmName];
    if (files.size() == 1 && files.front().empty()) {
        files.front() = file;
    } else if (std::find(files.begin(), files.end(), file) == files.end()) {
        files.push_back(file);
    }
    if (isDefault) {
        defaultRmName_ = rmName;
    }
    return true;
}
