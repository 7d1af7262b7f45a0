// A container built in one call.

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/HUTEnv.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"
#include "support/WithoutPrivileges.h"

using support::Messages;
using support::TempDir;
using Types = HHDFHwDefFileTypes;
using Utils = HHDFHwDefUtils;

namespace {

namespace fs = boost::filesystem;

/// Directories left in the staging area of this process.
std::size_t stagingDirs()
{
    const fs::path staging = fs::path(HUTEnv::getHDITmpDir()) / "HWH";
    return fs::exists(staging) ? static_cast<std::size_t>(
                                     std::distance(fs::directory_iterator(staging), fs::directory_iterator()))
                               : 0;
}

}  // namespace

TEST(Building, packsFilesInOrderWithTheirTypesAndAttributes)
{
    const TempDir dir;
    support::writeFile(dir / "b.bit", "bits");
    support::writeFile(dir / "a.hwh", "handoff");
    const Messages messages;
    EXPECT_TRUE(Utils::writeHDF(dir / "d.hdf",
                                {{dir / "b.bit", Types::BIT}, {dir / "a.hwh", Types::HW_HANDOFF}}, false,
                                {{dir / "b.bit", {{"k", "v"}}}, {dir / "a.hwh", {}}}, {{"wdi", "1"}}));
    EXPECT_EQ(support::namesIn(dir / "d.hdf"), "hwdef.xml b.bit a.hwh");
    const auto def = Utils::getHDF(dir / "d.hdf");
    ASSERT_NE(def, nullptr);
    EXPECT_EQ(def->getBomFileType("a.hwh"), "HW_HANDOFF");
    std::string name = "b.bit";
    EXPECT_EQ(def->getBomFile(name)->getFileAttrs(), (HHDFHwDef::Texts{{"k", "v"}}));
    HHDFHwDef::Texts attrs;
    def->getWDIAttrs(attrs);
    EXPECT_EQ(attrs, (HHDFHwDef::Texts{{"wdi", "1"}}));
    EXPECT_EQ(messages.joined(), "");
    EXPECT_EQ(stagingDirs(), 0u);
}

TEST(Building, packsAnEmptyList)
{
    const TempDir dir;
    EXPECT_TRUE(Utils::writeHDF(dir / "d.hdf", {}, false, {}, {}));
    EXPECT_EQ(support::namesIn(dir / "d.hdf"), "hwdef.xml");
}

TEST(Building, needsAPath)
{
    const Messages messages;
    EXPECT_FALSE(Utils::writeHDF("", {}, true, {}, {}));
    EXPECT_EQ(messages.joined(), "hdf @64-10@ 20000000 []\n");
}

TEST(Building, replacesAFileOnlyWhenItMay)
{
    const TempDir dir;
    support::writeFile(dir / "d.hdf", "precious");
    const Messages messages;
    EXPECT_FALSE(Utils::writeHDF(dir / "d.hdf", {}, false, {}, {}));
    EXPECT_EQ(messages.joined(), "hdf @64-14@%s 20000000 []\n");
    EXPECT_EQ(support::readFile(dir / "d.hdf"), "precious");
    EXPECT_TRUE(Utils::writeHDF(dir / "d.hdf", {}, true, {}, {}));
    EXPECT_EQ(support::namesIn(dir / "d.hdf"), "hwdef.xml");
}

TEST(Building, needsAWritableDirectory)
{
    const TempDir dir;
    fs::create_directories(dir / "ro");
    HUTEnv::getHDITmpDir();
    const Messages messages;
    {
        const support::WithoutPrivileges without(dir / "ro");
        EXPECT_FALSE(Utils::writeHDF(dir / "ro/d.hdf", {}, false, {}, {}));
    }
    EXPECT_EQ(messages.joined(), "hdf @64-15@%s 20000000 []\n");
}

TEST(Building, isFalseWhenTheContainerCantBeWritten)
{
    const TempDir dir;
    const Messages messages;
    EXPECT_FALSE(Utils::writeHDF(dir / "none/d.hdf", {}, false, {}, {}));
    EXPECT_EQ(messages.all().size(), 1u);
    EXPECT_EQ(stagingDirs(), 0u);
}

TEST(Building, saysThatAFileHasNoPathOrIsMissing)
{
    const TempDir dir;
    const Messages messages;
    EXPECT_TRUE(
        Utils::writeHDF(dir / "d.hdf", {{"", Types::ELF}, {dir / "none", Types::BIT}}, false, {}, {}));
    ASSERT_EQ(messages.all().size(), 2u);
    EXPECT_NE(messages.all()[0].text.find("a file must have a path"), std::string::npos);
    EXPECT_NE(messages.all()[1].text.find("member \"none\" can't be added"), std::string::npos);
}

TEST(Building, takesFilesOutOfACoreContainerAndLooksAttributesUpByTheCopy)
{
    const TempDir dir;
    support::writeArchive(dir / "core.zip", {{"sub/in.bit", "inside"}});
    const std::string file = dir / "core.zip/sub/in.bit";
    EXPECT_TRUE(Utils::writeHDF(dir / "d.hdf", {{file, Types::BIT}}, false, {{file, {{"k", "v"}}}}, {}));
    EXPECT_EQ(support::memberOf(dir / "d.hdf", "in.bit"), "inside");
    std::string name = "in.bit";
    EXPECT_TRUE(Utils::getHDF(dir / "d.hdf")->getBomFile(name)->getFileAttrs().empty());
    EXPECT_EQ(stagingDirs(), 0u);
}

TEST(Building, putsTheContainerIntoACoreContainer)
{
    const TempDir dir;
    support::writeArchive(dir / "core.zip", {{"kept", "1"}});
    support::writeFile(dir / "a.bit", "bits");
    EXPECT_TRUE(Utils::writeHDF(dir / "core.zip/out/d.hdf", {{dir / "a.bit", Types::BIT}}, false, {}, {}));
    EXPECT_EQ(support::namesIn(dir / "core.zip"), "kept out/d.hdf");
    support::writeFile(dir / "d.hdf", support::memberOf(dir / "core.zip", "out/d.hdf"));
    EXPECT_EQ(support::memberOf(dir / "d.hdf", "a.bit"), "bits");
    const Messages messages;
    EXPECT_FALSE(Utils::writeHDF(dir / "core.zip/out/d.hdf", {}, false, {}, {}));
    EXPECT_EQ(messages.joined(), "hdf @64-14@%s 20000000 []\n");
}

TEST(Building, givesTheSameBytesForTheSameInput)
{
    const TempDir dir;
    support::writeFile(dir / "a.bit", support::textBytes(100000, 1));
    fs::create_directories(dir / "1");
    fs::create_directories(dir / "2");
    ASSERT_TRUE(Utils::writeHDF(dir / "1/d.hdf", {{dir / "a.bit", Types::BIT}}, false, {}, {}));
    ASSERT_TRUE(Utils::writeHDF(dir / "2/d.hdf", {{dir / "a.bit", Types::BIT}}, false, {}, {}));
    EXPECT_EQ(support::readFile(dir / "1/d.hdf"), support::readFile(dir / "2/d.hdf"));
}

TEST(Building, keepsFilesOfOneNameInTwoCoreContainersApart)
{
    const TempDir dir;
    support::writeArchive(dir / "one.zip", {{"a.bit", "one"}});
    support::writeArchive(dir / "two.zip", {{"a.bit", "two"}});
    const Messages messages;
    EXPECT_TRUE(Utils::writeHDF(dir / "d.hdf",
                                {{dir / "one.zip/a.bit", Types::BIT}, {dir / "two.zip/a.bit", Types::ELF}},
                                false, {}, {}));
    EXPECT_EQ(support::memberOf(dir / "d.hdf", "a.bit"), "two");
    ASSERT_EQ(messages.all().size(), 1u) << messages.joined();
    EXPECT_NE(messages.all()[0].text.find("member \"a.bit\" from "), std::string::npos) << messages.joined();
}

TEST(Building, takesAFileThatHasTheNameOfTheContainerOutOfACoreContainer)
{
    const TempDir dir;
    support::writeArchive(dir / "in.zip", {{"d.hdf", "inner"}});
    support::writeArchive(dir / "core.zip", {{"kept", "1"}});
    EXPECT_TRUE(
        Utils::writeHDF(dir / "core.zip/d.hdf", {{dir / "in.zip/d.hdf", Types::PLATFORM}}, false, {}, {}));
    support::writeFile(dir / "d.hdf", support::memberOf(dir / "core.zip", "d.hdf"));
    EXPECT_EQ(support::memberOf(dir / "d.hdf", "d.hdf"), "inner");
}

TEST(Building, leavesTheStagingDirectoryWhenThereIsNoDefinition)
{
    const TempDir dir;
    const fs::path earlier = fs::current_path();
    fs::create_directories(dir / "gone");
    fs::current_path(dir / "gone");
    fs::remove(dir / "gone");
    const Messages messages;
    // A relative path has no canonical form where the working directory is gone.
    EXPECT_FALSE(Utils::writeHDF("d.hdf", {}, false, {}, {}));
    fs::current_path(earlier);

    EXPECT_EQ(messages.joined(), "");
    EXPECT_EQ(stagingDirs(), 1u);
    fs::remove_all(fs::path(HUTEnv::getHDITmpDir()) / "HWH");
}

TEST(Building, removesTheStagingDirectoryAfterAFailedWrite)
{
    const TempDir dir;
    const Messages messages;
    EXPECT_FALSE(Utils::writeHDF(dir / "d.hdf", {}, false, {}, {{"no XML", "\x01"}}));
    EXPECT_EQ(stagingDirs(), 0u);
    EXPECT_EQ(dir.list(), "");
}

TEST(Building, saysThatTheCoreContainerCantTakeTheResult)
{
    const TempDir dir;
    support::writeArchive(dir / "core.zip", {{"kept", "1"}});
    const Messages messages;
    {
        const support::WithoutPrivileges without(dir.path());
        EXPECT_TRUE(Utils::writeHDF(dir / "core.zip/d.hdf", {}, false, {}, {}));
    }
    EXPECT_EQ(support::namesIn(dir / "core.zip"), "kept");
    ASSERT_EQ(messages.all().size(), 1u) << messages.joined();
    EXPECT_EQ(messages.all()[0].text.find((dir / "core.zip/d.hdf") +
                                          ": the finished container can't be put there: "),
              0u)
        << messages.joined();
}
