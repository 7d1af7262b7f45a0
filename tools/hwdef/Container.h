#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hwdef/hwdef.h"

/// A container that was opened without checking its integrity.
struct Container {
    std::string path;
    std::unique_ptr<HHDFHwDef> definition;
    std::unique_ptr<HHDFHwDefArchive> archive;

    /// The entries of its BOM in order; they belong to the definition.
    std::vector<HHDFHwDefFile*> files() const;
    /// The name of its BOM document.
    std::string bomName() const;
    /// Whether its BOM names a mode; without one the definition reads as of post-synthesis.
    bool hasMode() const;
    /// The member of that name. Throws CommandError with the nearest name.
    const HHDFHwDefArchive::Member& member(const std::string& name) const;
    /// The member that a driver's file stands for; null when the archive has none.
    const HHDFHwDefArchive::Member* driverMember(const HHDFHwDefDriver& file) const;
};

/// Throws CommandError, which says what is wrong with the file, or what it is when it is no container.
Container openContainer(const std::string& path);

/// Throws CommandError when there is no file at the path, with the nearest one, or something else than a
/// file, with what it is.
void checkFile(const std::string& path);
/// Throws CommandError when something else than a directory stands at the path.
void checkDirectory(const std::string& path);

/// Whether a member of that name stands for a directory (APPNOTE 4.3.8): it has no content, and no file is
/// made of it.
inline bool isDirectory(const std::string& member)
{
    return member.ends_with('/');
}

/// What stands at a path, as far as its first bytes tell: "a directory", "an ELF file", "a zip archive".
/// Empty when that isn't known.
std::string kindOf(const std::string& path);

/// The tokens of all file types.
std::vector<std::string> typeTokens();
/// The file type of a token in any case. Throws CommandError with the nearest token.
HHDFHwDefFileTypes::HWHFileType typeOf(const std::string& token);
/// The token of an entry's type.
std::string typeToken(const HHDFHwDefFile& file);
