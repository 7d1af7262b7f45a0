#include <gtest/gtest.h>

#include <string>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"

namespace {

const std::string version = "Version=\"1\" Minor=\"1\"";
const std::string json = R"({"refName": "u1", "a": "1"})";

/// What the lookup tells of a container. The outputs are filled before.
struct Found {
    std::string refName = "left over";
    HHDFHwDefUtils::Attributes attributes = {{"left", "over"}};
    bool result = false;
    std::string messages;

    Found(const std::string& typeToken, const std::string& container)
    {
        const support::Messages sent;
        result = HHDFHwDefUtils::getSWParamInfo(typeToken, container, refName, attributes);
        messages = sent.joined();
    }
    bool isEmpty() const { return refName.empty() && attributes.empty(); }
};

std::string file(const std::string& type, const std::string& name)
{
    return "<File Type=\"" + type + "\" Name=\"" + name + "\"/>\n";
}

}  // namespace

TEST(Lookup, readsTheParameterFileOfAType)
{
    const support::TempDir dir;
    const std::string bom =
        support::bomDocument(version, file("BIT", "top.bit") + file("POWER_DATA", "p.json"));
    support::writeArchive(dir / "a.hdf", {{"hwdef.xml", bom}, {"top.bit", "bits"}, {"p.json", json}});
    const Found found("POWER_DATA", dir / "a.hdf");
    EXPECT_TRUE(found.result);
    EXPECT_EQ(found.refName, "u1");
    EXPECT_EQ(found.attributes, (HHDFHwDefUtils::Attributes{{"a", "1"}}));
    EXPECT_EQ(found.messages, "");
}

TEST(Lookup, readsTheFirstFileOfTheTypeOnly)
{
    const support::TempDir dir;
    const std::string bom =
        support::bomDocument(version, file("IO_DATA", "z.json") + file("IO_DATA", "b.json"));
    support::writeArchive(dir / "a.hdf",
                          {{"hwdef.xml", bom}, {"b.json", json}, {"z.json", R"({"refName": "first"})"}});
    const Found found("IO_DATA", dir / "a.hdf");
    EXPECT_TRUE(found.result);
    EXPECT_EQ(found.refName, "first");
    EXPECT_TRUE(found.attributes.empty());
}

TEST(Lookup, findsTheMemberByItsFileNameAlone)
{
    const support::TempDir dir;
    const std::string bom = support::bomDocument(version, file("IO_DATA", "data/p.json"));
    support::writeArchive(dir / "below.hdf", {{"hwdef.xml", bom}, {"data/p.json", json}});
    support::writeArchive(dir / "top.hdf", {{"hwdef.xml", bom}, {"p.json", json}});
    const Found below("IO_DATA", dir / "below.hdf");
    EXPECT_TRUE(below.result);
    EXPECT_TRUE(below.isEmpty());
    EXPECT_EQ(Found("IO_DATA", dir / "top.hdf").refName, "u1");
}

TEST(Lookup, succeedsEmptyWhenTheFileIsNotInTheArchive)
{
    const support::TempDir dir;
    support::writeArchive(dir / "a.hdf",
                          {{"hwdef.xml", support::bomDocument(version, file("IO_DATA", "p.json"))}});
    const Found found("IO_DATA", dir / "a.hdf");
    EXPECT_TRUE(found.result);
    EXPECT_TRUE(found.isEmpty());
    EXPECT_EQ(found.messages, "");
}

TEST(Lookup, succeedsEmptyWhenTheFileDoesNotParse)
{
    const support::TempDir dir;
    const std::string bom = support::bomDocument(version, file("IO_DATA", "p.json"));
    support::writeArchive(dir / "a.hdf", {{"hwdef.xml", bom}, {"p.json", "{"}});
    const Found found("IO_DATA", dir / "a.hdf");
    EXPECT_TRUE(found.result);
    EXPECT_TRUE(found.isEmpty());
    EXPECT_NE(found.messages.find("not a JSON document"), std::string::npos) << found.messages;
}

TEST(Lookup, failsWithoutAFileOfTheType)
{
    const support::TempDir dir;
    const std::string bom = support::bomDocument(version, file("BIT", "p.json"));
    support::writeArchive(dir / "a.hdf", {{"hwdef.xml", bom}, {"p.json", json}});
    const Found found("IO_DATA", dir / "a.hdf");
    EXPECT_FALSE(found.result);
    EXPECT_TRUE(found.isEmpty());
    EXPECT_EQ(found.messages, "");
}

TEST(Lookup, failsForAnUnknownTypeWithoutOpeningTheContainer)
{
    const support::TempDir dir;
    // Opening it would send a message.
    support::writeArchive(dir / "nobom.hdf", {{"p.json", json}});
    ASSERT_NE(Found("IO_DATA", dir / "nobom.hdf").messages, "");
    const Found found("NO_SUCH_TYPE", dir / "nobom.hdf");
    EXPECT_FALSE(found.result);
    EXPECT_TRUE(found.isEmpty());
    EXPECT_EQ(found.messages, "");
}

TEST(Lookup, failsForAContainerThatCannotBeOpened)
{
    const support::TempDir dir;
    support::writeArchive(dir / "nobom.hdf", {{"p.json", json}});
    const Found found("IO_DATA", dir / "nobom.hdf");
    EXPECT_FALSE(found.result);
    EXPECT_TRUE(found.isEmpty());
    EXPECT_EQ(found.messages, "hdf @64-4@%s 20000000 [" + (dir / "nobom.hdf") + "]\n");
}

TEST(Lookup, failsSilentlyForAContainerThatDoesNotExist)
{
    const support::TempDir dir;
    for (const std::string& container : {std::string(), dir / "missing.hdf"}) {
        const Found found("IO_DATA", container);
        EXPECT_FALSE(found.result);
        EXPECT_TRUE(found.isEmpty());
        EXPECT_EQ(found.messages, "");
    }
}
