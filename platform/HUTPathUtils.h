#pragma once

#include <string>

#include "platform/Export.h"

/// Questions about paths.
class HWDEF_API HUTPathUtils {
public:
    HUTPathUtils() = delete;

    /// True when something exists at the path (links followed).
    static bool exists(const std::string& path);

    /// `path` as seen from the directory `base`, lexically: no link is resolved. `path` itself when
    /// the two have nothing in common.
    static std::string makeRelativePath(const std::string& path, const std::string& base);
};
