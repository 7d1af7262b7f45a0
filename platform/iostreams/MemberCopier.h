#pragma once

#include <string>

#include "platform/Buffer.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/NewMember.h"

namespace iostreams::zip {

/// Takes members of other archives over as they are compressed there, one after the other. Small
/// neighbours are read together.
class MemberCopier final : public NewMember {
public:
    MemberCopier();

    /// Begins a new member, in place of the one before. Its local header is held against the entry;
    /// throws SourceError when they differ, when the data isn't stored or deflated, is encrypted, or
    /// runs into the next member. Archive and entry must outlive the write, and its entry's use with
    /// Origin::KEPT, for which the name must be the entry's.
    void open(const ArchiveReader& archive, const Entry& entry, std::string name,
              Origin origin = Origin::FIXED);

    std::string_view name() const override { return name_; }
    std::uint64_t maxBytes() const override;
    Entry write(BufferedOutput& out) override;

private:
    std::string_view view(std::uint64_t offset, std::size_t size);
    void findData(const Entry& entry);
    std::string_view findDescriptor(const Entry& entry);
    void copySmall(BufferedOutput& out);
    void copyLarge(BufferedOutput& out) const;

    std::string name_;
    Entry entry_;
    const ArchiveReader* archive_ = nullptr;
    std::uint64_t dataOffset_ = 0;
    std::string header_;
    std::string descriptor_;  ///< what stands behind the data

    std::uint64_t windowOwner_ = 0;  ///< serial of the archive whose bytes the window holds
    std::uint64_t windowOffset_ = 0;
    std::size_t windowSize_ = 0;
    platform::Buffer window_;
};

}  // namespace iostreams::zip
