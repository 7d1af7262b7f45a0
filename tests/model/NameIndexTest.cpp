#include "hwdef/model/NameIndex.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

/// Names by exact text, all of one hash; an entry counts until it has a source database.
struct OneHash {
    static std::uint32_t hash(std::string_view) { return 7; }
    static bool same(std::string_view left, std::string_view right) { return left == right; }
    static bool counts(const HHDFHwDefFile* file) { return file != nullptr && file->getHwSrcDB().empty(); }
};

TEST(NameIndex, takesOneCellForANameWhoseEntriesAreTakenInTurn)
{
    constexpr std::size_t count = 10000;
    std::vector<std::unique_ptr<HHDFHwDefFile>> owned;
    std::vector<HHDFHwDefFile*> slots;
    NameIndex<OneHash> index;
    for (std::size_t i = 0; i < count; ++i) {
        owned.push_back(std::make_unique<HHDFHwDefFile>("/in/same.bit"));
        slots.push_back(owned.back().get());
        const std::uint32_t found = index.first(slots, "same.bit");
        ASSERT_EQ(found, i);
        slots[found]->setHwSrcDB("taken");
    }
    EXPECT_EQ(index.first(slots, "same.bit"), index.NONE);
    EXPECT_EQ(index.usedCells(), 1u);
}

TEST(NameIndex, keepsNamesOfOneHashApart)
{
    std::vector<std::unique_ptr<HHDFHwDefFile>> owned;
    std::vector<HHDFHwDefFile*> slots;
    for (const char* path : {"/in/a.bit", "/in/b.bit", "/in/a.bit"}) {
        owned.push_back(std::make_unique<HHDFHwDefFile>(path));
        slots.push_back(owned.back().get());
    }
    NameIndex<OneHash> index;
    EXPECT_EQ(index.first(slots, "a.bit"), 0u);
    EXPECT_EQ(index.first(slots, "b.bit"), 1u);
    slots[0]->setHwSrcDB("taken");
    EXPECT_EQ(index.first(slots, "a.bit"), 2u);
    slots[2]->setHwSrcDB("taken");
    EXPECT_EQ(index.first(slots, "a.bit"), index.NONE);
    EXPECT_EQ(index.first(slots, "b.bit"), 1u);
}

}  // namespace
