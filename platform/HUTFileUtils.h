#pragma once

#include <string>

#include "platform/Export.h"

/// Operations on paths that rewrite them in place.
class HWDEF_API HUTFileUtils {
public:
    HUTFileUtils() = delete;

    /// Appends "-" and a number to the last component, so that nothing exists under the new path and
    /// no other call of this process ever gets the same one. Trailing separators are dropped; a name
    /// that would become longer than the system allows (255 bytes) loses its end. Nothing is made on
    /// disk. Safe from several threads.
    static void uniquifyFilenameInDir(std::string& path);

    /// Makes the path absolute against the working directory and normalises it lexically, as
    /// HUTFile::getCanonicalName does. A path that has no canonical name stays as it is.
    static void makeAbsolutePath(std::string& path);
};
