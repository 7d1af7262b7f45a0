#include "platform/HUTPathUtils.h"

#include <filesystem>

#include "platform/HUTFile.h"

bool HUTPathUtils::exists(const std::string& path)
{
    return HUTFile(path).exists();
}

std::string HUTPathUtils::makeRelativePath(const std::string& path, const std::string& base)
{
    // The standard library's paths and not Boost's: Boost 1.74 counts "." and ".." of the base as if
    // they were directories below it.
    const auto relative = std::filesystem::path(path).lexically_normal().lexically_relative(
        std::filesystem::path(base).lexically_normal());
    return relative.empty() ? path : relative.string();
}
