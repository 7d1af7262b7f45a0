#include "platform/iostreams/BufferedOutput.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstring>

namespace iostreams::zip {

namespace {

constexpr std::size_t bufferBytes = 128 * 1024;
/// From here on a copy costs more than the system call that it saves.
constexpr std::size_t directBytes = bufferBytes / 2;

}  // namespace

BufferedOutput::BufferedOutput(const platform::File& file, std::uint64_t start, std::uint64_t limit)
    : file_(file), limit_(limit), flushed_(start), buffer_(bufferBytes)
{
}

void BufferedOutput::write(std::string_view bytes)
{
    if (used_ + bytes.size() > buffer_.size()) {
        flush();
    }
    if (bytes.size() >= directBytes) {
        flush();
        put(bytes, flushed_);
        flushed_ += bytes.size();
        return;
    }
    std::copy(bytes.begin(), bytes.end(), buffer_.data() + used_);
    used_ += bytes.size();
}

void BufferedOutput::copyFrom(const platform::File& from, std::uint64_t sizeBytes, std::uint64_t offset)
{
    flush();
    checkLimit(flushed_, sizeBytes);
    from.copyTo(file_, sizeBytes, offset, flushed_);
    flushed_ += sizeBytes;
}

void BufferedOutput::overwrite(std::uint64_t position, std::string_view bytes)
{
    assert(position + bytes.size() <= this->position());
    if (position < flushed_) {
        const auto inFile =
            static_cast<std::size_t>(std::min<std::uint64_t>(flushed_ - position, bytes.size()));
        put(bytes.substr(0, inFile), position);
        position += inFile;
        bytes.remove_prefix(inFile);
    }
    if (!bytes.empty()) {
        std::copy(bytes.begin(), bytes.end(), buffer_.data() + (position - flushed_));
    }
}

void BufferedOutput::rewind(std::uint64_t position)
{
    assert(position <= this->position());
    used_ = position < flushed_ ? 0 : static_cast<std::size_t>(position - flushed_);
    flushed_ = std::min(flushed_, position);
}

void BufferedOutput::removeStretch(std::uint64_t from, std::uint64_t to)
{
    const std::uint64_t end = position();
    assert(from <= to && to <= end);
    if (from >= flushed_) {
        char* target = buffer_.data() + (from - flushed_);
        std::memmove(target, buffer_.data() + (to - flushed_), static_cast<std::size_t>(end - to));
        rewind(end - (to - from));
        return;
    }
    flush();
    while (to < end) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(end - to, buffer_.size()));
        if (file_.readAt(buffer_.data(), wanted, to) < wanted) {
            throw platform::FileError(file_.path(), "read back (the file ends early)", EIO);
        }
        put({buffer_.data(), wanted}, from);
        from += wanted;
        to += wanted;
    }
    rewind(from);
}

void BufferedOutput::flush()
{
    put({buffer_.data(), used_}, flushed_);
    flushed_ += used_;
    used_ = 0;
}

void BufferedOutput::checkLimit(std::uint64_t position, std::uint64_t sizeBytes) const
{
    if (position > limit_ || sizeBytes > limit_ - position) {
        throw platform::FileError(file_.path(), "write beyond the place kept for it", EFBIG);
    }
}

void BufferedOutput::put(std::string_view bytes, std::uint64_t position) const
{
    checkLimit(position, bytes.size());
    if (!bytes.empty()) {
        file_.writeAt(bytes.data(), bytes.size(), position);
    }
}

}  // namespace iostreams::zip
