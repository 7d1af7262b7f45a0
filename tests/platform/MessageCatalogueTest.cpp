#include "platform/MessageCatalogue.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

using platform::CatalogueMessage;
using platform::fillIn;
using platform::findMessage;
using platform::messageCatalogue;

TEST(MessageCatalogue, knowsEveryIdentifierOnce)
{
    std::multiset<std::string_view> ids;
    for (const CatalogueMessage& message : messageCatalogue()) {
        ids.insert(message.id);
    }
    const std::multiset<std::string_view> expected = {"@36-530@%s%s", "@64-4@%s",  "@64-5@%s",  "@64-6@",
                                                      "@64-10@",      "@64-11@%s", "@64-12@%s", "@64-13@",
                                                      "@64-14@%s",    "@64-15@%s", "@64-23@%s", "@64-24@%s",
                                                      "@64-25@",      "@64-26@",   "@64-27@%s", "@64-28@%s"};
    EXPECT_EQ(ids, expected);
}

TEST(MessageCatalogue, finds)
{
    ASSERT_NE(findMessage("@64-6@"), nullptr);
    EXPECT_EQ(findMessage("@64-6@")->id, "@64-6@");
    EXPECT_EQ(findMessage("@64-6@%s"), nullptr);
    EXPECT_EQ(findMessage(""), nullptr);
}

TEST(MessageCatalogue, usesEveryArgumentOfAnIdentifier)
{
    for (const CatalogueMessage& message : messageCatalogue()) {
        const bool first = message.id.find("%s") != std::string_view::npos;
        const bool second = message.id.find("%s%s") != std::string_view::npos;
        const std::string text = fillIn(message, {"<one>", "<two>"});
        EXPECT_EQ(text.find("<one>") != std::string::npos, first) << message.id;
        EXPECT_EQ(text.find("<two>") != std::string::npos, second) << message.id;
    }
}

TEST(MessageCatalogue, saysWhatWasExpectedInEveryText)
{
    for (const CatalogueMessage& message : messageCatalogue()) {
        EXPECT_NE(message.text.find("expected"), std::string_view::npos) << message.id;
        EXPECT_FALSE(message.sentWhen.empty()) << message.id;
        EXPECT_FALSE(message.remedy.empty()) << message.id;
    }
}

TEST(MessageCatalogue, staysReadableWithoutArguments)
{
    for (const CatalogueMessage& message : messageCatalogue()) {
        const std::string text = fillIn(message, {});
        EXPECT_EQ(text.find_first_of("[]%"), std::string::npos) << text;
        for (const char* gap : {"  ", "\"\"", "()", " ;", " ,"}) {
            EXPECT_EQ(text.find(gap), std::string::npos) << text;
        }
        EXPECT_NE(text.front(), ':') << text;
        EXPECT_NE(text.back(), ' ') << text;
    }
}

TEST(MessageCatalogue, leavesOutThePartOfAMissingOrEmptyArgument)
{
    const CatalogueMessage message = {"@1-1@%s%s", "[%2: ]the member[ \"%1\"] is lost", "", ""};
    EXPECT_EQ(fillIn(message, {"a", "b"}), "b: the member \"a\" is lost");
    EXPECT_EQ(fillIn(message, {"a"}), "the member \"a\" is lost");
    EXPECT_EQ(fillIn(message, {"", "b"}), "b: the member is lost");
    EXPECT_EQ(fillIn(message, {}), "the member is lost");
}

TEST(MessageCatalogue, takesArgumentsAsTheyAre)
{
    const CatalogueMessage message = {"@1-1@%s", "[%1: ]lost", "", ""};
    EXPECT_EQ(fillIn(message, {"[%1]%s\x1b"}), "[%1]%s\x1b: lost");
}
