#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/iostreams/ArchiveReader.h"

namespace iostreams::zip {

/// The bytes of one member after the other as they are stored, through one buffer; a small member is
/// read with one call. What the file lacks throws zip_exception, what the system refuses FileError.
class MemberInput {
public:
    /// Begins a new member, in place of the one before; must come before all else, and again when it
    /// has thrown. Reads the local header and holds it against the entry; checks that the data ends
    /// before the next member. Archive and entry must stay until the next one is opened.
    void open(const ArchiveReader& archive, const Entry& entry);

    /// How many bytes of the data are still to come.
    std::uint64_t left() const { return left_; }
    /// The next bytes of the data; none at its end. Valid until the next call.
    std::string_view next();
    /// Copies the next `size` bytes of the data, of which as many must be left.
    void read(char* buffer, std::size_t size);
    /// The bytes behind the data as far as a data descriptor may go. Only at the end of the data;
    /// nothing else may be called then.
    std::string_view behind();

private:
    void readHeader();
    void load(std::size_t size);
    void readFile(char* buffer, std::size_t size, std::uint64_t offset) const;
    std::string_view take(std::uint64_t size);

    const ArchiveReader* archive_ = nullptr;
    const Entry* entry_ = nullptr;
    std::uint64_t limit_ = 0;     ///< where all of the member must have ended
    std::uint64_t position_ = 0;  ///< in the file, of the first byte that wasn't taken
    std::uint64_t left_ = 0;

    std::unique_ptr<char[]> buffer_;
    std::size_t capacity_ = 0;
    std::string_view unread_;  ///< the part of the buffer that wasn't taken
};

}  // namespace iostreams::zip
