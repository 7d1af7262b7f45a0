#include "platform/HSTStringUtils.h"

#include <gtest/gtest.h>

#include <string>

TEST(HSTStringUtils, takesAsciiLettersWithoutCase)
{
    EXPECT_TRUE(HSTStringUtils::iequals("azAZ09_", "AZaz09_"));
    EXPECT_TRUE(HSTStringUtils::iequals("", ""));
}

TEST(HSTStringUtils, tellsTextsOfDifferentLengthApart)
{
    EXPECT_FALSE(HSTStringUtils::iequals("true", "truex"));
    EXPECT_FALSE(HSTStringUtils::iequals("true", "tru"));
    EXPECT_FALSE(HSTStringUtils::iequals("", "a"));
}

TEST(HSTStringUtils, tellsNeighboursOfTheLettersApart)
{
    EXPECT_FALSE(HSTStringUtils::iequals("@", "`"));
    EXPECT_FALSE(HSTStringUtils::iequals("[", "{"));
}

TEST(HSTStringUtils, takesOtherBytesAsTheyAre)
{
    EXPECT_FALSE(HSTStringUtils::iequals("\xc3\x84", "\xc3\xa4"));
    EXPECT_TRUE(HSTStringUtils::iequals("\xc3\x84", "\xc3\x84"));
    EXPECT_FALSE(HSTStringUtils::iequals(std::string("a\0b", 3), std::string("a\0c", 3)));
}
