#include "platform/iostreams/RecordIndex.h"

#include <gtest/gtest.h>

#include "platform/iostreams/EntryHeaders.h"

using iostreams::zip::Entry;
using iostreams::zip::RecordIndex;

namespace {

/// Appends a record of that name and returns where it begins.
std::size_t append(std::string& records, const std::string& name)
{
    const std::size_t begin = records.size();
    Entry entry;
    entry.name = name;
    appendDirectoryRecord(records, entry, 0);
    return begin;
}

}  // namespace

TEST(RecordIndex, findsNothingAtFirst)
{
    const std::string records;
    const RecordIndex index(records);
    EXPECT_EQ(index.find("a"), RecordIndex::NONE);
    EXPECT_EQ(index.size(), 0u);
}

TEST(RecordIndex, findsEachOfManyRecordsWhileTheirBytesMove)
{
    std::string records;
    RecordIndex index(records);
    std::vector<std::size_t> begins;
    for (int number = 0; number < 10'000; ++number) {
        std::size_t& place = index.placeOf(std::to_string(number));
        ASSERT_EQ(place, RecordIndex::NONE);
        place = append(records, std::to_string(number));
        begins.push_back(place);
    }
    EXPECT_EQ(index.size(), 10'000u);
    for (int number = 0; number < 10'000; ++number) {
        EXPECT_EQ(index.find(std::to_string(number)), begins[static_cast<std::size_t>(number)]);
    }
    EXPECT_EQ(index.find("10000"), RecordIndex::NONE);
}

TEST(RecordIndex, givesANameThatComesAgainItsOldPlace)
{
    std::string records;
    RecordIndex index(records);
    index.placeOf("a") = append(records, "a");
    index.placeOf("b") = append(records, "b");
    std::size_t& place = index.placeOf("a");
    EXPECT_EQ(place, 0u);
    place = append(records, "a");
    EXPECT_EQ(index.find("a"), place);
    EXPECT_EQ(index.size(), 2u);
}

TEST(RecordIndex, tellsNamesThatBeginAlikeApart)
{
    std::string records;
    RecordIndex index(records);
    index.placeOf("name") = append(records, "name");
    EXPECT_EQ(index.find("nam"), RecordIndex::NONE);
    EXPECT_EQ(index.find("names"), RecordIndex::NONE);
    EXPECT_EQ(index.find(""), RecordIndex::NONE);
}
