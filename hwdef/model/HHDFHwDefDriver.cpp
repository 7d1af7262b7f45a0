#include "hwdef/model/HHDFHwDefDriver.h"

HHDFHwDefDriver::HHDFHwDefDriver(const std::string& filePath, const std::string& relativeName,
                                 const std::string& hwDefFilePath)
    : filePath_(filePath), relativeName_(relativeName), hwDefFilePath_(hwDefFilePath)
{
}

bool HHDFHwDefDriver::setFilePath(const std::string& path)
{
    if (path.empty()) {
        return false;
    }
    filePath_ = path;
    return true;
}

bool HHDFHwDefDriver::setHwDefFilePath(const std::string& path)
{
    if (path.empty()) {
        return false;
    }
    hwDefFilePath_ = path;
    return true;
}
