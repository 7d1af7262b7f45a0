#pragma once

#include <string>

#include "platform/iostreams/ArchiveReader.h"

namespace iostreams::zip {

/// Adding one member to an archive where it stands.
///
/// The archive is created when nothing exists at its path; a member of the same name is replaced. The
/// cost is that of the member and of the directory, whatever the archive's size. Every instant
/// before the last step (one truncation) shows the old archive, every one after it the new one; a
/// failure puts the old bytes and length back. An archive digest in the comment is dropped, since it
/// no longer holds; other comments stay.
///
/// False, with `reason`, when the source can't be read: the archive is untouched. zip_exception when
/// the archive can't be read or written.
bool appendFile(const std::string& source, const std::string& name, const std::string& archive,
                std::string& reason);

/// The same for a member of another (or the same) archive, copied as it is compressed.
bool appendMember(const ArchiveReader& from, const Entry& entry, const std::string& name,
                  const std::string& archive, std::string& reason);

}  // namespace iostreams::zip
