// Driver source directories as the reader takes them.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/filesystem.hpp>

#include "hwdef/bom/HHDFHwDefBomReader.h"
#include "support/BomDocument.h"
#include "support/Messages.h"
#include "support/TempDir.h"

namespace fs = boost::filesystem;
using support::definition;
using support::FakeElement;
using support::writeFile;

namespace {

HHDFHwDef::Texts driverDirsOf(const HHDFHwDef& def)
{
    HHDFHwDef::Texts dirs;
    def.getDriverFiles(dirs);
    return dirs;
}

/// A container unpacked in a directory of its own, next to one that is none of its business.
class DriverSources : public testing::Test {
protected:
    DriverSources()
    {
        fs::create_directories(unzipDir);
        writeFile(temp / "outside/secret.c", "secret");
    }

    /// Reads a File of the type DRIVER_SRC.
    bool read(const std::string& name)
    {
        FakeElement file("File", {{"Type", "DRIVER_SRC"}, {"Name", name}});
        return HHDFHwDefBomReader(def.get(), nullptr).populateFiles(&file);
    }
    bool walk(const std::string& path)
    {
        return HHDFHwDefBomReader(def.get(), nullptr).populateDriverFiles(path);
    }

    support::TempDir temp;
    const std::string unzipDir = fs::canonical(temp.path()).string() + "/design";
    std::unique_ptr<HHDFHwDef> def = definition(unzipDir);
    support::Messages messages;
};

/// The rights of a stranger while it lives; a user who isn't root has them anyway.
class AsStranger {
public:
    AsStranger() { root_ = geteuid() == 0 && seteuid(65534) == 0; }
    ~AsStranger() { EXPECT_TRUE(!root_ || seteuid(0) == 0); }
    AsStranger(const AsStranger&) = delete;
    AsStranger& operator=(const AsStranger&) = delete;

private:
    bool root_;
};

}  // namespace

TEST_F(DriverSources, areRegisteredByTheirRelativePathInsteadOfAnEntry)
{
    writeFile(unzipDir + "/drivers/a.c", "a");
    writeFile(unzipDir + "/drivers/gpio/src/b.c", "b");
    fs::create_directories(unzipDir + "/drivers/empty");

    EXPECT_TRUE(read("drivers"));
    EXPECT_EQ(driverDirsOf(*def), (HHDFHwDef::Texts{{"a.c", unzipDir + "/drivers/a.c"},
                                                    {"gpio/src/b.c", unzipDir + "/drivers/gpio/src/b.c"}}));
    EXPECT_EQ(def->getDriversTopDir(), unzipDir + "/drivers");
    EXPECT_EQ(support::entriesOf(*def), "");
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(DriverSources, thatAreMissingDrawAMessageAndReadingGoesOn)
{
    def->setDriversTopDir("/earlier");
    const auto root = support::project();
    root->add("File", {{"Type", "DRIVER_SRC"}, {"Name", "drivers"}});
    root->add("File", {{"Type", "BIT"}, {"Name", "a.bit"}});

    EXPECT_TRUE(support::readBom(*def, *root));
    EXPECT_EQ(messages.joined(), "hdf @64-5@%s 20000000 [" + unzipDir + "/drivers]\n");
    EXPECT_EQ(support::entriesOf(*def), unzipDir + "/a.bit BIT UNKNOWN '' '' []\n");
    EXPECT_EQ(def->getDriversTopDir(), "/earlier");
    EXPECT_FALSE(read("drivers"));
}

TEST_F(DriverSources, areWalkedOnceHoweverOftenTheyAreListed)
{
    writeFile(unzipDir + "/src/first.c", "");
    FakeElement listed("File", {{"Type", "DRIVER_SRC"}, {"Name", "src"}});
    FakeElement again("File", {{"Type", "DRIVER_SRC"}, {"Name", "./src"}});
    HHDFHwDefBomReader reader(def.get(), nullptr);
    ASSERT_TRUE(reader.populateFiles(&listed));
    writeFile(unzipDir + "/src/second.c", "");
    EXPECT_TRUE(reader.populateFiles(&again));

    // A second walk would have seen the file that came meanwhile.
    EXPECT_EQ(driverDirsOf(*def).size(), 1u);
    EXPECT_EQ(def->getDriversTopDir(), unzipDir + "/./src");
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(DriverSources, needAPath)
{
    EXPECT_FALSE(walk(""));
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(DriverSources, whoseStatusCannotBeHadCountAsMissing)
{
    const std::string path = unzipDir + "/" + std::string(300, 'n');

    EXPECT_FALSE(walk(path));
    EXPECT_EQ(messages.joined(), "hdf @64-5@%s 20000000 [" + path + "]\n");
}

TEST_F(DriverSources, thatAreAFileDrawTheSystemsReason)
{
    writeFile(unzipDir + "/drivers", "no directory");

    EXPECT_FALSE(read("drivers"));
    ASSERT_EQ(messages.all().size(), 1u);
    EXPECT_EQ(messages.all()[0].mask, 0u);
    EXPECT_NE(messages.all()[0].text.find("Not a directory"), std::string::npos) << messages.joined();
    EXPECT_NE(messages.all()[0].text.find(unzipDir + "/drivers"), std::string::npos) << messages.joined();
    EXPECT_TRUE(driverDirsOf(*def).empty());
}

TEST_F(DriverSources, thatAreUnreadableDrawTheSystemsReason)
{
    writeFile(unzipDir + "/drivers/locked/a.c", "a");
    ::chmod((unzipDir + "/drivers/locked").c_str(), 0);
    ::chmod(temp.path().c_str(), 0755);
    {
        const AsStranger stranger;
        EXPECT_FALSE(read("drivers"));
    }
    ::chmod((unzipDir + "/drivers/locked").c_str(), 0755);
    ASSERT_EQ(messages.all().size(), 1u);
    EXPECT_NE(messages.all()[0].text.find("Permission denied"), std::string::npos) << messages.joined();
    EXPECT_TRUE(driverDirsOf(*def).empty());
}

TEST_F(DriverSources, areFilesAndLinksToFilesOnly)
{
    writeFile(unzipDir + "/common/c.c", "c");
    writeFile(unzipDir + "/drivers/a.c", "a");
    fs::create_symlink("a.c", unzipDir + "/drivers/link.c");
    fs::create_symlink("../common/c.c", unzipDir + "/drivers/common.c");
    fs::create_symlink("nothing", unzipDir + "/drivers/dangling.c");
    ASSERT_EQ(::mkfifo((unzipDir + "/drivers/fifo").c_str(), 0600), 0);

    EXPECT_TRUE(read("drivers"));
    EXPECT_EQ(driverDirsOf(*def), (HHDFHwDef::Texts{{"a.c", unzipDir + "/drivers/a.c"},
                                                    {"common.c", unzipDir + "/drivers/common.c"},
                                                    {"link.c", unzipDir + "/drivers/link.c"}}));
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(DriverSources, mayHoldLinksInACircle)
{
    writeFile(unzipDir + "/drivers/sub/a.c", "a");
    fs::create_directory_symlink("..", unzipDir + "/drivers/sub/up");
    fs::create_symlink("two", unzipDir + "/drivers/one");
    fs::create_symlink("one", unzipDir + "/drivers/two");

    EXPECT_TRUE(read("drivers"));
    EXPECT_EQ(driverDirsOf(*def), (HHDFHwDef::Texts{{"sub/a.c", unzipDir + "/drivers/sub/a.c"}}));
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(DriverSources, takeARootedNameForOneBelowTheUnzipDirectory)
{
    writeFile(unzipDir + "/drivers/a.c", "a");
    EXPECT_TRUE(read("/drivers"));
    EXPECT_EQ(driverDirsOf(*def), (HHDFHwDef::Texts{{"a.c", unzipDir + "/drivers/a.c"}}));
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(DriverSources, areRefusedWhenTheirNameLeadsOut)
{
    const std::vector<std::string> names = {"../outside", "/../outside", "a/../../outside", ".."};
    for (const std::string& name : names) {
        messages.clear();
        EXPECT_FALSE(read(name));
        EXPECT_EQ(messages.joined(), "text: /data/design.hdf: driver source \"" + name +
                                         "\" leads out of \"" + unzipDir +
                                         "\", expected one inside; not read\n");
    }
    EXPECT_TRUE(driverDirsOf(*def).empty());
    EXPECT_EQ(def->getDriversTopDir(), "");
}

TEST_F(DriverSources, areRefusedWhenALinkLeadsOut)
{
    fs::create_directory_symlink("../outside", unzipDir + "/drivers");
    fs::create_directory_symlink("..", unzipDir + "/up");

    EXPECT_FALSE(read("drivers"));
    EXPECT_FALSE(read("up/outside"));
    EXPECT_EQ(messages.joined(), "text: /data/design.hdf: driver source \"drivers\" leads out of \"" +
                                     unzipDir +
                                     "\", expected one inside; not read\n"
                                     "text: /data/design.hdf: driver source \"up/outside\" leads out of \"" +
                                     unzipDir + "\", expected one inside; not read\n");
    EXPECT_TRUE(driverDirsOf(*def).empty());
}

TEST_F(DriverSources, mayWanderInsideTheUnzipDirectory)
{
    writeFile(unzipDir + "/real/a.c", "a");
    fs::create_directory_symlink("real", unzipDir + "/drivers");

    EXPECT_TRUE(read("real/../drivers/."));
    EXPECT_EQ(driverDirsOf(*def), (HHDFHwDef::Texts{{"a.c", unzipDir + "/drivers/a.c"}}));
    EXPECT_EQ(messages.joined(), "");
}

TEST_F(DriverSources, leaveOutSingleLinksThatLeadOut)
{
    writeFile(unzipDir + "/drivers/a.c", "a");
    fs::create_symlink("../../outside/secret.c", unzipDir + "/drivers/leak.c");

    EXPECT_TRUE(read("drivers"));
    EXPECT_EQ(driverDirsOf(*def), (HHDFHwDef::Texts{{"a.c", unzipDir + "/drivers/a.c"}}));
    EXPECT_EQ(messages.joined(), "text: /data/design.hdf: driver source \"" + unzipDir +
                                     "/drivers/leak.c\" leads out of \"" + unzipDir +
                                     "\", expected one inside; not read\n");
}

TEST_F(DriverSources, maySitAnywhereForADirectCall)
{
    writeFile(temp / "tree/a.c", "a");
    fs::create_symlink("../outside/secret.c", temp / "tree/leak.c");
    fs::create_symlink("a.c", temp / "tree/link.c");
    const std::string tree = fs::canonical(temp / "tree").string();

    EXPECT_TRUE(walk(tree));
    EXPECT_EQ(driverDirsOf(*def), (HHDFHwDef::Texts{{"a.c", tree + "/a.c"}, {"link.c", tree + "/link.c"}}));
    EXPECT_EQ(def->getDriversTopDir(), tree);
    EXPECT_EQ(messages.joined(), "text: /data/design.hdf: driver source \"" + tree +
                                     "/leak.c\" leads out of \"" + tree +
                                     "\", expected one inside; not read\n");
}

TEST_F(DriverSources, mayBelongToAnUnzipDirectoryThatIsALink)
{
    writeFile(unzipDir + "/drivers/a.c", "a");
    fs::create_directory_symlink(unzipDir, temp / "alias");
    def = definition(temp / "alias");

    EXPECT_TRUE(read("drivers"));
    EXPECT_EQ(driverDirsOf(*def), (HHDFHwDef::Texts{{"a.c", temp / "alias/drivers/a.c"}}));
    EXPECT_EQ(messages.joined(), "");
}
