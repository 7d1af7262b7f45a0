#include "platform/iostreams/MemberInput.h"

#include <algorithm>
#include <cstring>

#include "platform/iostreams/EntryHeaders.h"
#include "platform/iostreams/ZipException.h"

namespace iostreams::zip {

namespace {

constexpr std::size_t bufferBytes = 128 * 1024;
/// Room for an extra field of usual size, so that header and small data come with one read.
constexpr std::size_t extraRoom = 64;

}  // namespace

void MemberInput::open(const ArchiveReader& archive, const Entry& entry)
{
    archive_ = &archive;
    entry_ = &entry;
    limit_ = archive.dataLimit(entry);
    position_ = entry.headerOffset;
    left_ = entry.compressedSize;
    const std::uint64_t whole =
        LOCAL_HEADER_BYTES + entry.name.size() + extraRoom + entry.compressedSize + LONGEST_DESCRIPTOR_BYTES;
    load(static_cast<std::size_t>(std::min<std::uint64_t>(whole, bufferBytes)));
    readHeader();
    if (left_ > limit_ - position_) {
        throw memberError(archive.path(), entry.name,
                          std::to_string(left_) + " bytes at " + std::to_string(position_) +
                              " run into what begins at " + std::to_string(limit_));
    }
}

void MemberInput::readHeader()
{
    const std::size_t length = localHeaderLength(unread_);
    if (length > unread_.size()) {
        load(length);
    }
    take(checkLocalHeader(unread_, *entry_, archive_->path()));
}

std::string_view MemberInput::next()
{
    if (unread_.empty() && left_ > 0) {
        load(capacity_);
    }
    const std::string_view bytes = take(std::min<std::uint64_t>(left_, unread_.size()));
    left_ -= bytes.size();
    return bytes;
}

void MemberInput::read(char* buffer, std::size_t size)
{
    while (size > 0) {
        if (unread_.empty() && size >= capacity_) {
            // What is larger than the buffer needn't pass through it.
            readFile(buffer, size, position_);
            position_ += size;
            left_ -= size;
            return;
        }
        if (unread_.empty()) {
            load(capacity_);
        }
        const std::string_view bytes = take(std::min(size, unread_.size()));
        std::memcpy(buffer, bytes.data(), bytes.size());
        left_ -= bytes.size();
        buffer += bytes.size();
        size -= bytes.size();
    }
}

std::string_view MemberInput::behind()
{
    const auto most =
        static_cast<std::size_t>(std::min<std::uint64_t>(LONGEST_DESCRIPTOR_BYTES, limit_ - position_));
    if (unread_.size() < most) {
        load(most);
    }
    return unread_.substr(0, most);
}

/// Fills the buffer from the present position, with `size` bytes or up to the member's limit.
void MemberInput::load(std::size_t size)
{
    size = static_cast<std::size_t>(std::min<std::uint64_t>(size, limit_ - position_));
    if (size > capacity_) {
        buffer_ = std::make_unique_for_overwrite<char[]>(size);
        capacity_ = size;
    }
    unread_ = {};
    readFile(buffer_.get(), size, position_);
    unread_ = {buffer_.get(), size};
}

void MemberInput::readFile(char* buffer, std::size_t size, std::uint64_t offset) const
{
    const std::size_t got = archive_->file().readAt(buffer, size, offset);
    if (got < size) {
        throw memberError(archive_->path(), entry_->name, endsEarly(got, size, offset));
    }
}

std::string_view MemberInput::take(std::uint64_t size)
{
    const std::string_view bytes = unread_.substr(0, static_cast<std::size_t>(size));
    unread_.remove_prefix(bytes.size());
    position_ += bytes.size();
    return bytes;
}

}  // namespace iostreams::zip
