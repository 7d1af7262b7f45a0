#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "platform/iostreams/Entry.h"

namespace iostreams::zip {

/// Finds entries by name. Sorted hashes rather than a hash table: names that were chosen to collide
/// cost a comparison more each, no walk through all of them.
class MemberIndex {
public:
    /// The entries must outlive the index. Cost: n log n.
    explicit MemberIndex(const std::vector<Entry>& entries);

    /// The entry of that name, the last one of several; null when there is none. Cost: log n.
    const Entry* find(std::string_view name) const;

private:
    struct Slot {
        std::size_t hash;
        const Entry* entry;
    };
    static bool isBefore(const Slot& left, const Slot& right);

    std::vector<Slot> slots_;  // by hash, then name; of one name, the last entry comes first
};

}  // namespace iostreams::zip
