#include "hwdef/model/BomList.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>

#include "hwdef/model/NameIndex.h"
#include "platform/HSTStringUtils.h"
#include "platform/KeyedHash.h"

namespace {

std::uint32_t hashOf(std::string_view text)
{
    const std::uint64_t hash = platform::KeyedHash()(text);
    return static_cast<std::uint32_t>(hash ^ (hash >> 32));
}

/// The text with ASCII letters in lower case: equal for texts that are equal without regard to case.
std::string folded(std::string_view text)
{
    std::string result(text);
    for (char& c : result) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return result;
}

struct ExactName {
    static std::uint32_t hash(std::string_view name) { return hashOf(name); }
    static bool same(std::string_view left, std::string_view right) { return left == right; }
    static bool counts(const HHDFHwDefFile* file) { return file != nullptr; }
};

struct AnyCaseWithoutSrcDb {
    static std::uint32_t hash(std::string_view name) { return hashOf(folded(name)); }
    static bool same(std::string_view left, std::string_view right)
    {
        return HSTStringUtils::iequals(left, right);
    }
    static bool counts(const HHDFHwDefFile* file) { return file != nullptr && file->getHwSrcDB().empty(); }
};

}  // namespace

class BomList::Impl {
public:
    HHDFHwDefFile* at(std::uint32_t slot) const { return slot == exact.NONE ? nullptr : slots[slot]; }

    /// Takes the null slots out once they are half of all, which pays for the walk. A few don't matter.
    void compact()
    {
        if (nullCount < 16 || nullCount * 2 < slots.size()) {
            return;
        }
        std::erase(slots, nullptr);
        for (std::uint32_t slot = 0; slot < slots.size(); ++slot) {
            slots[slot]->slot_ = slot;
        }
        nullCount = 0;
        exact.reset();
        withoutSrcDb.reset();
        reopened.clear();
    }

    /// The first reopened entry of that name, in any case, that still has no source database.
    std::uint32_t firstReopened(std::string_view fileName)
    {
        const auto found = reopened.find(folded(fileName));
        if (found == reopened.end()) {
            return NONE;
        }
        std::set<std::uint32_t>& open = found->second;
        while (!open.empty() && !AnyCaseWithoutSrcDb::counts(slots[*open.begin()])) {
            open.erase(open.begin());
        }
        return open.empty() ? NONE : *open.begin();
    }

    static constexpr std::uint32_t NONE = NameIndex<ExactName>::NONE;

    std::vector<HHDFHwDefFile*> slots;  // owned; raw because the list hands out this very vector
    std::size_t nullCount = 0;
    std::size_t withoutSrcDbCount = 0;  // entries whose source database is empty
    NameIndex<ExactName> exact;
    NameIndex<AnyCaseWithoutSrcDb> withoutSrcDb;
    // Slots whose source database became empty again after that index may have dropped them, by
    // folded name. A slot here that is taken is dropped when a lookup comes across it.
    std::unordered_map<std::string, std::set<std::uint32_t>, platform::KeyedHash> reopened;
};

BomList::BomList() : impl_(std::make_unique<Impl>()) {}

BomList::~BomList()
{
    for (HHDFHwDefFile* file : impl_->slots) {
        delete file;
    }
}

void BomList::add(std::unique_ptr<HHDFHwDefFile> file)
{
    impl_->compact();
    std::vector<HHDFHwDefFile*>& slots = impl_->slots;
    slots.push_back(file.get());
    if (!file) {
        ++impl_->nullCount;
        return;
    }
    file->list_ = this;
    file->slot_ = static_cast<std::uint32_t>(slots.size() - 1);
    impl_->withoutSrcDbCount += file->getHwSrcDB().empty() ? 1 : 0;
    const HHDFHwDefFile* before = slots.size() > 1 ? slots[slots.size() - 2] : nullptr;
    if (before && before->hwDefFilePath_ && file->hwDefFilePath_ &&
        before->hwDefFilePath_ != file->hwDefFilePath_ && *before->hwDefFilePath_ == *file->hwDefFilePath_) {
        // Entries read from one container all name it: one text serves them.
        file->hwDefFilePath_ = before->hwDefFilePath_;
    }
    static_cast<void>(file.release());  // the slot owns it now
}

std::unique_ptr<HHDFHwDefFile> BomList::remove(const HHDFHwDefFile* file)
{
    if (!file || file->list_ != this) {
        return nullptr;
    }
    HHDFHwDefFile*& slot = impl_->slots[file->slot_];
    std::unique_ptr<HHDFHwDefFile> removed(slot);
    slot = nullptr;
    ++impl_->nullCount;
    impl_->withoutSrcDbCount -= removed->getHwSrcDB().empty() ? 1 : 0;
    removed->list_ = nullptr;
    return removed;
}

const std::vector<HHDFHwDefFile*>& BomList::slots() const
{
    impl_->compact();
    return impl_->slots;
}

HHDFHwDefFile* BomList::firstNamed(std::string_view fileName) const
{
    return impl_->at(impl_->exact.first(impl_->slots, fileName));
}

HHDFHwDefFile* BomList::firstWithoutSrcDb(std::string_view fileName) const
{
    if (impl_->withoutSrcDbCount == 0) {
        return nullptr;
    }
    // Whoever fills a list gives each new entry its source database at once: no index is needed then.
    HHDFHwDefFile* const newest = impl_->slots.back();
    if (impl_->withoutSrcDbCount == 1 && AnyCaseWithoutSrcDb::counts(newest)) {
        return AnyCaseWithoutSrcDb::same(newest->fileName(), fileName) ? newest : nullptr;
    }
    // NONE is above every slot.
    const std::uint32_t neverTaken = impl_->withoutSrcDb.first(impl_->slots, fileName);
    return impl_->at(impl_->reopened.empty() ? neverTaken
                                             : std::min(neverTaken, impl_->firstReopened(fileName)));
}

void BomList::srcDbEmptied(const HHDFHwDefFile& file)
{
    ++impl_->withoutSrcDbCount;
    if (impl_->withoutSrcDb.hasRead(file.slot_)) {
        impl_->reopened[folded(file.fileName())].insert(file.slot_);
    }
}

void BomList::srcDbFilled()
{
    --impl_->withoutSrcDbCount;
}
