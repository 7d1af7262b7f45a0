#include "hwdef/bom/HHDFHwDefBomReader.h"

#include <gtest/gtest.h>

#include <boost/lexical_cast.hpp>
#include <locale>
#include <stdexcept>

#include "hwdef/model/HHDFHwDefImp.h"
#include "support/BomDocument.h"
#include "support/Messages.h"

using support::definition;
using support::entriesOf;
using support::FakeElement;
using support::project;
using support::readBom;

namespace {

/// A root of the given versions; null leaves the attribute out.
FakeElement rootOf(const char* version, const char* minor)
{
    FakeElement::Attributes attributes;
    if (version) {
        attributes["Version"] = version;
    }
    if (minor) {
        attributes["Minor"] = minor;
    }
    return FakeElement("Project", attributes);
}

/// Groups digits by a comma, as many locales do.
struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};

}  // namespace

TEST(HHDFHwDefBomReader, takesAMissingTextAsTheEmptyOne)
{
    EXPECT_EQ(HHDFHwDefBomReader::valueOrEmpty(nullptr), "");
    EXPECT_EQ(HHDFHwDefBomReader::valueOrEmpty("text"), "text");
}

TEST(HHDFHwDefBomReader, refusesAMissingDefinitionOrRoot)
{
    const auto def = definition();
    const auto root = project();

    EXPECT_FALSE(HHDFHwDefBomReader(nullptr, root.get()).readHDF(""));
    EXPECT_FALSE(HHDFHwDefBomReader(def.get(), nullptr).readHDF(""));
    EXPECT_EQ(def->getMinorVersion(), 7u);
}

TEST(HHDFHwDefBomReader, setsVersionsAndDigestBeforeItMissesTheChildList)
{
    const auto def = definition();
    FakeElement root("Project", {{"Version", "3"}, {"Minor", "4"}, {"DIGEST", "123"}});
    root.add("MODE", {{"Name", "Pre-Synthesis"}});
    root.loseChildren();

    EXPECT_FALSE(readBom(*def, root));
    EXPECT_EQ(def->getMajorVersion(), 3u);
    EXPECT_EQ(def->getMinorVersion(), 4u);
    EXPECT_EQ(def->getDigest(), "123");
    EXPECT_EQ(def->getModeType(), HHDFHwDefFileTypes::MODE_UNSET);
}

TEST(HHDFHwDefBomReader, readsARootWithoutChildren)
{
    const auto def = definition();
    FakeElement root("AnyName", {{"Version", "1"}, {"Minor", "2"}});
    std::string earlier = "9";
    def->setDigest(earlier);

    EXPECT_TRUE(readBom(*def, root));
    EXPECT_EQ(def->getMajorVersion(), 1u);
    EXPECT_EQ(def->getMinorVersion(), 2u);
    EXPECT_EQ(def->getDigest(), "");
    EXPECT_EQ(def->getModeType(), HHDFHwDefFileTypes::MODE_UNSET);
    EXPECT_EQ(entriesOf(*def), "");
}

TEST(HHDFHwDefBomReader, readsVersionsWithLeadingBlanksSignsAndTrailingText)
{
    const auto def = definition();
    FakeElement root = rootOf(" \t+12.5", "-1");

    EXPECT_TRUE(readBom(*def, root));
    EXPECT_EQ(def->getMajorVersion(), 12u);
    EXPECT_EQ(def->getMinorVersion(), 4294967295u);
}

TEST(HHDFHwDefBomReader, letsTheErrorOfAVersionThatIsNoNumberPass)
{
    const auto def = definition();
    for (const char* version : {static_cast<const char*>(nullptr), "", "x1", "."}) {
        FakeElement root = rootOf(version, "0");
        EXPECT_THROW(readBom(*def, root), std::invalid_argument);
    }
    EXPECT_EQ(def->getMajorVersion(), 1u);
}

TEST(HHDFHwDefBomReader, setsTheMajorVersionBeforeTheMinorOneFails)
{
    const auto def = definition();
    FakeElement root = rootOf("5", nullptr);

    EXPECT_THROW(readBom(*def, root), std::invalid_argument);
    EXPECT_EQ(def->getMajorVersion(), 5u);
    EXPECT_EQ(def->getMinorVersion(), 7u);
}

TEST(HHDFHwDefBomReader, letsTheErrorOfAVersionBeyond32BitsPass)
{
    const auto def = definition();
    FakeElement major = rootOf("2147483648", "0");
    FakeElement minor = rootOf("2147483647", "-2147483649");

    EXPECT_THROW(readBom(*def, major), std::out_of_range);
    EXPECT_THROW(readBom(*def, minor), std::out_of_range);
    EXPECT_EQ(def->getMajorVersion(), 2147483647u);
}

TEST(HHDFHwDefBomReader, takesElementNamesInAnyCase)
{
    const auto def = definition();
    const auto root = project();
    root->add("file", {{"Name", "a"}});
    root->add("File", {{"Name", "b"}});
    root->add("FILE", {{"Name", "c"}});
    root->add("Tool_Version", {{"Version", "2024.1"}});
    root->add("mode", {{"Name", "Pre-Synthesis"}});
    root->add("Hierarchy", {{"Name", "top"}});
    root->add("SystemInfo", {{"PART", "p"}});
    root->add("UsedResources", {{"LUT", "5"}});

    EXPECT_TRUE(readBom(*def, *root));
    EXPECT_EQ(entriesOf(*def),
              "/data/design/a UNKNOWN UNKNOWN '' '' []\n"
              "/data/design/b UNKNOWN UNKNOWN '' '' []\n"
              "/data/design/c UNKNOWN UNKNOWN '' '' []\n");
    EXPECT_EQ(def->getToolVersion(), "2024.1");
    EXPECT_EQ(def->getModeName(), "Pre-Synthesis");
    EXPECT_EQ(def->getHierTopModuleName(), "top");
    EXPECT_EQ(def->getPart(), "p");
    EXPECT_EQ(def->getUsedResourceInfo().lut, "5");
}

TEST(HHDFHwDefBomReader, takesTheOtherElementNamesInAnyCase)
{
    const auto def = definition();
    const auto root = project();
    root->add("drivers").add("x", {{"IP_VLNV", "v"}}).add("y", {{"PATH", "a.c"}});
    root->add("WdiAttrs").add("x", {{"ATTRNAME", "k"}, {"ATTRVAL", "v"}});
    root->add("INSTANCE_PATHS")
        .add("RECONFIGURABLE_partition", {{"Instance_Path", "top/rp"}})
        .add("x", {{"RM_NAME", "rm"}});
    root->add("PRCONFIGURATIONS").add("prconfiguration", {{"Name", "c"}}).add("GRAYBOXINST", {{"Name", "g"}});
    root->add("Part").add("Tier", {{"IS_TIER", "1"}});

    EXPECT_TRUE(readBom(*def, *root));
    EXPECT_EQ(support::driversOf(*def), "v: /data/design/drivers/a.c, a.c, /data/design.hdf\n");
    EXPECT_EQ(def->implementation()->wdiAttrs, (HHDFHwDef::Texts{{"k", "v"}}));
    EXPECT_EQ(def->getPartitionInfo().count("top/rp"), 1u);
    EXPECT_EQ(def->getPartitionConfigs().at("c")->getGrayBoxCells(), (std::vector<std::string>{"g"}));
    EXPECT_TRUE(def->isTIER());
}

TEST(HHDFHwDefBomReader, passesOverWhatItDoesNotKnow)
{
    const support::Messages messages;
    const auto def = definition();
    const auto root = project();
    root->add("version", {{"Version", "9"}, {"Name", "9"}});
    root->add("Files", {{"Name", "a"}});
    root->add("Fil", {{"Name", "b"}});
    root->add("", {{"Name", "c"}});
    root->add("File", {{"Name", "d"}}).loseName();

    EXPECT_TRUE(readBom(*def, *root));
    EXPECT_EQ(entriesOf(*def), "");
    EXPECT_EQ(def->getToolVersion(), "");
    EXPECT_EQ(messages.joined(), "");
}

TEST(HHDFHwDefBomReader, goesOnAfterAnElementThatAnswersFalse)
{
    const auto def = definition();
    const auto root = project();
    root->add("File");
    root->add("HIERARCHY");
    root->add("TOOL_VERSION", {{"Version", "7"}});

    EXPECT_TRUE(readBom(*def, *root));
    EXPECT_EQ(def->getToolVersion(), "7");
}

TEST(HHDFHwDefBomReader, letsTheLastOfRepeatedElementsCount)
{
    const auto def = definition();
    const auto root = project();
    root->add("TOOL_VERSION", {{"Version", "1"}});
    root->add("TOOL_VERSION", {{"Version", "2"}});
    root->add("SYSTEMINFO", {{"PART", "first"}, {"BOARD", "b"}, {"LUT", "1"}});
    root->add("SYSTEMINFO", {{"PART", "second"}});

    EXPECT_TRUE(readBom(*def, *root));
    EXPECT_EQ(def->getToolVersion(), "2");
    EXPECT_EQ(def->getPart(), "second");
    EXPECT_EQ(def->getBoard(), "");
    EXPECT_EQ(def->getSystemResourceInfo().lut, "");
}

TEST(HHDFHwDefBomReader, takesOnlyExactlyPreSynthesisAsThatMode)
{
    const auto def = definition();
    HHDFHwDefBomReader reader(def.get(), nullptr);
    FakeElement pre("MODE", {{"Name", "Pre-Synthesis"}});
    EXPECT_TRUE(reader.populateBomMode(&pre));
    EXPECT_EQ(def->getModeType(), HHDFHwDefFileTypes::PRE_SYNTHESIS);

    for (const char* name : {"pre-synthesis", "Post-Synthesis", "", "Pre-Synthesis "}) {
        def->setModeType(HHDFHwDefFileTypes::PRE_SYNTHESIS);
        FakeElement other("MODE", {{"Name", name}});
        EXPECT_TRUE(reader.populateBomMode(&other));
        EXPECT_EQ(def->getModeType(), HHDFHwDefFileTypes::POST_SYNTHESIS) << name;
    }
    EXPECT_EQ(def->implementation()->bomName, "sysdef.xml");
}

TEST(HHDFHwDefBomReader, ignoresAnEmptyTopModule)
{
    const auto def = definition();
    HHDFHwDefBomReader reader(def.get(), nullptr);
    FakeElement named("HIERARCHY", {{"Name", "top"}});
    FakeElement empty("HIERARCHY", {{"Name", ""}});

    EXPECT_TRUE(reader.populateAddrTags(&named));
    EXPECT_FALSE(reader.populateAddrTags(&empty));
    EXPECT_EQ(def->getHierTopModuleName(), "top");
}

TEST(HHDFHwDefBomReader, readsDeviceAndSystemResources)
{
    const auto def = definition();
    FakeElement info("SYSTEMINFO", {{"BOARD", "b"},
                                    {"PART", "p"},
                                    {"ARCH", "a"},
                                    {"PACKAGE", "pk"},
                                    {"DEVICE", "d"},
                                    {"SPEED", "-1"},
                                    {"LUT", "1"},
                                    {"FF", "2"},
                                    {"BRAM", "3"},
                                    {"DSP", "4"}});

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateSystemInfo(&info));
    EXPECT_EQ(def->getBoard() + "|" + def->getPart() + "|" + def->getArch() + "|" + def->getPackage() + "|" +
                  def->getDevice() + "|" + def->getSpeed(),
              "b|p|a|pk|d|-1");
    const auto& system = def->getSystemResourceInfo();
    EXPECT_EQ(system.lut + system.ff + system.bram + system.dsp, "1234");
    EXPECT_EQ(def->getUsedResourceInfo().lut, "");
}

TEST(HHDFHwDefBomReader, startsUsedResourcesAfresh)
{
    const auto def = definition();
    HHDFHwDef::HHDFResourceInfo earlier;
    earlier.lut = "9";
    earlier.dsp = "9";
    earlier.extra[0] = "9";
    def->setUsedResourceInfo(earlier);
    const auto root = project();
    root->add("USEDRESOURCES", {{"FF", "2"}, {"BRAM", "3"}});

    EXPECT_TRUE(readBom(*def, *root));
    const auto& used = def->getUsedResourceInfo();
    EXPECT_EQ(used.lut + "|" + used.ff + "|" + used.bram + "|" + used.dsp + "|" + used.extra[0], "|2|3||");
}

TEST(HHDFHwDefBomReader, takesExactlyOneAsStackedDevice)
{
    const auto def = definition();
    HHDFHwDefBomReader reader(def.get(), nullptr);
    FakeElement stacked("PART", {{"Name", "not kept"}});
    stacked.add("tier", {{"IS_TIER", "1"}});
    stacked.add("num_of_slrs", {{"Value", "4"}});
    stacked.add("OTHER", {{"Value", "x"}});
    EXPECT_TRUE(reader.populatePart(&stacked));
    EXPECT_TRUE(def->isTIER());
    EXPECT_EQ(def->getSLRNo(), 4);
    EXPECT_EQ(def->getPart(), "");

    FakeElement single("PART");
    single.add("TIER", {{"IS_TIER", "true"}});
    EXPECT_TRUE(reader.populatePart(&single));
    EXPECT_FALSE(def->isTIER());
    EXPECT_FALSE(reader.populatePart(nullptr));
}

TEST(HHDFHwDefBomReader, letsTheErrorOfADieCountThatIsNoWholeNumberPass)
{
    const auto def = definition();
    for (const char* count : {"", " 5", "5 ", "5x", "0x5", "+", "-", "--5", "2147483648", "1.0", "1,000"}) {
        const auto root = project();
        root->add("PART").add("NUM_OF_SLRS", {{"Value", count}});
        EXPECT_THROW(readBom(*def, *root), boost::bad_lexical_cast) << count;
    }
    EXPECT_EQ(def->getSLRNo(), -1);
}

TEST(HHDFHwDefBomReader, readsSignedDieCounts)
{
    const auto def = definition();
    for (const auto& [text, count] :
         {std::pair{"+5", 5}, {"-3", -3}, {"007", 7}, {"2147483647", 2147483647}}) {
        const auto root = project();
        root->add("PART").add("NUM_OF_SLRS", {{"Value", text}});
        EXPECT_TRUE(readBom(*def, *root));
        EXPECT_EQ(def->getSLRNo(), count);
    }
}

TEST(HHDFHwDefBomReader, readsNumbersTheSameInEveryLocale)
{
    const auto def = definition();
    const auto root = project();
    root->add("PART").add("NUM_OF_SLRS", {{"Value", "1,000"}});
    const std::locale earlier = std::locale::global(std::locale(std::locale::classic(), new Grouping));

    EXPECT_THROW(readBom(*def, *root), boost::bad_lexical_cast);
    std::locale::global(earlier);
}

TEST(HHDFHwDefBomReader, replacesRepeatedFreeAttributes)
{
    const auto def = definition();
    FakeElement attributes("WDIATTRS");
    attributes.add("WDIATTR", {{"ATTRNAME", "a"}, {"ATTRVAL", "1"}});
    attributes.add("anything", {{"ATTRNAME", "b"}});
    attributes.add("WDIATTR", {{"ATTRNAME", "a"}, {"ATTRVAL", "2"}});

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateWDIAttrs(&attributes));
    EXPECT_EQ(def->implementation()->wdiAttrs, (HHDFHwDef::Texts{{"a", "2"}, {"b", ""}}));
}

TEST(HHDFHwDefBomReader, countsChildListsThatCannotBeHadAsEmpty)
{
    const auto def = definition();
    const auto root = project();
    root->add("File", {{"Name", "a"}}).loseChildren();
    root->add("DRIVERS").loseChildren();
    root->add("DRIVERS").add("DRIVER", {{"IP_VLNV", "v"}}).loseChildren();
    root->add("WDIATTRS").loseChildren();
    root->add("Instance_Paths").loseChildren();
    root->add("Instance_Paths").add("Reconfigurable_Partition", {{"Instance_Path", "p"}}).loseChildren();
    root->add("PRConfigurations").loseChildren();
    root->add("PRConfigurations").add("PRConfiguration", {{"Name", "c"}}).loseChildren();
    root->add("PART").loseChildren();

    EXPECT_TRUE(readBom(*def, *root));
    EXPECT_EQ(entriesOf(*def), "/data/design/a UNKNOWN UNKNOWN '' '' []\n");
    EXPECT_TRUE(def->getPartitionInfo().empty());
    EXPECT_TRUE(def->getPartitionConfigs().empty());
}
