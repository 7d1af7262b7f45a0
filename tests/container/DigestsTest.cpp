#include <gtest/gtest.h>
#include <sys/stat.h>

#include <boost/filesystem.hpp>

#include "hwdef/model/HHDFHwDef.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"

using support::Messages;
using support::TempDir;
using support::writeArchive;
using support::writeFile;

namespace {

using Texts = HHDFHwDef::Texts;

// The SHA-1 words of these bytes, in decimal.
const std::string ofNothing =
    "36612106061584089869844480495"
    "25061029282950170377";
const std::string ofAbc =
    "284539243811916086823124634993"
    "20185585722630932637";

/// The digests of the present bytes, and the overall one in `overall`.
Texts digestsOf(HHDFHwDef& def, std::string& overall)
{
    Texts digests;
    EXPECT_TRUE(def.calculateDigest(overall, digests));
    return digests;
}

Texts digestsOf(HHDFHwDef& def)
{
    std::string overall;
    return digestsOf(def, overall);
}

}  // namespace

TEST(Digests, areTakenFromFilesOnDisk)
{
    const TempDir dir;
    writeFile(dir / "a.bit", "abc");
    writeFile(dir / "empty.bit", "");
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "a.bit", HHDFHwDefFileTypes::BIT);
    def.addFileToBom(dir / "empty.bit", HHDFHwDefFileTypes::BIT);

    EXPECT_EQ(digestsOf(def), (Texts{{"a.bit", ofAbc}, {"empty.bit", ofNothing}}));
}

TEST(Digests, areTakenFromMembersOfTheNamedContainer)
{
    const TempDir dir;
    writeFile(dir / "a.bit", "on disk");
    writeArchive(dir / "other.hdf", {{"a.bit", "abc"}});
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "a.bit", HHDFHwDefFileTypes::BIT, dir / "other.hdf");

    EXPECT_EQ(digestsOf(def), (Texts{{"a.bit", ofAbc}}));
}

TEST(Digests, coverDriverFilesUnderTheirRelativeNames)
{
    const TempDir dir;
    writeFile(dir / "tree/src/x.c", "abc");
    writeArchive(dir / "other.hdf", {{"drivers/y.c", "abc"}});
    HHDFHwDef def(dir / "design.hdf");
    def.addDriverFileToBom("ip", dir / "tree", "src/x.c", "");
    def.addDriverFileToBom("ip", "/nowhere", "drivers/y.c", dir / "other.hdf");

    EXPECT_EQ(digestsOf(def), (Texts{{"drivers/y.c", ofAbc}, {"src/x.c", ofAbc}}));
}

TEST(Digests, countAMemberThatIsntThereAsEmpty)
{
    const TempDir dir;
    writeArchive(dir / "other.hdf", {{"a.bit", "abc"}});
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "missing.bit", HHDFHwDefFileTypes::BIT, dir / "other.hdf");
    def.addFileToBom(dir / "nowhere.bit", HHDFHwDefFileTypes::BIT, dir / "missing.hdf");

    EXPECT_EQ(digestsOf(def), (Texts{{"missing.bit", ofNothing}, {"nowhere.bit", ofNothing}}));
    EXPECT_EQ(messages.joined(), "");
}

TEST(Digests, countADamagedMemberAsEmptyAndSayWhy)
{
    const TempDir dir;
    const std::string content = support::randomBytes(300 * 1024, 1);
    writeArchive(dir / "other.hdf", {{"a.bit", content}});
    support::patchFile(dir / "other.hdf", content.substr(content.size() - 4), "????");
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "a.bit", HHDFHwDefFileTypes::BIT, dir / "other.hdf");

    EXPECT_EQ(digestsOf(def), (Texts{{"a.bit", ofNothing}}));
    ASSERT_EQ(messages.all().size(), 1u);
    EXPECT_NE(messages.all()[0].text.find("a.bit"), std::string::npos) << messages.joined();
}

TEST(Digests, sayWhyAnArchiveCantBeRead)
{
    const TempDir dir;
    writeFile(dir / "other.hdf", "no archive");
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "a.bit", HHDFHwDefFileTypes::BIT, dir / "other.hdf");

    EXPECT_EQ(digestsOf(def), (Texts{{"a.bit", ofNothing}}));
    ASSERT_EQ(messages.all().size(), 1u);
    EXPECT_NE(messages.all()[0].text.find("other.hdf"), std::string::npos) << messages.joined();
}

TEST(Digests, leaveOutAFileThatCantBeOpened)
{
    const TempDir dir;
    ASSERT_EQ(::mkfifo((dir / "fifo").c_str(), 0600), 0);
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "missing.bit", HHDFHwDefFileTypes::BIT);
    def.addFileToBom(dir / "fifo", HHDFHwDefFileTypes::BIT);
    def.addFileToBom(dir.path(), HHDFHwDefFileTypes::BIT);

    std::string overall;
    Texts digests = {{"missing.bit", "earlier"}};
    EXPECT_TRUE(def.calculateDigest(overall, digests));
    EXPECT_EQ(digests, (Texts{{"missing.bit", "earlier"}}));
    EXPECT_EQ(messages.joined(), "");
}

TEST(Digests, ofOneNameAreThoseOfTheLaterEntry)
{
    const TempDir dir;
    writeFile(dir / "one/a.bit", "other bytes");
    writeFile(dir / "two/a.bit", "abc");
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "one/a.bit", HHDFHwDefFileTypes::BIT);
    def.addFileToBom(dir / "two/a.bit", HHDFHwDefFileTypes::BIT);

    EXPECT_EQ(digestsOf(def), (Texts{{"a.bit", ofAbc}}));
}

TEST(Digests, ofNoEntriesAreTheDigestOfNoBytes)
{
    HHDFHwDef def("/nowhere/design.hdf");
    std::string overall;

    EXPECT_TRUE(digestsOf(def, overall).empty());
    EXPECT_EQ(overall, ofNothing);
}

TEST(Digests, joinIntoOneInTheOrderOfNames)
{
    const TempDir dir;
    writeFile(dir / "b.bit", "abc");
    writeFile(dir / "a.bit", "");
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "b.bit", HHDFHwDefFileTypes::BIT);
    def.addFileToBom(dir / "a.bit", HHDFHwDefFileTypes::BIT);

    // The SHA-1 of the two digest texts, that of a.bit first.
    std::string overall;
    digestsOf(def, overall);
    EXPECT_EQ(overall, "24195322272979001720369892517426138496253942796578");
}

TEST(Digests, joinWithThoseThatWereInTheMapBefore)
{
    HHDFHwDef def("/nowhere/design.hdf");
    std::string overall;
    Texts digests = {{"x", "a"}, {"y", "bc"}};

    EXPECT_TRUE(def.calculateDigest(overall, digests));
    EXPECT_EQ(overall, ofAbc);
}

TEST(Digests, matchWhenAllAreTheStoredOnes)
{
    HHDFHwDef def("/nowhere/design.hdf");
    std::string overall = "12345", message = "untouched";
    Texts digests = {{"a", "1"}, {"b", "2"}};
    def.updateDigest(overall, digests);
    def.addDigestForFile("more", "3");

    EXPECT_TRUE(def.compareDigest(overall, digests, message));
    EXPECT_EQ(message, "untouched");
    EXPECT_EQ(def.getDigest(), "12345");
}

TEST(Digests, differInTheFirstNameByByteOrder)
{
    HHDFHwDef def("/nowhere/design.hdf");
    def.addDigestForFile("b", "1");
    def.addDigestForFile("a", "1");
    def.addDigestForFile("B", "1");
    std::string overall, message;
    Texts digests = {{"b", "2"}, {"a", "2"}, {"B", "1"}};

    EXPECT_FALSE(def.compareDigest(overall, digests, message));
    EXPECT_EQ(message, "File: a has been tampered.");
}

TEST(Digests, differWhenOneTextBeginsLikeTheOther)
{
    HHDFHwDef def("/nowhere/design.hdf");
    def.addDigestForFile("a", "123");
    std::string overall, message;
    Texts digests = {{"a", "1234"}};

    EXPECT_FALSE(def.compareDigest(overall, digests, message));
    EXPECT_EQ(message, "File: a has been tampered.");
}

TEST(Digests, differForANameThatNoneIsStoredFor)
{
    HHDFHwDef def("/nowhere/design.hdf");
    std::string overall, message;
    Texts digests = {{"new", "1"}};

    EXPECT_FALSE(def.compareDigest(overall, digests, message));
    EXPECT_EQ(message, "File: new has been tampered.");
}

TEST(Digests, nameNoFileWhenOnlyTheOverallOneDiffers)
{
    HHDFHwDef def("/nowhere/design.hdf");
    std::string stored = "12345", computed = "1234", message;
    Texts digests = {{"a", "1"}};
    def.updateDigest(stored, digests);

    EXPECT_FALSE(def.compareDigest(computed, digests, message));
    EXPECT_EQ(message, "");
}

TEST(Digests, ofAFileAreReplacedByTheLaterCall)
{
    HHDFHwDef def("/nowhere/design.hdf");
    def.addDigestForFile("a", "1");
    def.addDigestForFile("a", "2");
    std::string overall, message;
    Texts digests = {{"a", "2"}};

    EXPECT_TRUE(def.compareDigest(overall, digests, message));
}

TEST(Digests, areAllReplacedByAnUpdate)
{
    HHDFHwDef def("/nowhere/design.hdf");
    def.addDigestForFile("old", "1");
    std::string overall = "12345", message;
    Texts digests = {{"new", "2"}};
    def.updateDigest(overall, digests);
    Texts old = {{"old", "1"}};

    EXPECT_FALSE(def.compareDigest(overall, old, message));
}
