#include "hwdef/model/HHDFHwDefDriver.h"

#include <gtest/gtest.h>

TEST(HHDFHwDefDriver, isEmptyByDefault)
{
    const HHDFHwDefDriver record;
    EXPECT_EQ(record.getFilePath(), "");
    EXPECT_EQ(record.getRelativeName(), "");
    EXPECT_EQ(record.getHwDefFilePath(), "");
}

TEST(HHDFHwDefDriver, keepsItsThreeTextsAsPassed)
{
    const HHDFHwDefDriver record("/x//drivers/../a.c", "../a.c", "design.hdf/");
    EXPECT_EQ(record.getFilePath(), "/x//drivers/../a.c");
    EXPECT_EQ(record.getRelativeName(), "../a.c");
    EXPECT_EQ(record.getHwDefFilePath(), "design.hdf/");
}

TEST(HHDFHwDefDriver, keepsAnEmptyRelativeNameForGood)
{
    HHDFHwDefDriver record("/x/a.c", "", "");
    record.setFilePath("/y/b.c");
    record.setHwDefFilePath("design.hdf");
    EXPECT_EQ(record.getRelativeName(), "");
}

TEST(HHDFHwDefDriver, refusesEmptyPaths)
{
    HHDFHwDefDriver record("/x/a.c", "a.c", "design.hdf");
    EXPECT_FALSE(record.setFilePath(""));
    EXPECT_FALSE(record.setHwDefFilePath(""));
    EXPECT_EQ(record.getFilePath(), "/x/a.c");
    EXPECT_EQ(record.getHwDefFilePath(), "design.hdf");
}

TEST(HHDFHwDefDriver, setsItsPaths)
{
    HHDFHwDefDriver record;
    EXPECT_TRUE(record.setFilePath("/y/b.c"));
    EXPECT_TRUE(record.setHwDefFilePath("other.hdf"));
    EXPECT_EQ(record.getFilePath(), "/y/b.c");
    EXPECT_EQ(record.getHwDefFilePath(), "other.hdf");
}

TEST(HHDFHwDefDriver, isCopiedTextByText)
{
    const HHDFHwDefDriver record("/x/a.c", "a.c", "design.hdf");
    HHDFHwDefDriver assigned;
    assigned = record;
    assigned.setFilePath("/y/b.c");
    EXPECT_EQ(record.getFilePath(), "/x/a.c");
    EXPECT_EQ(assigned.getRelativeName(), "a.c");
    EXPECT_EQ(assigned.getHwDefFilePath(), "design.hdf");
}
