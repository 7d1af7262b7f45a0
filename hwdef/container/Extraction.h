#pragma once

#include <string>

#include "platform/Buffer.h"
#include "platform/File.h"
#include "platform/ReplacementFile.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/MemberReader.h"

/// Unpacks one member after the other through the same buffers: memory that is taken and given back for
/// each member costs page faults that a small member doesn't pay for. A failure of one member is none
/// of the next.
class MemberExtractor {
public:
    using Links = platform::ReplacementFile::Links;

    MemberExtractor();

    /// Writes a member's content to the file `target`, whose directory must exist; it appears whole or
    /// not at all. zip_exception when the member can't be read, platform::FileError when the file can't
    /// be written or something else than a file stands there.
    void extract(const iostreams::zip::ArchiveReader& archive, const iostreams::zip::Entry& entry,
                 const std::string& target, Links links = Links::FOLLOWED);
    /// The same into a file that is open already and may be no regular one. A failure leaves there what
    /// was written before.
    void stream(const iostreams::zip::ArchiveReader& archive, const iostreams::zip::Entry& entry,
                const platform::File& target);
    /// Reads a member to its end, which is where its damage shows, and keeps nothing of it.
    void check(const iostreams::zip::ArchiveReader& archive, const iostreams::zip::Entry& entry);

private:
    iostreams::zip::MemberReader content_;
    platform::Buffer buffer_;
};

/// The work of MemberExtractor for a single member.
/// @{
void extractMember(const iostreams::zip::ArchiveReader& archive, const iostreams::zip::Entry& entry,
                   const std::string& target,
                   platform::ReplacementFile::Links links = platform::ReplacementFile::Links::FOLLOWED);
void streamMember(const iostreams::zip::ArchiveReader& archive, const iostreams::zip::Entry& entry,
                  const platform::File& target);
void checkMember(const iostreams::zip::ArchiveReader& archive, const iostreams::zip::Entry& entry);
/// @}

/// Copies the regular file `source` with its permissions to `target`, whose directory must exist; it
/// appears whole or not at all, and takes the place of a link. Throws platform::FileError.
void copyFile(const std::string& source, const std::string& target);
