// Exports of a definition to another archive and to a directory.

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include "hwdef/model/HHDFHwDefImp.h"
#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/HUTFile.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/Parameter.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using support::Messages;
using support::TempDir;

namespace {

namespace fs = boost::filesystem;
using Types = HHDFHwDefFileTypes;

/// A definition of one bitstream and one driver file on disk below `dir`.
std::unique_ptr<HHDFHwDef> definitionIn(const TempDir& dir)
{
    support::writeFile(dir / "in/top.bit", "bits");
    support::writeFile(dir / "in/drivers/gpio/data/gpio.mdd", "driver");
    auto def = HHDFHwDefUtils::createHDF(dir / "design.hdf");
    def->setModeType(Types::PRE_SYNTHESIS);
    def->addFileToBom(dir / "in/top.bit", Types::BIT);
    def->addDriverFileToBom("gpio", dir / "in", "drivers/gpio/data/gpio.mdd", "");
    return def;
}

}  // namespace

TEST(Export, writesAnArchiveOfTheExtensionDsaInAnyCase)
{
    const TempDir dir;
    EXPECT_TRUE(definitionIn(dir)->write(dir / "out.DsA"));
    EXPECT_EQ(support::namesIn(dir / "out.DsA"), "hwdef.xml top.bit drivers/gpio/data/gpio.mdd");
}

TEST(Export, refusesAPathWithoutAnExtension)
{
    const TempDir dir;
    const Messages messages;
    EXPECT_FALSE(definitionIn(dir)->write(dir / "out"));
    EXPECT_EQ(messages.joined(), "hdf @64-27@%s 20000000 [" + (dir / "out") + "]\n");
}

TEST(Export, refusesAnotherExtension)
{
    const TempDir dir;
    const Messages messages;
    EXPECT_FALSE(definitionIn(dir)->write(dir / "out.zip"));
    EXPECT_EQ(messages.joined(), "hdf @64-26@ 20000000 []\n");
    EXPECT_FALSE(support::exists(dir / "out.zip"));
}

TEST(Export, warnsOfADriverWithoutADescriptionAndGoesOn)
{
    const TempDir dir;
    const auto def = definitionIn(dir);
    support::writeFile(dir / "in/drivers/x/X.MDD", "");
    def->addDriverFileToBom("other", dir / "in", "drivers/x/X.MDD", "");
    const Messages messages;
    EXPECT_TRUE(def->write(dir / "out.dsa"));
    EXPECT_EQ(messages.joined(), "hdf @64-24@%s 10000000 [other]\n");
}

TEST(Export, attachesNoDigest)
{
    const TempDir dir;
    ASSERT_TRUE(definitionIn(dir)->write(dir / "out.dsa"));
    EXPECT_EQ(support::readFile(dir / "out.dsa").find("hwdef-sha256"), std::string::npos);
}

TEST(Export, keepsTheOtherMembersOfAnArchiveThatIsThere)
{
    const TempDir dir;
    support::writeArchive(dir / "out.dsa", {{"first", "1"}, {"top.bit", "old"}, {"last", "2"}});
    const Messages messages;
    EXPECT_TRUE(definitionIn(dir)->write(dir / "out.dsa"));
    EXPECT_EQ(support::namesIn(dir / "out.dsa"), "hwdef.xml top.bit drivers/gpio/data/gpio.mdd first last");
    EXPECT_EQ(support::memberOf(dir / "out.dsa", "top.bit"), "bits");
    EXPECT_EQ(support::memberOf(dir / "out.dsa", "first"), "1");
    EXPECT_EQ(messages.joined(), "");
}

TEST(Export, leavesNoSecondBomDocumentBehind)
{
    const TempDir dir;
    const auto def = definitionIn(dir);
    ASSERT_TRUE(def->write(dir / "out.dsa"));
    def->setModeType(Types::POST_SYNTHESIS);
    const Messages messages;
    ASSERT_TRUE(def->write(dir / "out.dsa"));
    EXPECT_EQ(support::namesIn(dir / "out.dsa"), "sysdef.xml top.bit drivers/gpio/data/gpio.mdd");
    EXPECT_EQ(messages.joined(), "text: " + (dir / "out.dsa") +
                                     ": member \"hwdef.xml\" is left out: \"sysdef.xml\" takes its place "
                                     "as the BOM\n");
}

TEST(Export, saysWhyAnArchiveCantBeAddedTo)
{
    const TempDir dir;
    support::writeFile(dir / "out.dsa", "no archive at all");
    const Messages messages;
    EXPECT_TRUE(definitionIn(dir)->write(dir / "out.dsa"));
    ASSERT_EQ(messages.all().size(), 1u);
    EXPECT_NE(messages.all()[0].text.find("out.dsa"), std::string::npos);
    EXPECT_EQ(support::readFile(dir / "out.dsa"), "no archive at all");
}

TEST(Export, putsEveryMemberIntoADirectoryDriversUnderTheirRelativePaths)
{
    const TempDir dir;
    fs::create_directories(dir / "out");
    const Messages messages;
    EXPECT_TRUE(definitionIn(dir)->write(dir / "out"));
    EXPECT_TRUE(support::exists(dir / "out/hwdef.xml"));
    EXPECT_EQ(support::readFile(dir / "out/top.bit"), "bits");
    EXPECT_EQ(support::readFile(dir / "out/drivers/gpio/data/gpio.mdd"), "driver");
    EXPECT_EQ(messages.joined(), "");
}

TEST(Export, putsMembersOfAContainerIntoADirectory)
{
    const TempDir dir;
    ASSERT_TRUE(definitionIn(dir)->write(true));
    fs::remove_all(dir / "in");
    fs::create_directories(dir / "out");
    EXPECT_TRUE(HHDFHwDefUtils::getHDF(dir / "design.hdf")->write(dir / "out"));
    EXPECT_EQ(support::readFile(dir / "out/top.bit"), "bits");
    EXPECT_EQ(support::readFile(dir / "out/drivers/gpio/data/gpio.mdd"), "driver");
}

TEST(Export, saysThatAMemberIsMissingAndGoesOn)
{
    const TempDir dir;
    const auto def = definitionIn(dir);
    fs::remove(dir / "in/top.bit");
    fs::create_directories(dir / "out");
    const Messages messages;
    EXPECT_TRUE(def->write(dir / "out"));
    ASSERT_EQ(messages.all().size(), 1u);
    EXPECT_EQ(messages.all()[0].text.find((dir / "out") + ": member \"top.bit\" can't be added from " +
                                          (dir / "in/top.bit") + ": "),
              0u);
    EXPECT_TRUE(support::exists(dir / "out/drivers/gpio/data/gpio.mdd"));
}

TEST(Export, neverWritesOutsideTheDirectory)
{
    const TempDir dir;
    support::writeFile(dir / "in/a", "a");
    support::writeFile(dir / "outside/kept", "kept");
    fs::create_directories(dir / "out");
    fs::create_directory_symlink(dir / "outside", dir / "out/link");
    const auto def = HHDFHwDefUtils::createHDF(dir / "design.hdf");
    def->addDrivers("d", {HHDFHwDefDriver(dir / "in/a", "../escaped.mdd", ""),
                          HHDFHwDefDriver(dir / "in/a", dir / "outside/absolute.mdd", ""),
                          HHDFHwDefDriver(dir / "in/a", "link/through.mdd", "")});
    const Messages messages;
    EXPECT_TRUE(def->write(dir / "out"));
    EXPECT_EQ(messages.all().size(), 3u) << messages.joined();
    EXPECT_FALSE(support::exists(dir / "escaped.mdd"));
    EXPECT_FALSE(support::exists(dir / "outside/absolute.mdd"));
    EXPECT_FALSE(support::exists(dir / "outside/through.mdd"));
}

TEST(Export, replacesALinkThatStaysInsideTheDirectory)
{
    const TempDir dir;
    support::writeFile(dir / "in/a.bit", "AAAA");
    support::writeFile(dir / "in/b.bit", "BBBB");
    support::writeFile(dir / "out/b.bit", "old");
    fs::create_symlink("b.bit", dir / "out/a.bit");
    const auto def = HHDFHwDefUtils::createHDF(dir / "design.hdf");
    def->addFileToBom(dir / "in/b.bit", Types::BIT);
    def->addFileToBom(dir / "in/a.bit", Types::BIT);
    EXPECT_TRUE(def->write(dir / "out"));
    EXPECT_EQ(support::readFile(dir / "out/a.bit"), "AAAA");
    EXPECT_EQ(support::readFile(dir / "out/b.bit"), "BBBB");
}

TEST(Export, leavesTheUnwantedKindsOutOfQvaArchives)
{
    const TempDir dir;
    const auto def = HHDFHwDefUtils::createHDF(dir / "design.qva");
    for (const Types::HWHFileType type : {Types::BIT, Types::SYSMON_DATA, Types::POWER_DATA, Types::IO_DATA,
                                          Types::BD_TCL, Types::CDO, Types::ELF}) {
        def->addFileToBom("/in/" + Types::getHWHFileTypeStr(type), type);
    }
    std::vector<HHDFHwDefFile*> held;
    def->getBomFiles(Types::POWER_DATA, held);
    def->removeUnnecessaryFilesForQVA();
    std::vector<std::string> names;
    def->getBomFiles(names);
    EXPECT_EQ(names, (std::vector<std::string>{"BIT", "CDO", "ELF"}));
    EXPECT_EQ(held.at(0)->getFileName(), "POWER_DATA");  // still the holder's to use
}

TEST(Export, passesOverNullEntriesInQvaArchives)
{
    const auto def = HHDFHwDefUtils::createHDF("design.qva");
    def->implementation()->bom.add(nullptr);
    def->addFileToBom("/in/b", Types::SYSMON_DATA);
    def->removeUnnecessaryFilesForQVA();
    std::vector<std::string> names;
    def->getBomFiles(names);
    EXPECT_EQ(names, std::vector<std::string>());
}

TEST(Export, leavesProcessorFilesOutOfQvaArchivesWhenTheParameterSaysSo)
{
    const support::Parameter parameter("project.removeVELDFilesFromQVA", "true");
    const auto def = HHDFHwDefUtils::createHDF("design.qva");
    def->addFileToBom("/in/a", Types::CDO);
    def->addFileToBom("/in/b", Types::ELF);
    def->addFileToBom("/in/c", Types::BIT);
    def->removeUnnecessaryFilesForQVA();
    std::vector<std::string> names;
    def->getBomFiles(names);
    EXPECT_EQ(names, std::vector<std::string>{"c"});
}

TEST(Export, takesTheLaterOfTwoFilesOfOneNameAndSaysSo)
{
    const TempDir dir;
    support::writeFile(dir / "one/a.bit", "one");
    support::writeFile(dir / "two/a.bit", "two");
    fs::create_directories(dir / "out");
    const auto def = HHDFHwDefUtils::createHDF(dir / "design.hdf");
    def->addFileToBom(dir / "one/a.bit", Types::BIT);
    def->addFileToBom(dir / "two/a.bit", Types::BIT);
    const Messages messages;
    EXPECT_TRUE(def->write(dir / "out"));
    EXPECT_EQ(support::readFile(dir / "out/a.bit"), "two");
    EXPECT_EQ(messages.joined(), "text: " + (dir / "out") + ": member \"a.bit\" from " + (dir / "two/a.bit") +
                                     " takes the place of the one from " + (dir / "one/a.bit") + "\n");
}

TEST(Export, doesNotLetAMemberTakeTheBomsPlaceUnderAnotherSpelling)
{
    const TempDir dir;
    support::writeFile(dir / "in/x.mdd", "no BOM");
    fs::create_directories(dir / "out");
    const auto def = HHDFHwDefUtils::createHDF(dir / "design.hdf");
    def->addDrivers("d", {HHDFHwDefDriver(dir / "in/x.mdd", "./hwdef.xml", ""),
                          HHDFHwDefDriver(dir / "in/x.mdd", "x.mdd", "")});
    const Messages messages;
    EXPECT_TRUE(def->write(dir / "out"));
    EXPECT_NE(support::readFile(dir / "out/hwdef.xml"), "no BOM");
    EXPECT_EQ(messages.all().size(), 1u) << messages.joined();
}

TEST(Export, doesNotWriteTheBomThroughALinkThatLeaves)
{
    const TempDir dir;
    support::writeFile(dir / "secret", "kept");
    fs::create_directories(dir / "out");
    fs::create_symlink("../secret", dir / "out/hwdef.xml");
    const Messages messages;
    EXPECT_TRUE(HHDFHwDefUtils::createHDF(dir / "design.hdf")->write(dir / "out"));
    EXPECT_EQ(support::readFile(dir / "secret"), "kept");
    EXPECT_EQ(messages.all().size(), 1u) << messages.joined();
}

TEST(Export, leavesAFileAloneThatIsItsOwnSource)
{
    const TempDir dir;
    const auto def = definitionIn(dir);
    const Messages messages;
    EXPECT_TRUE(def->write(dir / "in"));
    EXPECT_EQ(support::readFile(dir / "in/top.bit"), "bits");
    EXPECT_EQ(messages.joined(), "");
}

TEST(Export, keepsTheOldFileWhenAMemberIsDamaged)
{
    const TempDir dir;
    ASSERT_TRUE(definitionIn(dir)->write(true));
    support::patchFile(dir / "design.hdf", "bits", "bots");
    support::writeFile(dir / "out/top.bit", "old");
    const Messages messages;
    EXPECT_TRUE(HHDFHwDefUtils::getHDF(dir / "design.hdf")->write(dir / "out"));
    EXPECT_EQ(support::readFile(dir / "out/top.bit"), "old");
    ASSERT_EQ(messages.all().size(), 1u) << messages.joined();
    EXPECT_NE(messages.all()[0].text.find("member \"top.bit\" can't be added"), std::string::npos);
}

TEST(Export, takesFilesInsideCoreContainers)
{
    const TempDir dir;
    support::writeArchive(dir / "core.zip", {{"sub/a.bit", "in core"}});
    fs::create_directories(dir / "out");
    const auto def = HHDFHwDefUtils::createHDF(dir / "design.hdf");
    def->addFileToBom(dir / "core.zip/sub/a.bit", Types::BIT);
    EXPECT_TRUE(def->write(dir / "out"));
    EXPECT_TRUE(def->write(dir / "out.dsa"));
    EXPECT_EQ(support::readFile(dir / "out/a.bit"), "in core");
    EXPECT_EQ(support::memberOf(dir / "out.dsa", "a.bit"), "in core");
}

TEST(Export, addsNothingToAnArchiveWithAMemberThatCantBeKept)
{
    const TempDir dir;
    support::writeArchive(dir / "out.dsa", {{"first", "1"}, {"other", "2"}});
    // The local header, which comes first in the file, now names another member.
    support::patchFile(dir / "out.dsa", "other", "OTHER");
    const std::string before = support::readFile(dir / "out.dsa");
    const Messages messages;
    EXPECT_TRUE(definitionIn(dir)->write(dir / "out.dsa"));
    EXPECT_EQ(support::readFile(dir / "out.dsa"), before);
    ASSERT_EQ(messages.all().size(), 1u) << messages.joined();
    EXPECT_NE(messages.all()[0].text.find("member \"other\" can't be kept"), std::string::npos)
        << messages.joined();
}

TEST(Export, isFalseWhenTheBomCantBeWritten)
{
    const TempDir dir;
    fs::create_directories(dir / "out");
    const auto def = definitionIn(dir);
    def->setBoard("no XML: \x01");
    const Messages messages;
    EXPECT_FALSE(def->write(dir / "out"));
    EXPECT_FALSE(def->write(dir / "out.dsa"));
    EXPECT_TRUE(fs::is_empty(dir / "out"));
    EXPECT_FALSE(support::exists(dir / "out.dsa"));
}

TEST(Export, tellsTwoMembersOfOneContainerApartThatShareAPlace)
{
    const TempDir dir;
    support::writeArchive(dir / "other.hdf", {{"x.mdd", "plain"}, {"./x.mdd", "dotted"}});
    fs::create_directories(dir / "out");
    const auto def = HHDFHwDefUtils::createHDF(dir / "design.hdf");
    def->addDrivers("d", {HHDFHwDefDriver("/in/x.mdd", "x.mdd", dir / "other.hdf"),
                          HHDFHwDefDriver("/in/x.mdd", "./x.mdd", dir / "other.hdf")});
    const Messages messages;
    EXPECT_TRUE(def->write(dir / "out"));
    EXPECT_EQ(support::readFile(dir / "out/x.mdd"), "dotted");
    EXPECT_EQ(messages.all().size(), 1u) << messages.joined();
}

TEST(Export, keepsTheLastOfAMemberThatIsListedTwiceAndTheComment)
{
    const TempDir dir;
    support::ZipBuilder present;
    present.addStored("twice", "first");
    present.addStored("twice", "last");
    present.comment = "a comment";
    present.write(dir / "out.dsa");
    EXPECT_TRUE(definitionIn(dir)->write(dir / "out.dsa"));
    EXPECT_EQ(support::namesIn(dir / "out.dsa"), "hwdef.xml top.bit drivers/gpio/data/gpio.mdd twice");
    EXPECT_EQ(support::memberOf(dir / "out.dsa", "twice"), "last");
    const std::string bytes = support::readFile(dir / "out.dsa");
    EXPECT_EQ(bytes.substr(bytes.size() - 9), "a comment");
}

TEST(Export, dropsTheDigestThatNoLongerHoldsFromTheComment)
{
    const TempDir dir;
    ASSERT_TRUE(HHDFHwDefUtils::createHDF(dir / "out.dsa")->write(true));
    ASSERT_NE(support::readFile(dir / "out.dsa").find("hwdef-sha256"), std::string::npos);
    EXPECT_TRUE(definitionIn(dir)->write(dir / "out.dsa"));
    EXPECT_EQ(support::readFile(dir / "out.dsa").find("hwdef-sha256"), std::string::npos);
}
