#pragma once

#include <string>

#include "platform/Export.h"

/// Core containers: archives that stand in a path like a directory.
///
/// A path one of whose proper ancestors is a regular file that is a zip archive lies inside that
/// archive; the rest of the path, less "." components, is the member's name. A rest that holds ".."
/// leads into no archive. An archive that is itself a member is not looked into: below it, too, the
/// rest of the path is one name.
class HWDEF_API HUTCoreContainer {
public:
    HUTCoreContainer() = delete;

    /// True when the path lies inside an archive. The flag is kept for callers' sake and changes
    /// nothing. Costs one status call per ancestor, and opens only ancestors that are regular files.
    static bool hasParentCoreContainer(const std::string& path, bool flag);

    /// True when the path lies inside an archive that holds it as a member; false for what can't be
    /// read.
    static bool contains(const std::string& path);

    /// Copies a file from and to a disk path or a path inside an archive, in any combination.
    ///
    /// False when the source can't be read, the destination can't be written, or it exists and
    /// `overwrite` is false; `reason`, when given, then says why. A destination on disk appears
    /// whole or not at all, its directory is made where it is missing; a new file gets the permissions
    /// of a source on disk. One inside an archive is added to it as a member, and copied as it is
    /// compressed when it comes from an archive.
    static bool cp(const std::string& from, const std::string& to, bool overwrite,
                   std::string* reason = nullptr);
};
