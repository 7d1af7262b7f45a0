#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/iostreams/EndRecord.h"
#include "platform/iostreams/Entry.h"
#include "platform/iostreams/FileTail.h"

namespace iostreams::zip {

/// The central directory of an archive, read and checked as a whole: its records fill exactly the
/// bytes and have exactly the number that the end record says, each member lies before the directory,
/// and no two members overlap. It keeps the stored records and little else; entries are made when
/// they are asked for.
class Directory {
public:
    /// Reads and checks in one go, stopping at the first record that is wrong, so that memory is
    /// touched only for records that are right. Throws zip_exception.
    Directory(const FileTail& tail, const EndRecord& end);

    /// The stored records, one behind the other.
    std::string_view bytes() const { return {bytes_.get(), size_}; }
    std::uint64_t entryCount() const { return entryCount_; }
    /// Where the directory begins in the file.
    std::uint64_t position() const { return position_; }

    /// The entry whose record begins at an offset of bytes().
    Entry entryAt(std::size_t offset) const;
    /// The member that begins last in the file, and so ends last; nothing when there is none.
    std::optional<Entry> lastMember() const;
    /// The last entry of that name. Cost: a walk over the records.
    std::optional<Entry> find(std::string_view name) const;
    /// Where the data of an entry of this directory must have ended: at the local header of the member
    /// that lies behind it in the file, or at the directory. Constant cost for members that lie in the
    /// directory's order, else logarithmic.
    std::uint64_t dataLimit(const Entry& entry) const;

private:
    class Loader;
    void checkPlace(const Entry& entry) const;
    void checkOverlaps();

    const std::string archive_;
    const std::uint64_t prefixSize_;
    const std::uint64_t position_;
    const std::uint64_t entryCount_;
    const std::size_t size_;
    std::unique_ptr<char[]> bytes_;
    std::size_t lastMember_ = 0;                ///< its record's offset
    std::vector<std::uint64_t> sortedOffsets_;  ///< of local headers; empty when in the directory's order
};

}  // namespace iostreams::zip
