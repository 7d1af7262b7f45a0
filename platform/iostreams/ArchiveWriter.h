#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/NewMember.h"

namespace iostreams::zip {

/// Writes a whole new archive; one writer serves a whole packaging run.
///
/// Nothing is visible at the path until commit(): then the new archive takes the old one's place.
/// A writer that goes away without commit() leaves no trace. Members appear in the order added, with
/// fixed times and modes where not asked otherwise, so that the same input gives the same bytes. Input passes
/// through reused buffers, never a whole member in memory.
///
/// The operations that add return false, with `reason` in one sentence, when the source can't be
/// read; the archive is then as if the call had not been made. Failures of the archive itself throw
/// zip_exception and leave the writer fit for destruction only.
class ArchiveWriter {
public:
    /// Whether the archive gets the archive digest (see HUTZip).
    enum class Digest { NONE, ATTACHED };

    explicit ArchiveWriter(const std::string& path, Digest digest = Digest::NONE);
    ~ArchiveWriter();
    ArchiveWriter(const ArchiveWriter&) = delete;
    ArchiveWriter& operator=(const ArchiveWriter&) = delete;

    /// True when a member of that name was added.
    bool contains(std::string_view name) const;

    /// Begins the new archive with the bytes that stand in front of another one's members, such as a program
    /// that unpacks them. Before anything is added.
    void keepFront(const ArchiveReader& archive);
    /// Adds a file from disk, which must be a regular one. A member of that name added before is
    /// replaced, and leaves nothing behind. A name must have 1 to 65,535 bytes.
    bool addFile(const std::string& source, const std::string& name, std::string& reason);
    /// Adds a member of another archive as it is compressed there; its CRC-32 is kept, its content is
    /// not unpacked. Its local header is held against the directory as for reading. The archive may
    /// be the one that this writer is about to replace. With Origin::KEPT, for which it must have its own
    /// name, its header, data descriptor and record are those it has there, but for the offset.
    bool addMember(const ArchiveReader& archive, const Entry& entry, const std::string& name,
                   std::string& reason, Origin origin = Origin::FIXED);

    /// Gives the new archive a comment, in front of a digest that is attached; both together may have
    /// 65,535 bytes, else commit() fails.
    void setComment(std::string_view comment);

    /// Writes the directory, and the digest, and puts the archive in place. Throws zip_exception, also when a
    /// kept record's comment, or the front of an archive without members, would be taken for a part of the
    /// end record; the old archive is then as it was.
    void commit();

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace iostreams::zip
