#include "hwdef/model/HHDFHwDefBoard.h"

HHDFHwDefBoard::HHDFHwDefBoard(const std::string& filePath, const std::string& relativeName,
                               const std::string& hwDefFilePath)
    : filePath_(filePath), relativeName_(relativeName), hwDefFilePath_(hwDefFilePath)
{
}

bool HHDFHwDefBoard::setFilePath(const std::string& path)
{
    if (path.empty()) {
        return false;
    }
    filePath_ = path;
    return true;
}

bool HHDFHwDefBoard::setHwDefFilePath(const std::string& path)
{
    if (path.empty()) {
        return false;
    }
    hwDefFilePath_ = path;
    return true;
}
