#include <gtest/gtest.h>

#include "hwdef/model/HHDFHwDef.h"

namespace {

using Types = HHDFHwDefFileTypes;

void addInfo(HHDFHwDef& def, std::string path, std::string rmName, std::string file, bool isDefault)
{
    EXPECT_TRUE(def.addPartitionInfo(path, rmName, file, isDefault));
}

std::string printed(const HHDFHwDef& def)
{
    testing::internal::CaptureStdout();
    def.printPartitionInfo();
    return testing::internal::GetCapturedStdout();
}

}  // namespace

TEST(HHDFHwDef, startsWithoutPartitions)
{
    const HHDFHwDef def("design.hdf");
    EXPECT_TRUE(def.getPartitionInfo().empty());
    EXPECT_TRUE(def.getPartitionConfigs().empty());
}

TEST(HHDFHwDef, makesAPartitionOncePerPath)
{
    HHDFHwDef def("design.hdf");
    addInfo(def, "top/p", "r1", "", true);
    addInfo(def, "top/p", "r1", "f.bit", false);
    addInfo(def, "top/p", "r2", "g.bit", false);
    addInfo(def, "top/q", "r1", "h.bit", false);
    EXPECT_EQ(def.getPartitionInfo().size(), 2U);
    const std::map<std::string, std::vector<std::string>> expected = {{"r1", {"f.bit"}}, {"r2", {"g.bit"}}};
    EXPECT_EQ(def.getPartitionInfo().at("top/p")->getRmToFilesMap(), expected);
    EXPECT_EQ(def.getPartitionInfo().at("top/p")->getDefaultRmName(), "r1");
    EXPECT_EQ(def.getPartitionInfo().at("top/q")->getDefaultRmName(), "");
}

TEST(HHDFHwDef, keepsTheActiveFlagThatAConfigurationWasMadeWith)
{
    HHDFHwDef def("design.hdf");
    def.addPartitionCell("c1", "top/a", "r", "a.bit", false);
    def.addPartitionCell("c1", "top/b", "r", "a.bit", true);
    def.addPartitionCell("c2", "top/a", "r", "a.bit", true);
    def.addPartitionCell("c2", "top/b", "", "", false);
    EXPECT_FALSE(def.getPartitionConfigs().at("c1")->isActive());
    EXPECT_TRUE(def.getPartitionConfigs().at("c2")->isActive());
    EXPECT_EQ(def.getPartitionConfigs().at("c1")->getName(), "c1");
}

TEST(HHDFHwDef, recordsACellWithoutModuleAsGrayBox)
{
    HHDFHwDef def("design.hdf");
    def.addPartitionCell("c", "top/a", "", "ignored.bit", true);
    def.addPartitionCell("c", "top/a", "", "", true);
    const HHDFHwDefConfig* config = def.getPartitionConfigs().at("c");
    EXPECT_EQ(config->getGrayBoxCells(), (std::vector<std::string>{"top/a", "top/a"}));
    EXPECT_TRUE(config->getPartitionCellRMs().empty());
}

TEST(HHDFHwDef, storesEveryCellFileAsABitstream)
{
    HHDFHwDef def("design.hdf");
    def.addPartitionCell("c", "top/a", "r1", "a.pdi", true);
    def.addPartitionCell("c", "top/a", "r2", "b.ltx", true);
    const HHDFHwDefPartitionCell* cell = def.getPartitionConfigs().at("c")->getPartitionCell("top/a");
    EXPECT_EQ(cell->getRmName(), "r1");
    const std::map<Types::HWHFileType, std::string> expected = {{Types::BIT, "b.ltx"}};
    EXPECT_EQ(cell->getFilesMap(), expected);
}

TEST(HHDFHwDef, printsTheFrameOfAnEmptyPartitionModel)
{
    EXPECT_EQ(printed(HHDFHwDef("design.hdf")),
              "--------- CONFIGURATIONS ---------------\n"
              "----------------------------------------\n");
}

TEST(HHDFHwDef, printsPartitionsAndConfigurations)
{
    HHDFHwDef def("design.hdf");
    addInfo(def, "top/q", "r", "", false);
    addInfo(def, "top/p", "r2", "z.bit", true);
    addInfo(def, "top/p", "r2", "a.bit", false);
    addInfo(def, "top/p", "r1", "b.bit", false);
    def.addPartitionCell("c2", "top/p", "", "", false);
    def.addPartitionCell("c1", "top/p", "r2", "z.bit", true);
    EXPECT_EQ(printed(def),
              "partitionPath: top/p\n"
              "!!RM Name: r1\n"
              "!!!!FILE: b.bit\n"
              "!!RM Name: r2\n"
              "!!!!FILE: z.bit\n"
              "!!!!FILE: a.bit\n"
              "!!default rm: r2\n"
              "partitionPath: top/q\n"
              "!!RM Name: r\n"
              "!!!!FILE: \n"
              "!!default rm: \n"
              "--------- CONFIGURATIONS ---------------\n"
              "----------------------------\n"
              "config name: c1 isActive: 1\n"
              "InstPath : top/p\n"
              " RM Name : r2\n"
              "file: z.bit\n"
              "----------------------------\n"
              "----------------------------\n"
              "config name: c2 isActive: 0\n"
              "Graybox inst: top/p\n"
              "----------------------------\n"
              "----------------------------------------\n");
}
