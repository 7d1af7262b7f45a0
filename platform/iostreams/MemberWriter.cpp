#include "platform/iostreams/MemberWriter.h"

#include <fcntl.h>
#include <isa-l/crc.h>

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <utility>

#include "platform/ProgressWork.h"
#include "platform/SystemCalls.h"
#include "platform/iostreams/EntryHeaders.h"

namespace iostreams::zip {

namespace {

/// Savings of less than one part in this many don't count for large members.
constexpr std::uint64_t worthwhilePart = 64;

std::uint32_t updateCrc(std::uint32_t crc, std::string_view bytes)
{
    return crc32_gzip_refl(crc, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

platform::File openSource(const std::string& path)
{
    try {
        return platform::File::openRegular(path, O_RDONLY);
    } catch (const platform::FileError& error) {
        throw SourceError(error.what());
    }
}

std::uint64_t sizeOf(const platform::File& source)
{
    try {
        return source.size();
    } catch (const platform::FileError& error) {
        throw SourceError(error.what());
    }
}

}  // namespace

MemberWriter::MemberWriter() : chunk_(CHUNK_BYTES) {}

void MemberWriter::begin(std::string name)
{
    checkMemberName(name);
    name_ = std::move(name);
    source_ = platform::File();
    entry_ = Entry();
    toldBytes_ = 0;
    entry_.name = name_;
}

void MemberWriter::openFile(const std::string& source, std::string name)
{
    openFile(openSource(source), std::move(name));
}

void MemberWriter::openFile(platform::File source, std::string name)
{
    begin(std::move(name));
    source_ = std::move(source);
    entry_.size = sizeOf(source_);
    if (entry_.size > CHUNK_BYTES) {
        entry_.compressedSize = entry_.size;
        return;
    }
    // Files of /proc and the like call themselves empty: only reading them tells.
    const bool sizeless = entry_.size == 0;
    entry_.size = sizeless ? CHUNK_BYTES : entry_.size;
    const std::string_view content = readChunk(0);
    if (sizeless && content.size() == CHUNK_BYTES) {
        throw SourceError(source_.path() + ": its size is given as 0, yet it holds " +
                          std::to_string(CHUNK_BYTES) + " bytes or more");
    }
    packWhole(content);
    source_ = platform::File();
}

void MemberWriter::openBytes(std::string_view content, std::string name)
{
    assert(content.size() <= CHUNK_BYTES);
    begin(std::move(name));
    std::copy(content.begin(), content.end(), chunk_.data());
    packWhole({chunk_.data(), content.size()});
}

std::uint64_t MemberWriter::maxBytes() const
{
    return localHeaderLength(entry_) + entry_.compressedSize;
}

bool MemberWriter::isReadFrom(const platform::File& file) const
{
    struct stat own = {};
    struct stat other = {};
    return source_.isOpen() && platform::SystemCalls::get().fstat(source_.descriptor(), &own) == 0 &&
           platform::SystemCalls::get().fstat(file.descriptor(), &other) == 0 && own.st_dev == other.st_dev &&
           own.st_ino == other.st_ino;
}

Entry MemberWriter::write(BufferedOutput& out)
{
    entry_.headerOffset = out.position();
    if (source_.isOpen()) {
        // Most large files either shrink from their first chunk on or never do, and are read once.
        static_cast<void>(store(out, true) || deflate(out) || store(out, false));
        return entry_;
    }
    header_.clear();
    appendLocalHeader(header_, entry_);
    out.write(header_);
    out.write(data_);
    tellProgress(entry_.size);
    return entry_;
}

/// The source's content from `offset` on, as far as it counts and the chunk holds it.
std::string_view MemberWriter::readChunk(std::uint64_t offset)
{
    const std::uint64_t wanted = std::min<std::uint64_t>(CHUNK_BYTES, entry_.size - offset);
    try {
        return {chunk_.data(), source_.readAt(chunk_.data(), static_cast<std::size_t>(wanted), offset)};
    } catch (const platform::FileError& error) {
        throw SourceError(error.what());
    }
}

void MemberWriter::packWhole(std::string_view content)
{
    entry_.size = content.size();
    entry_.crc = updateCrc(0, content);
    packed_.clear();
    deflater_.restart();
    deflater_.feed(content, true);
    for (auto piece = deflater_.drain(); !piece.empty() && packed_.size() < content.size();
         piece = deflater_.drain()) {
        packed_ += piece;
    }
    const bool smaller = packed_.size() < content.size();
    entry_.method = smaller ? METHOD_DEFLATED : METHOD_STORED;
    data_ = smaller ? std::string_view(packed_) : content;
    entry_.compressedSize = data_.size();
}

/// How many bytes deflate would take off the chunk. Data that doesn't shrink would make deflate the
/// slowest step by far, so only a sixteenth of the chunk is tried, four pieces side by side.
std::uint64_t MemberWriter::estimateSaving(std::string_view chunk)
{
    constexpr std::size_t pieceBytes = 4 * 1024;
    constexpr std::size_t pieces = 4;
    if (chunk.size() <= pieces * pieceBytes) {
        return chunk.size() - deflater_.trialSize(chunk, chunk.size());
    }
    sample_.clear();
    for (std::size_t i = 0; i < pieces; ++i) {
        sample_ += chunk.substr((chunk.size() - pieceBytes) / (pieces - 1) * i, pieceBytes);
    }
    const std::size_t saved = sample_.size() - deflater_.trialSize(sample_, sample_.size());
    return saved * (chunk.size() / sample_.size());
}

/// Keeps the place of the local header, which is written when the pass is over.
void MemberWriter::startPass(BufferedOutput& out)
{
    out.rewind(entry_.headerOffset);
    out.hold();
    header_.clear();
    Entry largest = entry_;
    largest.compressedSize = entry_.size;
    appendLocalHeader(header_, largest);
    out.write(header_);
}

void MemberWriter::endPass(BufferedOutput& out, const Entry& entry)
{
    const std::size_t kept = header_.size();
    header_.clear();
    appendLocalHeader(header_, entry);
    if (header_.size() != kept) {
        throw SourceError(source_.path() + ": has " + std::to_string(entry.size) + " bytes, had " +
                          std::to_string(entry_.size) + " when it was opened");
    }
    out.overwrite(entry.headerOffset, header_);
    out.release();
    entry_ = entry;
}

/// Content that is gone through a second time counts once, and can be cancelled all the time.
void MemberWriter::tellProgress(std::uint64_t handledBytes)
{
    const std::uint64_t more = handledBytes - std::min(handledBytes, toldBytes_);
    toldBytes_ += more;
    platform::ProgressWork::advance(name_, more);
}

/// Stores the content; with `watch`, gives up and returns false as soon as its chunks promise that
/// deflate is worthwhile for the whole.
bool MemberWriter::store(BufferedOutput& out, bool watch)
{
    startPass(out);
    Entry entry = entry_;
    entry.method = METHOD_STORED;
    entry.size = 0;
    entry.crc = 0;
    std::uint64_t saving = 0;
    for (auto chunk = readChunk(0); !chunk.empty(); chunk = readChunk(entry.size)) {
        if (watch) {
            saving += estimateSaving(chunk);
            if (saving > entry_.size / worthwhilePart) {
                return false;
            }
        }
        entry.crc = updateCrc(entry.crc, chunk);
        entry.size += chunk.size();
        out.write(chunk);
        tellProgress(entry.size);
    }
    entry.compressedSize = entry.size;
    endPass(out, entry);
    return true;
}

/// Deflates the content; gives up and returns false when that doesn't make it smaller.
bool MemberWriter::deflate(BufferedOutput& out)
{
    startPass(out);
    Entry entry = entry_;
    entry.method = METHOD_DEFLATED;
    entry.size = 0;
    entry.compressedSize = 0;
    entry.crc = 0;
    deflater_.restart();
    for (bool last = false; !last;) {
        const auto chunk = readChunk(entry.size);
        entry.crc = updateCrc(entry.crc, chunk);
        entry.size += chunk.size();
        last = chunk.size() < CHUNK_BYTES;
        tellProgress(entry.size);
        deflater_.feed(chunk, last);
        for (auto piece = deflater_.drain(); !piece.empty(); piece = deflater_.drain()) {
            entry.compressedSize += piece.size();
            if (entry.compressedSize >= entry_.size) {
                return false;
            }
            out.write(piece);
        }
    }
    if (entry.compressedSize >= entry.size) {
        return false;
    }
    endPass(out, entry);
    return true;
}

}  // namespace iostreams::zip
