#include "hwdef/swparam/RootMembers.h"

#include <gtest/gtest.h>

#include <sstream>
#include <streambuf>
#include <string>

#include "support/SmallStack.h"

namespace {

using TextPairs = std::vector<std::pair<std::string, std::string>>;

constexpr std::size_t plenty = std::size_t{1} << 30;

RootMembers read(const std::string& json, std::size_t maxBytes = plenty)
{
    std::istringstream in(json);
    return readRootMembers(in, maxBytes);
}

/// Gives the text, then fails as a broken source does.
class BrokenBuffer : public std::streambuf {
public:
    explicit BrokenBuffer(std::string text) : text_(std::move(text))
    {
        setg(text_.data(), text_.data(), text_.data() + text_.size());
    }

protected:
    int_type underflow() override { throw std::ios_base::failure("broken"); }

private:
    std::string text_;
};

}  // namespace

TEST(RootMembers, keepsMembersInDocumentOrderWithRepeatedOnes)
{
    const RootMembers root = read(R"({"b": "1", "a": "2", "b": "3"})");
    EXPECT_EQ(root.members, (TextPairs{{"b", "1"}, {"a", "2"}, {"b", "3"}}));
    EXPECT_EQ(root.readError, "");
    EXPECT_EQ(root.parseError, "");
}

TEST(RootMembers, passesOverWhatLiesBelowTheRoot)
{
    const RootMembers root =
        read(R"({"o": {"x": "1", "p": {"y": "2"}}, "l": ["3", {"z": "4"}, []], "a": "5"})");
    EXPECT_EQ(root.members, (TextPairs{{"o", ""}, {"l", ""}, {"a", "5"}}));
}

TEST(RootMembers, keepIntegersOfEveryLength)
{
    const RootMembers root =
        read(R"({"a": 4000000000, "b": -5000000000, "c": 18446744073709551615, "d": -1})");
    EXPECT_EQ(
        root.members,
        (TextPairs{{"a", "4000000000"}, {"b", "-5000000000"}, {"c", "18446744073709551615"}, {"d", "-1"}}));
}

TEST(RootMembers, areNoneInARootThatIsNoObject)
{
    for (const char* json : {"[]", R"(["a", "b"])", R"([{"a": "b"}])", R"("a")", "1", "true", "null"}) {
        const RootMembers root = read(json);
        EXPECT_TRUE(root.members.empty()) << json;
        EXPECT_EQ(root.parseError, "") << json;
    }
}

TEST(RootMembers, areNoneAfterAnError)
{
    const RootMembers root = read(R"({"a": "1", "b": ])");
    EXPECT_TRUE(root.members.empty());
    EXPECT_EQ(root.parseError, "byte offset 16: Invalid value.");
}

TEST(RootMembers, allowDocumentsOfTheLargestSize)
{
    const std::string json = R"({"a": "1"})";
    EXPECT_EQ(read(json, json.size()).members.size(), 1u);
    const RootMembers larger = read(json, json.size() - 1);
    EXPECT_TRUE(larger.members.empty());
    EXPECT_EQ(larger.readError, "larger than the 9 bytes allowed");
}

TEST(RootMembers, refuseWhatIsLargerThanAllowedBehindTheDocument)
{
    const std::size_t large = 300'000;
    EXPECT_EQ(read("{}" + std::string(large - 2, ' '), large).readError, "");
    EXPECT_EQ(read("{}" + std::string(large - 1, ' '), large).readError,
              "larger than the 300000 bytes allowed");
}

TEST(RootMembers, readNoFurtherThanTheLargestSize)
{
    std::istringstream in(std::string(1'000'000, ' '));
    EXPECT_NE(readRootMembers(in, 100'000).readError, "");
    in.clear();
    EXPECT_LT(in.tellg(), 400'000);
}

TEST(RootMembers, reportAStreamThatBreaks)
{
    for (const char* text : {"", R"({"a": "1")", R"({"a": "1"})"}) {
        BrokenBuffer buffer(text);
        std::istream in(&buffer);
        const RootMembers root = readRootMembers(in, plenty);
        EXPECT_TRUE(root.members.empty()) << text;
        EXPECT_EQ(root.readError, "can't be read to its end") << text;
    }
}

TEST(RootMembers, readTextsAcrossTheBuffersOfTheStream)
{
    const std::string value(200'001, 'v');
    EXPECT_EQ(read("{\"a\": \"" + value + "\"}").members, (TextPairs{{"a", value}}));
}

TEST(RootMembers, readAMillionLevelsOnASmallStack)
{
    const std::string deep = std::string(1'000'000, '[') + std::string(1'000'000, ']');
    support::onSmallStack([&] {
        EXPECT_EQ(read("{\"a\": " + deep + "}").members, (TextPairs{{"a", ""}}));
        EXPECT_EQ(read(std::string(1'000'000, '[')).parseError, "byte offset 1000000: Invalid value.");
    });
}
