#include "platform/HXMLWriterBase.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <memory>
#include <pugixml.hpp>
#include <string>

#include "platform/HEXAll.h"
#include "platform/HXMLWInterface.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"

namespace {

using XmlDoc = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

const xmlChar* asXml(const char* text)
{
    return reinterpret_cast<const xmlChar*>(text);
}

/// The document as another reader sees it; fails the test when that one finds it ill-formed.
XmlDoc readByLibxml(const std::string& path)
{
    XmlDoc document(xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR), &xmlFreeDoc);
    EXPECT_NE(document, nullptr) << support::readFile(path);
    return document;
}

std::string attributeByLibxml(const xmlDoc& document, const char* name)
{
    const std::unique_ptr<xmlChar, decltype(xmlFree)> value(
        xmlGetProp(xmlDocGetRootElement(const_cast<xmlDoc*>(&document)), asXml(name)), xmlFree);
    return value ? reinterpret_cast<const char*>(value.get()) : "(null)";
}

/// What the exception of `work` says; empty when it throws none.
std::string failureOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const HEXAll& error) {
        return error.what();
    }
    return "";
}

void writeRoot(const std::string& path, const std::string& attribute, const std::string& value)
{
    HXMLWriterBase writer(path);
    writer.addAttr(attribute, value);
    writer.wrEmptyTag("Root");
    writer.closeDoc();
}

void* noMemory(std::size_t)
{
    return nullptr;
}

}  // namespace

TEST(HXMLWriterBase, writesOneElementALine)
{
    const support::TempDir dir;
    HXMLWriterBase writer(dir / "a.xml");
    writer.addAttr("Version", "1");
    writer.addAttr("Minor", "");
    writer.wrStartTag("Project");
    writer.wrEmptyTag("MODE");
    writer.addAttr("Name", "top.bit");
    writer.wrStartTag("File");
    writer.addAttr("ATTRNAME", "k");
    writer.wrEmptyTag("FILEATTR");
    writer.wrEndTag("File");
    writer.wrEndTag("Project");
    writer.closeDoc();
    EXPECT_EQ(support::readFile(dir / "a.xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<Project Version=\"1\" Minor=\"\">\n"
              "  <MODE />\n"
              "  <File Name=\"top.bit\">\n"
              "    <FILEATTR ATTRNAME=\"k\" />\n"
              "  </File>\n"
              "</Project>\n");
}

TEST(HXMLWriterBase, tellsAnElementWithoutChildrenFromAnEmptyTag)
{
    const support::TempDir dir;
    HXMLWriterBase writer(dir / "a.xml");
    writer.wrStartTag("Root");
    writer.wrStartTag("File");
    writer.wrEndTag("File");
    writer.wrEmptyTag("File");
    writer.wrEndTag("Root");
    writer.closeDoc();
    EXPECT_EQ(support::readFile(dir / "a.xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Root>\n  <File></File>\n  <File />\n</Root>\n");
}

TEST(HXMLWriterBase, writesValuesThatComeBackByteForByte)
{
    const std::string value =
        "  <a href='x'>&amp; \"q\" &#10;\n\n\t\r\r\n]]> -- \x7f \xC2\x85\xC3\xA9\xE2\x80\xA8"
        "\xE2\x82\xAC\xEF\xBF\xBD\xF0\x9F\x98\x80 ";
    const support::TempDir dir;
    writeRoot(dir / "a.xml", "v", value);

    HXMLWInterface document;
    ASSERT_TRUE(document.readFromBuffer(support::readFile(dir / "a.xml")));
    EXPECT_EQ(document.getRootElement()->getAttribute("v"), value);
    const XmlDoc other = readByLibxml(dir / "a.xml");
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(attributeByLibxml(*other, "v"), value);
}

TEST(HXMLWriterBase, writesEveryAsciiCharacterThatXmlHas)
{
    std::string value = "\t\n\r";
    for (int c = 0x20; c < 0x80; ++c) {
        value += static_cast<char>(c);
    }
    const support::TempDir dir;
    writeRoot(dir / "a.xml", "v", value);
    const XmlDoc other = readByLibxml(dir / "a.xml");
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(attributeByLibxml(*other, "v"), value);
}

TEST(HXMLWriterBase, refusesControlCharactersByElementAttributeAndPosition)
{
    const support::TempDir dir;
    const std::string path = dir / "a.xml";
    EXPECT_EQ(
        failureOf([&] { writeRoot(path, "Name", std::string("ab\0c", 4)); }),
        path + ": element \"Root\", attribute \"Name\", byte 3: XML 1.0 can't carry the character U+0000");
    EXPECT_EQ(
        failureOf([&] { writeRoot(path, "Name", "\x1b[2J"); }),
        path + ": element \"Root\", attribute \"Name\", byte 1: XML 1.0 can't carry the character U+001B");
}

TEST(HXMLWriterBase, refusesInvalidUtf8ByElementAttributeAndPosition)
{
    const support::TempDir dir;
    const std::string path = dir / "a.xml";
    EXPECT_EQ(failureOf([&] { writeRoot(path, "Name", "caf\xE9"); }),
              path + ": element \"Root\", attribute \"Name\", byte 4: 0xE9 begins no valid UTF-8 sequence");
}

TEST(HXMLWriterBase, refusesWhatIsNoName)
{
    const support::TempDir dir;
    const std::string path = dir / "a.xml";
    EXPECT_EQ(failureOf([&] { writeRoot(path, "", "x"); }),
              path + ": element \"Root\": \"\" is no XML name for an attribute");
    EXPECT_EQ(failureOf([&] { HXMLWriterBase(path).wrEmptyTag(""); }),
              path + ": \"\" is no XML name for an element");
    EXPECT_EQ(failureOf([&] { HXMLWriterBase(path).wrStartTag("a b"); }),
              path + ": \"a b\" is no XML name for an element");
}

TEST(HXMLWriterBase, refusesAnEndTagThatDoesNotNest)
{
    const support::TempDir dir;
    const std::string path = dir / "a.xml";
    HXMLWriterBase writer(path);
    EXPECT_EQ(failureOf([&] { writer.wrEndTag("A"); }), path + ": end tag \"A\" found, no element is open");
    writer.wrStartTag("A");
    writer.wrStartTag("B");
    EXPECT_EQ(failureOf([&] { writer.wrEndTag("A"); }),
              path + ": end tag \"A\" found, the innermost open element is \"B\"");
}

TEST(HXMLWriterBase, refusesToCloseAnUnfinishedDocument)
{
    const support::TempDir dir;
    const std::string path = dir / "a.xml";
    HXMLWriterBase writer(path);
    EXPECT_EQ(failureOf([&] { writer.closeDoc(); }), path + ": the document ends before its root element");
    writer.wrStartTag("A");
    EXPECT_EQ(failureOf([&] { writer.closeDoc(); }), path + ": the document ends before the element \"A\"");
    writer.addAttr("n", "v");
    writer.wrEndTag("A");
    EXPECT_EQ(failureOf([&] { writer.closeDoc(); }),
              path + ": the document ends before the tag of the attribute \"n\"");
    EXPECT_FALSE(support::exists(path));
}

TEST(HXMLWriterBase, refusesElementsBehindTheRoot)
{
    const support::TempDir dir;
    const std::string path = dir / "a.xml";
    HXMLWriterBase writer(path);
    writer.wrEmptyTag("A");
    const std::string behind = path + ": element \"B\" stands behind the end of the root element";
    EXPECT_EQ(failureOf([&] { writer.wrStartTag("B"); }), behind);
    writer.closeDoc();
    EXPECT_EQ(failureOf([&] { writer.wrEmptyTag("B"); }), behind);
    EXPECT_EQ(failureOf([&] { writer.closeDoc(); }), path + ": the document is closed already");
}

TEST(HXMLWriterBase, refusesAPathThatCannotBeWritten)
{
    const support::TempDir dir;
    EXPECT_NE(failureOf([&] { HXMLWriterBase(dir / "missing/a.xml"); }), "");
    EXPECT_NE(failureOf([&] { HXMLWriterBase(dir.path()); }), "");
    EXPECT_NE(failureOf([&] { HXMLWriterBase(""); }), "");
    EXPECT_EQ(dir.list(), "");
}

TEST(HXMLWriterBase, replacesTheOldFileOnlyByAWholeDocument)
{
    const support::TempDir dir;
    support::writeFile(dir / "a.xml",
                       "old and longer than the document that takes its place, by quite a few bytes");
    const std::string old = support::readFile(dir / "a.xml");
    EXPECT_NE(failureOf([&] { writeRoot(dir / "a.xml", "v", "\x01"); }), "");
    {
        HXMLWriterBase(dir / "a.xml").wrStartTag("Unfinished");
    }
    EXPECT_EQ(support::readFile(dir / "a.xml"), old);
    EXPECT_EQ(dir.list(), "a.xml");

    writeRoot(dir / "a.xml", "v", "x");
    EXPECT_EQ(support::readFile(dir / "a.xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Root v=\"x\" />\n");
    EXPECT_EQ(dir.list(), "a.xml");
}

TEST(HXMLWriterBase, reportsAFullDisk)
{
    const support::TempDir dir;
    support::writeFile(dir / "a.xml", "old");
    std::string failure;
    {
        support::FailingSystemCalls disk;
        disk.failAll(support::FailingSystemCalls::WRITE, ENOSPC);
        failure = failureOf([&] { writeRoot(dir / "a.xml", "v", "x"); });
        EXPECT_EQ(disk.openDescriptors(), 0);
    }
    EXPECT_NE(failure.find("No space left on device"), std::string::npos) << failure;
    EXPECT_EQ(support::readFile(dir / "a.xml"), "old");
    EXPECT_EQ(dir.list(), "a.xml");
}

TEST(HXMLWriterBase, reportsThatMemoryRanOut)
{
    const support::TempDir dir;
    HXMLWriterBase writer(dir / "a.xml");
    pugi::set_memory_management_functions(noMemory, std::free);
    const std::string failure = failureOf([&] {
        writer.wrStartTag("Root");
        for (int i = 0; i < 10'000; ++i) {
            writer.addAttr("v", "x");
            writer.wrEmptyTag("File");
        }
    });
    pugi::set_memory_management_functions(std::malloc, std::free);
    EXPECT_EQ(failure, (dir / "a.xml") + ": not enough memory for the document");
}

TEST(HXMLWriterBase, writesAHundredThousandElements)
{
    constexpr std::size_t count = 100'000;
    const support::TempDir dir;
    HXMLWriterBase writer(dir / "a.xml");
    writer.wrStartTag("Root");
    for (std::size_t i = 0; i < count; ++i) {
        writer.addAttr("Name", std::to_string(i));
        writer.wrStartTag("File");
        writer.wrEndTag("File");
    }
    writer.wrEndTag("Root");
    writer.closeDoc();

    HXMLWInterface document;
    ASSERT_TRUE(document.readFromBuffer(support::readFile(dir / "a.xml")));
    const auto files = document.getRootElement()->getChildren();
    ASSERT_EQ(files->size(), count);
    EXPECT_STREQ(files->front()->getAttribute("Name"), "0");
    EXPECT_STREQ(files->back()->getAttribute("Name"), "99999");
}
