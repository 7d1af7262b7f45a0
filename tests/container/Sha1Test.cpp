#include "hwdef/container/Sha1.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <locale>
#include <stdexcept>

namespace {

std::string digestOf(const std::string& bytes)
{
    Sha1 sha1;
    sha1.add(bytes.data(), bytes.size());
    return sha1.finish();
}

/// Groups digits as a locale does that a program may have set.
class Grouping : public std::numpunct<char> {
protected:
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\\3"; }
};

}  // namespace

// The words of the examples of FIPS 180-4 and RFC 3174, in decimal.

TEST(Sha1, givesTheFiveWordsOfNoBytes)
{
    // da39a3ee 5e6b4b0d 3255bfef 95601890 afd80709
    EXPECT_EQ(digestOf(""),
              "3661210606"
              "1584089869"
              "844480495"
              "2506102928"
              "2950170377");
}

TEST(Sha1, givesTheWordsOfAShortText)
{
    // a9993e36 4706816a ba3e2571 7850c26c 9cd0d89d
    EXPECT_EQ(digestOf("abc"),
              "2845392438"
              "1191608682"
              "3124634993"
              "2018558572"
              "2630932637");
}

TEST(Sha1, givesTheWordsOfATextOfTwoBlocks)
{
    // 84983e44 1c3bd26e baae4aa1 f95129e5 e54670f1
    EXPECT_EQ(digestOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "2224569924"
              "473682542"
              "3131984545"
              "4182845925"
              "3846598897");
}

TEST(Sha1, takesBytesInPiecesOfAnySize)
{
    const std::string bytes(1000000, 'a');
    Sha1 sha1;
    for (std::size_t position = 0, size = 1; position < bytes.size();
         position += size, size = size % 997 + 1) {
        sha1.add(bytes.data() + position, std::min(size, bytes.size() - position));
    }
    // 34aa973c d4c4daa4 f61eeb2b dbad2731 6534016f
    EXPECT_EQ(sha1.finish(),
              "883595068"
              "3569670820"
              "4129221419"
              "3685558065"
              "1697907055");
}

TEST(Sha1, writesWordsWithoutLeadingZeros)
{
    // 40541a1b 65a0bece f52c666a 0000129b 2b1ac337
    EXPECT_EQ(digestOf("378498"),
              "1079253531"
              "1705033422"
              "4113327722"
              "4763"
              "723174199");
}

TEST(Sha1, writesAWordThatIsZeroAsOneZero)
{
    // 31816903 89c88135 c592f87f 00000000 06969823
    EXPECT_EQ(digestOf("511658987"),
              "830564611"
              "2311618869"
              "3314743423"
              "0"
              "110532643");
}

TEST(Sha1, startsAnewAfterFinishAndReset)
{
    Sha1 sha1;
    sha1.add("x", 1);
    sha1.finish();
    sha1.add("y", 1);
    sha1.reset();
    sha1.add("abc", 3);

    EXPECT_EQ(sha1.finish(), digestOf("abc"));
}

TEST(Sha1, doesNotDependOnTheLocale)
{
    const std::string expected = digestOf("abc");
    const std::locale earlier = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    const std::string grouped = digestOf("abc");
    std::locale::global(earlier);

    EXPECT_EQ(grouped, expected);
}

TEST(Sha1, refusesMoreBitsThanItCanCount)
{
    Sha1 sha1;
    sha1.add("abc", 3);
    // What is too much isn't looked at.
    EXPECT_THROW(sha1.add("", (std::uint64_t{1} << 61U) - 3), std::runtime_error);

    EXPECT_EQ(sha1.finish(), digestOf("abc"));
}
