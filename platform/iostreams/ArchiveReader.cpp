#include "platform/iostreams/ArchiveReader.h"

#include <fcntl.h>

#include <algorithm>
#include <boost/filesystem.hpp>
#include <cerrno>
#include <utility>

#include "platform/iostreams/MemberIndex.h"
#include "platform/iostreams/MemberReader.h"
#include "platform/iostreams/ZipException.h"

namespace iostreams::zip {

namespace {

/// No deflate stream unpacks to more (RFC 1951: 258 bytes from two bits), but for what the very
/// short ones round up to.
constexpr std::uint64_t mostBytesPerByte = 1032;
constexpr std::uint64_t roundingBytes = 64;
constexpr std::size_t growthBytes = 256 * 1024;
/// As much memory is taken at once for a member that says that it has so many bytes.
constexpr std::size_t trustedBytes = 16 * 1024 * 1024;

/// Opens only what is a regular file already before: an open alone lets the writer of a FIFO go on,
/// and makes some devices act.
platform::File openRegular(const std::string& path)
{
    boost::system::error_code ignored;
    const boost::filesystem::file_type type = boost::filesystem::status(path, ignored).type();
    if (type != boost::filesystem::regular_file && type != boost::filesystem::file_not_found &&
        type != boost::filesystem::status_error) {
        throw platform::FileError(path, "open as a regular file", EINVAL);
    }
    return platform::File::openRegular(path, O_RDONLY);
}

/// The most that an entry's data can unpack to, whatever size is declared.
std::uint64_t mostUnpackedBytes(const Entry& entry)
{
    return std::min(entry.size, entry.compressedSize * mostBytesPerByte + roundingBytes);
}

}  // namespace

class ArchiveReader::Impl {
public:
    explicit Impl(platform::File file)
        : file_(std::move(file)), tail_(file_), end_(findEndRecord(*tail_)), directory_(*tail_, end_)
    {
        tail_.reset();
    }

    const platform::File file_;

private:
    std::optional<FileTail> tail_;  // while opening

public:
    const EndRecord end_;
    const Directory directory_;

    const std::vector<Entry>& entries()
    {
        if (entries_.empty() && directory_.entryCount() > 0) {
            entries_.reserve(static_cast<std::size_t>(directory_.entryCount()));
            for (std::size_t offset = 0; offset < directory_.bytes().size();) {
                entries_.push_back(directory_.entryAt(offset));
                offset += entries_.back().record.size();
            }
        }
        return entries_;
    }

    const Entry* find(std::string_view name)
    {
        if (index_) {
            return index_->find(name);
        }
        if (!walked_) {
            walked_ = true;
            first_ = directory_.find(name);
            return first_ ? &*first_ : nullptr;
        }
        return index_.emplace(entries()).find(name);
    }

private:
    bool walked_ = false;         // the first search, which is not worth an index, is over
    std::optional<Entry> first_;  // what it found
    std::vector<Entry> entries_;
    std::optional<MemberIndex> index_;
};

ArchiveReader::ArchiveReader(platform::File file) : impl_(std::make_unique<Impl>(std::move(file))) {}

ArchiveReader::ArchiveReader(const std::string& path)
try : ArchiveReader(openRegular(path)) {
} catch (const platform::FileError& error) {
    throw archiveError(path, error);
}

ArchiveReader::~ArchiveReader() = default;

std::unique_ptr<ArchiveReader> ArchiveReader::openIfExists(const std::string& path)
try {
    // Not make_unique, which has no access to this constructor.
    return std::unique_ptr<ArchiveReader>(new ArchiveReader(openRegular(path)));
} catch (const platform::FileError& error) {
    if (error.error() == ENOENT || error.error() == ENOTDIR) {
        return nullptr;
    }
    throw archiveError(path, error);
}

const std::string& ArchiveReader::path() const
{
    return impl_->file_.path();
}

const platform::File& ArchiveReader::file() const
{
    return impl_->file_;
}

const EndRecord& ArchiveReader::endRecord() const
{
    return impl_->end_;
}

const Directory& ArchiveReader::directory() const
{
    return impl_->directory_;
}

const std::vector<Entry>& ArchiveReader::entries() const
{
    return impl_->entries();
}

std::uint64_t ArchiveReader::membersBegin() const
{
    std::uint64_t begin = directory().position();
    for (const Entry& entry : entries()) {
        begin = std::min(begin, entry.headerOffset);
    }
    return begin;
}

const Entry* ArchiveReader::find(std::string_view name) const
{
    return impl_->find(name);
}

std::uint64_t ArchiveReader::dataLimit(const Entry& entry) const
{
    return impl_->directory_.dataLimit(entry);
}

std::string ArchiveReader::read(const Entry& entry, std::uint64_t limitBytes, UnpackTime* time) const
{
    if (entry.size > limitBytes) {
        throw memberError(
            path(), entry.name,
            "has " + std::to_string(entry.size) + " bytes, allowed are " + std::to_string(limitBytes));
    }
    MemberReader reader(*this, entry);
    reader.limitTime(time);
    const auto most = static_cast<std::size_t>(mostUnpackedBytes(entry));
    std::string content;
    std::size_t size = 0;
    do {
        size = content.size();
        if (size == content.capacity() || size == 0) {
            content.reserve(std::min(most, std::max(trustedBytes, 2 * size)));
        }
        content.resize(std::min(most, size + growthBytes));
        content.resize(size + reader.read(content.data() + size, content.size() - size));
    } while (content.size() > size);
    return content;
}

}  // namespace iostreams::zip
