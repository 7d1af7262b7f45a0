#include "platform/iostreams/MemberIndex.h"

#include <algorithm>
#include <functional>

namespace iostreams::zip {

namespace {

std::size_t hashOf(std::string_view name)
{
    return std::hash<std::string_view>()(name);
}

}  // namespace

bool MemberIndex::isBefore(const Slot& left, const Slot& right)
{
    if (left.hash != right.hash) {
        return left.hash < right.hash;
    }
    const int order = left.entry->name.compare(right.entry->name);
    return order != 0 ? order < 0 : left.entry > right.entry;
}

MemberIndex::MemberIndex(const std::vector<Entry>& entries)
{
    slots_.reserve(entries.size());
    for (const Entry& entry : entries) {
        slots_.push_back({hashOf(entry.name), &entry});
    }
    std::sort(slots_.begin(), slots_.end(), isBefore);
}

const Entry* MemberIndex::find(std::string_view name) const
{
    const std::size_t hash = hashOf(name);
    const auto slot = std::partition_point(slots_.begin(), slots_.end(), [&](const Slot& candidate) {
        return candidate.hash != hash ? candidate.hash < hash : candidate.entry->name < name;
    });
    return slot != slots_.end() && slot->entry->name == name ? slot->entry : nullptr;
}

}  // namespace iostreams::zip
