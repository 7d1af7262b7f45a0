#include "hwdef/model/HHDFHwDefFile.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "support/TempDir.h"

namespace {

using Types = HHDFHwDefFileTypes;
using Attributes = std::map<std::string, std::string>;

/// An entry with a value of its own in every field.
HHDFHwDefFile fullEntry()
{
    HHDFHwDefFile file("/data/design/top.hwh");
    file.setFileType(Types::HW_HANDOFF);
    file.setBDFileType(Types::SCOPED_BD);
    file.setHierPath("top/cpu");
    file.setHwDefFilePath("/data/design.hdf");
    file.setHwSrcDB("design.dcp");
    file.addFileAttr("ip_type", "VELD");
    return file;
}

}  // namespace

TEST(HHDFHwDefFile, startsWithNothingButItsPath)
{
    const HHDFHwDefFile file("/data/design/top.bit");
    EXPECT_EQ(file.getFile(), "/data/design/top.bit");
    EXPECT_EQ(file.getFileName(), "top.bit");
    EXPECT_EQ(file.getFileType(), Types::UNKNOWN);
    EXPECT_EQ(file.getBDFileType(), Types::UNKNOWN_BD);
    EXPECT_EQ(file.getHierPath(), "");
    EXPECT_EQ(file.getHwDefFilePath(), "");
    EXPECT_EQ(file.getHwSrcDB(), "");
    EXPECT_EQ(file.getFileAttrs(), Attributes());
}

TEST(HHDFHwDefFile, hasNoFileForTheEmptyPath)
{
    const HHDFHwDefFile file("");
    EXPECT_EQ(file.getFile(), "");
    EXPECT_EQ(file.getFileName(), "");
    EXPECT_EQ(file.fileName(), "");
    EXPECT_EQ(file.getFileType(), Types::UNKNOWN);
    EXPECT_EQ(file.getBDFileType(), Types::UNKNOWN_BD);
}

TEST(HHDFHwDefFile, givesTheCanonicalPathOfAFileThatNeedNotExist)
{
    EXPECT_EQ(HHDFHwDefFile("/data//a/./b/../top.bit").getFile(), "/data/a/top.bit");
    const std::string relative = HHDFHwDefFile("top.bit").getFile();
    EXPECT_EQ(relative.front(), '/');
    EXPECT_EQ(relative.substr(relative.size() - 8), "/top.bit");
}

TEST(HHDFHwDefFile, namesTheLastComponentOfItsPath)
{
    EXPECT_EQ(HHDFHwDefFile("a/b/top.bit").getFileName(), "top.bit");
    EXPECT_EQ(HHDFHwDefFile("top.bit").getFileName(), "top.bit");
    EXPECT_EQ(HHDFHwDefFile("a/b/").getFileName(), "b");
    EXPECT_EQ(HHDFHwDefFile("a/b/top.bit").fileName(), "top.bit");
}

TEST(HHDFHwDefFile, takesAnyFileTypeAndRole)
{
    HHDFHwDefFile file("top.bit");
    file.setFileType(Types::BIT);
    file.setBDFileType(Types::REFERENCE_BD);
    EXPECT_EQ(file.getFileType(), Types::BIT);
    EXPECT_EQ(file.getBDFileType(), Types::REFERENCE_BD);
    file.setFileType(static_cast<Types::HWHFileType>(1000));
    EXPECT_EQ(std::uint32_t{file.getFileType()}, 1000U);
}

TEST(HHDFHwDefFile, refusesAnEmptyHierarchyPath)
{
    HHDFHwDefFile file("top.bit");
    EXPECT_TRUE(file.setHierPath("top/cpu"));
    EXPECT_FALSE(file.setHierPath(""));
    EXPECT_EQ(file.getHierPath(), "top/cpu");
    EXPECT_TRUE(file.setHierPath("top"));
    EXPECT_EQ(file.getHierPath(), "top");
    EXPECT_EQ(file.hierPath(), "top");
}

TEST(HHDFHwDefFile, refusesAnEmptyContainerPath)
{
    HHDFHwDefFile file("top.bit");
    EXPECT_FALSE(file.setHwDefFilePath(""));
    EXPECT_EQ(file.getHwDefFilePath(), "");
    EXPECT_TRUE(file.setHwDefFilePath("a.hdf"));
    EXPECT_FALSE(file.setHwDefFilePath(""));
    EXPECT_EQ(file.getHwDefFilePath(), "a.hdf");
}

TEST(HHDFHwDefFile, takesAnEmptySourceDatabase)
{
    HHDFHwDefFile file("top.bit");
    file.setHwSrcDB("design.dcp");
    EXPECT_EQ(file.getHwSrcDB(), "design.dcp");
    file.setHwSrcDB("");
    EXPECT_EQ(file.getHwSrcDB(), "");
}

TEST(HHDFHwDefFile, refusesAnAttributeWithoutNameOrValue)
{
    HHDFHwDefFile file("top.bit");
    EXPECT_FALSE(file.addFileAttr("", "value"));
    EXPECT_FALSE(file.addFileAttr("name", ""));
    EXPECT_FALSE(file.hasFileAttrs());
    EXPECT_EQ(file.getFileAttrs(), Attributes());
    EXPECT_FALSE(file.hasFileAttrs());
}

TEST(HHDFHwDefFile, keepsTheLastValueOfAnAttribute)
{
    HHDFHwDefFile file("top.bit");
    EXPECT_TRUE(file.addFileAttr("k", "a"));
    EXPECT_TRUE(file.addFileAttr("k", "b"));
    EXPECT_FALSE(file.addFileAttr("k", ""));
    EXPECT_EQ(file.getFileAttrs(), (Attributes{{"k", "b"}}));
    EXPECT_TRUE(file.hasFileAttrs());
}

TEST(HHDFHwDefFile, showsLaterChangesThroughReferencesGivenOutBefore)
{
    HHDFHwDefFile file("top.bit");
    const Attributes& attributes = file.getFileAttrs();
    const std::string& hierPath = file.getHierPath();
    const std::string& srcDb = file.getHwSrcDB();
    const Types::HWHFileType& type = file.getFileType();
    file.addFileAttr("k", "a");
    file.setHierPath("top/cpu");
    file.setHwSrcDB("design.dcp");
    file.setFileType(Types::BIT);
    EXPECT_EQ(attributes, (Attributes{{"k", "a"}}));
    EXPECT_EQ(hierPath, "top/cpu");
    EXPECT_EQ(srcDb, "design.dcp");
    EXPECT_EQ(type, Types::BIT);
}

TEST(HHDFHwDefFile, copiesEveryFieldAndAttribute)
{
    const HHDFHwDefFile file = fullEntry();
    const HHDFHwDefFile copy(file);
    EXPECT_EQ(copy.getFile(), "/data/design/top.hwh");
    EXPECT_EQ(copy.getFileName(), "top.hwh");
    EXPECT_EQ(copy.getFileType(), Types::HW_HANDOFF);
    EXPECT_EQ(copy.getBDFileType(), Types::SCOPED_BD);
    EXPECT_EQ(copy.getHierPath(), "top/cpu");
    EXPECT_EQ(copy.getHwDefFilePath(), "/data/design.hdf");
    EXPECT_EQ(copy.getHwSrcDB(), "design.dcp");
    EXPECT_EQ(copy.getFileAttrs(), (Attributes{{"ip_type", "VELD"}}));
}

TEST(HHDFHwDefFile, copiesTheCanonicalPathAndNotTheOneGiven)
{
    const HHDFHwDefFile file("/data/design/sub/..");
    const HHDFHwDefFile copy(file);
    EXPECT_EQ(file.getFileName(), "..");
    EXPECT_EQ(copy.getFileName(), "design");
}

TEST(HHDFHwDefFile, copiesAnEntryWithoutAFile)
{
    HHDFHwDefFile file("");
    file.setHierPath("top");
    const HHDFHwDefFile copy(file);
    EXPECT_EQ(copy.getFile(), "");
    EXPECT_EQ(copy.getHierPath(), "top");
}

TEST(HHDFHwDefFile, sharesNothingWithItsCopy)
{
    HHDFHwDefFile file = fullEntry();
    const HHDFHwDefFile copy(file);
    file.setHierPath("other");
    file.setHwDefFilePath("other.hdf");
    file.setHwSrcDB("other.dcp");
    file.addFileAttr("ip_type", "other");
    EXPECT_EQ(copy.getHierPath(), "top/cpu");
    EXPECT_EQ(copy.getHwDefFilePath(), "/data/design.hdf");
    EXPECT_EQ(copy.getHwSrcDB(), "design.dcp");
    EXPECT_EQ(copy.getFileAttrs(), (Attributes{{"ip_type", "VELD"}}));
}

TEST(HHDFHwDefFile, equalsAnEntryWhoseTextsDifferInCaseOnly)
{
    HHDFHwDefFile other("/DATA/Design/TOP.hwh");
    other.setFileType(Types::HW_HANDOFF);
    other.setBDFileType(Types::SCOPED_BD);
    other.setHierPath("Top/CPU");
    other.setHwDefFilePath("/Data/Design.HDF");
    other.setHwSrcDB("DESIGN.dcp");
    EXPECT_TRUE(fullEntry() == other);
    EXPECT_TRUE(other == fullEntry());
}

TEST(HHDFHwDefFile, equalsAnEntryWithOtherAttributes)
{
    HHDFHwDefFile other = fullEntry();
    other.addFileAttr("ip_type", "other");
    other.addFileAttr("k", "a");
    EXPECT_TRUE(fullEntry() == other);
}

TEST(HHDFHwDefFile, equalsByCanonicalPath)
{
    EXPECT_TRUE(HHDFHwDefFile("/a/b/../top.bit") == HHDFHwDefFile("/a//top.bit"));
    EXPECT_TRUE(HHDFHwDefFile("") == HHDFHwDefFile(""));
    EXPECT_FALSE(HHDFHwDefFile("/a/top.bit") == HHDFHwDefFile("/b/top.bit"));
    EXPECT_FALSE(HHDFHwDefFile("/a/top.bit") == HHDFHwDefFile(""));
}

TEST(HHDFHwDefFile, differsInEveryComparedField)
{
    const std::vector<std::function<void(HHDFHwDefFile&)>> changes = {
        [](HHDFHwDefFile& file) { file.setFileType(Types::BIT); },
        [](HHDFHwDefFile& file) { file.setBDFileType(Types::DEFAULT_BD); },
        [](HHDFHwDefFile& file) { file.setHierPath("top"); },
        [](HHDFHwDefFile& file) { file.setHwDefFilePath("/data/other.hdf"); },
        [](HHDFHwDefFile& file) { file.setHwSrcDB(""); },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        HHDFHwDefFile other = fullEntry();
        changes[i](other);
        EXPECT_FALSE(fullEntry() == other) << i;
    }
}

TEST(HHDFHwDefFile, touchesNothingOnDisk)
{
    const support::TempDir dir;
    support::writeFile(dir / "top.bit", "x");
    {
        const HHDFHwDefFile file(dir / "top.bit");
        const HHDFHwDefFile copy(file);
    }
    EXPECT_EQ(dir.list(), "top.bit");
}
