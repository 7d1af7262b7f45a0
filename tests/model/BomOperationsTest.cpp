#include <gtest/gtest.h>

#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/model/HHDFHwDef.h"
#include "hwdef/model/HHDFHwDefImp.h"

namespace {

using Types = HHDFHwDefFileTypes;
using Names = std::vector<std::string>;
using Files = std::vector<HHDFHwDefFile*>;

HHDFHwDefFile* entryAt(const HHDFHwDef& def, std::size_t index)
{
    Files files;
    def.getBomFiles(files);
    return files.at(index);
}

HHDFHwDefFile* bomFile(const HHDFHwDef& def, std::string name)
{
    return def.getBomFile(name);
}

std::string fileFor(const HHDFHwDef& def, const std::string& cell)
{
    std::string name = "old";
    def.getBomFileForHierarchy(cell, name);
    return name;
}

}  // namespace

TEST(HHDFHwDef, addsAFileOfAType)
{
    HHDFHwDef def("design.hdf");
    EXPECT_TRUE(def.addFileToBom("/x/top.bit", Types::BIT, "/c/other.hdf"));
    const HHDFHwDefFile* file = entryAt(def, 0);
    EXPECT_EQ(file->getFile(), "/x/top.bit");
    EXPECT_EQ(file->getFileType(), Types::BIT);
    EXPECT_EQ(file->getBDFileType(), Types::UNKNOWN_BD);
    EXPECT_EQ(file->getHierPath(), "");
    EXPECT_EQ(file->getHwDefFilePath(), "/c/other.hdf");
    EXPECT_EQ(file->getHwSrcDB(), "");
}

TEST(HHDFHwDef, addsAFileOfTheHierarchy)
{
    HHDFHwDef def("design.hdf");
    EXPECT_TRUE(
        def.addFileToBom("/x/top.hwh", Types::HW_HANDOFF, "top/bd", Types::SCOPED_BD, "/c/other.hdf"));
    const HHDFHwDefFile* file = entryAt(def, 0);
    EXPECT_EQ(file->getFile(), "/x/top.hwh");
    EXPECT_EQ(file->getFileType(), Types::HW_HANDOFF);
    EXPECT_EQ(file->getBDFileType(), Types::SCOPED_BD);
    EXPECT_EQ(file->getHierPath(), "top/bd");
    EXPECT_EQ(file->getHwDefFilePath(), "/c/other.hdf");
}

TEST(HHDFHwDef, addsAFileOfUnknownType)
{
    HHDFHwDef def("design.hdf");
    EXPECT_TRUE(def.addFileToBom("/x/readme", std::string("/c/other.hdf")));
    EXPECT_EQ(entryAt(def, 0)->getFileType(), Types::UNKNOWN);
    EXPECT_EQ(entryAt(def, 0)->getBDFileType(), Types::UNKNOWN_BD);
    EXPECT_EQ(entryAt(def, 0)->getHwDefFilePath(), "/c/other.hdf");
}

TEST(HHDFHwDef, addsACopyOfAnEntry)
{
    HHDFHwDef def("design.hdf");
    HHDFHwDefFile file("/x/top.bit");
    file.setFileType(Types::BIT);
    file.addFileAttr("k", "a");
    EXPECT_TRUE(def.addFileToBom(&file));
    EXPECT_NE(entryAt(def, 0), &file);
    EXPECT_TRUE(*entryAt(def, 0) == file);
    EXPECT_EQ(entryAt(def, 0)->getFileAttrs().at("k"), "a");
}

TEST(HHDFHwDef, refusesAFileWithoutPath)
{
    HHDFHwDef def("design.hdf");
    EXPECT_FALSE(def.addFileToBom("", Types::BIT));
    EXPECT_FALSE(def.addFileToBom("", Types::BIT, "top", Types::DEFAULT_BD));
    EXPECT_FALSE(def.addFileToBom("", std::string("/c/other.hdf")));
    EXPECT_FALSE(def.addFileToBom(static_cast<const HHDFHwDefFile*>(nullptr)));
    Files files;
    EXPECT_EQ(def.getBomFiles(files), 0U);
}

TEST(HHDFHwDef, listsTheSameFileAsOftenAsItIsAdded)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/top.bit", Types::BIT);
    def.addFileToBom("/x/top.bit", Types::BIT);
    Names names;
    EXPECT_EQ(def.getBomFiles(names), 2U);
}

TEST(HHDFHwDef, keepsEntriesInPlaceWhileOthersAreAdded)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/first", Types::BIT);
    const HHDFHwDefFile* first = entryAt(def, 0);
    for (int i = 0; i < 1000; ++i) {
        def.addFileToBom("/x/" + std::to_string(i), Types::BIT);
    }
    EXPECT_EQ(bomFile(def, "first"), first);
    EXPECT_EQ(first->getFileName(), "first");
}

TEST(HHDFHwDef, handsARemovedEntryBackToItsCaller)
{
    HHDFHwDef def("design.hdf");
    for (const char* path : {"/x/a", "/x/b", "/x/c"}) {
        def.addFileToBom(path, Types::BIT);
    }
    const std::unique_ptr<HHDFHwDefFile> removed(entryAt(def, 1));
    EXPECT_TRUE(def.removeFileFromBom(removed.get()));
    Names names;
    def.getBomFiles(names);
    EXPECT_EQ(names, (Names{"a", "c"}));
    EXPECT_EQ(removed->getFileName(), "b");
    EXPECT_EQ(bomFile(def, "b"), nullptr);
}

TEST(HHDFHwDef, removesNoNullEntry)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/in/a");
    def.implementation()->bom.add(nullptr);
    def.addFileToBom("/in/b");
    EXPECT_FALSE(def.removeFileFromBom(nullptr));
    EXPECT_EQ(def.implementation()->bom.slots().size(), 3U);
}

TEST(HHDFHwDef, findsAnEntryByTheLastComponentOfAName)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/y/top.bit", Types::BIT);
    HHDFHwDefFile* file = entryAt(def, 0);
    EXPECT_EQ(bomFile(def, "a/b/top.bit"), file);
    EXPECT_EQ(bomFile(def, "top.bit"), file);
    EXPECT_EQ(bomFile(def, "/top.bit"), file);
}

TEST(HHDFHwDef, findsNoEntryByAnotherLastComponent)
{
    HHDFHwDef def("design.hdf");
    EXPECT_EQ(bomFile(def, "top.bit"), nullptr);
    def.addFileToBom("/x/y/top.bit", Types::BIT);
    for (const char* name : {"", "TOP.bit", "y", "top", "top.bit/", "top.bit/x", "top.bit "}) {
        EXPECT_EQ(bomFile(def, name), nullptr) << name;
    }
}

TEST(HHDFHwDef, leavesTheNameThatItLooksUp)
{
    const HHDFHwDef def("design.hdf");
    std::string name = "a/b/top.bit";
    def.getBomFile(name);
    EXPECT_EQ(name, "a/b/top.bit");
}

TEST(HHDFHwDef, findsTheFirstOfTwoEntriesOfOneName)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/top.bit", Types::BIT, "a/first", Types::DEFAULT_BD, "/c/first.hdf");
    def.addFileToBom("/y/top.bit", Types::PDI, "a/second", Types::DEFAULT_BD, "/c/second.hdf");
    EXPECT_EQ(bomFile(def, "top.bit"), entryAt(def, 0));
    EXPECT_TRUE(def.isBomFileExistsWithName("top.bit"));
    EXPECT_EQ(def.getBomFileHierarchy("top.bit"), "a/first");
    EXPECT_EQ(def.getBomFileType("top.bit"), "BIT");
    EXPECT_EQ(def.getBomFileHwDefPath("top.bit"), "/c/first.hdf");
}

TEST(HHDFHwDef, looksNamesUpExactly)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/top.bit", Types::BIT, "a/first", Types::DEFAULT_BD, "/c/first.hdf");
    for (const char* name : {"", "Top.bit", "x/top.bit", "/x/top.bit", "top"}) {
        EXPECT_FALSE(def.isBomFileExistsWithName(name)) << name;
        EXPECT_EQ(def.getBomFileHierarchy(name), "") << name;
        EXPECT_EQ(def.getBomFileType(name), "") << name;
        EXPECT_EQ(def.getBomFileHwDefPath(name), "") << name;
    }
}

TEST(HHDFHwDef, namesTheTypeOfAFileByItsToken)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/a.iss", Types::ISS);
    def.addFileToBom("/x/readme");
    EXPECT_EQ(def.getBomFileType("a.iss"), "PARTIAL_BIT");
    EXPECT_EQ(def.getBomFileType("readme"), "UNKNOWN");
}

TEST(HHDFHwDef, findsTheFileOfACell)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/a.hwh", Types::HW_HANDOFF, "top/cpu", Types::DEFAULT_BD);
    def.addFileToBom("/x/b.hwh", Types::HW_HANDOFF, "cpu", Types::DEFAULT_BD);
    def.addFileToBom("/x/c.hwh", Types::HW_HANDOFF, "whole", Types::DEFAULT_BD);
    EXPECT_EQ(fileFor(def, "cpu"), "a.hwh");
    EXPECT_EQ(fileFor(def, "whole"), "c.hwh");
}

TEST(HHDFHwDef, findsNoFileOfAnotherCell)
{
    HHDFHwDef def("design.hdf");
    EXPECT_EQ(fileFor(def, ""), "");
    def.addFileToBom("/x/a.hwh", Types::HW_HANDOFF, "top/cpu", Types::DEFAULT_BD);
    for (const char* cell : {"", "CPU", "top", "top/cpu", "/cpu", "pu"}) {
        EXPECT_EQ(fileFor(def, cell), "") << cell;
    }
}

TEST(HHDFHwDef, takesAnEmptyLastComponentOfTheHierarchyAsItStands)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/a.hwh", Types::HW_HANDOFF, "top/cpu", Types::DEFAULT_BD);
    def.addFileToBom("/x/b.hwh", Types::HW_HANDOFF, "top/", Types::DEFAULT_BD);
    def.addFileToBom("/x/c.bit", Types::BIT);
    EXPECT_EQ(fileFor(def, ""), "b.hwh");
}

TEST(HHDFHwDef, findsASourceDatabaseInAnyCase)
{
    HHDFHwDef def("design.hdf");
    EXPECT_FALSE(def.doesHwDefExist("design.dcp"));
    def.addFileToBom("/x/a.bit", Types::BIT);
    EXPECT_FALSE(def.doesHwDefExist("design.dcp"));
    def.addFileToBom("/x/b.bit", Types::BIT);
    entryAt(def, 1)->setHwSrcDB("Design.dcp");
    EXPECT_TRUE(def.doesHwDefExist("/any/where/DESIGN.dcp"));
    EXPECT_TRUE(def.doesHwDefExist("design.dcp"));
    EXPECT_FALSE(def.doesHwDefExist("design.dcp/x"));
}

TEST(HHDFHwDef, givesEntriesOfOneNameTheirSourceDatabasesInTurn)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/top.bit", Types::BIT);
    def.addFileToBom("/y/TOP.bit", Types::BIT);
    def.setHwSrcDB("/any/Top.BIT", "first");
    EXPECT_EQ(entryAt(def, 0)->getHwSrcDB(), "first");
    EXPECT_EQ(entryAt(def, 1)->getHwSrcDB(), "");
    def.setHwSrcDB("top.bit", "second");
    def.setHwSrcDB("top.bit", "third");
    EXPECT_EQ(entryAt(def, 0)->getHwSrcDB(), "first");
    EXPECT_EQ(entryAt(def, 1)->getHwSrcDB(), "second");
}

TEST(HHDFHwDef, leavesAnEntryOpenThatGetsAnEmptySourceDatabase)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/top.bit", Types::BIT);
    def.addFileToBom("/y/top.bit", Types::BIT);
    def.setHwSrcDB("top.bit", "");
    def.setHwSrcDB("other.bit", "db");
    EXPECT_EQ(entryAt(def, 0)->getHwSrcDB(), "");
    def.setHwSrcDB("top.bit", "db");
    EXPECT_EQ(entryAt(def, 0)->getHwSrcDB(), "db");
    EXPECT_EQ(entryAt(def, 1)->getHwSrcDB(), "");
}

TEST(HHDFHwDef, addsAttributesToTheEntryOfAName)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/top.bit", Types::BIT);
    def.addFileToBom("/y/top.bit", Types::BIT);
    HHDFHwDef::Texts attrs = {{"", "x"}, {"a", "1"}, {"b", ""}, {"c", "3"}};
    EXPECT_TRUE(def.addFileAttrs("some/top.bit", attrs));
    EXPECT_EQ(entryAt(def, 0)->getFileAttrs(), (HHDFHwDef::Texts{{"a", "1"}, {"c", "3"}}));
    EXPECT_FALSE(entryAt(def, 1)->hasFileAttrs());
    EXPECT_FALSE(def.addFileAttrs("other.bit", attrs));
}

TEST(HHDFHwDef, appendsNamesOfAllFiles)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/b", Types::BIT);
    def.addFileToBom("/x/a", Types::PDI);
    Names names = {"old"};
    EXPECT_EQ(def.getBomFiles(names), 3U);
    EXPECT_EQ(names, (Names{"old", "b", "a"}));
}

TEST(HHDFHwDef, appendsCanonicalPathsOfFilesOfAType)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/../y/b", Types::BIT);
    def.addFileToBom("/x/a", Types::PDI);
    def.addFileToBom("/x/u", Types::UNKNOWN);
    Names bits = {"old"};
    Names unknown;
    EXPECT_EQ(def.getBomFiles(Types::BIT, bits), 2U);
    EXPECT_EQ(bits, (Names{"old", "/y/b"}));
    EXPECT_EQ(def.getBomFiles(Types::UNKNOWN, unknown), 1U);
    EXPECT_EQ(unknown, (Names{"/x/u"}));
}

TEST(HHDFHwDef, appendsPathsOfFilesOfARoleBelowTheUnzipDirectory)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/a", Types::HW_HANDOFF, "", Types::DEFAULT_BD);
    def.addFileToBom("/x/b", Types::HW_HANDOFF, "", Types::SCOPED_BD);
    Names names = {"old"};
    EXPECT_EQ(def.getBomFiles(Types::DEFAULT_BD, names), 2U);
    EXPECT_EQ(names, (Names{"old", "a"}));
    def.implementation()->unzipDir = "/data/design";
    EXPECT_EQ(def.getBomFiles(Types::SCOPED_BD, names), 3U);
    EXPECT_EQ(names, (Names{"old", "a", "/data/design/b"}));
}

TEST(HHDFHwDef, appendsEntriesOfATypeAndAllForUnknown)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/a", Types::PDI);
    def.addFileToBom("/x/b", Types::BIT);
    def.addFileToBom("/x/c");
    HHDFHwDefFile* const old = entryAt(def, 2);
    Files bits = {old};
    Files all = {old};
    EXPECT_EQ(def.getBomFiles(Types::BIT, bits), 2U);
    EXPECT_EQ(bits, (Files{old, entryAt(def, 1)}));
    EXPECT_EQ(def.getBomFiles(Types::UNKNOWN, all), 4U);
    EXPECT_EQ(all, (Files{old, entryAt(def, 0), entryAt(def, 1), entryAt(def, 2)}));
}

TEST(HHDFHwDef, appendsAllEntriesAndThoseOfARole)
{
    HHDFHwDef def("design.hdf");
    def.addFileToBom("/x/a", Types::HW_HANDOFF, "", Types::REFERENCE_BD);
    def.addFileToBom("/x/b", Types::BIT);
    Files all = {nullptr};
    Files ofRole = {nullptr};
    EXPECT_EQ(def.getBomFiles(all), 3U);
    EXPECT_EQ(def.getBomFiles(Types::REFERENCE_BD, ofRole), 2U);
    EXPECT_EQ(ofRole, (Files{nullptr, entryAt(def, 0)}));
    EXPECT_EQ(def.getBomFiles(Types::UNKNOWN_BD, ofRole), 3U);
    EXPECT_EQ(ofRole.back(), entryAt(def, 1));
}

TEST(HHDFHwDef, findsPastANullEntry)
{
    HHDFHwDef def("design.hdf");
    def.implementation()->bom.add(nullptr);
    def.addFileToBom("/x/top.bit", Types::BIT, "top/cpu", Types::DEFAULT_BD, "/c/a.hdf");
    HHDFHwDef::Texts attrs = {{"k", "a"}};
    def.setHwSrcDB("top.bit", "db");
    EXPECT_NE(bomFile(def, "top.bit"), nullptr);
    EXPECT_EQ(bomFile(def, "other"), nullptr);
    EXPECT_TRUE(def.isBomFileExistsWithName("top.bit"));
    EXPECT_EQ(def.getBomFileHierarchy("top.bit"), "top/cpu");
    EXPECT_EQ(def.getBomFileType("top.bit"), "BIT");
    EXPECT_EQ(def.getBomFileHwDefPath("top.bit"), "/c/a.hdf");
    EXPECT_EQ(fileFor(def, "cpu"), "top.bit");
    EXPECT_TRUE(def.doesHwDefExist("db"));
    EXPECT_TRUE(def.addFileAttrs("top.bit", attrs));
}

TEST(HHDFHwDef, listsPastANullEntry)
{
    HHDFHwDef def("design.hdf");
    def.implementation()->bom.add(nullptr);
    def.addFileToBom("/x/a", Types::UNKNOWN, "", Types::DEFAULT_BD);
    def.implementation()->bom.add(nullptr);
    Names names;
    Files files;
    EXPECT_EQ(def.getBomFiles(names), 1U);
    EXPECT_EQ(def.getBomFiles(Types::UNKNOWN, names), 2U);
    EXPECT_EQ(def.getBomFiles(Types::DEFAULT_BD, names), 3U);
    EXPECT_EQ(def.getBomFiles(files), 1U);
    EXPECT_EQ(def.getBomFiles(Types::UNKNOWN, files), 2U);
    EXPECT_EQ(def.getBomFiles(Types::DEFAULT_BD, files), 3U);
    HHDFHwDef copy("copy.hdf");
    EXPECT_TRUE(copy.copyFrom(&def));
    EXPECT_EQ(copy.implementation()->bom.slots().size(), 1U);
}
