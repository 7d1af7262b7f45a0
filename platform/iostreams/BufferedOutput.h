#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ArchiveDigest.h"
#include "platform/Buffer.h"
#include "platform/File.h"

namespace iostreams::zip {

/// Bytes on their way to one stretch of a file, gathered so that small members cost no system call
/// each. What was written can be overwritten or taken back.
///
/// The file must outlive the output. Whatever the system refuses throws FileError; so does a write
/// beyond the limit, of which nothing then reaches the file.
class BufferedOutput {
public:
    static constexpr std::uint64_t NO_LIMIT = std::numeric_limits<std::uint64_t>::max();

    struct Stretch {
        std::uint64_t begin;
        std::uint64_t end;
    };

    /// Writes from `start` on, never at `limit` or behind it.
    BufferedOutput(const platform::File& file, std::uint64_t start, std::uint64_t limit = NO_LIMIT);
    BufferedOutput(const BufferedOutput&) = delete;
    BufferedOutput& operator=(const BufferedOutput&) = delete;

    /// Where in the file the next byte goes.
    std::uint64_t position() const { return flushed_ + used_; }

    void write(std::string_view bytes);
    /// Copies from another file: inside the kernel where that is possible, through the buffer when a digest
    /// is computed.
    void copyFrom(const platform::File& from, std::uint64_t sizeBytes, std::uint64_t offset);
    /// Replaces bytes that were written before.
    void overwrite(std::uint64_t position, std::string_view bytes);
    /// Takes back everything from `position` on. Bytes that have reached the file stay there until
    /// others take their place.
    void rewind(std::uint64_t position);
    /// Takes stretches out, which come in order and don't overlap; what is between and behind them moves up.
    /// Bytes that have reached the file stay there as for rewind().
    void removeStretches(const std::vector<Stretch>& stretches);
    /// Hands what is gathered to the file.
    void flush();

    /// Computes the archive digest as bytes pass, while they are in the processor's caches, in place of
    /// reading the file once more. For an output that begins with the file and has put out nothing yet.
    void startDigest();
    /// What is put out from here on will be overwritten, until release() or a rewind: the digest takes it
    /// up when it is final.
    void hold();
    void release() { held_ = false; }
    /// The archive digest of the file's first `sizeBytes` bytes, at most position(); to be had once. Reads
    /// the file when what was digested has changed or is held.
    std::string digest(std::uint64_t sizeBytes);

private:
    void checkLimit(std::uint64_t position, std::uint64_t sizeBytes) const;
    void put(std::string_view bytes, std::uint64_t position) const;
    void copyAndDigest(const platform::File& from, std::uint64_t sizeBytes, std::uint64_t offset);
    void digestPassing(std::string_view bytes);
    void digestFile(std::uint64_t end);
    void distrustFrom(std::uint64_t position);

    const platform::File& file_;
    std::uint64_t limit_;
    std::uint64_t flushed_;  ///< position of the buffer's first byte
    std::size_t used_ = 0;
    platform::Buffer buffer_;

    std::optional<platform::ArchiveDigest> digest_;  ///< of the file's first `digested_` bytes
    std::uint64_t digested_ = 0;
    bool held_ = false;
};

}  // namespace iostreams::zip
