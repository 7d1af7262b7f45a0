// Drivers and boards of a definition.

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"

using support::Messages;
using support::TempDir;

namespace {

namespace fs = boost::filesystem;

/// A container at `path` that lists the driver files by name and holds the given members.
std::unique_ptr<HHDFHwDef> containerOf(const std::string& path, const std::vector<std::string>& names,
                                       support::Members members)
{
    std::string elements = "<DRIVERS><DRIVER IP_VLNV=\"ip\">";
    for (const std::string& name : names) {
        elements += "<File PATH=\"" + name + "\"/>";
    }
    elements += "</DRIVER></DRIVERS>";
    members.insert(members.begin(),
                   {"hwdef.xml", "<Project Version=\"1\" Minor=\"7\">" + elements + "</Project>"});
    support::writeArchive(path, members);
    return HHDFHwDefUtils::getHDF(path);
}

}  // namespace

TEST(Drivers, haveADirectoryThatALaterCallReplaces)
{
    HHDFHwDef def("d.hdf");
    EXPECT_FALSE(def.addDrivers("", "/dir"));
    EXPECT_FALSE(def.addDrivers("n", ""));
    EXPECT_TRUE(def.addDrivers("n", "/one"));
    EXPECT_TRUE(def.addDrivers("n", "/two"));
    HHDFHwDef::Texts dirs;
    EXPECT_EQ(def.getDriverFiles(dirs), 1u);
    EXPECT_EQ(dirs, (HHDFHwDef::Texts{{"n", "/two"}}));
}

TEST(Drivers, areRegisteredByTheirCanonicalDirectoryWhenItExists)
{
    const TempDir dir;
    fs::create_directories(dir / "gpio");
    HHDFHwDef def("d.hdf");
    EXPECT_FALSE(def.addDriverDirToBom("", "gpio"));
    EXPECT_FALSE(def.addDriverDirToBom(dir.path(), ""));
    EXPECT_FALSE(def.addDriverDirToBom(dir.path(), "none"));
    EXPECT_TRUE(def.addDriverDirToBom(dir / "gpio/..", "gpio"));
    HHDFHwDef::Texts dirs;
    def.getDriverFiles(dirs);
    EXPECT_EQ(dirs, (HHDFHwDef::Texts{{"gpio", dir / "gpio"}}));
}

TEST(Drivers, keepOneRecordOfAFileAddedTwice)
{
    HHDFHwDef def("d.hdf");
    EXPECT_FALSE(def.addDriverFileToBom("n", "", "a.c", ""));
    EXPECT_FALSE(def.addDriverFileToBom("n", "/dir", "", ""));
    EXPECT_TRUE(def.addDriverFileToBom("n", "/dir", "a.c", ""));
    EXPECT_TRUE(def.addDriverFileToBom("n", "/dir", "a.c", ""));
    EXPECT_TRUE(def.addDriverFileToBom("n", "/dir", "a.c", "x.hdf"));
    const auto drivers = def.getDriverFilesMap();
    ASSERT_EQ(drivers.at("n").size(), 2u);
    EXPECT_EQ(drivers.at("n")[0].getFilePath(), "/dir/a.c");
    EXPECT_EQ(drivers.at("n")[1].getHwDefFilePath(), "x.hdf");
}

TEST(Drivers, keepBothRecordsOfABoardFileAddedTwice)
{
    HHDFHwDef def("d.hdf");
    EXPECT_FALSE(def.addBoardFileToBom("b", "", "rel", "c"));
    EXPECT_FALSE(def.addBoardFileToBom("b", "file", "", "c"));
    EXPECT_TRUE(def.addBoardFileToBom("b", "file", "rel", "c"));
    EXPECT_TRUE(def.addBoardFileToBom("b", "file", "rel", "c"));
    const auto boards = def.getBoardFilesMap();
    ASSERT_EQ(boards.at("b").size(), 2u);
    EXPECT_EQ(boards.at("b")[1].getRelativeName(), "rel");
}

TEST(Drivers, areExtractedBelowTheDirectoryDrivers)
{
    const TempDir dir;
    const auto def =
        containerOf(dir / "d.hdf", {"src/x.c", "drivers/src/y.c", "mydrivers_x/a.c", "none.c"},
                    {{"drivers/src/x.c", "x"}, {"drivers/src/y.c", "y"}, {"mydrivers_x/a.c", "a"}});
    const Messages messages;
    EXPECT_TRUE(def->unzipDrivers(dir / "out"));
    EXPECT_EQ(support::readFile(dir / "out/drivers/src/x.c"), "x");
    EXPECT_EQ(support::readFile(dir / "out/drivers/src/y.c"), "y");
    EXPECT_EQ(support::readFile(dir / "out/mydrivers_x/a.c"), "a");
    EXPECT_EQ(messages.joined(), "");
}

TEST(Drivers, areNeverExtractedOutsideTheDirectory)
{
    const TempDir dir;
    const std::string absolute = dir / "drivers-absolute.c";
    fs::create_directories(dir / "outside");
    fs::create_directories(dir / "out/drivers");
    fs::create_directory_symlink(dir / "outside", dir / "out/drivers/link");
    const std::vector<std::string> names = {"../drivers.c", "drivers/../../up.c", absolute,
                                            "drivers/link/l.c", "drivers/good.c"};
    support::Members members;
    for (const std::string& name : names) {
        members.emplace_back(name, "x");
    }
    const auto def = containerOf(dir / "d.hdf", names, members);
    ASSERT_NE(def, nullptr);
    const Messages messages;
    EXPECT_TRUE(def->unzipDrivers(dir / "out"));
    ASSERT_EQ(messages.all().size(), 4u) << messages.joined();
    EXPECT_NE(messages.all()[0].text.find("../drivers.c"), std::string::npos);
    EXPECT_EQ(dir.list(), "d.hdf out outside");
    EXPECT_TRUE(fs::is_empty(dir / "outside"));
    EXPECT_EQ(support::readFile(dir / "out/drivers/good.c"), "x");
}

TEST(Drivers, makeAVeldOnlyByTheExactAttribute)
{
    HHDFHwDef def("d.hdf");
    EXPECT_FALSE(def.isVELDExist());
    def.addFileToBom("/in/a");
    HHDFHwDef::Texts lower = {{"ip_type", "Veld"}};
    def.addFileAttrs("a", lower);
    EXPECT_FALSE(def.isVELDExist());
    HHDFHwDef::Texts exact = {{"ip_type", "VELD"}};
    def.addFileAttrs("a", exact);
    EXPECT_TRUE(def.isVELDExist());
}

TEST(Drivers, areExtractedWithoutAMessageFromAContainerThatIsNotThere)
{
    const TempDir dir;
    HHDFHwDef def(dir / "missing.hdf");
    def.addDriverFileToBom("n", "/dir", "a.c", "");
    const Messages messages;
    EXPECT_TRUE(def.unzipDrivers(dir / "out"));
    EXPECT_EQ(messages.joined(), "");
    EXPECT_EQ(dir.list(), "");
}

TEST(Drivers, areExtractedPastADamagedOne)
{
    const TempDir dir;
    const auto def = containerOf(dir / "d.hdf", {"drivers/a.c", "drivers/b.c"},
                                 {{"drivers/a.c", "first"}, {"drivers/b.c", "second"}});
    support::patchFile(dir / "d.hdf", "first", "FIRST");
    const Messages messages;
    EXPECT_TRUE(def->unzipDrivers(dir / "out"));
    EXPECT_FALSE(support::exists(dir / "out/drivers/a.c"));
    EXPECT_EQ(support::readFile(dir / "out/drivers/b.c"), "second");
    ASSERT_EQ(messages.all().size(), 1u) << messages.joined();
    EXPECT_NE(messages.all()[0].text.find("drivers/a.c"), std::string::npos);
}

TEST(Drivers, areTakenFromTheOwnContainerWhateverTheirRecordsName)
{
    const TempDir dir;
    const auto def = containerOf(dir / "d.hdf", {"drivers/a.c"}, {{"drivers/a.c", "own"}});
    support::writeArchive(dir / "other.hdf", {{"drivers/a.c", "other"}});
    def->addDrivers("ip", {HHDFHwDefDriver("/nowhere", "drivers/a.c", dir / "other.hdf")});
    EXPECT_TRUE(def->unzipDrivers(dir / "out"));
    EXPECT_EQ(support::readFile(dir / "out/drivers/a.c"), "own");
}

TEST(Drivers, areReplacedByAListAsAWhole)
{
    HHDFHwDef def("d.hdf");
    def.addDriverFileToBom("n", "/dir", "a.c", "");
    const HHDFHwDefDriver record("/dir/b.c", "b.c", "");
    EXPECT_TRUE(def.addDrivers("n", {record, record}));
    EXPECT_EQ(def.getDriverFilesMap().at("n").size(), 2u);
    EXPECT_TRUE(def.addDriverFileToBom("n", "/dir", "b.c", ""));
    EXPECT_EQ(def.getDriverFilesMap().at("n").size(), 2u);
}
