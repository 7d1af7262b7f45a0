#include "hwdef/model/DriverMap.h"

#include <gtest/gtest.h>

#include <random>

#include "hwdef/utils/HHDFHwDefUtils.h"

namespace {

using Lines = std::vector<std::string>;

/// The records of a driver as "file path|relative name|container".
Lines linesOf(const DriverMap::Files& files)
{
    Lines lines;
    for (const HHDFHwDefDriver& file : files) {
        lines.push_back(file.getFilePath() + "|" + file.getRelativeName() + "|" + file.getHwDefFilePath());
    }
    return lines;
}

Lines linesOf(const DriverMap& map, const std::string& name)
{
    return linesOf(map.files().at(name));
}

HHDFHwDefDriver numbered(std::size_t number)
{
    return {"/x/" + std::to_string(number), std::to_string(number), "a.hdf"};
}

DriverMap::Files numberedFiles(std::size_t count)
{
    DriverMap::Files files;
    for (std::size_t number = 0; number < count; ++number) {
        files.push_back(numbered(number));
    }
    return files;
}

}  // namespace

TEST(DriverMap, startsEmpty)
{
    EXPECT_TRUE(DriverMap().files().empty());
}

TEST(DriverMap, keepsRecordsInTheOrderAdded)
{
    DriverMap map;
    map.add("uart", {"/x/b.c", "b.c", "a.hdf"});
    map.add("uart", {"/x/a.c", "a.c", "a.hdf"});
    map.add("gpio", {"/x/b.c", "b.c", "a.hdf"});
    EXPECT_EQ(linesOf(map, "uart"), (Lines{"/x/b.c|b.c|a.hdf", "/x/a.c|a.c|a.hdf"}));
    EXPECT_EQ(linesOf(map, "gpio"), (Lines{"/x/b.c|b.c|a.hdf"}));
}

TEST(DriverMap, keepsOneOfEqualRecords)
{
    DriverMap map;
    map.add("uart", {"/x/a.c", "a.c", "a.hdf"});
    map.add("uart", {"/x/a.c", "a.c", "a.hdf"});
    EXPECT_EQ(linesOf(map, "uart"), (Lines{"/x/a.c|a.c|a.hdf"}));
}

TEST(DriverMap, keepsRecordsThatDifferInOneText)
{
    for (const std::size_t earlier : {0U, 100U}) {
        DriverMap map;
        map.replace("uart", numberedFiles(earlier));
        map.add("uart", {"/x/a.c", "a.c", "a.hdf"});
        map.add("uart", {"/X/a.c", "a.c", "a.hdf"});
        map.add("uart", {"/x/a.c", "A.c", "a.hdf"});
        map.add("uart", {"/x/a.c", "a.c", ""});
        map.add("uart", {"/x/a.c", "a.c", "a.hdf"});
        EXPECT_EQ(map.files().at("uart").size(), earlier + 4);
    }
}

TEST(DriverMap, doesNotMistakeTextsThatJoinToTheSame)
{
    for (const std::size_t earlier : {0U, 100U}) {
        DriverMap map;
        map.replace("uart", numberedFiles(earlier));
        map.add("uart", {"ab", "c", "d"});
        map.add("uart", {"a", "bc", "d"});
        map.add("uart", {"a", "b", "cd"});
        EXPECT_EQ(map.files().at("uart").size(), earlier + 3);
    }
}

TEST(DriverMap, replacesAListWithItsRepeats)
{
    DriverMap map;
    map.add("uart", {"/x/a.c", "a.c", "a.hdf"});
    map.replace("uart", {{"1", "2", "3"}, {"1", "2", "3"}});
    EXPECT_EQ(linesOf(map, "uart"), (Lines{"1|2|3", "1|2|3"}));
    map.add("uart", {"1", "2", "3"});
    EXPECT_EQ(linesOf(map, "uart"), (Lines{"1|2|3", "1|2|3"}));
    map.add("uart", {"/x/a.c", "a.c", "a.hdf"});
    EXPECT_EQ(linesOf(map, "uart"), (Lines{"1|2|3", "1|2|3", "/x/a.c|a.c|a.hdf"}));
}

TEST(DriverMap, setsAnEmptyList)
{
    DriverMap map;
    map.replace("uart", {});
    EXPECT_EQ(map.files().size(), 1U);
    EXPECT_TRUE(map.files().at("uart").empty());
}

TEST(DriverMap, addsToALongListWithRepeats)
{
    DriverMap::Files files = numberedFiles(100);
    files.push_back(numbered(5));
    DriverMap map;
    map.replace("uart", files);
    map.add("uart", numbered(5));
    map.add("uart", numbered(100));
    map.add("uart", numbered(100));
    EXPECT_EQ(map.files().at("uart").size(), 102U);
    EXPECT_EQ(linesOf(map, "uart").back(), "/x/100|100|a.hdf");
}

TEST(DriverMap, forgetsTheListThatWasReplaced)
{
    DriverMap map;
    map.replace("uart", numberedFiles(100));
    map.add("uart", numbered(100));
    map.replace("uart", numberedFiles(50));
    map.add("uart", numbered(100));
    map.add("uart", numbered(100));
    map.add("uart", numbered(49));
    EXPECT_EQ(map.files().at("uart").size(), 51U);
}

TEST(DriverMap, takesAnotherMapsContent)
{
    DriverMap map;
    map.replace("uart", numberedFiles(100));
    map.add("uart", numbered(100));
    map.add("gpio", numbered(1));
    map.replaceAll({{"uart", {numbered(7), numbered(7)}}, {"spi", {}}});
    EXPECT_EQ(map.files().size(), 2U);
    EXPECT_EQ(linesOf(map, "uart"), (Lines{"/x/7|7|a.hdf", "/x/7|7|a.hdf"}));
    map.add("uart", numbered(100));
    EXPECT_EQ(map.files().at("uart").size(), 3U);
}

TEST(DriverMap, forgetsTheListsOfTheMapThatWasReplaced)
{
    DriverMap map;
    map.replace("uart", numberedFiles(100));
    map.add("uart", numbered(100));
    map.replaceAll({{"uart", numberedFiles(50)}});
    map.add("uart", numbered(50));
    map.add("uart", numbered(50));
    EXPECT_EQ(map.files().at("uart").size(), 51U);
}

TEST(DriverMap, takesItsOwnContent)
{
    DriverMap map;
    map.replace("uart", numberedFiles(40));
    map.add("uart", numbered(40));
    map.replaceAll(map.files());
    map.add("uart", numbered(40));
    EXPECT_EQ(map.files().at("uart").size(), 41U);
}

TEST(DriverMap, answersAsAWalkOverTheListWould)
{
    std::mt19937 random(1);
    DriverMap map;
    DriverMap::Files expected;
    for (int step = 0; step < 5000; ++step) {
        if (random() % 1000 == 0) {
            expected = {numbered(random() % 200), numbered(random() % 200)};
            map.replace("uart", expected);
        }
        const HHDFHwDefDriver record(std::to_string(random() % 10), std::to_string(random() % 10),
                                     std::to_string(random() % 3));
        map.add("uart", record);
        if (!HHDFHwDefUtils::isAlreadyPresent(expected, record)) {
            expected.push_back(record);
        }
    }
    EXPECT_EQ(linesOf(map, "uart"), linesOf(expected));
}

TEST(DriverMap, addsManyRecordsToOneDriverWithoutWalks)
{
    // With a walk per record this takes minutes.
    DriverMap map;
    for (std::size_t round = 0; round < 2; ++round) {
        for (std::size_t number = 0; number < 100000; ++number) {
            map.add("uart", numbered(number));
        }
    }
    EXPECT_EQ(map.files().at("uart").size(), 100000U);
}
