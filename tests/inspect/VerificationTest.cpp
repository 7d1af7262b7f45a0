#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hwdef/inspect/HHDFInspect.h"
#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/HPAParamMgr.h"
#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
#include "platform/Limits.h"
#include "platform/Progress.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using Level = HHDFInspect::Level;
using Findings = std::vector<HHDFFinding>;
using support::bomDocument;
using support::Members;
using support::readFile;
using support::TempDir;
using support::writeFile;

namespace {

const std::string version = "Version=\"1\" Minor=\"7\"";

Findings verified(const std::string& path, Level level = Level::FULL)
{
    Findings findings;
    EXPECT_TRUE(HHDFInspect::verify(path, level, findings));
    return findings;
}

/// One finding a line: "severity id member @offset :line text".
std::string linesOf(const Findings& findings)
{
    std::string lines;
    for (const HHDFFinding& finding : findings) {
        lines += std::string(finding.severityName()) + " " + finding.id + " [" + finding.member + "]" +
                 (finding.offset == 0 ? "" : " @" + std::to_string(finding.offset)) +
                 (finding.line == 0 ? "" : " :" + std::to_string(finding.line)) + " " + finding.text + "\n";
        EXPECT_NE(finding.advice, "");
    }
    return lines;
}

/// What is found in a container of these members with a digest.
std::string found(const Members& members, Level level = Level::FULL)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", members);
    HUTZip::attachDigest(HUTFile(dir / "a.hdf"));
    return linesOf(verified(dir / "a.hdf", level));
}

/// The same for a BOM of version 1.7 with elements from its third line on, and a file "a.bit".
std::string foundInBom(const std::string& elements)
{
    return found({{"hwdef.xml", bomDocument(version, elements)}, {"a.bit", "bits"}});
}

const std::string listsA = "<File Type='BIT' Name='a.bit'/>\n";

}  // namespace

TEST(Verification, findsNothingInAContainerOfOurs)
{
    const TempDir dir;
    writeFile(dir / "a.bit", "bits");
    writeFile(dir / "tree/x.mdd", "driver");
    const auto def = HHDFHwDefUtils::createHDF(dir / "a.hdf");
    def->addFileToBom(dir / "a.bit", HHDFHwDefFileTypes::BIT);
    def->addDriverFileToBom("x", dir / "tree", "x.mdd", "");
    std::string path = "top/rp0", module = "rm_a", file = "a.bit";
    def->addPartitionInfo(path, module, file, true);
    def->addPartitionCell("c", path, module, file, true);
    ASSERT_TRUE(def->write(true));

    EXPECT_EQ(linesOf(verified(dir / "a.hdf")), "");
}

TEST(Verification, saysWhatIsNoArchive)
{
    const TempDir dir;
    writeFile(dir / "a.hdf", "some text, and no archive at all");

    const Findings findings = verified(dir / "a.hdf");
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].id, "archive.not-archive");
    EXPECT_EQ(findings[0].severity, HHDFFinding::ERROR);
    EXPECT_EQ(findings[0].text.find(dir.path()), std::string::npos);
}

TEST(Verification, tellsATruncatedArchiveFromNone)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"hwdef.xml", bomDocument(version, listsA)}, {"a.bit", "bits"}});
    const std::string whole = readFile(dir / "a.hdf");
    writeFile(dir / "a.hdf", whole.substr(0, whole.size() - 30));

    const Findings findings = verified(dir / "a.hdf");
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].id, "archive.truncated");
}

TEST(Verification, tellsADamagedDirectory)
{
    const TempDir dir;
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", bomDocument(version, ""));
    zip.end.entries = 2;
    zip.end.entriesOnDisk = 2;
    zip.write(dir / "a.hdf");

    const Findings findings = verified(dir / "a.hdf");
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].id, "archive.damaged");
}

TEST(Verification, refusesWhatCantBeRead)
{
    const TempDir dir;
    Findings findings(3);
    const support::Messages messages;

    EXPECT_FALSE(HHDFInspect::verify(dir / "missing.hdf", Level::QUICK, findings));
    EXPECT_TRUE(findings.empty());
    EXPECT_FALSE(HHDFInspect::verify(dir.path(), Level::QUICK, findings));
    EXPECT_EQ(messages.all().size(), 2u);
}

TEST(Verification, findsAWrongCrcByReadingOnlyAtTheFullLevel)
{
    const TempDir dir;
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", bomDocument(version, listsA));
    support::ZipMember& member = zip.addStored("a.bit", "bits");
    member.local.crc = member.listed.crc = 0x1f2e3d4c;
    zip.write(dir / "a.hdf");
    const std::size_t offset = readFile(dir / "a.hdf").find("PK\x03\x04", 4);

    EXPECT_EQ(linesOf(verified(dir / "a.hdf", Level::QUICK)), "");
    EXPECT_EQ(linesOf(verified(dir / "a.hdf")),
              "error archive.crc [a.bit] @" + std::to_string(offset) +
                  " CRC-32 is 75328c4f, directory says 1f2e3d4c\n"
                  "notice archive.no-digest [] the archive records no digest of itself\n");
}

TEST(Verification, findsOtherDamageOfAMember)
{
    const TempDir dir;
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", bomDocument(version, listsA));
    zip.addDeflated("a.bit", std::string(100, 'b')).data[0] = '\xff';
    zip.write(dir / "a.hdf");

    const Findings findings = verified(dir / "a.hdf");
    ASSERT_EQ(findings.size(), 2u);
    EXPECT_EQ(findings[0].id, "archive.member");
    EXPECT_EQ(findings[0].member, "a.bit");
}

TEST(Verification, findsEncryptedMembers)
{
    const TempDir dir;
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", bomDocument(version, listsA));
    zip.addStored("a.bit", "bits").setFlag(1);
    zip.write(dir / "a.hdf");

    const Findings findings = verified(dir / "a.hdf", Level::QUICK);
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].id, "archive.unsupported");
}

TEST(Verification, findsMembersThatAreListedTwiceOrLeadOut)
{
    const TempDir dir;
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", bomDocument(version, listsA));
    zip.addStored("a.bit", "old");
    zip.addStored("a.bit", "new");
    zip.addStored("x/../../etc", "evil");
    zip.write(dir / "a.hdf");

    const Findings findings = verified(dir / "a.hdf", Level::QUICK);
    ASSERT_EQ(findings.size(), 3u);
    EXPECT_EQ(findings[0].id, "archive.duplicate-member");
    EXPECT_EQ(findings[1].id, "archive.unsafe-name");
    EXPECT_EQ(findings[2].id, "bom.member-unlisted");
    EXPECT_EQ(findings[2].member, "x/../../etc");
}

TEST(Verification, findsNamesThatLeadOut)
{
    const TempDir dir;
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", bomDocument(version, listsA));
    zip.addStored("a.bit", "bits");
    zip.addStored("/etc/x", "evil");
    zip.addStored(std::string("a\0b", 3), "evil");
    zip.write(dir / "a.hdf");
    const std::string text = linesOf(verified(dir / "a.hdf", Level::QUICK));
    EXPECT_NE(text.find("warning archive.unsafe-name [/etc/x]"), std::string::npos) << text;
    EXPECT_NE(text.find("warning archive.unsafe-name [a" + std::string(1, '\0')), std::string::npos) << text;
}

TEST(Verification, findsBytesInFrontOfAnArchive)
{
    const TempDir dir;
    support::ZipBuilder zip;
    zip.prefix = "stub";
    zip.addStored("hwdef.xml", bomDocument(version, listsA));
    zip.addStored("a.bit", "bits");
    zip.write(dir / "a.hdf");
    const std::string text = linesOf(verified(dir / "a.hdf", Level::QUICK));
    EXPECT_NE(text.find("notice archive.leading-bytes [] 4 bytes stand in front of the archive\n"),
              std::string::npos)
        << text;
}

TEST(Verification, tellsWhyTheBomCantBeRead)
{
    const TempDir dir;
    const std::string bom = bomDocument(version, listsA);
    support::writeArchive(dir / "a.hdf", {{"hwdef.xml", bom}, {"a.bit", "bits"}});
    auto* parameters = HPAParamMgr::getParamMgr();
    parameters->setValue(platform::limits::MAX_MEMBER_IN_MEMORY, "10");
    const std::string large = linesOf(verified(dir / "a.hdf", Level::QUICK));
    parameters->setValue(platform::limits::MAX_MEMBER_IN_MEMORY, "");
    EXPECT_NE(large.find("error bom.too-large [hwdef.xml] has " + std::to_string(bom.size()) +
                         " bytes, allowed are 10\n"),
              std::string::npos)
        << large;
    support::patchFile(dir / "a.hdf", "a.bit", "a.bat");
    const std::string damaged = linesOf(verified(dir / "a.hdf", Level::QUICK));
    EXPECT_NE(damaged.find("error bom.unreadable [hwdef.xml] "), std::string::npos) << damaged;
    EXPECT_NE(damaged.find("CRC-32"), std::string::npos) << damaged;
}

TEST(Verification, looksIntoNoMemberThatCantBeUnpacked)
{
    const TempDir dir;
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", bomDocument(version, listsA));
    support::ZipMember& member = zip.addStored("a.bit", "bits");
    member.local.method = member.listed.method = 14;
    zip.write(dir / "a.hdf");
    const Findings findings = verified(dir / "a.hdf");
    ASSERT_EQ(findings.size(), 2u) << linesOf(findings);
    EXPECT_EQ(findings[0].id + " " + findings[0].member, "archive.unsupported a.bit");
    EXPECT_EQ(findings[1].id, "archive.no-digest");
}

TEST(Verification, holdsDigestsOfDriverFilesAgainstTheBom)
{
    const std::string text = found(
        {{"hwdef.xml", bomDocument("Version='1' Minor='2' DIGEST='0'",
                                   "<DRIVERS><DRIVER IP_VLNV='g'><File PATH='drivers/x.mdd' DIGEST='00'/>"
                                   "<File PATH='drivers/y.c'/>"
                                   "<File PATH='drivers/gone.c' DIGEST='1'/></DRIVER></DRIVERS>")},
         {"drivers/x.mdd", "driver"},
         {"drivers/y.c", "code"}});
    EXPECT_NE(text.find("error bom.digest [drivers/x.mdd] :3 has the digest "), std::string::npos) << text;
    EXPECT_NE(text.find(", recorded is \"00\"\n"), std::string::npos) << text;
    EXPECT_NE(
        text.find("error bom.digest [drivers/y.c] no digest is recorded, so that it counts as changed\n"),
        std::string::npos)
        << text;
    // What isn't there counts as empty.
    EXPECT_NE(text.find("error bom.digest [drivers/gone.c] :3 has the digest "
                        "3661210606158408986984448049525061029282950170377, recorded "
                        "is \"1\"\n"),
              std::string::npos)
        << text;
}

TEST(Verification, findsAChangedArchiveAndBytesAroundIt)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"hwdef.xml", bomDocument(version, listsA)}, {"a.bit", "bits"}});
    HUTZip::attachDigest(HUTFile(dir / "a.hdf"));
    const std::string whole = readFile(dir / "a.hdf");
    const std::size_t time = whole.find("PK\x03\x04") + 10;
    std::string changed = whole;
    changed[time] = static_cast<char>(changed[time] ^ 1);
    writeFile(dir / "b.hdf", changed);
    EXPECT_EQ(verified(dir / "b.hdf").at(0).id, "archive.digest");
    EXPECT_TRUE(verified(dir / "b.hdf", Level::QUICK).empty());

    writeFile(dir / "c.hdf", whole + "more");
    EXPECT_EQ(linesOf(verified(dir / "c.hdf")),
              "warning archive.trailing-bytes [] @" + std::to_string(whole.size()) +
                  " 4 bytes stand behind the archive's end\n"
                  "error archive.digest [] @" +
                  std::to_string(whole.size()) +
                  " the recorded digest must be the end of the file, but bytes stand behind it\n");
}

TEST(Verification, asksForADigestWhereOpeningDoes)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"hwdef.xml", bomDocument("Version='1' Minor='3'", "")}});

    EXPECT_EQ(linesOf(verified(dir / "a.hdf")),
              "error archive.no-digest [] the archive records no digest of itself, which opening with an "
              "integrity check refuses\n");
}

TEST(Verification, findsAMissingBomAndASecondOne)
{
    EXPECT_EQ(
        found({{"a.bit", "bits"}}),
        "error bom.missing [] the archive has neither \"hwdef.xml\" nor \"sysdef.xml\" on its top level\n");
    const std::string bom = bomDocument(version, "");
    const std::string two = found({{"hwdef.xml", bom}, {"sysdef.xml", bom}});
    EXPECT_NE(two.find("warning bom.two [sysdef.xml] @"), std::string::npos) << two;
}

TEST(Verification, saysAtWhichLineTheBomBreaks)
{
    const std::string text = found({{"hwdef.xml", "<Project Version='1'>\n<File>\n</Project>\n"}});
    EXPECT_EQ(text.find("error bom.xml [hwdef.xml] :3 column "), 0u) << text;
}

TEST(Verification, findsVersionsThatCantBeRead)
{
    EXPECT_EQ(
        found({{"hwdef.xml", bomDocument("Version='2' Minor='0'", "<File/>")}}),
        "error bom.version [hwdef.xml] :2 \"Version\" is \"2\", \"1\" is known: nothing of the document is "
        "read\n");
    EXPECT_EQ(found({{"hwdef.xml", bomDocument("Version='1' Minor='x'", "")}}),
              "error bom.number [hwdef.xml] :2 \"Minor\" is \"x\", which is no number\n");
    EXPECT_EQ(foundInBom(listsA + "<PART><NUM_OF_SLRS Value='2x'/></PART>"),
              "error bom.number [hwdef.xml] :4 the number of dies is \"2x\", which is no number\n");
}

TEST(Verification, holdsEntriesAgainstMembers)
{
    EXPECT_EQ(
        foundInBom(listsA + "<File Type='BIT' Name='b.bit'/>\n<File Type='ELF' Name='a.bit'/>\n"
                            "<File Type='BIT'/>"),
        "error bom.member-missing [hwdef.xml] :4 \"b.bit\" is listed, but the archive has no such member\n"
        "warning bom.listed-twice [hwdef.xml] :5 \"a.bit\" is listed here and in line 3\n"
        "warning bom.no-name [hwdef.xml] :6 an entry has no \"Name\"; it is dropped\n");
    const std::string unlisted = foundInBom("");
    EXPECT_EQ(unlisted.find("warning bom.member-unlisted [a.bit] @"), 0u) << unlisted;
}

TEST(Verification, knowsMembersByTheLastComponentOfAnEntrysName)
{
    EXPECT_EQ(foundInBom("<File Type='BIT' Name='some/dir/a.bit'/>"), "");
}

TEST(Verification, findsTypesAndRolesThatNobodyKnows)
{
    EXPECT_EQ(
        foundInBom("<File Type='BITS' Name='a.bit'/>"),
        "warning bom.unknown-type [hwdef.xml] :3 \"a.bit\" has the type \"BITS\", which nobody knows\n");
    EXPECT_EQ(foundInBom("<File Type='HW_HANDOFF' Name='a.bit' BD_TYPE='X'/>"),
              "warning bom.unknown-role [hwdef.xml] :3 \"a.bit\" has the role \"X\", which nobody knows\n");
    EXPECT_EQ(foundInBom("<File Type='UNKNOWN' Name='a.bit'/>"), "");
}

TEST(Verification, checksTheDriverRule)
{
    const auto drivers = [](const std::string& files) {
        return "<DRIVERS><DRIVER IP_VLNV='x'>" + files + "</DRIVER></DRIVERS>";
    };
    const auto foundWith = [&](const std::string& files) {
        return found({{"hwdef.xml", bomDocument(version, drivers(files))}, {"drivers/x.mdd", "m"}});
    };
    EXPECT_EQ(foundWith("<File PATH='drivers/x.mdd'/>"), "");
    EXPECT_EQ(
        foundWith("<File PATH='drivers/x.mdd'/><File PATH='drivers/y.c'/><File/>"),
        "error bom.member-missing [hwdef.xml] :3 \"drivers/y.c\" is a driver's file, but the archive has no "
        "such member\n"
        "warning driver.no-path [hwdef.xml] :3 a driver's file has no \"PATH\"; it is dropped\n");
    EXPECT_EQ(
        found({{"hwdef.xml", bomDocument(version, drivers("<File PATH='y.c'/>"))}, {"drivers/y.c", "c"}}),
        "warning driver.no-description [hwdef.xml] :3 the driver \"x\" has no file with the extension "
        "\".mdd\"\n");
}

TEST(Verification, countsMembersBelowADriverSourceAsListed)
{
    EXPECT_EQ(found({{"hwdef.xml", bomDocument(version, "<File Type='DRIVER_SRC' Name='drivers'/>")},
                     {"drivers/deep/x.c", "c"}}),
              "");
}

TEST(Verification, findsPartitionReferencesThatLeadNowhere)
{
    const std::string partitions =
        "<Instance_Paths><Reconfigurable_Partition Instance_Path='rp0' DEFALUT_CONFIG_RM='none'>\n"
        "<File RM_NAME='rm' Name='b.bit'/></Reconfigurable_Partition>\n"
        "<Reconfigurable_Partition Instance_Path='rp0'/></Instance_Paths>\n";
    const std::string configurations =
        "<PRConfigurations><PRConfiguration Name='c' Active='true'>\n"
        "<PartitionInstMap Instance_Path='rp1' RM_NAME='rm'/>\n"
        "<PartitionInstMap Instance_Path='rp0' RM_NAME='other'/><GrayBoxInst Name='rp2'/></PRConfiguration>\n"
        "<PRConfiguration Name='d' Active='TRUE'/></PRConfigurations>\n";
    EXPECT_EQ(
        foundInBom(listsA + configurations + partitions),
        "warning partition.twice [hwdef.xml] :10 the partition \"rp0\" stands here and in line 8\n"
        "error partition.unknown-module [hwdef.xml] :8 the default module \"none\" is none of the partition "
        "\"rp0\"\n"
        "warning partition.unlisted-file [hwdef.xml] :9 \"b.bit\" is named here, but no entry lists it\n"
        "error partition.unknown [hwdef.xml] :5 there is no partition \"rp1\"\n"
        "error partition.unknown-module [hwdef.xml] :6 the module \"other\" is none of the partition "
        "\"rp0\"\n"
        "error partition.unknown [hwdef.xml] :6 there is no partition \"rp2\"\n"
        "warning partition.several-active [hwdef.xml] :7 the configuration \"d\" is active, and \"c\" is as "
        "well\n");
}

namespace {

/// A container with the digests of its present bytes, in a BOM of minor version 2.
void writeDigested(const std::string& path, const std::string& content, const std::string& recordedContent)
{
    const auto bomOf = [](const std::string& overall, const std::string& digest) {
        return bomDocument("Version='1' Minor='2' DIGEST='" + overall + "'",
                           "<File Type='BIT' Name='a.bit' DIGEST='" + digest + "'/>\n");
    };
    support::writeArchive(path, {{"hwdef.xml", bomOf("", "x")}, {"a.bit", recordedContent}});
    std::string overall;
    HHDFHwDef::Texts digests;
    HHDFHwDefUtils::getHDF(path)->calculateDigest(overall, digests);
    support::writeArchive(path, {{"hwdef.xml", bomOf(overall, digests["a.bit"])}, {"a.bit", content}});
}

}  // namespace

TEST(Verification, holdsMembersAgainstTheirRecordedDigests)
{
    const TempDir dir;
    writeDigested(dir / "a.hdf", "bits", "bits");
    EXPECT_EQ(verified(dir / "a.hdf").size(), 1u);  // there is no digest of the archive

    writeDigested(dir / "a.hdf", "changed", "bits");
    const Findings findings = verified(dir / "a.hdf");
    ASSERT_EQ(findings.size(), 3u) << linesOf(findings);
    EXPECT_EQ(findings[0].id + findings[0].member, "bom.digesta.bit");
    EXPECT_EQ(findings[0].line, 3u);
    EXPECT_EQ(findings[0].severity, HHDFFinding::ERROR);
    EXPECT_EQ(findings[1].id + findings[1].member, "bom.digesthwdef.xml");
    EXPECT_TRUE(verified(dir / "a.hdf", Level::QUICK).empty());
}

TEST(Verification, warnsOfDigestsThatOpeningDoesNotLookAt)
{
    const std::string text = foundInBom("<File Type='BIT' Name='a.bit' DIGEST='1'/>");
    EXPECT_EQ(text.find("warning bom.digest [a.bit] :3 has the digest "), 0u) << text;
}

TEST(Verification, tellsAThousandOfAKindAndCountsTheRest)
{
    std::string elements;
    for (int number = 0; number < 1203; ++number) {
        elements += "<File Type='BIT' Name='m" + std::to_string(number) + "'/>\n";
    }
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"hwdef.xml", bomDocument(version, elements)}});
    const Findings findings = verified(dir / "a.hdf", Level::QUICK);

    ASSERT_EQ(findings.size(), HHDFInspect::MOST_OF_A_KIND);
    EXPECT_EQ(findings.back().text,
              "\"m999\" is listed, but the archive has no such member; 203 more are not told");
}

TEST(Verification, unpacksNoMoreThanIsAllowed)
{
    const TempDir dir;
    support::writeZeros(dir / "zeros.hdf", "a.bit", 1 << 20);
    auto* parameters = HPAParamMgr::getParamMgr();
    parameters->setValue(platform::limits::MAX_DIGESTED, "1000");
    const Findings findings = verified(dir / "zeros.hdf");
    parameters->setValue(platform::limits::MAX_DIGESTED, "");

    ASSERT_EQ(findings.size(), 3u) << linesOf(findings);
    EXPECT_EQ(findings[1].id, "archive.too-large");
}

TEST(Verification, looksThroughNoBomThatTakesTooMuchMemory)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"hwdef.xml", bomDocument(version, listsA)}, {"a.bit", "bits"}});
    auto* parameters = HPAParamMgr::getParamMgr();
    for (const char* allowed : {"100", "900"}) {  // for parsing it, and for looking through it
        parameters->setValue(platform::limits::MAX_DOCUMENT_MEMORY, allowed);
        const Findings findings = verified(dir / "a.hdf", Level::QUICK);
        ASSERT_EQ(findings.size(), 1u) << linesOf(findings);
        EXPECT_EQ(findings[0].id, "bom.too-large");
    }
    parameters->setValue(platform::limits::MAX_DOCUMENT_MEMORY, "");
}

TEST(Verification, canBeCancelled)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"hwdef.xml", bomDocument(version, listsA)}, {"a.bit", "bits"}});
    const support::Messages messages;
    const platform::ProgressWatch watch([](const platform::Progress&) { return false; });
    Findings findings;

    EXPECT_FALSE(HHDFInspect::verify(dir / "a.hdf", Level::FULL, findings));
    EXPECT_EQ(messages.all().size(), 1u);
    EXPECT_NE(messages.joined().find("cancelled"), std::string::npos);
}
