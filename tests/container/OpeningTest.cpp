#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <stdexcept>

#include "hwdef/model/HHDFHwDefImp.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"

namespace fs = boost::filesystem;
using support::bomDocument;
using support::bomOfFiles;
using support::Messages;
using support::TempDir;
using support::writeArchive;

namespace {

const std::string version10 = "Version=\"1\" Minor=\"0\"";

/// Changes the working directory for the length of a test.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const std::string& dir) : earlier_(fs::current_path())
    {
        fs::current_path(dir);
    }
    ~WorkingDirectory() { fs::current_path(earlier_); }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

private:
    fs::path earlier_;
};

std::string filesOf(const HHDFHwDef& def)
{
    std::vector<std::string> names;
    def.getBomFiles(names);
    std::string joined;
    for (const std::string& name : names) {
        joined += (joined.empty() ? "" : " ") + name;
    }
    return joined;
}

/// The digest text of the bytes "content of a.bit", and of that text alone as overall digest.
const char* const digestOfA = "1536109883184808578875992290439838895484285748336";
const char* const digestOverall = "2119824519992312475139154963625016581381137786829";

/// A container of minor version 2 with one digested member.
void writeDigested(const std::string& path, const std::string& fileDigest, const std::string& overall)
{
    writeArchive(path, {{"hwdef.xml",
                         bomDocument("Version=\"1\" Minor=\"2\" DIGEST=\"" + overall + "\"",
                                     "<File Type=\"BIT\" Name=\"a.bit\" DIGEST=\"" + fileDigest + "\"/>\n")},
                        {"a.bit", "content of a.bit"}});
}

}  // namespace

TEST(Opening, readsTheBomOfAContainer)
{
    const TempDir dir;
    writeArchive(dir / "design.hdf", {{"hwdef.xml", bomOfFiles("0", {"a.bit", "b.bit"})}});
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");

    EXPECT_TRUE(def.init(false, ""));
    EXPECT_EQ(filesOf(def), "a.bit b.bit");
    EXPECT_EQ(def.getUnzipDir(), dir / "design");
    EXPECT_EQ(messages.joined(), "");
}

TEST(Opening, unpacksNothing)
{
    const TempDir dir;
    writeArchive(dir / "design.hdf", {{"hwdef.xml", bomOfFiles("0", {"a.bit"})}, {"a.bit", "content"}});
    HHDFHwDef def(dir / "design.hdf");

    EXPECT_TRUE(def.init(false, ""));
    EXPECT_EQ(dir.list(), "design.hdf");
}

TEST(Opening, needsAContainerFileObject)
{
    const Messages messages;
    HHDFHwDef def("/nowhere/design.hdf");
    def.implementation()->container.reset();

    EXPECT_FALSE(def.init(false, ""));
    EXPECT_EQ(messages.joined(), "hdf @64-6@ 20000000 []\n");
}

TEST(Opening, saysThatNothingExistsAtThePath)
{
    const Messages messages;
    HHDFHwDef def("nowhere/./design.hdf");

    EXPECT_FALSE(def.init(false, ""));
    EXPECT_EQ(messages.joined(), "hdf @64-5@%s 20000000 [nowhere/./design.hdf]\n");
}

TEST(Opening, saysThatAnArchiveHoldsNoBom)
{
    const TempDir dir;
    writeArchive(dir / "design.hdf", {{"HWDEF.xml", bomOfFiles("0", {})}, {"sub/sysdef.xml", "x"}});
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");

    EXPECT_FALSE(def.init(false, ""));
    EXPECT_EQ(messages.joined(), "hdf @64-4@%s 20000000 [" + (dir / "design.hdf") + "]\n");
}

TEST(Opening, takesWhatIsNoArchiveForOneWithoutABom)
{
    const TempDir dir;
    const Messages messages;
    for (const char* content : {"", "no archive", "PK\x05\x06 cut off"}) {
        support::writeFile(dir / "design.hdf", content);
        HHDFHwDef def(dir / "design.hdf");
        EXPECT_FALSE(def.init(false, "")) << content;
    }
    HHDFHwDef directory(dir.path());
    EXPECT_FALSE(directory.init(false, ""));

    const std::string file = "hdf @64-4@%s 20000000 [" + (dir / "design.hdf") + "]\n";
    EXPECT_EQ(messages.joined(), file + file + file + "hdf @64-4@%s 20000000 [" + dir.path() + "]\n");
}

TEST(Opening, prefersTheDocumentBeforeSynthesis)
{
    const TempDir dir;
    writeArchive(dir / "both.hdf",
                 {{"sysdef.xml", bomOfFiles("0", {"sys.bit"})}, {"hwdef.xml", bomOfFiles("0", {"hw.bit"})}});
    HHDFHwDef def(dir / "both.hdf");

    EXPECT_TRUE(def.init(false, ""));
    EXPECT_EQ(filesOf(def), "hw.bit");
}

TEST(Opening, readsTheDocumentAfterSynthesisWhenItStandsAlone)
{
    const TempDir dir;
    writeArchive(dir / "sys.hdf", {{"sysdef.xml", bomOfFiles("0", {"sys.bit"})}});
    HHDFHwDef def(dir / "sys.hdf");

    EXPECT_TRUE(def.init(false, ""));
    EXPECT_EQ(filesOf(def), "sys.bit");
}

TEST(Opening, saysThatTheBomIsEmpty)
{
    const TempDir dir;
    writeArchive(dir / "design.hdf", {{"sysdef.xml", ""}});
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");

    EXPECT_FALSE(def.init(false, ""));
    EXPECT_EQ(messages.joined(), "hdf @64-11@%s 20000000 [sysdef.xml]\n");
}

TEST(Opening, saysWhyTheBomCantBeRead)
{
    const TempDir dir;
    writeArchive(dir / "design.hdf", {{"hwdef.xml", bomOfFiles("0", {"a.bit"})}});
    support::patchFile(dir / "design.hdf", "Name=\"a.bit\"", "Name=\"b.bit\"");
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");

    EXPECT_FALSE(def.init(false, ""));
    ASSERT_EQ(messages.all().size(), 2u);
    EXPECT_NE(messages.all()[0].text.find("hwdef.xml"), std::string::npos) << messages.joined();
    EXPECT_EQ(messages.all()[1].id, "@64-11@%s");
}

TEST(Opening, refusesABomThatIsMeantToExhaustMemory)
{
    const TempDir dir;
    support::writeZeros(dir / "bomb.hdf", "hwdef.xml", 256ull * 1024 * 1024 + 1);
    const Messages messages;
    HHDFHwDef def(dir / "bomb.hdf");

    EXPECT_FALSE(def.init(false, ""));
    ASSERT_EQ(messages.all().size(), 2u);
    EXPECT_NE(messages.all()[0].text.find("hwdef.xml"), std::string::npos) << messages.joined();
    EXPECT_EQ(messages.all()[1].id, "@64-11@%s");
}

TEST(Opening, isSilentWhenTheBomDoesntParse)
{
    const TempDir dir;
    const Messages messages;
    for (const char* document : {"<Project", "no XML", "<Project></File>", " "}) {
        writeArchive(dir / "design.hdf", {{"hwdef.xml", document}});
        HHDFHwDef def(dir / "design.hdf");
        EXPECT_FALSE(def.init(false, "")) << document;
    }
    EXPECT_EQ(messages.joined(), "");
}

TEST(Opening, leavesADocumentOfAnotherVersionUnread)
{
    const TempDir dir;
    for (const char* version : {"2", "01", "1.0", ""}) {
        writeArchive(dir / "design.hdf",
                     {{"hwdef.xml", bomDocument("Version=\"" + std::string(version) + "\"",
                                                "<File Type=\"BIT\" Name=\"a.bit\"/>")}});
        HHDFHwDef def(dir / "design.hdf");
        EXPECT_TRUE(def.init(false, "")) << version;
        EXPECT_EQ(filesOf(def), "") << version;
        EXPECT_EQ(def.getMajorVersion(), 1u);
        EXPECT_EQ(def.getMinorVersion(), 7u);
    }
}

TEST(Opening, letsConversionErrorsOfTheVersionPass)
{
    const TempDir dir;
    HHDFHwDef missing(dir / "missing.hdf");
    writeArchive(dir / "missing.hdf", {{"hwdef.xml", bomDocument("Version=\"1\"", "")}});
    EXPECT_THROW(missing.init(false, ""), std::invalid_argument);

    HHDFHwDef huge(dir / "huge.hdf");
    writeArchive(dir / "huge.hdf", {{"hwdef.xml", bomDocument("Version=\"1\" Minor=\"99999999999\"", "")}});
    EXPECT_THROW(huge.init(false, ""), std::out_of_range);
}

TEST(Opening, passesTheDriverPathOn)
{
    const TempDir dir;
    writeArchive(dir / "design.hdf",
                 {{"hwdef.xml", bomDocument(version10,
                                            "<DRIVERS><DRIVER IP_VLNV=\"ip\"><File PATH=\"a.c\"/>"
                                            "</DRIVER></DRIVERS>")}});
    HHDFHwDef def(dir / "design.hdf");

    EXPECT_TRUE(def.init(false, "/elsewhere"));
    EXPECT_EQ(def.getDriversTopDir(), "/elsewhere/drivers");
}

// --- The unzip directory.

TEST(Opening, takesTheUnzipDirectoryFromTheLastDotOfTheWholePath)
{
    const TempDir dir;
    fs::create_directory(dir / "dir.old");
    writeArchive(dir / "dir.old/design", {{"hwdef.xml", bomOfFiles("0", {})}});
    writeArchive(dir / "dir.old/a.b.hdf", {{"hwdef.xml", bomOfFiles("0", {})}});

    HHDFHwDef noExtension(dir / "dir.old/design");
    EXPECT_TRUE(noExtension.init(false, ""));
    EXPECT_EQ(noExtension.getUnzipDir(), dir / "dir");

    HHDFHwDef twoDots(dir / "dir.old/a.b.hdf");
    EXPECT_TRUE(twoDots.init(false, ""));
    EXPECT_EQ(twoDots.getUnzipDir(), dir / "dir.old/a.b");
}

TEST(Opening, rootsTheUnzipDirectoryOfARelativePathInTheWorkingDirectory)
{
    const TempDir dir;
    fs::create_directories(dir / "sub");
    writeArchive(dir / "sub/design.hdf", {{"hwdef.xml", bomOfFiles("0", {})}});
    writeArchive(dir / "plain", {{"hwdef.xml", bomOfFiles("0", {})}});
    const WorkingDirectory working(dir.path());
    const std::string here = fs::current_path().string();

    HHDFHwDef relative("sub/design.hdf");
    EXPECT_TRUE(relative.init(false, ""));
    EXPECT_EQ(relative.getUnzipDir(), here + "/sub/design");

    HHDFHwDef dotted("./sub/design.hdf");
    EXPECT_TRUE(dotted.init(false, ""));
    EXPECT_EQ(dotted.getUnzipDir(), here + "/./sub/design");

    HHDFHwDef withoutDot("plain");
    EXPECT_TRUE(withoutDot.init(false, ""));
    EXPECT_EQ(withoutDot.getUnzipDir(), here + "/plain");
}

TEST(Opening, knowsNoUnzipDirectoryBefore)
{
    EXPECT_EQ(HHDFHwDef("/data/design.hdf").getUnzipDir(), "");
}

TEST(Opening, givesTheContainersCanonicalPath)
{
    std::string path = "untouched";
    HHDFHwDef def("/data/./sub/../design.hdf");
    def.getContainerFullPath(path);
    EXPECT_EQ(path, "/data/design.hdf");

    path = "untouched";
    def.implementation()->container.reset();
    def.getContainerFullPath(path);
    EXPECT_EQ(path, "untouched");
}

// --- Integrity.

TEST(Opening, acceptsMembersThatHaveTheirRecordedDigests)
{
    const TempDir dir;
    writeDigested(dir / "design.hdf", digestOfA, digestOverall);
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");

    EXPECT_TRUE(def.init(true, ""));
    EXPECT_EQ(messages.joined(), "");
}

TEST(Opening, namesTheTamperedMember)
{
    const TempDir dir;
    writeDigested(dir / "design.hdf", "12345", digestOverall);
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");

    EXPECT_FALSE(def.init(true, ""));
    EXPECT_EQ(messages.joined(), "hdf @64-23@%s 20000000 [File: a.bit has been tampered.]\n");
}

TEST(Opening, namesNoMemberWhenOnlyTheOverallDigestDiffers)
{
    const TempDir dir;
    writeDigested(dir / "design.hdf", digestOfA, "12345");
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");

    EXPECT_FALSE(def.init(true, ""));
    EXPECT_EQ(messages.joined(), "hdf @64-23@%s 20000000 []\n");
}

TEST(Opening, ignoresDigestsUnlessAskedFor)
{
    const TempDir dir;
    writeDigested(dir / "design.hdf", "12345", "12345");
    HHDFHwDef def(dir / "design.hdf");

    EXPECT_TRUE(def.init(false, ""));
}

TEST(Opening, ignoresAMismatchWithoutAnOverallDigest)
{
    const TempDir dir;
    writeDigested(dir / "design.hdf", "12345", "");
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");

    EXPECT_TRUE(def.init(true, ""));
    EXPECT_EQ(messages.joined(), "");
}

TEST(Opening, checksTheArchiveDigestOfMinorVersionThree)
{
    const TempDir dir;
    writeArchive(dir / "design.hdf", {{"hwdef.xml", bomOfFiles("3", {})}});
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");

    EXPECT_FALSE(def.init(true, ""));
    EXPECT_EQ(messages.joined(), "hdf @64-25@ 20000000 []\n");
}

TEST(Opening, acceptsAnArchiveThatHasItsDigest)
{
    const TempDir dir;
    support::writeFile(dir / "a.bit", "!content of a.bit?");
    HHDFHwDef written(dir / "design.hdf");
    written.setMinorVersion(3);
    written.addFileToBom(dir / "a.bit", HHDFHwDefFileTypes::BIT);
    ASSERT_TRUE(written.write(true));
    HHDFHwDef def(dir / "design.hdf");
    EXPECT_TRUE(def.init(true, ""));

    support::patchFile(dir / "design.hdf", "!content", "?content");
    const Messages messages;
    HHDFHwDef tampered(dir / "design.hdf");
    EXPECT_FALSE(tampered.init(true, ""));
    EXPECT_EQ(messages.joined(), "hdf @64-25@ 20000000 []\n");
}

TEST(Opening, checksNothingForAnyOtherMinorVersion)
{
    const TempDir dir;
    const Messages messages;
    for (const char* minor : {"0", "1", "7", "22", " 2"}) {
        writeArchive(
            dir / "design.hdf",
            {{"hwdef.xml",
              bomDocument("Version=\"1\" DIGEST=\"12345\" Minor=\"" + std::string(minor) + "\"", "")}});
        HHDFHwDef def(dir / "design.hdf");
        EXPECT_TRUE(def.init(true, "")) << minor;
    }
    EXPECT_EQ(messages.joined(), "");
}
