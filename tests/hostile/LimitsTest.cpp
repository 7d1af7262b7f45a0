// The limits to what a container may take, and that a caller can move them.

#include "platform/Limits.h"

#include <gtest/gtest.h>

#include <boost/filesystem/operations.hpp>

#include "hwdef/swparam/SWParamReader.h"
#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/Parameter.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

namespace limits = platform::limits;
using support::bomDocument;
using support::Messages;
using support::Parameter;
using support::TempDir;
using support::ZipBuilder;

namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20U;

bool opens(const std::string& path)
{
    return HHDFHwDefUtils::getHDF(path) != nullptr;
}

/// A BOM document of this size.
std::string bomOf(std::size_t sizeBytes)
{
    std::string document = bomDocument("Version=\"1\" Minor=\"0\"", "");
    return document.insert(document.size() - 11, sizeBytes - document.size(), ' ');
}

std::string parametersOf(const std::string& container)
{
    std::string refName;
    std::map<std::string, std::string> attributes;
    SWParamReader::parseAttributeJsonFile("p.json", container, refName, attributes);
    return refName;
}

}  // namespace

TEST(Limits, allowAQuarterOfAGibibyteForAMemberByDefault)
{
    EXPECT_EQ(limits::maxMemberInMemory(), 268'435'456U);
    EXPECT_EQ(limits::maxUnpackSeconds(), 4U);
    EXPECT_EQ(limits::maxDocumentMemory(), 503'316'480U);
    EXPECT_EQ(limits::maxDigested(), 4'294'967'296U);
}

TEST(Limits, refuseABomThatIsOneByteTooLarge)
{
    const TempDir dir;
    support::writeArchive(dir / "fits.hdf", {{"hwdef.xml", bomOf(mebibyte)}});
    support::writeArchive(dir / "large.hdf", {{"hwdef.xml", bomOf(mebibyte + 1)}});
    const Parameter limit("hwdef.maxMemberInMemory", "1048576");
    const Messages messages;

    EXPECT_TRUE(opens(dir / "fits.hdf"));
    EXPECT_FALSE(opens(dir / "large.hdf"));
    EXPECT_EQ(messages.joined(), "text: " + dir / "large.hdf" +
                                     ": member \"hwdef.xml\": has 1048577 bytes, allowed are 1048576\n"
                                     "hdf @64-11@%s 20000000 [hwdef.xml]\n");
}

TEST(Limits, refuseABomThatTakesTooLongToUnpack)
{
    const TempDir dir;
    ZipBuilder zip;
    support::putEmptyBlocks(zip.addDeflated("hwdef.xml", bomOf(1000)), 1'048'576);
    zip.write(dir / "design.hdf");
    EXPECT_TRUE(opens(dir / "design.hdf"));
    const Parameter limit("hwdef.maxUnpackSeconds", "0");
    const Messages messages;

    EXPECT_FALSE(opens(dir / "design.hdf"));
    EXPECT_EQ(messages.joined(), "text: " + dir / "design.hdf" +
                                     ": member \"hwdef.xml\": takes longer to unpack than the 0.00 seconds "
                                     "allowed\nhdf @64-11@%s 20000000 [hwdef.xml]\n");
}

TEST(Limits, refuseABomOfMoreThanAQuarterOfAGibibyteUnlessTheyAreRaised)
{
    const TempDir dir;
    support::writeFile(dir / "bom", bomOf(256 * mebibyte + 1));
    ASSERT_TRUE(HHDFHwDefUtils::writeFileToHDF(dir / "bom", "hwdef.xml", dir / "design.hdf"));
    Messages messages;

    EXPECT_FALSE(opens(dir / "design.hdf"));
    EXPECT_NE(messages.joined().find("has 268435457 bytes, allowed are 268435456"), std::string::npos);
    messages.clear();
    const Parameter limit("hwdef.maxMemberInMemory", "1000000000");
    EXPECT_TRUE(opens(dir / "design.hdf"));
    EXPECT_EQ(messages.joined(), "");
}

TEST(Limits, refuseABomThatUnpacksToMoreThanItSays)
{
    const TempDir dir;
    for (const std::uint32_t declared : {0U, 100U, 0xfffffffeU}) {
        ZipBuilder zip;
        support::ZipMember& bom = zip.addDeflated("hwdef.xml", bomOf(4 * mebibyte));
        bom.local.size = declared;
        bom.listed.size = declared;
        zip.write(dir / "design.hdf");
        const Messages messages;

        EXPECT_FALSE(opens(dir / "design.hdf")) << declared;
        EXPECT_NE(messages.joined().find("@64-11@%s 20000000 [hwdef.xml]"), std::string::npos);
    }
}

TEST(Limits, refuseABomThatUnfoldsTooFarUnlessTheyAreRaised)
{
    const TempDir dir;
    std::string elements;
    for (int i = 0; i < 100'000; ++i) {
        elements += "<a/>";
    }
    support::writeArchive(dir / "design.hdf",
                          {{"hwdef.xml", bomDocument("Version=\"1\" Minor=\"0\"", elements)}});
    Messages messages;
    {
        const Parameter limit("hwdef.maxDocumentMemory", "1000000");
        EXPECT_FALSE(opens(dir / "design.hdf"));
        EXPECT_EQ(messages.joined(),
                  "text: " + dir / "design.hdf" +
                      ": member \"hwdef.xml\": parsing it may take 10050361 bytes of memory, allowed are "
                      "1000000\nhdf @64-11@%s 20000000 [hwdef.xml]\n");
    }
    messages.clear();
    EXPECT_TRUE(opens(dir / "design.hdf"));
    EXPECT_EQ(messages.joined(), "");
}

TEST(Limits, countTheContainersPathThatEachDriverFileRepeats)
{
    const TempDir dir;
    std::string drivers = "<DRIVERS><DRIVER IP_VLNV='x'>";
    for (int i = 0; i < 900; ++i) {
        drivers += "<a PATH='" + std::to_string(i) + "'/>";
    }
    support::writeFile(dir / "hwdef.xml",
                       bomDocument("Version=\"1\" Minor=\"0\"", drivers + "</DRIVER></DRIVERS>"));
    std::string deep = dir.path();
    for (int i = 0; i < 10; ++i) {
        deep += "/" + std::string(200, 'd');
    }
    boost::filesystem::create_directories(deep);
    const Parameter limit("hwdef.maxDocumentMemory", "1000000");
    for (const std::string& place : {dir.path(), deep}) {
        ASSERT_TRUE(HHDFHwDefUtils::writeFileToHDF(dir / "hwdef.xml", "hwdef.xml", place + "/design.hdf"));
        const Messages messages;
        EXPECT_EQ(opens(place + "/design.hdf"), place != deep);
        EXPECT_EQ(messages.joined().find("\"hwdef.xml\": reading it may take ") != std::string::npos,
                  place == deep)
            << messages.joined();
    }
}

TEST(Limits, refuseAParameterMemberThatIsTooLarge)
{
    const TempDir dir;
    const std::string json = "{\"refName\": \"a\"" + std::string(mebibyte, ' ') + "}";
    support::writeArchive(dir / "design.hdf", {{"p.json", json}});
    EXPECT_EQ(parametersOf(dir / "design.hdf"), "a");

    const Parameter limit("hwdef.maxMemberInMemory", "1048576");
    const Messages messages;
    EXPECT_EQ(parametersOf(dir / "design.hdf"), "");
    EXPECT_EQ(messages.joined(),
              "text: " + dir / "design.hdf" + ": member \"p.json\": larger than the 1048576 bytes allowed\n");
}

TEST(Limits, refuseAParameterMemberOfTooManyMembers)
{
    const TempDir dir;
    std::string json = "{\"refName\": \"a\"";
    for (int i = 0; i < 10'000; ++i) {
        json += ",\"\":0";
    }
    support::writeArchive(dir / "design.hdf", {{"p.json", json + "}"}});
    EXPECT_EQ(parametersOf(dir / "design.hdf"), "a");

    const Parameter limit("hwdef.maxDocumentMemory", "1000000");
    const Messages messages;
    EXPECT_EQ(parametersOf(dir / "design.hdf"), "");
    EXPECT_EQ(messages.joined(), "text: " + dir / "design.hdf" +
                                     ": member \"p.json\": its members take more than the 1000000 bytes of "
                                     "memory allowed\n");
}

TEST(Limits, refuseAParameterMemberThatIsNestedTooDeeply)
{
    const TempDir dir;
    const std::string nested =
        "{\"refName\":\"a\",\"x\":" + std::string(50'000, '[') + std::string(50'000, ']') + "}";
    support::writeArchive(dir / "design.hdf", {{"p.json", nested}});
    EXPECT_EQ(parametersOf(dir / "design.hdf"), "a");

    const Parameter limit("hwdef.maxDocumentMemory", "1000000");
    const Messages messages;
    EXPECT_EQ(parametersOf(dir / "design.hdf"), "");
    EXPECT_EQ(messages.joined(), "text: " + dir / "design.hdf" +
                                     ": member \"p.json\": its members take more than the 1000000 bytes of "
                                     "memory allowed\n");
}
