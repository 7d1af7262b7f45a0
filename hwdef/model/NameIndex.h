#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "hwdef/model/HHDFHwDefFile.h"

/// Finds the first slot of a BOM list whose entry has a given file name, at a cost that does not grow
/// with the list.
///
/// The entries of one name form a ring in list order; a hash table with open addressing leads to
/// each ring's last slot. The index reads on at each lookup what the list got since the last one. It
/// assumes that slots only change to null, and keeps no text of its own.
///
/// `Rule` says what a name is and which entries count, by three static operations: `hash(name)`,
/// `same(name, name)` and `counts(entry)`, which is false for null. An entry that no longer counts when
/// a lookup comes across it is dropped for good.
template <typename Rule>
class NameIndex {
public:
    using Slots = std::vector<HHDFHwDefFile*>;
    static constexpr std::uint32_t NONE = UINT32_MAX;

    /// The slot of the first entry of that name; NONE when there is none.
    std::uint32_t first(const Slots& slots, std::string_view name)
    {
        catchUp(slots);
        if (cells_.empty()) {
            return NONE;
        }
        const Cell& cell = cellOf(slots, Rule::hash(name), name);
        return cell.tail >= GIVEN_UP ? NONE : next_[cell.tail];
    }

    /// Whether a lookup has read that slot.
    bool hasRead(std::uint32_t slot) const { return slot < next_.size(); }

    /// How many cells of the table are taken; lookups walk over runs of them.
    std::size_t usedCells() const { return usedCells_; }

    /// Forgets everything; the next lookup reads the list anew.
    void reset() { *this = NameIndex(); }

private:
    static constexpr std::uint32_t GIVEN_UP = NONE - 1;
    static constexpr std::size_t leastCells = 64;

    struct Cell {
        std::uint32_t hash = 0;
        std::uint32_t tail = NONE;  // GIVEN_UP once nothing in the ring counts
    };

    void catchUp(const Slots& slots)
    {
        assert(slots.size() < GIVEN_UP);
        if (next_.size() < slots.size()) {
            next_.reserve(slots.capacity());
        }
        for (auto slot = static_cast<std::uint32_t>(next_.size()); slot < slots.size(); ++slot) {
            append(slots, slot);
        }
    }

    void append(const Slots& slots, std::uint32_t slot)
    {
        if (usedCells_ >= cells_.size() / 8 * 7) {
            grow(slots);
        }
        next_.push_back(slot);
        if (!Rule::counts(slots[slot])) {
            return;
        }
        const std::string_view name = slots[slot]->fileName();
        const std::uint32_t hash = Rule::hash(name);
        Cell& cell = cellOf(slots, hash, name);
        if (cell.tail < GIVEN_UP) {
            next_[slot] = next_[cell.tail];
            next_[cell.tail] = slot;
        }
        usedCells_ += cell.tail == NONE ? 1 : 0;
        cell = {hash, slot};
    }

    /// The cell of a name, or the one that it would take: a free one, or, so that a name whose
    /// entries are dropped one after the other doesn't fill the table, one of its hash that was
    /// given up.
    Cell& cellOf(const Slots& slots, std::uint32_t hash, std::string_view name)
    {
        Cell* givenUp = nullptr;
        for (std::size_t at = home(hash);; at = (at + 1) & (cells_.size() - 1)) {
            Cell& cell = cells_[at];
            if (cell.tail == NONE) {
                return givenUp ? *givenUp : cell;
            }
            if (cell.hash != hash) {
                continue;
            }
            if (!settle(slots, cell)) {
                givenUp = &cell;
            } else if (Rule::same(slots[next_[cell.tail]]->fileName(), name)) {
                return cell;
            }
        }
    }

    /// Drops from the front of a ring what doesn't count any more; false when nothing is left.
    bool settle(const Slots& slots, Cell& cell)
    {
        if (cell.tail == GIVEN_UP) {
            return false;
        }
        std::uint32_t head = next_[cell.tail];
        while (!Rule::counts(slots[head])) {
            if (head == cell.tail) {
                cell.tail = GIVEN_UP;
                return false;
            }
            head = next_[head];
            next_[cell.tail] = head;
        }
        return true;
    }

    void grow(const Slots& slots)
    {
        std::vector<Cell> old(cells_.empty() ? leastCells : cells_.size() * 2);
        old.swap(cells_);
        usedCells_ = 0;
        for (Cell& cell : old) {
            if (cell.tail != NONE && settle(slots, cell)) {
                std::size_t at = home(cell.hash);
                while (cells_[at].tail != NONE) {
                    at = (at + 1) & (cells_.size() - 1);
                }
                cells_[at] = cell;
                ++usedCells_;
            }
        }
    }

    std::size_t home(std::uint32_t hash) const { return hash & (cells_.size() - 1); }

    std::vector<Cell> cells_;          // a power of two of them, never full
    std::size_t usedCells_ = 0;        // given-up ones included
    std::vector<std::uint32_t> next_;  // by slot read; a ring of its own where a slot never counted
};
