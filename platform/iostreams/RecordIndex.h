#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace iostreams::zip {

/// Finds the records of a directory in the making by name. Holds where they begin and no names: a hash
/// table with open addressing.
class RecordIndex {
public:
    static constexpr std::size_t NONE = SIZE_MAX;

    /// `records` holds the directory records one behind the other, may grow, and must outlive the index.
    explicit RecordIndex(const std::string& records) : records_(records) {}

    /// Where the record of that name begins; NONE when there is none.
    std::size_t find(std::string_view name) const;
    /// The same to be set by the caller: to the record of that name, before the index is used again.
    /// Valid until then.
    std::size_t& placeOf(std::string_view name);
    /// How many names have a place.
    std::size_t size() const { return used_; }

private:
    struct Cell {
        std::size_t record = NONE;
        std::uint64_t hash = 0;
    };

    /// The cell of that name, or the free one that it would take.
    std::size_t cellOf(std::string_view name, std::uint64_t hash) const;
    void grow();

    const std::string& records_;
    std::vector<Cell> cells_;  // a power of two of them, at least a quarter of them free
    std::size_t used_ = 0;
};

}  // namespace iostreams::zip
