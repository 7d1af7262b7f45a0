#include "hwdef/model/HHDFHwDefPartitionInfo.h"

#include <gtest/gtest.h>

namespace {

using Files = std::map<std::string, std::vector<std::string>>;

void add(HHDFHwDefPartitionInfo& info, std::string rmName, std::string file, bool isDefault)
{
    EXPECT_TRUE(info.addPartitionInfo(rmName, file, isDefault));
}

HHDFHwDefPartitionInfo partition(std::string rmName, std::string file, bool isDefault)
{
    return HHDFHwDefPartitionInfo(rmName, file, isDefault);
}

}  // namespace

TEST(HHDFHwDefPartitionInfo, startsWithOneModule)
{
    const HHDFHwDefPartitionInfo info = partition("r", "r.bit", false);
    EXPECT_EQ(info.getRmToFilesMap(), (Files{{"r", {"r.bit"}}}));
    EXPECT_EQ(info.getDefaultRmName(), "");
}

TEST(HHDFHwDefPartitionInfo, startsWithADefaultModule)
{
    EXPECT_EQ(partition("r", "r.bit", true).getDefaultRmName(), "r");
}

TEST(HHDFHwDefPartitionInfo, keepsAnEmptyFileAsPlaceholder)
{
    EXPECT_EQ(partition("r", "", false).getRmToFilesMap(), (Files{{"r", {""}}}));
}

TEST(HHDFHwDefPartitionInfo, replacesThePlaceholderByTheFirstFile)
{
    HHDFHwDefPartitionInfo info = partition("r", "", false);
    add(info, "r", "f.bit", false);
    EXPECT_EQ(info.getRmToFilesMap(), (Files{{"r", {"f.bit"}}}));
}

TEST(HHDFHwDefPartitionInfo, keepsAnEmptyFileThatIsNotAlone)
{
    HHDFHwDefPartitionInfo info = partition("r", "a.bit", false);
    add(info, "r", "", false);
    add(info, "r", "b.bit", false);
    EXPECT_EQ(info.getRmToFilesMap(), (Files{{"r", {"a.bit", "", "b.bit"}}}));
}

TEST(HHDFHwDefPartitionInfo, listsAFileOnce)
{
    HHDFHwDefPartitionInfo info = partition("r", "f.bit", false);
    add(info, "r", "f.bit", false);
    add(info, "r", "F.bit", false);
    add(info, "r", "f.bit", false);
    EXPECT_EQ(info.getRmToFilesMap(), (Files{{"r", {"f.bit", "F.bit"}}}));
}

TEST(HHDFHwDefPartitionInfo, keepsFilesInTheOrderAdded)
{
    HHDFHwDefPartitionInfo info = partition("r2", "z.bit", false);
    add(info, "r2", "a.bit", false);
    add(info, "r1", "c.bit", false);
    EXPECT_EQ(info.getRmToFilesMap(), (Files{{"r1", {"c.bit"}}, {"r2", {"z.bit", "a.bit"}}}));
}

TEST(HHDFHwDefPartitionInfo, takesTheLastModuleAddedAsDefault)
{
    HHDFHwDefPartitionInfo info = partition("r1", "a", true);
    add(info, "r2", "b", true);
    EXPECT_EQ(info.getDefaultRmName(), "r2");
    add(info, "r3", "c", false);
    EXPECT_EQ(info.getDefaultRmName(), "r2");
}

TEST(HHDFHwDefPartitionInfo, makesAModuleThatIsThereTheDefault)
{
    HHDFHwDefPartitionInfo info = partition("r1", "a", false);
    add(info, "r1", "a", true);
    EXPECT_EQ(info.getDefaultRmName(), "r1");
    EXPECT_EQ(info.getRmToFilesMap(), (Files{{"r1", {"a"}}}));
}
