#include "hwdef/model/HHDFHwDefBoard.h"

#include <gtest/gtest.h>

TEST(HHDFHwDefBoard, isEmptyByDefault)
{
    const HHDFHwDefBoard record;
    EXPECT_EQ(record.getFilePath(), "");
    EXPECT_EQ(record.getRelativeName(), "");
    EXPECT_EQ(record.getHwDefFilePath(), "");
}

TEST(HHDFHwDefBoard, keepsItsThreeTextsAsPassed)
{
    const HHDFHwDefBoard record("/x//boards/../a.c", "../a.c", "design.hdf/");
    EXPECT_EQ(record.getFilePath(), "/x//boards/../a.c");
    EXPECT_EQ(record.getRelativeName(), "../a.c");
    EXPECT_EQ(record.getHwDefFilePath(), "design.hdf/");
}

TEST(HHDFHwDefBoard, keepsAnEmptyRelativeNameForGood)
{
    HHDFHwDefBoard record("/x/a.c", "", "");
    record.setFilePath("/y/b.c");
    record.setHwDefFilePath("design.hdf");
    EXPECT_EQ(record.getRelativeName(), "");
}

TEST(HHDFHwDefBoard, refusesEmptyPaths)
{
    HHDFHwDefBoard record("/x/a.c", "a.c", "design.hdf");
    EXPECT_FALSE(record.setFilePath(""));
    EXPECT_FALSE(record.setHwDefFilePath(""));
    EXPECT_EQ(record.getFilePath(), "/x/a.c");
    EXPECT_EQ(record.getHwDefFilePath(), "design.hdf");
}

TEST(HHDFHwDefBoard, setsItsPaths)
{
    HHDFHwDefBoard record;
    EXPECT_TRUE(record.setFilePath("/y/b.c"));
    EXPECT_TRUE(record.setHwDefFilePath("other.hdf"));
    EXPECT_EQ(record.getFilePath(), "/y/b.c");
    EXPECT_EQ(record.getHwDefFilePath(), "other.hdf");
}

TEST(HHDFHwDefBoard, isCopiedTextByText)
{
    const HHDFHwDefBoard record("/x/a.c", "a.c", "design.hdf");
    HHDFHwDefBoard assigned;
    assigned = record;
    assigned.setFilePath("/y/b.c");
    EXPECT_EQ(record.getFilePath(), "/x/a.c");
    EXPECT_EQ(assigned.getRelativeName(), "a.c");
    EXPECT_EQ(assigned.getHwDefFilePath(), "design.hdf");
}
