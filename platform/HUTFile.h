#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Export.h"

/// One path on disk; nothing needs to exist there. Holding a HUTFile holds no file open.
///
/// The queries that fill a text return true when it is not empty; it becomes empty otherwise, and
/// nothing of what it held is left. No operation reports a failure by an exception. A path that holds
/// a NUL names nothing, whatever stands under its part before the NUL.
class HWDEF_API HUTFile {
public:
    /// How copyToDir treats a file of the same name.
    enum CopyMode : std::uint32_t {
        COPY_KEEP_EXISTING = 1,  ///< what exists stays and the copy fails; so with all other values
        COPY_OVERWRITE = 3,      ///< an existing file is replaced when the copy is whole
    };

    /// Nothing is looked up, and nothing is made.
    explicit HUTFile(std::string path);

    /// True when something exists at the path (links followed). False for an empty path.
    bool exists() const;
    /// True unless it is certain that nothing exists at the path (links followed): what keeps a file from
    /// being replaced must not fail to see it.
    bool mayExist() const;
    /// True when the path is a directory (links followed).
    bool isDir() const;

    /// The absolute path, lexically normalised ("." and ".." and repeated separators resolved, no
    /// trailing separator; ".." above the root stays at the root); links are not resolved and the
    /// file need not exist. An empty path has none, nor has a relative one when the working
    /// directory can't be had. Cost: linear in the path, without system calls when it is absolute.
    bool getCanonicalName(std::string& name) const;
    /// The path as passed.
    bool getFullPath(std::string& path) const;
    /// The last component of the path: what follows the last separator once trailing separators are
    /// taken off, "." and ".." included. The empty path and the root have none.
    bool getName(std::string& name) const;
    /// The time of the last modification in seconds since the epoch (links followed); false, and
    /// `seconds` untouched, when it can't be had.
    bool getLastMod(long& seconds) const;
    /// The text behind the last "." of the name, without the dot. A leading dot starts no extension.
    bool getExt(std::string& extension) const;

    /// The path as passed, and its last component without a copy; both live as long as this object.
    /// @{
    const std::string& path() const { return path_; }
    std::string_view name() const;
    /// @}

    /// The separator between the components of a path, "/".
    static std::string getDirSeparator();
    /// Makes the directory with all missing parents; true when it is a directory afterwards.
    static bool mkDirRecursive(const std::string& path);
    /// Makes the directory with all missing parents; true when it is a directory afterwards that
    /// this process may write to. The empty path (the parent of a bare file name) is the working
    /// directory.
    static bool ensureWritableDirectory(const std::string& path);
    /// Removes the file, or the directory with all it holds; true when nothing is left there.
    ///
    /// Follows no links: one that stands at the path, with or without a trailing separator, or
    /// anywhere below is removed itself. The root, "." and ".." are refused.
    static bool rmRecursive(const std::string& path);

    /// Copies this file into the existing directory `dir` (empty: the working directory) under its
    /// own name.
    ///
    /// The copy appears whole or not at all, and has the source's permissions. A link that stands at
    /// its place is replaced; what it points to stays untouched. False when the copy can't be made
    /// (this isn't a readable regular file, `dir` is no directory that can be written to, a
    /// directory stands at the place, or `mode` forbids to replace); `reason`, when given, then says
    /// why in one sentence.
    bool copyToDir(const std::string& dir, std::uint32_t mode, std::string* reason = nullptr) const;

private:
    std::string path_;
};
