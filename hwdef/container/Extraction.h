#pragma once

#include <string>

#include "platform/File.h"
#include "platform/ReplacementFile.h"
#include "platform/iostreams/ArchiveReader.h"

/// Writes a member's content to the file `target`, whose directory must exist; it appears whole or not
/// at all. zip_exception when the member can't be read, platform::FileError when the file can't be
/// written or something else than a file stands there.
void extractMember(const iostreams::zip::ArchiveReader& archive, const iostreams::zip::Entry& entry,
                   const std::string& target,
                   platform::ReplacementFile::Links links = platform::ReplacementFile::Links::FOLLOWED);

/// The same into a file that is open already and may be no regular one. A failure leaves there what
/// was written before.
void streamMember(const iostreams::zip::ArchiveReader& archive, const iostreams::zip::Entry& entry,
                  const platform::File& target);

/// Reads a member to its end, which is where its damage shows, and keeps nothing of it.
void checkMember(const iostreams::zip::ArchiveReader& archive, const iostreams::zip::Entry& entry);

/// Copies the regular file `source` with its permissions to `target`, whose directory must exist; it
/// appears whole or not at all, and takes the place of a link. Throws platform::FileError.
void copyFile(const std::string& source, const std::string& target);
