#pragma once

#include <string>
#include <utility>
#include <vector>

namespace support {

/// Members of an archive in its order: name and content.
using Members = std::vector<std::pair<std::string, std::string>>;

/// Writes an archive of stored members with libzip, replacing what was there.
void writeArchive(const std::string& path, const Members& members);
/// Writes an archive of one deflated member of `size` zeros.
void writeZeros(const std::string& path, const std::string& name, std::size_t size);
/// All members as libzip reads them, CRC checked; fails the test when the archive is broken.
Members readArchive(const std::string& path);
/// The names of all members in order, separated by blanks.
std::string namesIn(const std::string& path);
/// The content of one member; fails the test when it isn't there.
std::string memberOf(const std::string& path, const std::string& name);

/// Puts `replacement` in the place of the first `found`, which is as long, in a file.
void patchFile(const std::string& path, const std::string& found, const std::string& replacement);

/// A BOM document with the given attributes of its root and elements within.
std::string bomDocument(const std::string& rootAttributes, const std::string& elements);
/// A BOM document of version 1.`minor` that lists files of type BIT.
std::string bomOfFiles(const std::string& minor, const std::vector<std::string>& names);

}  // namespace support
