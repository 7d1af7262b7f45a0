#include "hwdef/model/HHDFHwDefPartitionCell.h"

#include <gtest/gtest.h>

using Types = HHDFHwDefFileTypes;

TEST(HHDFHwDefPartitionCell, startsWithItsModuleNameOnly)
{
    const HHDFHwDefPartitionCell cell("r");
    EXPECT_EQ(cell.getRmName(), "r");
    EXPECT_TRUE(cell.getFilesMap().empty());
}

TEST(HHDFHwDefPartitionCell, keepsTheLastFileOfAType)
{
    HHDFHwDefPartitionCell cell("r");
    cell.addFile("a.bit", Types::BIT);
    cell.addFile("a.ltx", Types::LTX);
    cell.addFile("b.bit", Types::BIT);
    const std::map<Types::HWHFileType, std::string> expected = {{Types::BIT, "b.bit"}, {Types::LTX, "a.ltx"}};
    EXPECT_EQ(cell.getFilesMap(), expected);
}

TEST(HHDFHwDefPartitionCell, printsItsFilesByType)
{
    HHDFHwDefPartitionCell cell("r");
    cell.addFile("z.pdi", Types::PDI);
    cell.addFile("a.unknown", Types::UNKNOWN);
    cell.addFile("m.cdo", Types::CDO);
    testing::internal::CaptureStdout();
    cell.print();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              " RM Name : r\n"
              "file: m.cdo\n"
              "file: z.pdi\n"
              "file: a.unknown\n");
}
