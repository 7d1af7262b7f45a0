#pragma once

#include <string>

#include "platform/Export.h"

/// Operations on paths that rewrite them in place.
class HWDEF_API HUTFileUtils {
public:
    HUTFileUtils() = delete;

    /// Appends "-" and a number to the last component, so that nothing exists under the new path and
    /// no other call of this process ever gets the same one. Safe from several threads.
    static void uniquifyFilenameInDir(std::string& path);

    /// Makes the path absolute against the working directory and normalises it lexically.
    static void makeAbsolutePath(std::string& path);
};
