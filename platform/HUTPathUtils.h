#pragma once

#include <string>

#include "platform/Export.h"

/// Questions about paths.
class HWDEF_API HUTPathUtils {
public:
    HUTPathUtils() = delete;

    /// True when something exists at the path (links followed).
    static bool exists(const std::string& path);

    /// `path` as seen from the directory `base`, lexically: no link is resolved, nothing needs to
    /// exist. "." when the two are the same. `path` itself when there is no such path: one of the two
    /// is absolute and the other is not, or `base` climbs above where `path` starts.
    static std::string makeRelativePath(const std::string& path, const std::string& base);
};
