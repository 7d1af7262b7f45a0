// What packaging says, and what it leaves behind, when something is wrong.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <boost/filesystem.hpp>

#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/HUTZip.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/Messages.h"
#include "support/TempDir.h"

namespace fs = boost::filesystem;
using support::memberOf;
using support::Messages;
using support::namesIn;
using support::TempDir;
using support::writeArchive;
using support::writeFile;

namespace {

const auto bit = HHDFHwDefFileTypes::BIT;

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

/// The one message there is.
std::string only(const Messages& messages)
{
    EXPECT_EQ(messages.all().size(), 1u) << messages.joined();
    return messages.all().empty() ? "" : messages.all().front().text;
}

}  // namespace

TEST(Packaging, saysOnceThatASourceOnDiskIsMissing)
{
    const TempDir dir;
    writeFile(dir / "b.bit", "b");
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "missing/a.bit", bit);
    def.addFileToBom(dir / "b.bit", bit);

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(namesIn(dir / "design.hdf"), "hwdef.xml b.bit");
    const std::string text = only(messages);
    EXPECT_EQ(text.find((dir / "design.hdf") + ": member \"a.bit\" can't be added from " +
                        (dir / "missing/a.bit") + ": "),
              0u)
        << text;
    EXPECT_TRUE(contains(text, "No such file")) << text;
}

TEST(Packaging, saysThatASourceIsNoFile)
{
    const TempDir dir;
    fs::create_directory(dir / "a.bit");
    ASSERT_EQ(::mkfifo((dir / "fifo").c_str(), 0600), 0);
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "a.bit", bit);
    def.addFileToBom(dir / "fifo", bit);

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(namesIn(dir / "design.hdf"), "hwdef.xml");
    EXPECT_EQ(messages.all().size(), 2u) << messages.joined();
}

TEST(Packaging, saysThatAContainerHasNoSuchMember)
{
    const TempDir dir;
    writeArchive(dir / "other.hdf", {{"b.bit", "b"}});
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "a.bit", bit, dir / "other.hdf");

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(only(messages), (dir / "design.hdf") + ": member \"a.bit\" can't be added from " +
                                  (dir / "other.hdf") + ": the container has no such member");
}

TEST(Packaging, saysThatASourceContainerIsMissingOrNoArchive)
{
    const TempDir dir;
    writeFile(dir / "text.hdf", "no archive");
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "a.bit", bit, dir / "missing.hdf");
    def.addFileToBom(dir / "b.bit", bit, dir / "text.hdf");

    EXPECT_TRUE(def.write(true));
    ASSERT_EQ(messages.all().size(), 2u) << messages.joined();
    EXPECT_EQ(messages.all()[0].text, (dir / "design.hdf") + ": member \"a.bit\" can't be added from " +
                                          (dir / "missing.hdf") + ": there is no such container");
    EXPECT_TRUE(contains(messages.all()[1].text, "\"b.bit\"")) << messages.joined();
    EXPECT_TRUE(contains(messages.all()[1].text, dir / "text.hdf")) << messages.joined();
}

TEST(Packaging, saysThatAFileInACoreContainerIsMissing)
{
    const TempDir dir;
    writeArchive(dir / "core.zip", {{"a.bit", "a"}});
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "core.zip/b.bit", bit);

    EXPECT_TRUE(def.write(true));
    EXPECT_TRUE(contains(only(messages), "member \"b.bit\" can't be added from " + (dir / "core.zip/b.bit")));
}

TEST(Packaging, saysThatAMemberHasNoName)
{
    const TempDir dir;
    writeFile(dir / "x", "content");
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addDrivers("ip", {HHDFHwDefDriver(dir / "x", "x.mdd", ""), HHDFHwDefDriver(dir / "x", "", "")});

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(namesIn(dir / "design.hdf"), "hwdef.xml x.mdd");
    EXPECT_EQ(only(messages), (dir / "design.hdf") + ": member \"\" can't be added from " + (dir / "x") +
                                  ": a member must have a name");
}

// --- Two entries for one member.

TEST(Packaging, takesTheLaterOfTwoFilesOfOneNameAndSaysSo)
{
    const TempDir dir;
    writeFile(dir / "one/a.bit", "one");
    writeFile(dir / "two/a.bit", "two");
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "one/a.bit", bit);
    def.addFileToBom(dir / "two/a.bit", bit);

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(namesIn(dir / "design.hdf"), "hwdef.xml a.bit");
    EXPECT_EQ(memberOf(dir / "design.hdf", "a.bit"), "two");
    EXPECT_EQ(only(messages), (dir / "design.hdf") + ": member \"a.bit\" from " + (dir / "two/a.bit") +
                                  " takes the place of the one from " + (dir / "one/a.bit"));
}

TEST(Packaging, isSilentWhenOneSourceIsNamedTwice)
{
    const TempDir dir;
    writeFile(dir / "a.bit", "a");
    writeArchive(dir / "other.hdf", {{"b.bit", "b"}});
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    for (int i = 0; i < 2; ++i) {
        def.addFileToBom(dir / "a.bit", bit);
        def.addFileToBom(dir / "b.bit", bit, dir / "other.hdf");
    }

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(namesIn(dir / "design.hdf"), "hwdef.xml a.bit b.bit");
    EXPECT_EQ(messages.joined(), "");
}

TEST(Packaging, keepsTheEarlierFileWhenTheLaterOneCantBeRead)
{
    const TempDir dir;
    writeFile(dir / "one/a.bit", "one");
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "one/a.bit", bit);
    def.addFileToBom(dir / "two/a.bit", bit);

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(memberOf(dir / "design.hdf", "a.bit"), "one");
    EXPECT_TRUE(contains(only(messages), "can't be added from " + (dir / "two/a.bit")));
}

TEST(Packaging, leavesOutAFileThatHasTheBomsName)
{
    const TempDir dir;
    writeFile(dir / "hwdef.xml", "no BOM");
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "hwdef.xml", HHDFHwDefFileTypes::PLATFORM);

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(namesIn(dir / "design.hdf"), "hwdef.xml");
    EXPECT_TRUE(contains(memberOf(dir / "design.hdf", "hwdef.xml"), "<Project "));
    EXPECT_EQ(only(messages), (dir / "design.hdf") + ": member \"hwdef.xml\" from " + (dir / "hwdef.xml") +
                                  " is left out: the name is that of a BOM document");
}

TEST(Packaging, leavesOutAFileThatHasTheNameOfTheOtherModesBom)
{
    const TempDir dir;
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.setModeType(HHDFHwDefFileTypes::POST_SYNTHESIS);
    for (const char* name : {"sysdef.xml", "hwdef.xml"}) {
        writeFile(dir / name, "no BOM");
        def.addFileToBom(dir / name, HHDFHwDefFileTypes::PLATFORM);
    }

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(namesIn(dir / "design.hdf"), "sysdef.xml");
    EXPECT_TRUE(contains(memberOf(dir / "design.hdf", "sysdef.xml"), "<Project "));
    EXPECT_EQ(messages.all().size(), 2u) << messages.joined();
}

TEST(Packaging, comparesARepeatedFileWithTheOneThatWonLast)
{
    const TempDir dir;
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    for (const char* source : {"one/a.bit", "two/a.bit", "two/a.bit", "one/a.bit"}) {
        writeFile(dir / source, source);
        def.addFileToBom(dir / source, bit);
    }

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(memberOf(dir / "design.hdf", "a.bit"), "one/a.bit");
    EXPECT_EQ(messages.all().size(), 2u) << messages.joined();
}

// --- Failures of the whole.

TEST(Packaging, keepsTheOldContainerWhenTheBomCantBeWritten)
{
    const TempDir dir;
    writeArchive(dir / "design.hdf", {{"old.bit", "old"}});
    const std::string old = support::readFile(dir / "design.hdf");
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.setBoard("no XML: \x01");

    EXPECT_FALSE(def.write(true));
    EXPECT_TRUE(support::readFile(dir / "design.hdf") == old);
    EXPECT_EQ(dir.list(), "design.hdf");
    EXPECT_TRUE(contains(only(messages), "BOARD"));
}

TEST(Packaging, saysWhyTheContainerCantBeWritten)
{
    const TempDir dir;
    fs::create_directory(dir / "design.hdf");
    const Messages messages;
    HHDFHwDef directory(dir / "design.hdf");
    EXPECT_FALSE(directory.write(true));
    EXPECT_TRUE(contains(only(messages), dir / "design.hdf")) << messages.joined();

    HHDFHwDef nowhere(dir / "missing/design.hdf");
    EXPECT_FALSE(nowhere.write(true));
    EXPECT_EQ(messages.all().size(), 2u) << messages.joined();
}

TEST(Packaging, failsWithoutAScratchDirectory)
{
    const TempDir dir;
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.implementation()->tmpDir->close();

    EXPECT_FALSE(def.write(true));
    EXPECT_EQ(dir.list(), "");
    EXPECT_EQ(only(messages), (dir / "design.hdf") + ": there is no scratch directory for \"hwdef.xml\"");
}

// --- The rule check over drivers.

TEST(Packaging, warnsOfADriverWithoutADescription)
{
    const TempDir dir;
    writeFile(dir / "x.c", "");
    writeFile(dir / "x.MDD", "");
    writeFile(dir / "y.mdd", "");
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addDriverFileToBom("b", dir.path(), "x.c", "");
    def.addDriverFileToBom("a", dir.path(), "x.MDD", "");
    def.addDriverFileToBom("c", dir.path(), "y.mdd", "");
    def.addDrivers("d", std::vector<HHDFHwDefDriver>());

    EXPECT_TRUE(def.write(true));
    EXPECT_EQ(messages.joined(),
              "hdf @64-24@%s 10000000 [a]\n"
              "hdf @64-24@%s 10000000 [b]\n"
              "hdf @64-24@%s 10000000 [d]\n");
    EXPECT_EQ(namesIn(dir / "design.hdf"), "hwdef.xml x.MDD x.c y.mdd");
    EXPECT_TRUE(def.implementation()->runDRC());
}

TEST(Packaging, keepsTheOldContainerWhicheverSystemCallFails)
{
    const TempDir dir;
    writeArchive(dir / "design.hdf", {{"old.bit", "old"}});
    writeArchive(dir / "other.hdf", {{"b.bit", "b"}});
    writeFile(dir / "a.bit", "a");
    const std::string old = support::readFile(dir / "design.hdf");
    const Messages messages;
    HHDFHwDef def(dir / "design.hdf");
    def.addFileToBom(dir / "a.bit", bit);
    def.addFileToBom(dir / "b.bit", bit, dir / "other.hdf");
    for (unsigned nth = 1;; ++nth) {
        support::FailingSystemCalls calls;
        calls.fail(support::FailingSystemCalls::CHANGES, nth, ENOSPC);
        const bool written = def.write(true);
        ASSERT_LT(nth, 100u);
        if (written) {
            EXPECT_GT(nth, 2u);
            break;
        }
        EXPECT_TRUE(support::readFile(dir / "design.hdf") == old) << nth;
        EXPECT_EQ(dir.list(), "a.bit design.hdf other.hdf") << nth;
        EXPECT_EQ(messages.all().size(), nth) << messages.joined();
    }
    EXPECT_EQ(namesIn(dir / "design.hdf"), "hwdef.xml a.bit b.bit");
}
