#include "hwdef/model/HHDFHwDefConfig.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <iostream>

namespace {

using Types = HHDFHwDefFileTypes;

std::string printed(const HHDFHwDefConfig& config)
{
    testing::internal::CaptureStdout();
    config.print();
    return testing::internal::GetCapturedStdout();
}

}  // namespace

TEST(HHDFHwDefConfig, startsWithoutCells)
{
    const HHDFHwDefConfig config("c", true);
    EXPECT_EQ(config.getName(), "c");
    EXPECT_TRUE(config.isActive());
    EXPECT_FALSE(HHDFHwDefConfig("c", false).isActive());
    EXPECT_TRUE(config.getPartitionCellRMs().empty());
    EXPECT_TRUE(config.getGrayBoxCells().empty());
}

TEST(HHDFHwDefConfig, findsACellByItsInstancePath)
{
    HHDFHwDefConfig config("c", true);
    config.addPartitionCellRM("top/a", "r", "a.bit", Types::BIT);
    ASSERT_NE(config.getPartitionCell("top/a"), nullptr);
    EXPECT_EQ(config.getPartitionCell("top/a")->getRmName(), "r");
    EXPECT_EQ(config.getPartitionCell("top/a"), config.getPartitionCellRMs().at("top/a"));
    EXPECT_EQ(config.getPartitionCell("top/A"), nullptr);
}

TEST(HHDFHwDefConfig, keepsTheFirstModuleAndTheLastFileOfACell)
{
    HHDFHwDefConfig config("c", true);
    config.addPartitionCellRM("top/a", "r1", "a.bit", Types::BIT);
    config.addPartitionCellRM("top/a", "r2", "b.bit", Types::BIT);
    config.addPartitionCellRM("top/a", "r3", "c.ltx", Types::LTX);
    const HHDFHwDefPartitionCell* cell = config.getPartitionCell("top/a");
    EXPECT_EQ(config.getPartitionCellRMs().size(), 1U);
    EXPECT_EQ(cell->getRmName(), "r1");
    EXPECT_EQ(cell->getFilesMap().at(Types::BIT), "b.bit");
    EXPECT_EQ(cell->getFilesMap().at(Types::LTX), "c.ltx");
}

TEST(HHDFHwDefConfig, listsGrayBoxesInTheOrderAddedWithRepeats)
{
    HHDFHwDefConfig config("c", true);
    config.addGrayBoxCell("b");
    config.addGrayBoxCell("a");
    config.addGrayBoxCell("b");
    EXPECT_EQ(config.getGrayBoxCells(), (std::vector<std::string>{"b", "a", "b"}));
}

TEST(HHDFHwDefConfig, printsItsCellsAndGrayBoxes)
{
    HHDFHwDefConfig config("conf", true);
    config.addPartitionCellRM("top/b", "r2", "b.bit", Types::BIT);
    config.addPartitionCellRM("top/a", "r1", "a.ltx", Types::LTX);
    config.addPartitionCellRM("top/a", "r1", "a.bit", Types::BIT);
    config.addGrayBoxCell("top/z");
    config.addGrayBoxCell("top/y");
    EXPECT_EQ(printed(config),
              "----------------------------\n"
              "config name: conf isActive: 1\n"
              "InstPath : top/a\n"
              " RM Name : r1\n"
              "file: a.bit\n"
              "file: a.ltx\n"
              "InstPath : top/b\n"
              " RM Name : r2\n"
              "file: b.bit\n"
              "Graybox inst: top/z\n"
              "Graybox inst: top/y\n"
              "----------------------------\n");
}

TEST(HHDFHwDefConfig, printsTheFlagAsADigitWhateverTheStreamPrefers)
{
    std::cout << std::boolalpha;
    const std::string text = printed(HHDFHwDefConfig("c", false));
    std::cout << std::noboolalpha;
    EXPECT_EQ(text,
              "----------------------------\n"
              "config name: c isActive: 0\n"
              "----------------------------\n");
}
