// File and DRIVERS elements as the reader takes them.

#include <gtest/gtest.h>

#include "hwdef/bom/HHDFHwDefBomReader.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "support/BomDocument.h"

using support::definition;
using support::driversOf;
using support::entriesOf;
using support::FakeElement;
using support::project;
using support::readBom;

TEST(FileEntries, liveInTheContainerBelowTheUnzipDirectory)
{
    const auto def = definition();
    FakeElement file("File", {{"Type", "BIT"}, {"Name", "sub/top.bit"}, {"src_db", "top.hdf"}});

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateFiles(&file));
    EXPECT_EQ(entriesOf(*def), "/data/design/sub/top.bit BIT UNKNOWN '' 'top.hdf' []\n");
    EXPECT_EQ(def->getBomFileHwDefPath("top.bit"), "/data/design.hdf");
}

TEST(FileEntries, keepTheOrderOfTheDocument)
{
    const auto def = definition();
    const auto root = project();
    root->add("File", {{"Name", "b"}, {"Type", "MMI"}});
    root->add("File", {{"Name", "a"}, {"Type", "mmi"}});
    root->add("File", {{"Name", "b"}, {"Type", "BVA"}});

    EXPECT_TRUE(readBom(*def, *root));
    EXPECT_EQ(entriesOf(*def),
              "/data/design/b MMI UNKNOWN '' '' []\n"
              "/data/design/a UNKNOWN UNKNOWN '' '' []\n"
              "/data/design/b BDA UNKNOWN '' '' []\n");
}

TEST(FileEntries, recordTheDigestEvenWithoutAName)
{
    const auto def = definition();
    HHDFHwDefBomReader reader(def.get(), nullptr);
    FakeElement nameless("File", {{"Type", "BIT"}, {"DIGEST", "11"}});
    FakeElement named("File", {{"Type", "BIT"}, {"Name", "sub/a"}, {"DIGEST", "22"}});
    FakeElement undigested("File", {{"Name", "b"}});

    EXPECT_FALSE(reader.populateFiles(&nameless));
    EXPECT_EQ(entriesOf(*def), "");
    EXPECT_TRUE(reader.populateFiles(&named));
    EXPECT_TRUE(reader.populateFiles(&undigested));
    EXPECT_EQ(def->implementation()->fileDigests.all(),
              (HHDFHwDef::Texts{{"", "11"}, {"b", ""}, {"sub/a", "22"}}));
}

TEST(FileEntries, haveRoleAndHierarchyForHandoffFilesOnly)
{
    const auto def = definition();
    const auto root = project();
    const auto add = [&](const char* type, const char* name, const char* role) {
        FakeElement::Attributes attributes{{"Type", type}, {"Name", name}, {"DESIGN_HIERARCHY", "top/u0"}};
        if (role) {
            attributes["BD_TYPE"] = role;
        }
        root->add("File", attributes);
    };
    add("HW_HANDOFF", "a", nullptr);
    add("HW_HANDOFF", "b", "");
    add("HW_HANDOFF", "c", "SCOPED_BD");
    add("HW_HANDOFF", "d", "scoped_bd");
    add("BIT", "e", "SCOPED_BD");

    EXPECT_TRUE(readBom(*def, *root));
    EXPECT_EQ(entriesOf(*def),
              "/data/design/a HW_HANDOFF DEFAULT_BD 'top/u0' '' []\n"
              "/data/design/b HW_HANDOFF DEFAULT_BD 'top/u0' '' []\n"
              "/data/design/c HW_HANDOFF SCOPED_BD 'top/u0' '' []\n"
              "/data/design/d HW_HANDOFF UNKNOWN 'top/u0' '' []\n"
              "/data/design/e BIT UNKNOWN '' '' []\n");
}

TEST(FileEntries, takeEveryChildAsAnAttribute)
{
    const auto def = definition();
    FakeElement file("File", {{"Name", "a"}});
    file.add("FILEATTR", {{"ATTRNAME", "z"}, {"ATTRVAL", "1"}});
    file.add("anything", {{"ATTRNAME", "k"}, {"ATTRVAL", "old"}});
    file.add("FILEATTR", {{"ATTRNAME", "k"}, {"ATTRVAL", "new"}});
    file.add("FILEATTR", {{"ATTRNAME", "valueless"}});
    file.add("FILEATTR", {{"ATTRVAL", "nameless"}});
    file.add("FILEATTR");

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateFiles(&file));
    EXPECT_EQ(entriesOf(*def), "/data/design/a UNKNOWN UNKNOWN '' '' [k=new z=1]\n");
}

TEST(FileEntries, giveTheirAttributesToTheFirstOfTheirName)
{
    const auto def = definition();
    const auto root = project();
    root->add("File", {{"Name", "x/top.bit"}, {"src_db", "one"}})
        .add("FILEATTR", {{"ATTRNAME", "k"}, {"ATTRVAL", "1"}});
    root->add("File", {{"Name", "y/top.bit"}, {"src_db", "two"}})
        .add("FILEATTR", {{"ATTRNAME", "l"}, {"ATTRVAL", "2"}});

    EXPECT_TRUE(readBom(*def, *root));
    EXPECT_EQ(entriesOf(*def),
              "/data/design/x/top.bit UNKNOWN UNKNOWN '' 'one' [k=1 l=2]\n"
              "/data/design/y/top.bit UNKNOWN UNKNOWN '' 'two' []\n");
}

TEST(FileEntries, giveTheirSourceDatabaseToTheFirstWithoutOne)
{
    const auto def = definition();
    const auto root = project();
    root->add("File", {{"Name", "x/top.bit"}});
    root->add("File", {{"Name", "y/TOP.bit"}, {"src_db", "two"}});

    EXPECT_TRUE(readBom(*def, *root));
    EXPECT_EQ(entriesOf(*def),
              "/data/design/x/top.bit UNKNOWN UNKNOWN '' 'two' []\n"
              "/data/design/y/TOP.bit UNKNOWN UNKNOWN '' '' []\n");
}

TEST(FileEntries, takeNamesOfAnyLength)
{
    const auto def = definition();
    const std::string name(1000000, 'n');
    FakeElement file("File", {{"Name", name}, {"Type", name}, {"src_db", name}, {"DIGEST", name}});
    file.add("FILEATTR", {{"ATTRNAME", name}, {"ATTRVAL", name}});

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateFiles(&file));
    EXPECT_EQ(entriesOf(*def),
              "/data/design/" + name + " UNKNOWN UNKNOWN '' '" + name + "' [" + name + "=" + name + "]\n");
}

TEST(DriverEntries, lieBelowTheUnzipDirectoryByDefault)
{
    const auto def = definition();
    FakeElement drivers("DRIVERS");
    drivers.add("DRIVER", {{"IP_VLNV", "gpio"}}).add("File", {{"PATH", "drivers/gpio/src/gpio.c"}});

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateDrivers(&drivers, ""));
    EXPECT_EQ(def->getDriversTopDir(), "/data/design/drivers");
    EXPECT_EQ(driversOf(*def),
              "gpio: /data/design/drivers/drivers/gpio/src/gpio.c, drivers/gpio/src/gpio.c, "
              "/data/design.hdf\n");
}

TEST(DriverEntries, lieBelowTheDriverPathWhenThereIsOne)
{
    const auto def = definition();
    const auto root = project();
    root->add("DRIVERS").add("DRIVER", {{"IP_VLNV", "gpio"}}).add("File", {{"PATH", "a.c"}});

    EXPECT_TRUE(readBom(*def, *root, "/opt/tree"));
    EXPECT_EQ(def->getDriversTopDir(), "/opt/tree/drivers");
    EXPECT_EQ(driversOf(*def), "gpio: /opt/tree/drivers/a.c, a.c, /data/design.hdf\n");
}

TEST(DriverEntries, setTheTopDirectoryEvenWithoutDrivers)
{
    const auto def = definition();
    FakeElement drivers("DRIVERS");

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateDrivers(&drivers, "/opt"));
    EXPECT_EQ(def->getDriversTopDir(), "/opt/drivers");
}

TEST(DriverEntries, areTakenWhateverTheElementsAreCalled)
{
    const auto def = definition();
    FakeElement drivers("DRIVERS");
    FakeElement& nameless = drivers.add("x");
    nameless.add("y", {{"PATH", "b.c"}});
    nameless.add("z", {{"PATH", "a.c"}});
    nameless.add("File", {{"PATH", "b.c"}});
    drivers.add("DRIVER", {{"IP_VLNV", "v"}});

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateDrivers(&drivers, "/t"));
    EXPECT_EQ(driversOf(*def),
              ": /t/drivers/b.c, b.c, /data/design.hdf\n"
              ": /t/drivers/a.c, a.c, /data/design.hdf\n");
}

TEST(DriverEntries, recordADigestUnderTheirPath)
{
    const auto def = definition();
    FakeElement drivers("DRIVERS");
    FakeElement& driver = drivers.add("DRIVER", {{"IP_VLNV", "v"}});
    driver.add("File", {{"PATH", "sub/a.c"}, {"DIGEST", "11"}});
    driver.add("File", {{"PATH", "b.c"}, {"DIGEST", ""}});
    driver.add("File", {{"PATH", ""}, {"DIGEST", "33"}});
    driver.add("File", {{"DIGEST", "44"}});

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateDrivers(&drivers, "/t"));
    EXPECT_EQ(def->implementation()->fileDigests.all(), (HHDFHwDef::Texts{{"sub/a.c", "11"}}));
    EXPECT_EQ(def->getDriverFilesMap().at("v").size(), 2u);
}
