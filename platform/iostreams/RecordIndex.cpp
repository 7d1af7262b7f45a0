#include "platform/iostreams/RecordIndex.h"

#include "platform/KeyedHash.h"
#include "platform/iostreams/EntryHeaders.h"

namespace iostreams::zip {

namespace {

constexpr std::size_t leastCells = 64;

}  // namespace

std::size_t RecordIndex::cellOf(std::string_view name, std::uint64_t hash) const
{
    const std::size_t mask = cells_.size() - 1;
    std::size_t at = hash & mask;
    while (cells_[at].record != NONE &&
           (cells_[at].hash != hash ||
            directoryRecordName(std::string_view(records_).substr(cells_[at].record)) != name)) {
        at = (at + 1) & mask;
    }
    return at;
}

std::size_t RecordIndex::find(std::string_view name) const
{
    return cells_.empty() ? NONE : cells_[cellOf(name, platform::KeyedHash()(name))].record;
}

std::size_t& RecordIndex::placeOf(std::string_view name)
{
    if (used_ >= cells_.size() / 4 * 3) {
        grow();
    }
    const std::uint64_t hash = platform::KeyedHash()(name);
    Cell& cell = cells_[cellOf(name, hash)];
    used_ += cell.record == NONE ? 1 : 0;
    cell.hash = hash;
    return cell.record;
}

void RecordIndex::grow()
{
    std::vector<Cell> old(cells_.empty() ? leastCells : cells_.size() * 2);
    old.swap(cells_);
    const std::size_t mask = cells_.size() - 1;
    for (const Cell& cell : old) {
        if (cell.record != NONE) {
            std::size_t at = cell.hash & mask;
            while (cells_[at].record != NONE) {
                at = (at + 1) & mask;
            }
            cells_[at] = cell;
        }
    }
}

}  // namespace iostreams::zip
