#include <gtest/gtest.h>

#include <openssl/sha.h>

#include <string>

#include "hwdef/inspect/HHDFInspect.h"
#include "platform/HPAParamMgr.h"
#include "platform/Limits.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using support::TempDir;

namespace {

std::string sha256(const std::string& bytes)
{
    unsigned char digest[SHA256_DIGEST_LENGTH] = {};
    SHA256(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), digest);
    std::string digits;
    for (const unsigned char byte : digest) {
        constexpr char hex[] = "0123456789abcdef";
        digits += {hex[byte >> 4], hex[byte & 15]};
    }
    return digits;
}

std::string fact(const std::string& section, const std::string& item, const std::string& field,
                 const std::string& value)
{
    std::string bytes;
    for (const std::string& text : {section, item, field, value}) {
        bytes += support::little(text.size(), 8) + text;
    }
    return bytes;
}

}  // namespace

TEST(ContentDigest, isMadeOfTheFactsInByteOrder)
{
    const TempDir dir;
    support::writeArchive(
        dir / "a.hdf", {{"hwdef.xml", support::bomDocument("Version='1' Minor='7'",
                                                           "<File Type='BIT' Name='a.bit'/>"
                                                           "<SYSTEMINFO PART='p' DSP='2'/><MODE Name='x'/>")},
                        {"a.bit", "bits"}});
    std::string bytes = "hwdef-content-1" + fact("file", "a.bit", "", "listed") +
                        fact("file", "a.bit", "content", sha256("bits") + ", 4 bytes") +
                        fact("file", "a.bit", "type", "BIT");
    for (const auto& [name, value] :
         std::initializer_list<std::pair<const char*, const char*>>{{"arch", ""},
                                                                    {"board", ""},
                                                                    {"device", ""},
                                                                    {"dies", "-1"},
                                                                    {"mode", "Post-Synthesis"},
                                                                    {"package", ""},
                                                                    {"part", "p"},
                                                                    {"speed", ""},
                                                                    {"stacked", "false"},
                                                                    {"tool", ""},
                                                                    {"top", ""},
                                                                    {"version", "1.7"}}) {
        bytes += fact("property", name, "", value);
    }
    for (const char* name : {"available BRAM", "available DSP", "available FF", "available LUT", "used BRAM",
                             "used DSP", "used FF", "used LUT"}) {
        bytes += fact("resource", name, "", name == std::string("available DSP") ? "2" : "");
    }

    EXPECT_EQ(HHDFInspect::contentDigest(dir / "a.hdf"), sha256(bytes));
}

TEST(ContentDigest, doesNotDependOnTheFilesName)
{
    const TempDir dir;
    const support::Members members = {{"hwdef.xml", support::bomOfFiles("7", {"a.bit"})}, {"a.bit", "bits"}};
    support::writeArchive(dir / "a.hdf", members);
    support::writeArchive(dir / "other.hdf", members);

    EXPECT_EQ(HHDFInspect::contentDigest(dir / "a.hdf"), HHDFInspect::contentDigest(dir / "other.hdf"));
}

TEST(ContentDigest, isNotMadeOfWhatIsBeyondALimitOrNoNumber)
{
    const TempDir dir;
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", support::bomOfFiles("7", {"a.bit"}));
    zip.addDeflated("a.bit", std::string(5'000'000, 'x'));
    zip.write(dir / "a.hdf");
    support::writeArchive(dir / "x.hdf", {{"hwdef.xml", support::bomDocument("Version='1' Minor='x'", "")}});
    const support::Messages messages;
    EXPECT_EQ(HHDFInspect::contentDigest(dir / "x.hdf"), "");
    support::writeArchive(dir / "x.hdf",
                          {{"hwdef.xml", support::bomDocument("Version='1' Minor='0'",
                                                              "<PART><NUM_OF_SLRS Value='x'/></PART>")}});
    EXPECT_EQ(HHDFInspect::contentDigest(dir / "x.hdf"), "");
    auto* parameters = HPAParamMgr::getParamMgr();
    parameters->setValue(platform::limits::MAX_DIGESTED, "4000");
    EXPECT_EQ(HHDFInspect::contentDigest(dir / "a.hdf"), "");
    parameters->setValue(platform::limits::MAX_DIGESTED, "");
    parameters->setValue(platform::limits::MAX_DOCUMENT_MEMORY, "4000");
    EXPECT_EQ(HHDFInspect::contentDigest(dir / "a.hdf"), "");
    parameters->setValue(platform::limits::MAX_DOCUMENT_MEMORY, "");
    ASSERT_EQ(messages.all().size(), 4u) << messages.joined();
    EXPECT_NE(messages.all()[0].text.find("a version in the BOM is no number"), std::string::npos);
    EXPECT_NE(messages.all()[1].text.find("the number of dies in the BOM is no number"), std::string::npos);
    EXPECT_NE(messages.all()[2].text.find("member \"a.bit\" has 5000000 bytes, no more than "),
              std::string::npos);
    EXPECT_NE(messages.all()[3].text.find("bytes of memory that are allowed"), std::string::npos)
        << messages.joined();
}

TEST(ContentDigest, standsBesideTheDigestOfTheFile)
{
    const TempDir dir;
    support::writeFile(dir / "a", "abc");

    EXPECT_EQ(HHDFInspect::fileDigest(dir / "a"), sha256("abc"));
}
