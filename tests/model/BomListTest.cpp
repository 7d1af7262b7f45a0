#include "hwdef/model/BomList.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

HHDFHwDefFile* add(BomList& list, const std::string& path, const std::string& srcDb = {})
{
    auto file = std::make_unique<HHDFHwDefFile>(path);
    file->setHwSrcDB(srcDb);
    HHDFHwDefFile* added = file.get();
    list.add(std::move(file));
    return added;
}

/// The entries' paths in order, separated by blanks.
std::string pathsOf(const BomList& list)
{
    std::string paths;
    for (const HHDFHwDefFile* file : list.slots()) {
        if (file) {
            (paths += paths.empty() ? "" : " ") += file->getFile();
        }
    }
    return paths;
}

}  // namespace

TEST(BomList, startsEmpty)
{
    const BomList list;
    EXPECT_TRUE(list.slots().empty());
    EXPECT_EQ(list.firstNamed("top.bit"), nullptr);
    EXPECT_EQ(list.firstWithoutSrcDb("top.bit"), nullptr);
}

TEST(BomList, keepsEntriesInTheOrderAdded)
{
    BomList list;
    add(list, "/b");
    add(list, "/a");
    add(list, "/b");
    EXPECT_EQ(pathsOf(list), "/b /a /b");
}

TEST(BomList, findsTheFirstEntryOfAName)
{
    BomList list;
    HHDFHwDefFile* first = add(list, "/x/top.bit");
    add(list, "/y/top.bit");
    HHDFHwDefFile* upper = add(list, "/y/TOP.bit");
    EXPECT_EQ(list.firstNamed("top.bit"), first);
    EXPECT_EQ(list.firstNamed("TOP.bit"), upper);
    EXPECT_EQ(list.firstNamed("Top.bit"), nullptr);
    EXPECT_EQ(list.firstNamed("x/top.bit"), nullptr);
}

TEST(BomList, findsEntriesAddedAfterALookup)
{
    BomList list;
    add(list, "/x/a");
    EXPECT_EQ(list.firstNamed("b"), nullptr);
    EXPECT_EQ(list.firstWithoutSrcDb("b"), nullptr);
    HHDFHwDefFile* added = add(list, "/x/b");
    EXPECT_EQ(list.firstNamed("b"), added);
    EXPECT_EQ(list.firstWithoutSrcDb("b"), added);
}

TEST(BomList, findsAnEntryWithoutAFileByTheEmptyName)
{
    BomList list;
    HHDFHwDefFile* entry = add(list, "");
    EXPECT_EQ(list.firstNamed(""), entry);
    EXPECT_EQ(list.firstWithoutSrcDb(""), entry);
}

TEST(BomList, holdsANullEntryThatNoLookupFinds)
{
    BomList list;
    HHDFHwDefFile* entry = add(list, "/x/top.bit");
    list.add(nullptr);
    HHDFHwDefFile* other = add(list, "/x/other.bit");
    EXPECT_EQ(list.slots(), (std::vector<HHDFHwDefFile*>{entry, nullptr, other}));
    EXPECT_EQ(list.firstNamed("top.bit"), entry);
    EXPECT_EQ(list.firstNamed(""), nullptr);
    EXPECT_EQ(list.firstWithoutSrcDb(""), nullptr);
}

TEST(BomList, givesARemovedEntryBackAndFindsTheNextOne)
{
    BomList list;
    HHDFHwDefFile* first = add(list, "/x/top.bit");
    HHDFHwDefFile* second = add(list, "/y/top.bit");
    EXPECT_EQ(list.firstNamed("top.bit"), first);
    const std::unique_ptr<HHDFHwDefFile> removed = list.remove(first);
    EXPECT_EQ(removed.get(), first);
    EXPECT_EQ(list.firstNamed("top.bit"), second);
    EXPECT_EQ(list.firstWithoutSrcDb("top.bit"), second);
    EXPECT_EQ(pathsOf(list), "/y/top.bit");
}

TEST(BomList, findsANameAgainThatWasRemovedAltogether)
{
    BomList list;
    add(list, "/x/other");
    add(list, "/x/another");
    HHDFHwDefFile* first = add(list, "/x/top.bit");
    EXPECT_EQ(list.firstNamed("top.bit"), first);
    list.remove(first);
    EXPECT_EQ(list.firstNamed("top.bit"), nullptr);
    HHDFHwDefFile* second = add(list, "/y/top.bit");
    EXPECT_EQ(list.firstNamed("top.bit"), second);
}

TEST(BomList, removesOnlyWhatItLists)
{
    BomList list;
    BomList other;
    HHDFHwDefFile* listed = add(list, "/x/a");
    const HHDFHwDefFile unlisted("/x/a");
    EXPECT_EQ(list.remove(nullptr), nullptr);
    EXPECT_EQ(list.remove(&unlisted), nullptr);
    EXPECT_EQ(other.remove(listed), nullptr);
    const std::unique_ptr<HHDFHwDefFile> removed = list.remove(listed);
    EXPECT_EQ(list.remove(removed.get()), nullptr);
}

TEST(BomList, removesACopiedEntryFromTheListOfTheCopy)
{
    BomList list;
    HHDFHwDefFile* entry = add(list, "/x/a");
    auto copy = std::make_unique<HHDFHwDefFile>(*entry);
    EXPECT_EQ(list.remove(copy.get()), nullptr);
    EXPECT_EQ(list.firstNamed("a"), entry);
}

TEST(BomList, standsStillWhileEntriesAreRemoved)
{
    BomList list;
    for (int i = 0; i < 100; ++i) {
        add(list, "/x/" + std::to_string(i));
    }
    int number = 0;
    for (const HHDFHwDefFile* file : list.slots()) {
        if (number++ != 50) {
            EXPECT_NE(list.remove(file), nullptr);
        }
    }
    EXPECT_EQ(pathsOf(list), "/x/50");
    EXPECT_EQ(list.slots().size(), 1U);
    EXPECT_EQ(list.firstNamed("50"), list.slots().front());
}

TEST(BomList, takesARemovedEntryBackAtTheEnd)
{
    BomList list;
    HHDFHwDefFile* first = add(list, "/x/a");
    add(list, "/x/b");
    EXPECT_EQ(list.firstNamed("a"), first);
    list.add(list.remove(first));
    EXPECT_EQ(pathsOf(list), "/x/b /x/a");
    EXPECT_EQ(list.firstNamed("a"), first);
}

TEST(BomList, findsTheFirstEntryWithoutSourceDatabaseInAnyCase)
{
    BomList list;
    add(list, "/x/Top.bit", "db");
    HHDFHwDefFile* second = add(list, "/x/TOP.bit");
    HHDFHwDefFile* third = add(list, "/x/top.bit");
    EXPECT_EQ(list.firstWithoutSrcDb("top.BIT"), second);
    second->setHwSrcDB("db");
    EXPECT_EQ(list.firstWithoutSrcDb("top.BIT"), third);
    third->setHwSrcDB("db");
    EXPECT_EQ(list.firstWithoutSrcDb("top.BIT"), nullptr);
}

TEST(BomList, foldsAsciiLettersOnly)
{
    BomList list;
    HHDFHwDefFile* entry = add(list, "/x/\xC3\x84[.bit");
    EXPECT_EQ(list.firstWithoutSrcDb("\xC3\xA4[.bit"), nullptr);
    EXPECT_EQ(list.firstWithoutSrcDb("\xC3\x84{.bit"), nullptr);
    EXPECT_EQ(list.firstWithoutSrcDb("\xC3\x84[.BIT"), entry);
}

TEST(BomList, findsAnEntryWhoseSourceDatabaseWasEmptied)
{
    BomList list;
    HHDFHwDefFile* first = add(list, "/x/a", "db");
    HHDFHwDefFile* second = add(list, "/y/A", "db");
    HHDFHwDefFile* third = add(list, "/z/a");
    EXPECT_EQ(list.firstWithoutSrcDb("a"), third);
    second->setHwSrcDB("");
    EXPECT_EQ(list.firstWithoutSrcDb("a"), second);
    first->setHwSrcDB("");
    EXPECT_EQ(list.firstWithoutSrcDb("a"), first);
    first->setHwSrcDB("db");
    EXPECT_EQ(list.firstWithoutSrcDb("a"), second);
    list.remove(second);
    EXPECT_EQ(list.firstWithoutSrcDb("a"), third);
}

TEST(BomList, findsAnEmptiedEntryWhenNoOtherIsLeft)
{
    BomList list;
    HHDFHwDefFile* first = add(list, "/x/a");
    EXPECT_EQ(list.firstWithoutSrcDb("a"), first);
    first->setHwSrcDB("db");
    EXPECT_EQ(list.firstWithoutSrcDb("a"), nullptr);
    first->setHwSrcDB("");
    EXPECT_EQ(list.firstWithoutSrcDb("a"), first);
    HHDFHwDefFile* second = add(list, "/y/a");
    EXPECT_EQ(list.firstWithoutSrcDb("a"), first);
    first->setHwSrcDB("db");
    EXPECT_EQ(list.firstWithoutSrcDb("a"), second);
}

TEST(BomList, leavesARemovedEntryAlone)
{
    std::unique_ptr<HHDFHwDefFile> removed;
    {
        BomList list;
        HHDFHwDefFile* entry = add(list, "/x/a", "db");
        EXPECT_EQ(list.firstWithoutSrcDb("a"), nullptr);
        removed = list.remove(entry);
        removed->setHwSrcDB("");
        EXPECT_EQ(list.firstWithoutSrcDb("a"), nullptr);
        removed->setHwSrcDB("db");
    }
    removed->setHwSrcDB("");
    EXPECT_EQ(removed->getHwSrcDB(), "");
}

namespace {

constexpr int hugeCount = 500000;

}  // namespace

// With a walk per question each of these takes hours.

TEST(BomList, givesEachOfManyEntriesOfOneNameItsTurn)
{
    BomList list;
    for (int i = 0; i < hugeCount; ++i) {
        add(list, "/x/top.bit");
    }
    int count = 0;
    while (HHDFHwDefFile* entry = list.firstWithoutSrcDb("TOP.bit")) {
        entry->setHwSrcDB("db");
        ++count;
        ASSERT_EQ(list.firstNamed("top.bit"), list.slots().front());
    }
    EXPECT_EQ(count, hugeCount);
}

TEST(BomList, answersWhileManyEntriesOfOneNameAreAdded)
{
    BomList list;
    HHDFHwDefFile* first = add(list, "/x/top.bit");
    for (int i = 1; i < hugeCount; ++i) {
        HHDFHwDefFile* added = add(list, "/x/top.bit");
        ASSERT_EQ(list.firstNamed("top.bit"), first);
        ASSERT_EQ(list.firstWithoutSrcDb("top.bit"), first);
        added->setHwSrcDB("db");
    }
}

TEST(BomList, removesManyEntriesOfOneNameFromEitherEnd)
{
    for (const bool isForward : {true, false}) {
        BomList list;
        for (int i = 0; i < hugeCount; ++i) {
            add(list, "/x/top.bit");
        }
        std::vector<HHDFHwDefFile*> files = list.slots();
        if (!isForward) {
            std::reverse(files.begin(), files.end());
        }
        for (std::size_t i = 0; i + 1 < files.size(); ++i) {
            ASSERT_EQ(list.firstNamed("top.bit"), isForward ? files[i] : files.back());
            ASSERT_NE(list.remove(files[i]), nullptr);
        }
        EXPECT_EQ(list.firstNamed("top.bit"), files.back());
    }
}

TEST(BomList, findsManyNamesThatDifferInCaseOnly)
{
    constexpr unsigned bits = 17;
    BomList list;
    std::vector<std::string> names;
    for (unsigned pattern = 0; pattern < 1U << bits; ++pattern) {
        std::string name(bits, 'a');
        for (unsigned bit = 0; bit < bits; ++bit) {
            name[bit] = (pattern >> bit & 1U) != 0 ? 'A' : 'a';
        }
        names.push_back(name);
        add(list, "/x/" + name);
    }
    for (const std::string& name : names) {
        ASSERT_EQ(list.firstNamed(name)->getFileName(), name);
        list.firstWithoutSrcDb(name)->setHwSrcDB("db");
    }
    EXPECT_EQ(list.firstWithoutSrcDb(names.front()), nullptr);
}

TEST(BomList, staysFastWhenASourceDatabaseIsSetAndEmptiedInTurn)
{
    BomList list;
    for (int i = 0; i < hugeCount; ++i) {
        add(list, "/x/top.bit", i == hugeCount - 1 ? "" : "db");
    }
    HHDFHwDefFile* first = list.slots().front();
    HHDFHwDefFile* last = list.slots().back();
    for (int i = 0; i < 100000; ++i) {
        first->setHwSrcDB("");
        ASSERT_EQ(list.firstWithoutSrcDb("top.bit"), first);
        first->setHwSrcDB("db");
        ASSERT_EQ(list.firstWithoutSrcDb("top.bit"), last);
    }
}
