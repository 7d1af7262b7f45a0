#include "hwdef/swparam/SWParamReader.h"

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>

#include "platform/HUTFile.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/SmallStack.h"
#include "support/TempDir.h"

namespace {

using Texts = std::map<std::string, std::string>;

/// What the reader makes of a container's member "p.json". The outputs are filled before.
struct Read {
    std::string refName = "left over";
    Texts attributes = {{"left", "over"}};
    std::string messages;

    explicit Read(const std::string& container, const std::string& member = "p.json")
    {
        const support::Messages sent;
        SWParamReader::parseAttributeJsonFile(member, container, refName, attributes);
        messages = sent.joined();
    }
    bool isEmpty() const { return refName.empty() && attributes.empty(); }
};

Read readJson(const std::string& json)
{
    const support::TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"p.json", json}});
    return Read(dir / "a.hdf");
}

/// The report of a member "p.json" that isn't JSON.
std::string parseError(const std::string& reason)
{
    std::string canonicalName;
    HUTFile("p.json").getCanonicalName(canonicalName);
    return "text: " + canonicalName + ": not a JSON document: " + reason + "\n";
}

std::string ioString(std::string text)
{
    processIOString(text);
    return text;
}

std::string powerString(std::string text)
{
    processPowerString(text);
    return text;
}

/// A JSON text of arrays in arrays.
std::string nested(std::size_t depth)
{
    return std::string(depth, '[') + std::string(depth, ']');
}

}  // namespace

TEST(SWParamReader, takesTheReferenceNameAndAllOtherMembersAsAttributes)
{
    const Read read = readJson(R"({"b": "2", "refName": "u1", "a": "1", "": "no key"})");
    EXPECT_EQ(read.refName, "u1");
    EXPECT_EQ(read.attributes, (Texts{{"", "no key"}, {"a", "1"}, {"b", "2"}}));
    EXPECT_EQ(read.messages, "");
}

TEST(SWParamReader, readsNothingWithoutAReferenceName)
{
    const Read read = readJson(R"({"a": "1", "refname": "x", "inner": {"refName": "u1"}})");
    EXPECT_TRUE(read.isEmpty());
    EXPECT_EQ(read.messages, "");
}

TEST(SWParamReader, takesAnEmptyReferenceNameForOne)
{
    const Read read = readJson(R"({"refName": "", "a": "1"})");
    EXPECT_EQ(read.refName, "");
    EXPECT_EQ(read.attributes, (Texts{{"a", "1"}}));
}

TEST(SWParamReader, keepsTheLastOfRepeatedMembers)
{
    const Read read = readJson(R"({"refName": "u1", "a": "1", "refName": "u2", "a": "2"})");
    EXPECT_EQ(read.refName, "u2");
    EXPECT_EQ(read.attributes, (Texts{{"a", "2"}}));
}

TEST(SWParamReader, takesOtherValuesAsTheirJsonText)
{
    const Read read =
        readJson(R"({"refName": 7, "t": true, "f": false, "d": -1.50, "big": 12345678901234567890123,
                                   "n": null, "o": {"x": "y", "z": ["w"]}, "l": ["v", {"u": "t"}]})");
    EXPECT_EQ(read.refName, "7");
    EXPECT_EQ(read.attributes, (Texts{{"t", "true"},
                                      {"f", "false"},
                                      {"d", "-1.5"},
                                      {"big", "1.2345678901234568e22"},
                                      {"n", ""},
                                      {"o", ""},
                                      {"l", ""}}));
}

TEST(SWParamReader, takesNumbersOfAnyLength)
{
    for (const std::size_t digits : {1u, 200u, 255u, 256u, 257u, 1023u, 1024u, 1025u, 5000u}) {
        const std::string number = "0." + std::string(digits, '0');
        EXPECT_EQ(readJson("{\"refName\": " + number + "}").refName, "0.0");
    }
}

TEST(SWParamReader, keepsNullCharactersOfTexts)
{
    const Read read = readJson(R"({"refName": "u\u00001", "k\u0000y": "v\u0000w"})");
    EXPECT_EQ(read.refName, std::string("u\0001", 3));
    EXPECT_EQ(read.attributes, (Texts{{std::string("k\0y", 3), std::string("v\0w", 3)}}));
}

TEST(SWParamReader, unwrapsTheIoSetting)
{
    const Read read = readJson(R"json({"refName": "a", "pss_io": "(*PSS_IO= \"x\\n\\\ny\" *)"})json");
    EXPECT_EQ(read.refName, "a");
    EXPECT_EQ(read.attributes, (Texts{{"pss_io", "x\ny"}}));
}

TEST(SWParamReader, unwrapsThePowerSetting)
{
    const Read read =
        readJson(R"json({"refName": "a", "pss_power": "(*PSS_POWER= \"x\\\ny\\\\\nz\" *)"})json");
    EXPECT_EQ(read.attributes, (Texts{{"pss_power", "xyz"}}));
}

TEST(SWParamReader, letsTheRangeErrorOfTheIoSettingPass)
{
    const support::TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"p.json", R"({"refName": "a", "b": "c", "pss_io": "short"})"}});
    std::string refName = "left over";
    Texts attributes = {{"left", "over"}};
    EXPECT_THROW(SWParamReader::parseAttributeJsonFile("p.json", dir / "a.hdf", refName, attributes),
                 std::out_of_range);
    EXPECT_EQ(refName, "");
    EXPECT_TRUE(attributes.empty());
}

TEST(SWParamReader, saysNothingOfAMemberThatIsNotThere)
{
    const support::TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"p.json", R"({"refName": "a"})"}});
    support::writeFile(dir / "noarchive", "text");
    for (const Read& read : {Read(dir / "a.hdf", "q.json"), Read(dir / "a.hdf", ""), Read(dir / "missing"),
                             Read(dir / "noarchive"), Read(""), Read(dir.path())}) {
        EXPECT_TRUE(read.isEmpty());
        EXPECT_EQ(read.messages, "");
    }
}

TEST(SWParamReader, sendsANoticeForAMemberThatCannotBeOpened)
{
    const support::TempDir dir;
    const std::string container = dir / "a.hdf";
    support::writeArchive(container, {{"p.json", R"({"refName": "a"})"}});
    // Encrypted, say the flags of both headers.
    std::string bytes = support::readFile(container);
    bytes[bytes.find("PK\x03\x04") + 6] |= 1;
    bytes[bytes.find("PK\x01\x02") + 8] |= 1;
    support::writeFile(container, bytes);

    const Read read(container);
    EXPECT_TRUE(read.isEmpty());
    EXPECT_EQ(read.messages, "hdf @36-530@%s%s 08000000 [p.json|" + container + "]\n");
}

TEST(SWParamReader, reportsAMemberWhoseBytesAreDamaged)
{
    const support::TempDir dir;
    const std::string container = dir / "a.hdf";
    support::writeArchive(container, {{"p.json", R"({"refName": "abc"})"}});
    support::patchFile(container, "abc", "abd");
    const Read read(container);
    EXPECT_TRUE(read.isEmpty());
    EXPECT_EQ(read.messages, "text: " + container + ": member \"p.json\": can't be read to its end\n");
}

TEST(SWParamReader, reportsWhatIsNoJson)
{
    const std::map<std::string, std::string> broken = {
        {"", "byte offset 0: The document is empty."},
        {" \n", "byte offset 2: The document is empty."},
        {R"({"refName": "a")", "byte offset 15: Missing a comma or '}' after an object member."},
        {R"({"refName": "a"} x)", "byte offset 17: The document root must not be followed by other values."},
        {R"({"a": "b", "refName": "u)", "byte offset 24: Missing a closing quotation mark in string."},
        {"\xEF\xBB\xBF{}", "byte offset 0: Invalid value."},
    };
    for (const auto& [json, reason] : broken) {
        const Read read = readJson(json);
        EXPECT_TRUE(read.isEmpty()) << json;
        EXPECT_EQ(read.messages, parseError(reason)) << json;
    }
}

TEST(SWParamReader, refusesANullCharacterBehindTheDocument)
{
    const Read read = readJson(std::string(R"({"refName": "a"})") + '\0' + "more");
    EXPECT_TRUE(read.isEmpty());
    EXPECT_EQ(read.messages,
              parseError("byte offset 16: The document root must not be followed by other values."));
}

TEST(SWParamReader, refusesInvalidUtf8)
{
    for (const char* value : {"\xFF", "\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80"}) {
        const Read read = readJson("{\"refName\": \"a\", \"b\": \"" + std::string(value) + "\"}");
        EXPECT_TRUE(read.isEmpty());
        EXPECT_NE(read.messages.find("Invalid encoding in string."), std::string::npos) << read.messages;
    }
}

TEST(SWParamReader, endsEveryTruncatedDocumentWithOneMessage)
{
    const std::string whole = R"({"refName": "u1", "a": [1.5e3, {"b": null}], "c": "\u00e9\\"})";
    ASSERT_EQ(readJson(whole).refName, "u1");
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Read read = readJson(whole.substr(0, size));
        EXPECT_TRUE(read.isEmpty()) << size;
        EXPECT_EQ(read.messages.compare(0, 6, "text: "), 0) << size;
        EXPECT_EQ(read.messages.find('\n'), read.messages.size() - 1) << size;
    }
}

TEST(SWParamReader, takesARootThatIsNoObjectForOneWithoutMembers)
{
    for (const char* json :
         {"[]", R"(["refName", "a"])", R"("refName")", "7", "null", R"([{"refName": "a"}])"}) {
        const Read read = readJson(json);
        EXPECT_TRUE(read.isEmpty()) << json;
        EXPECT_EQ(read.messages, "") << json;
    }
}

TEST(SWParamReader, readsAMillionLevelsOnASmallStack)
{
    const support::TempDir dir;
    support::writeArchive(dir / "deep.hdf",
                          {{"p.json", "{\"deep\": " + nested(1'000'000) + ", \"refName\": \"a\"}"}});
    support::writeArchive(dir / "open.hdf", {{"p.json", "{\"deep\": " + std::string(1'000'000, '[')}});
    support::onSmallStack([&] {
        const Read deep(dir / "deep.hdf");
        EXPECT_EQ(deep.refName, "a");
        EXPECT_EQ(deep.attributes, (Texts{{"deep", ""}}));
        const Read open(dir / "open.hdf");
        EXPECT_TRUE(open.isEmpty());
        EXPECT_EQ(open.messages, parseError("byte offset 1000009: Invalid value."));
    });
}

TEST(SWParamReader, allowsAQuarterOfAGibibyte)
{
    EXPECT_EQ(SWParamReader::MAX_MEMBER_BYTES, 268435456u);
}

TEST(SWParamReader, trimsTheCharactersOfASet)
{
    EXPECT_EQ(SWParamReader::trimWithArgument("  a b\t", " \t"), "a b");
    EXPECT_EQ(SWParamReader::trimWithArgument("xyaxybyx", "yx"), "axyb");
    EXPECT_EQ(SWParamReader::trimWithArgument("", "x"), "");
    EXPECT_EQ(SWParamReader::trimWithArgument("xxyx", "xy"), "");
    EXPECT_EQ(SWParamReader::trimWithArgument(" a ", ""), " a ");
}

TEST(processIOString, leavesAnEmptyTextAsItIs)
{
    EXPECT_EQ(ioString(""), "");
}

TEST(processIOString, keepsWhatStandsBetweenTheMarkers)
{
    EXPECT_EQ(ioString("(*PSS_IO= \"value\" *)"), "value");
    EXPECT_EQ(ioString("in front (*PSS_IO= \"value\" *) behind\nand below"), "value");
    EXPECT_EQ(ioString("(*PSS_IO= \"\" *)"), "");
}

TEST(processIOString, cutsEachLineAtItsFirstContinuation)
{
    EXPECT_EQ(ioString("(*PSS_IO= \"a\\n\\dropped\\n\\\nb\\n\nc\\\n\nd\" *)"), "a\nb\\n\nc\\\n\nd");
}

TEST(processIOString, endsTheLastLineWithANewline)
{
    EXPECT_EQ(ioString("(*PSS_IO= \"value"), "value\n");
    EXPECT_EQ(ioString("(*PSS_IO= \"value\n"), "value\n");
    EXPECT_EQ(ioString("(*PSS_IO= \"value\n\n"), "value\n\n");
}

TEST(processIOString, startsAtTheTenthPositionWithoutAnOpeningMarker)
{
    EXPECT_EQ(ioString("0123456789abc"), "abc\n");
    EXPECT_EQ(ioString("0123456789abc\" *)tail"), "abc");
    // With its newline the text just reaches the start.
    EXPECT_EQ(ioString("012345678"), "");
}

TEST(processIOString, keepsTheRestWhenTheClosingMarkerStandsInFront)
{
    EXPECT_EQ(ioString("\" *)(*PSS_IO= \"value\" *)"), "value\" *)\n");
    EXPECT_EQ(ioString("ab\" *)6789cd"), "cd\n");
}

TEST(processIOString, throwsForATextShorterThanTheStart)
{
    for (const std::string& original : {std::string("01234567"), std::string("\n"), std::string("a\nb"),
                                        std::string("a long line\\n\\but cut").replace(0, 11, "a")}) {
        std::string text = original;
        EXPECT_THROW(processIOString(text), std::out_of_range);
        EXPECT_EQ(text, original);
    }
}

TEST(processPowerString, leavesAnEmptyTextAsItIs)
{
    EXPECT_EQ(powerString(""), "");
}

TEST(processPowerString, keepsWhatStandsBetweenTheMarkers)
{
    EXPECT_EQ(powerString("(*PSS_POWER= \"value\" *)"), "value");
    EXPECT_EQ(powerString("in front (*PSS_POWER= \"value\" *) behind"), "value");
}

TEST(processPowerString, joinsLinesWithoutTheirTrailingBackslashes)
{
    EXPECT_EQ(powerString("(*PSS_POWER= \"a\\\n\n b\\x\\\\\\\nc\" *)\\\n"), "a b\\xc");
}

TEST(processPowerString, joinsAMarkerThatIsSplitOverLines)
{
    EXPECT_EQ(powerString("(*PSS_PO\\\nWER= \"a\" \\\n*)"), "a");
}

TEST(processPowerString, keepsALineOfBackslashesOnly)
{
    EXPECT_EQ(powerString("(*PSS_POWER= \"a\n\\\\\nb\" *)"), "a\\\\b");
}

TEST(processPowerString, becomesEmptyWhenAMarkerIsMissing)
{
    EXPECT_EQ(powerString("(*PSS_POWER= \"value"), "");
    EXPECT_EQ(powerString("value\" *)"), "");
    EXPECT_EQ(powerString("a text without any marker"), "");
    EXPECT_EQ(powerString("x"), "");
}

TEST(processPowerString, keepsTheRestWhenTheClosingMarkerStandsInFront)
{
    EXPECT_EQ(powerString("\" *)(*PSS_POWER= \"value\" *)"), "value\" *)");
}
