// Reconfigurable partitions and configurations as the reader takes them.

#include <gtest/gtest.h>

#include "hwdef/bom/HHDFHwDefBomReader.h"
#include "support/BomDocument.h"

using support::definition;
using support::FakeElement;

using Files = std::map<std::string, std::vector<std::string>>;

TEST(Partitions, keepAFixedTextForTheFilesOfAModule)
{
    const auto def = definition();
    FakeElement paths("Instance_Paths");
    FakeElement& partition = paths.add("Reconfigurable_Partition", {{"Instance_Path", "top/rp"}});
    partition.add("File", {{"RM_NAME", "rm_a"}, {"Name", "a1.bit"}});
    partition.add("File", {{"RM_NAME", "rm_a"}, {"Name", "a2.bit"}});
    partition.add("anything", {{"RM_NAME", "rm_b"}});

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populatePartitionInfo(&paths));
    EXPECT_EQ(def->getPartitionInfo().at("top/rp")->getRmToFilesMap(),
              (Files{{"rm_a", {"bitFile"}}, {"rm_b", {"bitFile"}}}));
}

TEST(Partitions, findTheirDefaultModuleInAnyCase)
{
    const auto def = definition();
    FakeElement paths("Instance_Paths");
    FakeElement& partition =
        paths.add("Reconfigurable_Partition", {{"Instance_Path", "top/rp"}, {"DEFALUT_CONFIG_RM", "RM_A"}});
    partition.add("File", {{"RM_NAME", "rm_a"}});
    partition.add("File", {{"RM_NAME", "rm_b"}});

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populatePartitionInfo(&paths));
    EXPECT_EQ(def->getPartitionInfo().at("top/rp")->getDefaultRmName(), "rm_a");
}

TEST(Partitions, doNotKnowTheDefaultUnderItsProperSpelling)
{
    const auto def = definition();
    FakeElement paths("Instance_Paths");
    paths.add("Reconfigurable_Partition", {{"Instance_Path", "top/rp"}, {"DEFAULT_CONFIG_RM", "rm_a"}})
        .add("File", {{"RM_NAME", "rm_a"}});

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populatePartitionInfo(&paths));
    EXPECT_EQ(def->getPartitionInfo().at("top/rp")->getDefaultRmName(), "");
}

TEST(Partitions, areOnlyElementsOfThatName)
{
    const auto def = definition();
    FakeElement paths("Instance_Paths");
    paths.add("Partition", {{"Instance_Path", "a"}}).add("File", {{"RM_NAME", "rm"}});
    paths.add("Reconfigurable_Partition", {{"Instance_Path", "childless"}});
    paths.add("Reconfigurable_Partition").add("File");

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populatePartitionInfo(&paths));
    ASSERT_EQ(def->getPartitionInfo().size(), 1u);
    EXPECT_EQ(def->getPartitionInfo().at("")->getRmToFilesMap(), (Files{{"", {"bitFile"}}}));
}

TEST(Configurations, areActiveForTrueInAnyCase)
{
    const auto def = definition();
    FakeElement configurations("PRConfigurations");
    for (const char* active : {"true", "TRUE", "tRuE", "1", "yes", "", "true "}) {
        configurations.add("PRConfiguration", {{"Name", active}, {"Active", active}})
            .add("GrayBoxInst", {{"Name", "top/g"}});
    }
    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateConfigurations(&configurations));

    std::string active;
    for (const auto& [name, configuration] : def->getPartitionConfigs()) {
        active += name + (configuration->isActive() ? "+" : "-") + " ";
    }
    EXPECT_EQ(active, "- 1- TRUE+ tRuE+ true+ true - yes- ");
}

TEST(Configurations, takeModulesWithoutTheirFilesAndGrayBoxes)
{
    const auto def = definition();
    FakeElement configurations("PRConfigurations");
    FakeElement& configuration = configurations.add("PRConfiguration", {{"Name", "c"}});
    configuration.add("PARTITIONinstmap", {{"Instance_Path", "top/rp"}, {"RM_NAME", "rm_a"}})
        .add("File", {{"Name", "a.bit"}});
    configuration.add("PartitionInstMap", {{"Instance_Path", "top/empty"}});
    configuration.add("grayBOXinst", {{"Name", "top/g"}, {"RM_NAME", "rm"}});
    configuration.add("Other", {{"Name", "top/o"}, {"Instance_Path", "top/o"}, {"RM_NAME", "rm"}});

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateConfigurations(&configurations));
    const HHDFHwDefConfig* read = def->getPartitionConfigs().at("c");
    ASSERT_EQ(read->getPartitionCellRMs().size(), 1u);
    const HHDFHwDefPartitionCell* cell = read->getPartitionCell("top/rp");
    EXPECT_EQ(cell->getRmName(), "rm_a");
    EXPECT_EQ(cell->getFilesMap(),
              (std::map<HHDFHwDef::FileType, std::string>{{HHDFHwDefFileTypes::BIT, ""}}));
    EXPECT_EQ(read->getGrayBoxCells(), (std::vector<std::string>{"top/empty", "top/g"}));
}

TEST(Configurations, ofOneNameAreOneWithTheFirstOnesFlag)
{
    const auto def = definition();
    FakeElement configurations("PRConfigurations");
    configurations.add("PRConfiguration", {{"Name", "c"}, {"Active", "false"}})
        .add("GrayBoxInst", {{"Name", "g1"}});
    configurations.add("PRConfiguration", {{"Name", "c"}, {"Active", "true"}})
        .add("GrayBoxInst", {{"Name", "g2"}});

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateConfigurations(&configurations));
    ASSERT_EQ(def->getPartitionConfigs().size(), 1u);
    EXPECT_FALSE(def->getPartitionConfigs().at("c")->isActive());
    EXPECT_EQ(def->getPartitionConfigs().at("c")->getGrayBoxCells(), (std::vector<std::string>{"g1", "g2"}));
}

TEST(Configurations, withoutCellsAreNotKept)
{
    const auto def = definition();
    FakeElement configurations("PRConfigurations");
    configurations.add("PRConfiguration", {{"Name", "childless"}, {"Active", "true"}});
    configurations.add("Configuration", {{"Name", "other"}}).add("GrayBoxInst", {{"Name", "g"}});

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateConfigurations(&configurations));
    EXPECT_TRUE(def->getPartitionConfigs().empty());
}
