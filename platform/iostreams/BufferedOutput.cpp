#include "platform/iostreams/BufferedOutput.h"

#include <algorithm>
#include <cassert>
#include <cerrno>

#include "platform/ProgressWork.h"

namespace iostreams::zip {

namespace {

constexpr std::size_t bufferBytes = 128 * 1024;
/// From here on a copy costs more than the system call that it saves.
constexpr std::size_t directBytes = bufferBytes / 2;
/// What is read for a digest comes in pieces that the processor's second cache keeps.
constexpr std::size_t digestBytes = bufferBytes / 2;

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
        digestPassing(bytes);
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
    if (digest_) {
        copyAndDigest(from, sizeBytes, offset);
        return;
    }
    from.copyTo(file_, sizeBytes, offset, flushed_);
    flushed_ += sizeBytes;
}

void BufferedOutput::copyAndDigest(const platform::File& from, std::uint64_t sizeBytes, std::uint64_t offset)
{
    while (sizeBytes > 0) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(sizeBytes, digestBytes));
        if (from.readAt(buffer_.data(), wanted, offset) < wanted) {
            throw platform::FileError(from.path(), "read (the file ends early)", EIO);
        }
        used_ = wanted;
        flush();
        sizeBytes -= wanted;
        offset += wanted;
    }
}

void BufferedOutput::overwrite(std::uint64_t position, std::string_view bytes)
{
    assert(position + bytes.size() <= this->position());
    distrustFrom(position);
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
    distrustFrom(position);
    release();
    used_ = position < flushed_ ? 0 : static_cast<std::size_t>(position - flushed_);
    flushed_ = std::min(flushed_, position);
}

void BufferedOutput::removeStretches(const std::vector<Stretch>& stretches)
{
    if (stretches.empty()) {
        return;
    }
    const std::uint64_t end = position();
    held_ = true;  // what is in the buffer is about to move
    flush();
    rewind(stretches.front().begin);
    platform::Buffer piece(bufferBytes);
    auto gap = stretches.begin() + 1;
    for (std::uint64_t at = stretches.front().end; at < end;) {
        // What is written stays behind what is read, by the first stretch at least.
        const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(end - at, piece.size()));
        if (file_.readAt(piece.data(), size, at) < size) {
            throw platform::FileError(file_.path(), "read back (the file ends early)", EIO);
        }
        const std::uint64_t pieceBegin = at;
        const std::uint64_t pieceEnd = at + size;
        while (at < pieceEnd) {
            const std::uint64_t keptEnd = gap == stretches.end() ? pieceEnd : std::min(pieceEnd, gap->begin);
            write({piece.data() + (at - pieceBegin), static_cast<std::size_t>(keptEnd - at)});
            at = keptEnd;
            if (gap != stretches.end() && at == gap->begin) {
                at = gap->end;
                ++gap;
            }
        }
        platform::ProgressWork::advance({}, 0);  // it can be cancelled here
    }
}

void BufferedOutput::flush()
{
    const std::string_view gathered(buffer_.data(), used_);
    put(gathered, flushed_);
    digestPassing(gathered);
    flushed_ += used_;
    used_ = 0;
}

void BufferedOutput::startDigest()
{
    assert(position() == 0);
    digest_.emplace();
}

void BufferedOutput::hold()
{
    digestPassing({buffer_.data(), used_});
    held_ = true;
}

std::string BufferedOutput::digest(std::uint64_t sizeBytes)
{
    assert(sizeBytes <= position());
    if (!digest_ || held_ || digested_ > sizeBytes) {
        digest_.reset();
        flush();
        return platform::ArchiveDigest::ofFile(file_, sizeBytes);
    }
    if (sizeBytes < flushed_) {
        digestFile(sizeBytes);
    } else {
        digestPassing({buffer_.data(), static_cast<std::size_t>(sizeBytes - flushed_)});
    }
    assert(digested_ == sizeBytes);
    std::string digits = digest_->finish();
    digest_.reset();
    return digits;
}

/// Takes up bytes whose place is behind those flushed, as far as they aren't digested yet, and what was
/// held in front of them.
void BufferedOutput::digestPassing(std::string_view bytes)
{
    if (!digest_ || held_) {
        return;
    }
    digestFile(flushed_);
    bytes.remove_prefix(std::min<std::uint64_t>(digested_ - flushed_, bytes.size()));
    digest_->add(bytes);
    digested_ += bytes.size();
}

/// Takes up what has reached the file without being digested, up to `end`.
void BufferedOutput::digestFile(std::uint64_t end)
{
    if (digested_ >= end) {
        return;
    }
    platform::Buffer piece(digestBytes);
    while (digested_ < end) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(end - digested_, digestBytes));
        if (file_.readAt(piece.data(), wanted, digested_) < wanted) {
            throw platform::FileError(file_.path(), "read back (the file ends early)", EIO);
        }
        digest_->add({piece.data(), wanted});
        digested_ += wanted;
        platform::ProgressWork::advance({}, 0);  // it can be cancelled here
    }
}

/// Bytes from `position` on are about to change: a digest of them is of no use.
void BufferedOutput::distrustFrom(std::uint64_t position)
{
    if (position < digested_) {
        digest_.reset();
    }
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
