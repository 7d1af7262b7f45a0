#include "platform/JsonWriter.h"

#include <gtest/gtest.h>

using platform::JsonWriter;

TEST(JsonWriter, writesNestedValuesInOrder)
{
    JsonWriter json;
    json.beginObject();
    json.add("text", "a\"b");
    json.add("number", std::uint64_t{18446744073709551615u});
    json.beginArray("list");
    json.beginObject();
    json.add("is", true);
    json.end();
    json.end();
    json.beginObject("object");
    json.end();
    json.end();

    EXPECT_EQ(
        json.text(),
        "{\n    \"text\": \"a\\\"b\",\n    \"number\": 18446744073709551615,\n"
        "    \"list\": [\n        {\n            \"is\": true\n        }\n    ],\n    \"object\": {}\n}");
}

TEST(JsonWriter, replacesEachByteThatIsNoUtf8)
{
    JsonWriter json;
    json.beginObject();
    json.add("\xff", "\xc3\xa4 \xc3( \xe2\x82");
    json.end();

    EXPECT_EQ(json.text(), "{\n    \"\xef\xbf\xbd\": \"\xc3\xa4 \xef\xbf\xbd( \xef\xbf\xbd\xef\xbf\xbd\"\n}");
}

TEST(JsonWriter, escapesControlCharactersAndKeepsNulls)
{
    JsonWriter json;
    json.beginObject();
    json.add("k", std::string("a\0b\n\x1b", 5));
    json.end();

    EXPECT_EQ(json.text(), "{\n    \"k\": \"a\\u0000b\\n\\u001B\"\n}");
}

TEST(JsonWriter, writesEveryKindOfValue)
{
    JsonWriter json;
    json.beginObject();
    json.add("below", std::int64_t{-7});
    json.add("share", 12.345);
    json.add("all", 100.0);
    json.addNull("none");
    json.addRaw("raw", "{ }");
    json.beginArray("texts");
    json.addElement("a\xff");
    json.end();
    json.end();

    EXPECT_EQ(json.text(),
              "{\n    \"below\": -7,\n    \"share\": 12.34,\n    \"all\": 100.0,\n    \"none\": null,\n"
              "    \"raw\": { },\n    \"texts\": [\n        \"a\xef\xbf\xbd\"\n    ]\n}");
}
