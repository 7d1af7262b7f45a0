#include "platform/XmlText.h"

#include <gtest/gtest.h>

using platform::boundXmlParts;
using platform::countXmlParts;
using platform::findBadReference;
using platform::findXmlTextDefect;
using platform::isXmlName;

TEST(XmlText, allowsTabNewlineAndCarriageReturnAmongTheControlCharacters)
{
    for (int c = 0; c < 0x20; ++c) {
        const bool allowed = c == 0x09 || c == 0x0A || c == 0x0D;
        EXPECT_EQ(findXmlTextDefect(std::string(1, static_cast<char>(c))).has_value(), !allowed) << c;
    }
    EXPECT_FALSE(findXmlTextDefect("\x7f"));
}

TEST(XmlText, allowsEveryPlaneUpToItsLastCharacter)
{
    EXPECT_FALSE(findXmlTextDefect("\xC2\x80 \xDF\xBF \xE0\xA0\x80 \xED\x9F\xBF \xEE\x80\x80 \xEF\xBF\xBD"));
    EXPECT_FALSE(findXmlTextDefect("\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF"));
    EXPECT_FALSE(findXmlTextDefect(""));
}

TEST(XmlText, refusesTheNoncharactersAtTheEndOfTheFirstPlane)
{
    EXPECT_EQ(findXmlTextDefect("\xEF\xBF\xBE").value().description,
              "XML 1.0 can't carry the character U+FFFE");
    EXPECT_EQ(findXmlTextDefect("\xEF\xBF\xBF").value().description,
              "XML 1.0 can't carry the character U+FFFF");
}

TEST(XmlText, refusesWhatIsNoUtf8AtTheByteWhereItBegins)
{
    const char* const broken[] = {
        "ab\x80",          // continuation without a lead
        "ab\xC3",          // cut off
        "ab\xE2\x82",      // cut off
        "ab\xC3(",         // lead without its continuation
        "ab\xC0\xAF",      // overlong
        "ab\xE0\x80\xAF",  // overlong
        "ab\xF0\x80\x80\xAF",
        "ab\xED\xA0\x80",      // surrogate
        "ab\xF4\x90\x80\x80",  // beyond U+10FFFF
        "ab\xFF",
    };
    for (const char* text : broken) {
        const auto defect = findXmlTextDefect(text);
        ASSERT_TRUE(defect) << text;
        EXPECT_EQ(defect->offset, 2u) << text;
    }
    EXPECT_EQ(findXmlTextDefect("ab\xC3").value().description, "0xC3 begins no valid UTF-8 sequence");
}

TEST(XmlText, namesTheNullCharacterWhereItStands)
{
    const auto defect = findXmlTextDefect(std::string("a\0b", 3));
    ASSERT_TRUE(defect);
    EXPECT_EQ(defect->offset, 1u);
    EXPECT_EQ(defect->description, "XML 1.0 can't carry the character U+0000");
}

TEST(XmlText, tellsNamesFromOtherTexts)
{
    for (const char* name : {"File", "src_db", "_x", "a:b", "x-1.2", "\xC3\xA9"}) {
        EXPECT_TRUE(isXmlName(name)) << name;
    }
    for (const char* text : {"", "1a", "-a", ".a", "a b", "a=", "a>", "a/", "a\n", "\xFF"}) {
        EXPECT_FALSE(isXmlName(text)) << text;
    }
}

TEST(XmlText, findsReferencesToWhatIsNoCharacterOfXml)
{
    for (const char* reference :
         {"&#0;", "&#x0;", "&#x1;", "&#xD800;", "&#xFFFE;", "&#x110000;", "&#xFFFFFFFF1;", "&#31;"}) {
        const auto defect = findBadReference("<a b='" + std::string(reference) + "'/>");
        ASSERT_TRUE(defect.has_value()) << reference;
        EXPECT_EQ(defect->offset, 6u);
    }
}

TEST(XmlText, goesThroughReferencesWithoutEndAtOneSpeed)
{
    std::string document = "<a b='";
    for (int i = 0; i < 8'000'000; ++i) {
        document += "&#";
    }
    EXPECT_FALSE(findBadReference(document + "'/>").has_value());
}

TEST(XmlText, findsNoBadReferenceWhereThereIsNone)
{
    for (const char* document :
         {"<a b='&#9;&#10;&#xD;&#x1F600;&amp;'/>", "<!-- &#0; --><a/>", "<?p &#0; ?><a/>",
          "<a><![CDATA[&#0;]]></a>", "<a b='&#;&#x;&#zz;&# 0;&#1'/>"}) {
        EXPECT_FALSE(findBadReference(document).has_value()) << document;
    }
}

TEST(XmlText, findsADefectWhereverItStandsAmongPlainCharacters)
{
    for (std::size_t place = 0; place < 40; ++place) {
        for (const char* defect : {"\x01", "\x1F", "\x80", "\xFF"}) {
            std::string text(40, ' ');
            text.replace(place, 1, defect);
            const auto found = findXmlTextDefect(text);
            ASSERT_TRUE(found) << place;
            EXPECT_EQ(found->offset, place);
        }
    }
}

TEST(XmlText, letsEveryPlainCharacterPassWhereverItStands)
{
    for (char c = ' '; c < '\x7F'; ++c) {
        for (std::size_t place = 0; place < 17; ++place) {
            std::string text(17, '\x7F');
            text[place] = c;
            EXPECT_FALSE(findXmlTextDefect(text)) << c << place;
        }
    }
}

TEST(XmlText, boundsThePartsOfADocument)
{
    const auto bound = boundXmlParts(R"(<?xml version="1.0"?><!-- --><a b="1" c='2'>text<d/></a>)");
    EXPECT_EQ(bound.elements, 2u);
    EXPECT_EQ(bound.attributes, 4u);
    EXPECT_EQ(bound.texts, 6u);
}

TEST(XmlText, boundsPartsNeverBelowTheirCountAndNotByTheStretch)
{
    for (const std::string part :
         {"<a/>", "<a b=\"\"/>", "<a b = ''>x</a>", "<![CDATA[x]]>y", "<a>x<b/>y</a>"}) {
        std::string document = "<r>";
        while (document.size() < 2000) {
            document += part;
        }
        document += "</r>";
        const auto exact = countXmlParts(document);
        const auto bound = boundXmlParts(document);
        EXPECT_EQ(bound.elements, exact.elements) << part;
        EXPECT_GE(bound.attributes, exact.attributes) << part;
        EXPECT_GE(bound.texts, exact.texts) << part;
    }
    EXPECT_EQ(boundXmlParts("").elements, 0u);
    EXPECT_EQ(boundXmlParts("<").elements, 0u);
}
