#include "hwdef/container/MemberEntry.h"

#include <gtest/gtest.h>

#include "hwdef/model/HHDFHwDefDriver.h"

namespace {

bool haveSameSource(const HHDFHwDefDriver& left, const HHDFHwDefDriver& right)
{
    return MemberEntry(left).hasSameSource(MemberEntry(right));
}

}  // namespace

TEST(MemberEntry, hasTheSourceOfAnotherOfTheSameMember)
{
    const HHDFHwDefDriver first("/d/a.c", "a.c", "/one.hdf");

    EXPECT_TRUE(haveSameSource(first, HHDFHwDefDriver("/elsewhere/a.c", "a.c", "/one.hdf")));
    EXPECT_FALSE(haveSameSource(first, HHDFHwDefDriver("/d/a.c", "b.c", "/one.hdf")));
    EXPECT_FALSE(haveSameSource(first, HHDFHwDefDriver("/d/a.c", "a.c", "/two.hdf")));
}

TEST(MemberEntry, hasTheSourceOfAnotherOfTheSameFileOnDisk)
{
    const HHDFHwDefDriver first("/d/a.c", "a.c", "");

    EXPECT_TRUE(haveSameSource(first, HHDFHwDefDriver("/d/a.c", "b.c", "")));
    EXPECT_FALSE(haveSameSource(first, HHDFHwDefDriver("/e/a.c", "a.c", "")));
    EXPECT_FALSE(haveSameSource(first, HHDFHwDefDriver("/d/a.c", "a.c", "/one.hdf")));
}
