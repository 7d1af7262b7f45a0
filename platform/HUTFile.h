#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Export.h"

/// One path on disk; nothing needs to exist there. Holding a HUTFile holds no file open.
///
/// The queries that fill a text return true when they could tell, and leave the text untouched
/// otherwise; none of them throws.
class HWDEF_API HUTFile {
public:
    /// How copyToDir treats a file of the same name.
    enum CopyMode : std::uint32_t {
        COPY_KEEP_EXISTING = 1,  ///< an existing file stays and the copy fails
        COPY_OVERWRITE = 3,      ///< an existing file is replaced when the copy is whole
    };

    explicit HUTFile(std::string path);

    /// True when something exists at the path (links followed). False for an empty path.
    bool exists() const;
    /// True when the path is a directory (links followed).
    bool isDir() const;

    /// The absolute path, lexically normalised ("." and ".." and repeated separators resolved, no
    /// trailing separator); links are not resolved and the file need not exist. An empty path has
    /// none: `name` becomes empty and the result is false.
    bool getCanonicalName(std::string& name) const;
    /// The path as passed, with a leading relative part kept.
    bool getFullPath(std::string& path) const;
    /// The last component of the path: what follows the last separator once trailing separators are
    /// taken off. Empty for an empty path.
    bool getName(std::string& name) const;
    /// The time of the last modification in seconds since the epoch; false when it can't be had.
    bool getLastMod(long& seconds) const;
    /// The text behind the last "." of the name, without the dot; empty when the name has none or
    /// only a leading one.
    bool getExt(std::string& extension) const;

    /// The path as passed, and its last component without a copy; both live as long as this object.
    const std::string& path() const { return path_; }
    std::string_view name() const;

    /// The separator between the components of a path, "/".
    static std::string getDirSeparator();
    /// Makes the directory with all missing parents; true when it exists afterwards.
    static bool mkDirRecursive(const std::string& path);
    /// Makes the directory when it is missing; true when it is a directory that can be written to.
    /// The empty path (the parent of a bare file name) is the working directory.
    static bool ensureWritableDirectory(const std::string& path);
    /// Removes the file, or the directory with all it holds, following no links; true when nothing
    /// is left there.
    static bool rmRecursive(const std::string& path);

    /// Copies this file into the directory `dir` under its own name.
    ///
    /// The copy appears whole or not at all, and has the source's permissions. False when it can't
    /// be made (this isn't a readable regular file, `dir` is no directory that can be written to, or
    /// `mode` forbids to replace); `reason`, when given, then says why in one sentence.
    bool copyToDir(const std::string& dir, std::uint32_t mode, std::string* reason = nullptr) const;

private:
    std::string path_;
};
