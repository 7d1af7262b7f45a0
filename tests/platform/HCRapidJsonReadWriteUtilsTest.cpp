#include "platform/HCRapidJsonReadWriteUtils.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <rapidjson/error/error.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string>

#include "support/Messages.h"

namespace {

using Utils = HCRapidJsonReadWriteUtils;

std::string propertyOf(const std::string& json, const std::string& name)
{
    rapidjson::Document document;
    document.Parse(json.data(), json.size());
    EXPECT_FALSE(document.HasParseError()) << json;
    return Utils::GetStringProperty(document, name);
}

std::string textOf(const rapidjson::Document& document)
{
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    document.Accept(writer);
    return {text.GetString(), text.GetSize()};
}

}  // namespace

TEST(HCRapidJsonReadWriteUtils, givesAStringAsItIs)
{
    EXPECT_EQ(propertyOf(R"({"a":"x","b":"tab\t\u00e9\"q\""})", "b"), "tab\t\xC3\xA9\"q\"");
    EXPECT_EQ(propertyOf(R"({"a":""})", "a"), "");
}

TEST(HCRapidJsonReadWriteUtils, keepsNullCharactersOfNamesAndValues)
{
    EXPECT_EQ(propertyOf(R"({"n":"short","n\u0000m":"x\u0000y"})", std::string("n\0m", 3)),
              std::string("x\0y", 3));
}

TEST(HCRapidJsonReadWriteUtils, givesNumbersAndBooleansAsTheirJsonText)
{
    EXPECT_EQ(propertyOf(R"({"a":42})", "a"), "42");
    EXPECT_EQ(propertyOf(R"({"a":-7})", "a"), "-7");
    EXPECT_EQ(propertyOf(R"({"a":18446744073709551615})", "a"), "18446744073709551615");
    EXPECT_EQ(propertyOf(R"({"a":1.5})", "a"), "1.5");
    EXPECT_EQ(propertyOf(R"({"a":true})", "a"), "true");
    EXPECT_EQ(propertyOf(R"({"a":false})", "a"), "false");
}

TEST(HCRapidJsonReadWriteUtils, givesTheEmptyTextForEverythingElse)
{
    EXPECT_EQ(propertyOf(R"({"a":null})", "a"), "");
    EXPECT_EQ(propertyOf(R"({"a":["x"]})", "a"), "");
    EXPECT_EQ(propertyOf(R"({"a":{"a":"x"}})", "a"), "");
    EXPECT_EQ(propertyOf(R"({"a":"x"})", "b"), "");
    EXPECT_EQ(propertyOf(R"({})", ""), "");
}

TEST(HCRapidJsonReadWriteUtils, givesTheEmptyTextForARootThatIsNoObject)
{
    EXPECT_EQ(propertyOf(R"(["a"])", "a"), "");
    EXPECT_EQ(propertyOf(R"("a")", "a"), "");
    EXPECT_EQ(Utils::GetStringProperty(rapidjson::Document(), "a"), "");
}

TEST(HCRapidJsonReadWriteUtils, takesTheFirstOfRepeatedMembers)
{
    EXPECT_EQ(propertyOf(R"({"a":"first","a":"second"})", "a"), "first");
}

TEST(HCRapidJsonReadWriteUtils, tellsWhyAndWhereADocumentDidNotParse)
{
    rapidjson::Document document;
    document.Parse(R"({"a" "b"})");
    EXPECT_EQ(Utils::GetErrorMsgFromDocument(document),
              "byte offset 5: Missing a colon after a name of object member.");
    document.Parse("");
    EXPECT_EQ(Utils::GetErrorMsgFromDocument(document), "byte offset 0: The document is empty.");
}

TEST(HCRapidJsonReadWriteUtils, tellsNothingOfADocumentThatParsed)
{
    rapidjson::Document document;
    document.Parse("{}");
    EXPECT_EQ(Utils::GetErrorMsgFromDocument(document), "");
    EXPECT_EQ(Utils::GetErrorMsg(rapidjson::ParseResult()), "");
}

TEST(HCRapidJsonReadWriteUtils, reportsAFileWithOneMessage)
{
    const support::Messages messages;
    Utils::errorParsingJsonFile("/tmp/a.json", "byte offset 0: The document is empty.");
    EXPECT_EQ(messages.joined(),
              "text: /tmp/a.json: not a JSON document: byte offset 0: The document is empty.\n");
}

TEST(HCRapidJsonReadWriteUtils, addsStringMembersInOrder)
{
    rapidjson::Document document(rapidjson::kObjectType);
    Utils::AddStringProperty(document, "b", "1", document.GetAllocator());
    Utils::AddStringProperty(document, "a", "2\n\"", document.GetAllocator());
    Utils::AddStringProperty(document, "b", "3", document.GetAllocator());
    EXPECT_EQ(textOf(document), R"({"b":"1","a":"2\n\"","b":"3"})");
}

TEST(HCRapidJsonReadWriteUtils, copiesTheTextsOfAnAddedMember)
{
    rapidjson::Document document(rapidjson::kObjectType);
    {
        std::string name("n\0m", 3);
        std::string value(100, 'v');
        Utils::AddStringProperty(document, name, value, document.GetAllocator());
        name.assign("gone");
        value.assign(100, 'x');
    }
    EXPECT_EQ(Utils::GetStringProperty(document, std::string("n\0m", 3)), std::string(100, 'v'));
}

TEST(HCRapidJsonReadWriteUtils, addsNullCharactersOfValues)
{
    rapidjson::Document document(rapidjson::kObjectType);
    Utils::AddStringProperty(document, "a", std::string("x\0y", 3), document.GetAllocator());
    EXPECT_EQ(textOf(document), R"({"a":"x\u0000y"})");
}
