// Several definitions folded into one.

#include <gtest/gtest.h>

#include <algorithm>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/Messages.h"

using support::Messages;
using Types = HHDFHwDefFileTypes;
using Utils = HHDFHwDefUtils;

namespace {

std::unique_ptr<HHDFHwDef> definition(const std::string& part)
{
    auto def = Utils::createHDF("/in/" + part + ".hdf");
    def->setMajorVersion(3);
    def->setMinorVersion(4);
    def->setModeType(Types::PRE_SYNTHESIS);
    def->setToolVersion("tool " + part);
    def->setSystemResourceInfo({"lut " + part, "", "", "", {}});
    def->setBoard("board " + part);
    def->setArch("arch " + part);
    def->setPackage("package " + part);
    def->setDevice("device " + part);
    def->setSpeed("speed " + part);
    def->setPart(part);
    def->setTIER(true);
    def->setSLRNo(2);
    def->setHierTopModuleName("top " + part);
    return def;
}

std::vector<std::string> namesOf(const HHDFHwDef& def)
{
    std::vector<std::string> names;
    def.getBomFiles(names);
    return names;
}

}  // namespace

TEST(Merging, needsAPath)
{
    const auto a = definition("a");
    const Messages messages;
    EXPECT_EQ(Utils::getMrgdHDF({a.get()}, ""), nullptr);
    EXPECT_EQ(messages.joined(), "hdf @64-13@ 20000000 []\n");
}

TEST(Merging, needsDefinitions)
{
    const Messages messages;
    EXPECT_EQ(Utils::getMrgdHDF({}, "/out/m.hdf"), nullptr);
    EXPECT_EQ(messages.joined(), "hdf @64-12@%s 20000000 [/out/m.hdf]\n");
}

TEST(Merging, ofOneDefinitionCopiesItsTopModule)
{
    const auto a = definition("a");
    EXPECT_EQ(Utils::getMrgdHDF({a.get()}, "/out/m.hdf")->getHierTopModuleName(), "top a");
    const auto empty = Utils::getMrgdHDF({nullptr}, "/out/m.hdf");
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(empty->getPart(), "");
}

TEST(Merging, takesEveryPropertyFromTheFirstThatNamesAPart)
{
    const auto none = Utils::createHDF("/in/none.hdf");
    none->setBoard("other board");
    const auto b = definition("b");
    const auto c = definition("c");
    const auto merged = Utils::getMrgdHDF({none.get(), b.get(), c.get()}, "/out/m.hdf");
    EXPECT_EQ(merged->getMajorVersion(), 3u);
    EXPECT_EQ(merged->getMinorVersion(), 4u);
    EXPECT_EQ(merged->getModeType(), Types::PRE_SYNTHESIS);
    EXPECT_EQ(merged->getToolVersion(), "tool b");
    EXPECT_EQ(merged->getSystemResourceInfo().lut, "lut b");
    EXPECT_EQ(merged->getBoard(), "board b");
    EXPECT_EQ(merged->getArch(), "arch b");
    EXPECT_EQ(merged->getPackage(), "package b");
    EXPECT_EQ(merged->getDevice(), "device b");
    EXPECT_EQ(merged->getSpeed(), "speed b");
    EXPECT_EQ(merged->getPart(), "b");
    EXPECT_TRUE(merged->isTIER());
    EXPECT_EQ(merged->getSLRNo(), 2);
    EXPECT_EQ(merged->getHierTopModuleName(), "");
}

TEST(Merging, keepsTheDefaultsWhenNoneNamesAPart)
{
    const auto a = Utils::createHDF("/in/a.hdf");
    const auto b = Utils::createHDF("/in/b.hdf");
    a->setMinorVersion(2);
    const auto merged = Utils::getMrgdHDF({a.get(), b.get()}, "/out/m.hdf");
    EXPECT_EQ(merged->getMinorVersion(), 7u);
    EXPECT_EQ(merged->getModeType(), Types::MODE_UNSET);
}

TEST(Merging, stopsAtANullDefinition)
{
    const auto a = definition("a");
    const auto c = definition("c");
    a->addFileToBom("/in/a.bit", Types::BIT);
    c->addFileToBom("/in/c.bit", Types::BIT);
    EXPECT_EQ(namesOf(*Utils::getMrgdHDF({a.get(), nullptr, c.get()}, "/out/m.hdf")),
              std::vector<std::string>{"a.bit"});
}

TEST(Merging, takesAllFilesOfTheFirstAndNewOnesOfTheOthers)
{
    const auto a = definition("a");
    const auto b = definition("b");
    for (int i = 0; i < 2; ++i) {
        a->addFileToBom("/in/twice.bit", Types::BIT);
        b->addFileToBom("/IN/Twice.bit", Types::BIT);  // the same but for case
        b->addFileToBom("/in/new.bit", Types::BIT);    // twice in b, once in the result
    }
    b->addFileToBom("/in/twice.bit", Types::ELF);  // of another type
    EXPECT_EQ(namesOf(*Utils::getMrgdHDF({a.get(), b.get()}, "/out/m.hdf")),
              (std::vector<std::string>{"twice.bit", "twice.bit", "new.bit", "twice.bit"}));
}

TEST(Merging, gathersAttributesAndDriversAndTheLaterOneOfANameWins)
{
    const auto a = definition("a");
    const auto b = definition("b");
    a->addWDIAttr("k", "a");
    a->addWDIAttr("only", "a");
    b->addWDIAttr("k", "b");
    a->addDrivers("dir", "/in/a");
    b->addDrivers("dir", "/in/b");
    a->addDriverFileToBom("d", "/in/a", "x.c", "");
    b->addDriverFileToBom("d", "/in/b", "y.c", "");
    b->addDriverFileToBom("e", "/in/b", "z.c", "");
    const auto merged = Utils::getMrgdHDF({a.get(), b.get()}, "/out/m.hdf");
    HHDFHwDef::Texts attrs;
    merged->getWDIAttrs(attrs);
    EXPECT_EQ(attrs, (HHDFHwDef::Texts{{"k", "b"}, {"only", "a"}}));
    HHDFHwDef::Texts dirs;
    merged->getDriverFiles(dirs);
    EXPECT_EQ(dirs, (HHDFHwDef::Texts{{"dir", "/in/b"}}));
    const auto drivers = merged->getDriverFilesMap();
    ASSERT_EQ(drivers.size(), 2u);
    ASSERT_EQ(drivers.at("d").size(), 1u);
    EXPECT_EQ(drivers.at("d")[0].getFilePath(), "/in/b/y.c");
}

TEST(Merging, leavesItsInputsAsTheyWere)
{
    const auto a = definition("a");
    const auto b = definition("b");
    b->addFileToBom("/in/b.bit", Types::BIT);
    Utils::getMrgdHDF({a.get(), b.get()}, "/out/m.hdf");
    EXPECT_EQ(a->getHierTopModuleName(), "top a");
    EXPECT_EQ(namesOf(*b), std::vector<std::string>{"b.bit"});
}

// Equality by key against the pairwise test that it stands for.
TEST(Merging, findsExactlyTheEntriesEqualThatThePairwiseTestFindsEqual)
{
    const std::vector<std::string> texts = {"x", "X", "x:1", "1:x", ""};
    const auto first = Utils::createHDF("/in/first.hdf");
    const auto second = Utils::createHDF("/in/second.hdf");
    for (const char* file : {"/in/a.bit", "/in/A.bit", "/in/./a.bit", "/in/b.bit"}) {
        for (const std::string& hierarchy : texts) {
            for (const std::string& container : texts) {
                for (const Types::HWHFileType type : {Types::BIT, Types::ELF}) {
                    second->addFileToBom(file, type, hierarchy, Types::DEFAULT_BD, container);
                }
            }
        }
    }
    std::vector<HHDFHwDefFile*> files;
    second->getBomFiles(files);
    files.at(3)->setHwSrcDB("db");
    std::vector<const HHDFHwDefFile*> expected;
    for (const HHDFHwDefFile* file : files) {
        const bool isNew = std::none_of(expected.begin(), expected.end(),
                                        [&](const HHDFHwDefFile* other) { return *other == *file; });
        if (isNew) {
            expected.push_back(file);
        }
    }
    const auto merged = Utils::getMrgdHDF({first.get(), second.get()}, "/out/m.hdf");
    std::vector<HHDFHwDefFile*> mergedFiles;
    merged->getBomFiles(mergedFiles);
    ASSERT_EQ(mergedFiles.size(), expected.size());
    ASSERT_LT(expected.size(), files.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(mergedFiles[i]->getFile(), expected[i]->getFile());
        EXPECT_EQ(mergedFiles[i]->getHierPath(), expected[i]->getHierPath());
    }
}

TEST(Merging, countsOnlyTheFirstInTheSequenceAsFirst)
{
    const auto a = definition("a");
    a->addFileToBom("/in/a.bit", Types::BIT);
    EXPECT_EQ(namesOf(*Utils::getMrgdHDF({a.get(), a.get()}, "/out/m.hdf")),
              std::vector<std::string>{"a.bit"});
}

TEST(Merging, namesTheBomDocumentByTheMode)
{
    const auto a = definition("a");
    const auto b = definition("b");
    a->setModeType(Types::POST_SYNTHESIS);
    EXPECT_EQ(Utils::getMrgdHDF({a.get(), b.get()}, "/out/m.hdf")->getModeName(), "Post-Synthesis");
}
