#include "platform/iostreams/MemberCopier.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "platform/ProgressWork.h"
#include "platform/iostreams/EntryHeaders.h"
#include "platform/iostreams/ZipException.h"

namespace iostreams::zip {

namespace {

constexpr std::size_t windowBytes = 256 * 1024;
/// So much is read ahead: what is small enough to be still in the processor's cache when it is written.
constexpr std::size_t aheadBytes = windowBytes / 4;
/// Members up to this size pass through the window, larger ones go past it.
constexpr std::uint64_t smallBytes = windowBytes / 4;
/// Room for an extra field of usual size, so that header and small data come with one read.
constexpr std::size_t extraRoom = 64;

}  // namespace

MemberCopier::MemberCopier() : window_(windowBytes) {}

void MemberCopier::open(const ArchiveReader& archive, const Entry& entry, std::string name, Origin origin)
{
    checkMemberName(name);
    name_ = std::move(name);
    archive_ = &archive;
    try {
        checkSupported(entry, archive.path());
        if (windowOwner_ != archive.serial()) {
            windowSize_ = 0;
            windowOwner_ = archive.serial();
        }
        findData(entry);
        descriptor_ = origin == Origin::KEPT ? findDescriptor(entry) : std::string_view();
    } catch (const platform::FileError& error) {
        throw SourceError(error.what());
    } catch (const zip_exception& error) {
        throw SourceError(error.what());
    }
    entry_ = entry;
    entry_.name = name_;
    assert(origin == Origin::FIXED || name_ == entry.name);
    if (origin == Origin::FIXED) {
        entry_.record = {};
        header_.clear();
        appendLocalHeader(header_, entry_);
    }
}

std::uint64_t MemberCopier::maxBytes() const
{
    return header_.size() + entry_.compressedSize + descriptor_.size();
}

Entry MemberCopier::write(BufferedOutput& out)
{
    entry_.headerOffset = out.position();
    out.write(header_);
    if (entry_.compressedSize > smallBytes) {
        copyLarge(out);
    } else {
        copySmall(out);
    }
    out.write(descriptor_);
    return entry_;
}

/// Copies what a neighbour may have brought along.
void MemberCopier::copySmall(BufferedOutput& out)
{
    std::string_view data;
    try {
        data = view(dataOffset_, static_cast<std::size_t>(entry_.compressedSize));
    } catch (const platform::FileError& error) {
        throw SourceError(error.what());
    }
    if (data.size() != entry_.compressedSize) {
        throw SourceError(memberError(archive_->path(), entry_.name, "the file ends inside its data").what());
    }
    out.write(data);
    platform::ProgressWork::advance(name_, data.size());
}

/// Copies large data; what the source refuses is told apart from what the output refuses.
void MemberCopier::copyLarge(BufferedOutput& out) const
{
    try {
        platform::ProgressWork::copyInSteps(name_, entry_.compressedSize,
                                            [&](std::uint64_t offset, std::uint64_t size) {
                                                out.copyFrom(archive_->file(), size, dataOffset_ + offset);
                                            });
    } catch (const platform::FileError& error) {
        if (error.path() == archive_->path()) {
            throw SourceError(error.what());
        }
        throw;
    }
}

/// Takes the entry's local header, once it has been checked; its data begins behind it.
void MemberCopier::findData(const Entry& entry)
{
    const std::size_t data = static_cast<std::size_t>(std::min(entry.compressedSize, smallBytes));
    std::string_view header =
        view(entry.headerOffset, LOCAL_HEADER_BYTES + entry.name.size() + extraRoom + data);
    if (header.size() < localHeaderLength(header)) {
        header = view(entry.headerOffset, localHeaderLength(header));
    }
    const std::uint64_t offset = entry.headerOffset + checkLocalHeader(header, entry, archive_->path());
    header_ = header.substr(0, static_cast<std::size_t>(offset - entry.headerOffset));
    const std::uint64_t limit = archive_->dataLimit(entry);
    if (offset > limit || entry.compressedSize > limit - offset) {
        throw memberError(archive_->path(), entry.name,
                          std::to_string(entry.compressedSize) + " bytes at " + std::to_string(offset) +
                              " run into what begins at " + std::to_string(limit));
    }
    dataOffset_ = offset;
}

/// The data descriptor of an entry; empty when it has none, or one that tells something else.
std::string_view MemberCopier::findDescriptor(const Entry& entry)
{
    if ((entry.flags & FLAG_DESCRIPTOR) == 0) {
        return {};
    }
    const std::uint64_t begin = dataOffset_ + entry.compressedSize;
    const auto most = std::min<std::uint64_t>(archive_->dataLimit(entry) - begin, LONGEST_DESCRIPTOR_BYTES);
    const std::string_view bytes = view(begin, static_cast<std::size_t>(most));
    return bytes.substr(0, descriptorLength(bytes, entry));
}

/// Bytes of the archive, fewer at the end of the file; at most the window's size, which holds the
/// longest local header with small data behind it. Valid until the next call.
std::string_view MemberCopier::view(std::uint64_t offset, std::size_t size)
{
    const std::uint64_t end = windowOffset_ + windowSize_;
    const bool inside = offset >= windowOffset_ && offset <= end;
    if (!inside || size > end - offset) {
        // Whoever reads on behind the window goes through the archive in order: read ahead for him.
        const std::size_t wanted = inside && windowSize_ > 0 ? std::max(size, aheadBytes) : size;
        assert(wanted <= windowBytes);
        windowSize_ = 0;
        windowSize_ = archive_->file().readAt(window_.data(), wanted, offset);
        windowOffset_ = offset;
    }
    return std::string_view(window_.data() + (offset - windowOffset_),
                            std::min<std::size_t>(size, windowOffset_ + windowSize_ - offset));
}

}  // namespace iostreams::zip
