#include "platform/iostreams/MemberIndex.h"

#include <gtest/gtest.h>

#include <string>

using iostreams::zip::Entry;
using iostreams::zip::MemberIndex;

namespace {

std::vector<Entry> entriesNamed(const std::vector<std::string>& names)
{
    std::vector<Entry> entries;
    for (const std::string& name : names) {
        entries.emplace_back().name = name;
    }
    return entries;
}

}  // namespace

TEST(MemberIndex, findsEveryEntryByItsName)
{
    std::vector<std::string> names;
    for (int count = 0; count < 1000; ++count) {
        names.push_back("member" + std::to_string(count * 7 % 1000));
    }
    const std::vector<Entry> entries = entriesNamed(names);
    const MemberIndex index(entries);
    for (const Entry& entry : entries) {
        EXPECT_EQ(index.find(entry.name), &entry);
    }
}

TEST(MemberIndex, findsTheLastEntryOfAName)
{
    const std::vector<std::string> names = {"a", "b", "a", "c", "a", "b"};
    const std::vector<Entry> entries = entriesNamed(names);
    const MemberIndex index(entries);
    EXPECT_EQ(index.find("a"), &entries[4]);
    EXPECT_EQ(index.find("b"), &entries[5]);
    EXPECT_EQ(index.find("c"), &entries[3]);
}

TEST(MemberIndex, findsNothingByOtherNames)
{
    const std::vector<std::string> names = {"a", "dir/b"};
    const std::vector<Entry> entries = entriesNamed(names);
    const MemberIndex index(entries);
    EXPECT_EQ(index.find(""), nullptr);
    EXPECT_EQ(index.find("A"), nullptr);
    EXPECT_EQ(index.find("dir"), nullptr);
    EXPECT_EQ(index.find("dir/b/"), nullptr);
    EXPECT_EQ(MemberIndex({}).find("a"), nullptr);
}

TEST(MemberIndex, tellsNamesWithNulsApart)
{
    const std::vector<std::string> names = {std::string("a\0b", 3), "a", ""};
    const std::vector<Entry> entries = entriesNamed(names);
    const MemberIndex index(entries);
    EXPECT_EQ(index.find(names[0]), &entries[0]);
    EXPECT_EQ(index.find("a"), &entries[1]);
    EXPECT_EQ(index.find(""), &entries[2]);
}
