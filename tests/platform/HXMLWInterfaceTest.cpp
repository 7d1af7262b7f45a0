#include "platform/HXMLWInterface.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "support/SmallStack.h"

namespace {

/// The elements of a subtree as "name(child child)".
std::string outline(const HXMLWElement* element)
{
    std::string children;
    const auto list = element->getChildren();
    for (const HXMLWElement* child : *list) {
        children += (children.empty() ? "" : " ") + outline(child);
    }
    return children.empty() ? element->getTagName()
                            : std::string(element->getTagName()) + "(" + children + ")";
}

std::string outlineOf(const std::string& text)
{
    HXMLWInterface document;
    return document.readFromBuffer(text) ? outline(document.getRootElement()) : "";
}

/// "line:column text" of what a text's parser stumbles over; empty when it doesn't.
std::string errorOf(const std::string& text)
{
    HXMLWInterface document;
    if (document.readFromBuffer(text)) {
        return "";
    }
    EXPECT_EQ(document.getRootElement(), nullptr);
    const HXMLWInterface::Error& error = document.error();
    return std::to_string(error.line) + ":" + std::to_string(error.column) + " " + error.text;
}

/// Attribute "v" of the root of a text; "(null)" when there is none.
std::string valueOf(const std::string& text)
{
    HXMLWInterface document;
    EXPECT_TRUE(document.readFromBuffer(text)) << text;
    const char* const value = document.getRootElement()->getAttribute("v");
    return value ? value : "(null)";
}

void* noMemory(std::size_t)
{
    return nullptr;
}

}  // namespace

TEST(HXMLWInterface, hasNoRootBeforeAnythingWasRead)
{
    const HXMLWInterface document;
    EXPECT_EQ(document.getRootElement(), nullptr);
    EXPECT_EQ(document.error().line, 0u);
    EXPECT_EQ(document.error().text, "");
}

TEST(HXMLWInterface, givesElementsInDocumentOrder)
{
    EXPECT_EQ(outlineOf("<r><a><b/><c><d/></c></a><e></e><f><g/></f></r>"), "r(a(b c(d)) e f(g))");
    EXPECT_EQ(outlineOf("<r/>"), "r");
}

TEST(HXMLWInterface, passesOverWhatIsNoElement)
{
    EXPECT_EQ(outlineOf("<?xml version='1.0'?>\n<!-- x --><?pi?>\n<r> text <!-- <no/> --><a/><?pi x?>"
                        "<![CDATA[<no/>]]><b>more</b> </r>\n<!-- y -->\n"),
              "r(a b)");
}

TEST(HXMLWInterface, givesAnEmptyListForAnElementWithoutChildren)
{
    HXMLWInterface document;
    ASSERT_TRUE(document.readFromBuffer("<r>text</r>"));
    const auto children = document.getRootElement()->getChildren();
    ASSERT_NE(children, nullptr);
    EXPECT_TRUE(children->empty());
}

TEST(HXMLWInterface, findsAttributesByTheirExactName)
{
    HXMLWInterface document;
    ASSERT_TRUE(document.readFromBuffer("<r a='1' Name='two' b=''><c Name='three'/><d/></r>"));
    const HXMLWElement* const root = document.getRootElement();
    EXPECT_STREQ(root->getAttribute("a"), "1");
    EXPECT_STREQ(root->getAttribute("Name"), "two");
    EXPECT_STREQ(root->getAttribute("b"), "");
    EXPECT_EQ(root->getAttribute("name"), nullptr);
    EXPECT_EQ(root->getAttribute("Nam"), nullptr);
    const auto children = root->getChildren();
    EXPECT_STREQ(children->at(0)->getAttribute("Name"), "three");
    EXPECT_EQ(children->at(0)->getAttribute("a"), nullptr);
    EXPECT_EQ(children->at(1)->getAttribute("Name"), nullptr);
}

TEST(HXMLWInterface, takesTheFirstOfRepeatedAttributes)
{
    EXPECT_EQ(valueOf("<r v='first' v='second'/>"), "first");
}

TEST(HXMLWInterface, resolvesCharacterReferencesAndThePredefinedEntities)
{
    EXPECT_EQ(valueOf("<r v='&lt;&gt;&amp;&quot;&apos;&#10;&#9;&#xD;&#233;&#x20AC;'/>"),
              "<>&\"'\n\t\r\xC3\xA9\xE2\x82\xAC");
}

TEST(HXMLWInterface, readsWhiteSpaceInValuesAsBlanks)
{
    EXPECT_EQ(valueOf("<r v='a\nb\tc\r\nd'/>"), "a b c d");
}

TEST(HXMLWInterface, keepsElementsOfADocumentAlive)
{
    HXMLWInterface document;
    ASSERT_TRUE(document.readFromBuffer("<r><a v='1'/><b v='2'/></r>"));
    const HXMLWElement* const second = document.getRootElement()->getChildren()->at(1);
    EXPECT_STREQ(second->getAttribute("v"), "2");
    EXPECT_EQ(document.getRootElement()->getChildren()->at(1), second);
}

TEST(HXMLWInterface, replacesTheEarlierDocument)
{
    HXMLWInterface document;
    ASSERT_TRUE(document.readFromBuffer("<first/>"));
    ASSERT_TRUE(document.readFromBuffer("<second/>"));
    EXPECT_STREQ(document.getRootElement()->getTagName(), "second");
    EXPECT_FALSE(document.readFromBuffer("<third>"));
    EXPECT_EQ(document.getRootElement(), nullptr);
    ASSERT_TRUE(document.readFromBuffer("<fourth/>"));
    EXPECT_EQ(document.error().text, "");
    EXPECT_EQ(document.error().line, 0u);
}

TEST(HXMLWInterface, readsTextsOfAnyLengthInPlace)
{
    // Short texts live inside the string object, long ones behind it.
    EXPECT_EQ(valueOf("<r v='x'/>"), "x");
    const std::string huge(3'000'000, 'x');
    EXPECT_EQ(valueOf("<r v='" + huge + "'/>"), huge);
}

TEST(HXMLWInterface, passesOverAByteOrderMark)
{
    EXPECT_EQ(outlineOf("\xEF\xBB\xBF<r/>"), "r");
}

TEST(HXMLWInterface, expandsNoEntitiesOfADocumentType)
{
    EXPECT_EQ(valueOf("<!DOCTYPE r [<!ENTITY a 'x'><!ENTITY f SYSTEM 'file:///etc/passwd'>]>"
                      "<r v='&a;&f;'>&f;</r>"),
              "&a;&f;");
}

TEST(HXMLWInterface, tellsLineAndColumnOfAnError)
{
    EXPECT_EQ(errorOf("<r>\n  <a>\n    <b x=1/>\n  </a>\n</r>\n"),
              "3:10 attribute of the form name=\"value\" expected");
    EXPECT_EQ(errorOf("<r\n  a='1'\n  b='2'\n>\n</q>"), "5:3 end tag of the innermost open element expected");
    EXPECT_EQ(errorOf("<r a='\xC3\xA9' b/>"), "1:13 attribute of the form name=\"value\" expected");
}

TEST(HXMLWInterface, saysWhatWasExpected)
{
    EXPECT_EQ(errorOf("<r>\n"), "1:4 end tag of the innermost open element expected");
    EXPECT_EQ(errorOf("<r><1/></r>"),
              "1:5 a name, \"/\", \"!--\", \"![CDATA[\", \"!DOCTYPE\" or \"?\" expected after \"<\"");
    EXPECT_EQ(errorOf("<r><a / ></r>").substr(4), "\">\" or \"/>\" expected at the end of a start tag");
    EXPECT_EQ(errorOf("<r></r").substr(4), "\">\" expected at the end of an end tag");
    EXPECT_EQ(errorOf("<r><!-- </r>").substr(5), "comment without \"-->\" at its end");
    EXPECT_EQ(errorOf("<r><![CDATA[ </r>").substr(5), "CDATA section without \"]]>\" at its end");
    EXPECT_EQ(errorOf("<r><?pi </r>").substr(5), "processing instruction without \"?>\" at its end");
    EXPECT_EQ(errorOf("<r><!DOCTYPE r></r>").substr(4),
              "document type declaration without its end, or inside an element");
}

TEST(HXMLWInterface, asksForARootElement)
{
    EXPECT_EQ(errorOf(""), "1:1 root element expected");
    EXPECT_EQ(errorOf(" \n "), "2:2 root element expected");
    EXPECT_EQ(errorOf("<!-- x -->"), "1:11 root element expected");
}

TEST(HXMLWInterface, refusesASecondRootElement)
{
    EXPECT_EQ(errorOf("<r/>\n <s/>"), "2:2 second root element");
    EXPECT_EQ(errorOf("<r/><!-- x --><s/>"), "1:15 second root element");
}

TEST(HXMLWInterface, refusesTextBesideTheRootElement)
{
    EXPECT_EQ(errorOf("<r/>x"), "1:5 text outside the root element");
    EXPECT_EQ(errorOf("<r/>\nPK garbage"), "2:1 text outside the root element");
    EXPECT_EQ(errorOf("x<r/>"), "1:1 text outside the root element");
    EXPECT_NE(errorOf("<r/><![CDATA[x]]>"), "");
}

TEST(HXMLWInterface, refusesCharactersThatXmlDoesNotHave)
{
    EXPECT_EQ(errorOf(std::string("<r/>\n\0<s/>", 10)), "2:1 XML 1.0 can't carry the character U+0000");
    EXPECT_EQ(errorOf("<r v='\x01'/>"), "1:7 XML 1.0 can't carry the character U+0001");
    EXPECT_EQ(errorOf("<r\nv='a\xFF'/>"), "2:5 0xFF begins no valid UTF-8 sequence");
}

TEST(HXMLWInterface, endsEveryTruncatedDocumentWithAnError)
{
    const std::string whole =
        "<?xml version='1.0'?><!DOCTYPE r [<!ENTITY a 'x'>]>\n<r a='1'>\n<!-- c "
        "--><b>t&amp;</b><![CDATA[d]]></r>";
    ASSERT_EQ(errorOf(whole), "");
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_NE(errorOf(whole.substr(0, size)), "") << size;
    }
}

TEST(HXMLWInterface, reportsThatMemoryRanOut)
{
    pugi::set_memory_management_functions(noMemory, std::free);
    std::string text = "<r>";
    for (int i = 0; i < 10'000; ++i) {
        text += "<a/>";
    }
    const std::string error = errorOf(text + "</r>");
    pugi::set_memory_management_functions(std::malloc, std::free);
    EXPECT_EQ(error.substr(error.find(' ') + 1), "not enough memory for the document");
}

TEST(HXMLWInterface, readsDeepNestingOnASmallStack)
{
    constexpr int depth = 1'000'000;
    std::string text;
    for (int i = 0; i < depth; ++i) {
        text += "<a>";
    }
    for (int i = 0; i < depth; ++i) {
        text += "</a>";
    }
    int levels = 0;
    support::onSmallStack([&] {
        HXMLWInterface document;
        ASSERT_TRUE(document.readFromBuffer(std::move(text)));
        const HXMLWElement* element = document.getRootElement();
        for (levels = 1; !element->getChildren()->empty(); ++levels) {
            element = element->getChildren()->front();
        }
    });
    EXPECT_EQ(levels, depth);
}

TEST(HXMLWInterface, refusesDeepUnfinishedNestingOnASmallStack)
{
    std::string elements;
    std::string types = "<!DOCTYPE a [";
    for (int i = 0; i < 1'000'000; ++i) {
        elements += "<a>";
        types += "<!a ";
    }
    support::onSmallStack([&] {
        EXPECT_EQ(errorOf(elements), "1:3000000 end tag of the innermost open element expected");
        EXPECT_NE(errorOf(types), "");
    });
}

TEST(HXMLWInterface, tellsWhereAnElementStandsInTheText)
{
    const std::string text = "<a x='1&amp;2'>\n  <b\ny='3'/>\n</a>";
    HXMLWInterface document;
    ASSERT_TRUE(document.readFromBuffer(text));
    const HXMLWElement& root = *document.getRootElement();

    EXPECT_EQ(document.offsetOf(root), text.find("a x"));
    EXPECT_EQ(document.offsetOf(*root.getChildren()->front()), text.find("b\ny"));
}
