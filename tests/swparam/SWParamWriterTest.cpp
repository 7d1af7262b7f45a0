#include "hwdef/swparam/SWParamWriter.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "hwdef/swparam/SWParamReader.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"

TEST(SWParamWriter, writesTwoMembersOneALine)
{
    const support::TempDir dir;
    EXPECT_TRUE(SWParamWriter::writeParamInfo(dir / "p.json", "u1", "pss_io", "v"));
    EXPECT_EQ(support::readFile(dir / "p.json"), "{\n    \"refName\": \"u1\",\n    \"pss_io\": \"v\"\n}");
}

TEST(SWParamWriter, escapesWhatJsonCannotHoldAndKeepsUtf8)
{
    const support::TempDir dir;
    SWParamWriter::writeParamInfo(dir / "p.json", "q\"\\", "k\n", std::string("\xC3\xA9\t\0/", 5));
    EXPECT_EQ(support::readFile(dir / "p.json"),
              "{\n    \"refName\": \"q\\\"\\\\\",\n    \"k\\n\": \"\xC3\xA9\\t\\u0000/\"\n}");
}

TEST(SWParamWriter, replacesAnEarlierFile)
{
    const support::TempDir dir;
    SWParamWriter::writeParamInfo(dir / "p.json", "u1", "a key that makes a long file",
                                  "and a value likewise");
    SWParamWriter::writeParamInfo(dir / "p.json", "u2", "a", "b");
    EXPECT_EQ(support::readFile(dir / "p.json"), "{\n    \"refName\": \"u2\",\n    \"a\": \"b\"\n}");
}

TEST(SWParamWriter, addsTheKeyOfTheReferenceNameASecondTime)
{
    const support::TempDir dir;
    SWParamWriter::writeParamInfo(dir / "p.json", "u1", "refName", "u2");
    EXPECT_EQ(support::readFile(dir / "p.json"), "{\n    \"refName\": \"u1\",\n    \"refName\": \"u2\"\n}");
}

TEST(SWParamWriter, writesToTheCanonicalPath)
{
    const support::TempDir dir;
    SWParamWriter::writeParamInfo(dir / "missing/../p.json", "u1", "a", "b");
    EXPECT_EQ(dir.list(), "p.json");
}

TEST(SWParamWriter, reportsNothingOfAPathThatCannotBeWritten)
{
    const support::TempDir dir;
    const support::Messages messages;
    EXPECT_TRUE(SWParamWriter::writeParamInfo(dir / "missing/p.json", "u1", "a", "b"));
    EXPECT_TRUE(SWParamWriter::writeParamInfo(dir.path(), "u1", "a", "b"));
    EXPECT_TRUE(SWParamWriter::writeParamInfo("", "u1", "a", "b"));
    EXPECT_EQ(dir.list(), "");
    EXPECT_EQ(messages.joined(), "");
}

TEST(SWParamWriter, writesWhatTheReaderReads)
{
    const support::TempDir dir;
    const std::string value = "line\nline\\ \"quoted\" \xE2\x82\xAC";
    SWParamWriter::writeParamInfo(dir / "p.json", "u1", "k", value);
    support::writeArchive(dir / "a.hdf", {{"p.json", support::readFile(dir / "p.json")}});

    std::string refName;
    std::map<std::string, std::string> attributes;
    SWParamReader::parseAttributeJsonFile("p.json", dir / "a.hdf", refName, attributes);
    EXPECT_EQ(refName, "u1");
    EXPECT_EQ(attributes, (std::map<std::string, std::string>{{"k", value}}));
}
