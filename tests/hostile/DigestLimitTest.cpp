// How much is digested of a container, and what is said of one that holds more.

#include <gtest/gtest.h>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/Parameter.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using support::bomDocument;
using support::Messages;
using support::Parameter;
using support::TempDir;
using support::ZipBuilder;
using Texts = HHDFHwDef::Texts;

namespace {

constexpr const char* limitName = "hwdef.maxDigestedBytes";

/// A container of minor version 2 whose two members are "a.bit", a few bytes, and "zeros.bit", a mebibyte
/// in a kilobyte or so.
class DigestLimit : public testing::Test {
protected:
    DigestLimit() { write("", {}); }

    /// Writes it with these digests in its BOM.
    void write(const std::string& overall, Texts digests)
    {
        std::string files;
        for (const char* name : {"a.bit", "zeros.bit"}) {
            files +=
                "<File Type=\"BIT\" Name=\"" + std::string(name) + "\" DIGEST=\"" + digests[name] + "\"/>\n";
        }
        ZipBuilder zip;
        zip.addStored("hwdef.xml",
                      bomDocument("Version=\"1\" Minor=\"2\" DIGEST=\"" + overall + "\"", files));
        zip.addStored("a.bit", "content of a.bit");
        zip.addDeflated("zeros.bit", std::string(1'048'576, '\0'));
        zip.write(path);
    }

    /// The digests of its members' bytes as they are now.
    Texts digests(std::string& overall) const
    {
        Texts digests;
        HHDFHwDefUtils::getHDF(path)->calculateDigest(overall, digests);
        return digests;
    }

    bool passesCheck() const { return HHDFHwDefUtils::getHDF(path, true) != nullptr; }

    const TempDir dir;
    const std::string path = dir / "design.hdf";
    const std::string refusal = "text: " + path +
                                ": member \"zeros.bit\" has 1048576 bytes, with which more are digested than "
                                "the 500000 allowed\n";
};

}  // namespace

TEST_F(DigestLimit, refusesASoundContainerWithoutCallingItTamperedWith)
{
    std::string overall;
    const Texts sound = digests(overall);
    write(overall, sound);
    Messages messages;
    {
        const Parameter limit(limitName, "500000");
        EXPECT_FALSE(passesCheck());
        EXPECT_EQ(messages.joined(), refusal);
    }
    messages.clear();
    EXPECT_TRUE(passesCheck());
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(DigestLimit, letsATamperedMemberBeNamedAllTheSame)
{
    std::string overall;
    Texts changed = digests(overall);
    changed["a.bit"] = "12345";
    write(overall, changed);
    const Parameter limit(limitName, "500000");
    const Messages messages;

    EXPECT_FALSE(passesCheck());
    EXPECT_EQ(messages.joined(), refusal + "hdf @64-23@%s 20000000 [File: a.bit has been tampered.]\n");
}

TEST_F(DigestLimit, leavesAMemberBeyondItOutOfTheDigests)
{
    const Parameter limit(limitName, "500000");
    const Messages messages;
    std::string overall;

    const Texts some = digests(overall);
    EXPECT_EQ(some, (Texts{{"a.bit", "1536109883184808578875992290439838895484285748336"}}));
    EXPECT_EQ(overall, "2119824519992312475139154963625016581381137786829");
    EXPECT_EQ(messages.joined(), refusal);
}

TEST_F(DigestLimit, doesNotLetPassWhatWasLeftOut)
{
    const Parameter limit(limitName, "500000");
    const Messages messages;
    std::string overall;
    const Texts some = digests(overall);
    write(overall, some);

    EXPECT_FALSE(passesCheck());
    EXPECT_EQ(messages.joined(), refusal + refusal);
}

TEST_F(DigestLimit, refusesNothingWhereNoOverallDigestIsRecorded)
{
    const Parameter limit(limitName, "500000");
    const Messages messages;

    EXPECT_TRUE(passesCheck());
    EXPECT_EQ(messages.joined(), refusal);
}

TEST_F(DigestLimit, isOneOfTimeToo)
{
    ZipBuilder zip;
    zip.addStored("hwdef.xml", bomDocument("Version=\"1\" Minor=\"2\" DIGEST=\"\"",
                                           "<File Name=\"a\"/><File Name=\"b\"/><File Name=\"c\"/>"));
    zip.addStored("a", "first");
    support::putEmptyBlocks(zip.addDeflated("b", "second"), 100'000);
    zip.addDeflated("c", "last");
    zip.write(path);
    Messages messages;
    std::string overall;

    EXPECT_EQ(digests(overall).size(), 3U);
    EXPECT_EQ(messages.joined(), "");
    const Parameter limit("hwdef.maxUnpackSeconds", "0");
    EXPECT_EQ(digests(overall), (Texts{{"a", "37681505833242017987295911131526384778791505571521"}}));
    EXPECT_EQ(messages.joined(),
              "text: " + path +
                  ": member \"b\": takes longer to unpack than the 0.00 seconds allowed; no "
                  "compressed member after it is digested\n");
}

TEST_F(DigestLimit, countsAMemberOnceHoweverOftenItIsListed)
{
    std::string files;
    for (int number = 0; number < 100; ++number) {
        files += "<File Name=\"a\"/>";
    }
    ZipBuilder zip;
    zip.addStored("hwdef.xml", bomDocument("Version=\"1\" Minor=\"2\" DIGEST=\"\"", files));
    zip.addDeflated("a", std::string(1'048'576, '\0'));
    zip.write(path);
    const Parameter limit(limitName, "1100000");
    const Messages messages;
    std::string overall;

    EXPECT_EQ(digests(overall), (Texts{{"a", "9973238394077865749305014524526606253513897472419"}}));
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(DigestLimit, isForEachContainerByItself)
{
    for (const char* name : {"a", "b"}) {
        support::writeFile(dir / name + ".bit", std::string(40'000, name[0]));
        ASSERT_TRUE(HHDFHwDefUtils::writeHDF(dir / name + ".hdf",
                                             {{dir / name + ".bit", HHDFHwDefFileTypes::BIT}}, true, {}, {}));
    }
    const auto a = HHDFHwDefUtils::getHDF(dir / "a.hdf");
    const auto b = HHDFHwDefUtils::getHDF(dir / "b.hdf");
    ASSERT_TRUE(a != nullptr && b != nullptr);
    const auto merged = HHDFHwDefUtils::getMrgdHDF({a.get(), b.get()}, dir / "m.hdf");
    ASSERT_NE(merged, nullptr);
    const Parameter limit("hwdef.maxDigestedBytes", "50000");
    const Messages messages;
    std::string digest;
    HHDFHwDef::Texts digests;
    merged->calculateDigest(digest, digests);

    EXPECT_EQ(messages.joined(), "");
    std::string overall;
    HHDFHwDef::Texts alone;
    b->calculateDigest(overall, alone);
    EXPECT_EQ(digests["b.bit"], alone["b.bit"]);
}
