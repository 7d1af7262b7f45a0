#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "hwdef/model/HHDFHwDefFile.h"

/// The BOM list: owned entries in insertion order, with an index beside it, so that a lookup by file
/// name costs the same however long the list is. Every lookup gives the answer of a walk over the
/// list from its start, also after removals and after an entry's source database was changed
/// through a pointer to it.
class BomList {
public:
    BomList();
    ~BomList();
    BomList(const BomList&) = delete;
    BomList& operator=(const BomList&) = delete;

    /// Appends; a null entry may stand in the list and every walk skips it.
    void add(std::unique_ptr<HHDFHwDefFile> file);
    /// Takes an entry out and gives it back; null when it isn't listed. Amortised constant cost.
    std::unique_ptr<HHDFHwDefFile> remove(const HHDFHwDefFile* file);

    /// The entries in order; the view holds null where an entry was null or was removed lately. It
    /// stands still while entries are removed; after that, the next call or add() may close the gaps.
    const std::vector<HHDFHwDefFile*>& slots() const;

    /// The first entry of that exact file name; null when there is none.
    HHDFHwDefFile* firstNamed(std::string_view fileName) const;
    /// The first entry of that file name, in any case, whose source database is empty.
    HHDFHwDefFile* firstWithoutSrcDb(std::string_view fileName) const;

private:
    friend class HHDFHwDefFile;
    /// An entry's source database is about to become empty.
    void srcDbEmptied(const HHDFHwDefFile& file);
    /// The empty source database of an entry is about to be filled.
    void srcDbFilled();

    class Impl;
    std::unique_ptr<Impl> impl_;
};
