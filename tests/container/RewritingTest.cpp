// Open, change, write: nothing gets lost on the way.

#include <gtest/gtest.h>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"

using support::Members;
using support::Messages;
using support::TempDir;

namespace {

/// A container with members of several sizes, written from files that are gone afterwards.
void writeContainer(const std::string& path)
{
    const TempDir sources;
    HHDFHwDef def(path);
    def.setModeType(HHDFHwDefFileTypes::PRE_SYNTHESIS);  // read back, an unset mode is another one
    const Members files = {{"empty.bit", ""},
                           {"small.bit", "small"},
                           {"text.bit", support::textBytes(300000, 1)},
                           {"random.bit", support::randomBytes(300000, 2)}};
    for (const auto& [name, content] : files) {
        support::writeFile(sources / name, content);
        def.addFileToBom(sources / name, HHDFHwDefFileTypes::BIT);
    }
    support::writeFile(sources / "drivers/src/x.mdd", "driver");
    def.addDriverFileToBom("ip", sources.path(), "drivers/src/x.mdd", "");
    ASSERT_TRUE(def.write(true));
}

/// All members but the first, the BOM.
Members withoutBom(const std::string& path)
{
    Members members = support::readArchive(path);
    members.erase(members.begin());
    return members;
}

}  // namespace

TEST(Rewriting, keepsEveryMemberByteForByte)
{
    const TempDir dir;
    writeContainer(dir / "design.hdf");
    const Members before = withoutBom(dir / "design.hdf");
    ASSERT_EQ(before.size(), 5u);
    const Messages messages;
    const auto def = HHDFHwDefUtils::getHDF(dir / "design.hdf");
    ASSERT_NE(def, nullptr);
    def->addWDIAttr("changed", "yes");

    EXPECT_TRUE(def->write(true));
    EXPECT_TRUE(withoutBom(dir / "design.hdf") == before);
    EXPECT_NE(support::memberOf(dir / "design.hdf", "hwdef.xml").find("changed"), std::string::npos);
    EXPECT_EQ(messages.joined(), "");
    EXPECT_EQ(dir.list(), "design.hdf");
}

TEST(Rewriting, givesTheSameBytesEveryTime)
{
    const TempDir dir;
    writeContainer(dir / "design.hdf");
    ASSERT_TRUE(HHDFHwDefUtils::getHDF(dir / "design.hdf")->write(true));
    const std::string once = support::readFile(dir / "design.hdf");
    ASSERT_TRUE(HHDFHwDefUtils::getHDF(dir / "design.hdf")->write(true));

    EXPECT_TRUE(support::readFile(dir / "design.hdf") == once);
}

TEST(Rewriting, dropsAnEntryThatWasRemoved)
{
    const TempDir dir;
    writeContainer(dir / "design.hdf");
    const auto def = HHDFHwDefUtils::getHDF(dir / "design.hdf");
    std::string name = "text.bit";
    const std::unique_ptr<HHDFHwDefFile> removed(def->getBomFile(name));
    ASSERT_TRUE(def->removeFileFromBom(removed.get()));

    EXPECT_TRUE(def->write(true));
    EXPECT_EQ(support::namesIn(dir / "design.hdf"),
              "hwdef.xml empty.bit small.bit random.bit drivers/src/x.mdd");
}

TEST(Rewriting, addsAFileToWhatIsThere)
{
    const TempDir dir;
    writeContainer(dir / "design.hdf");
    support::writeFile(dir / "new.bit", "new");
    const auto def = HHDFHwDefUtils::getHDF(dir / "design.hdf");
    def->addFileToBom(dir / "new.bit", HHDFHwDefFileTypes::BIT);

    EXPECT_TRUE(def->write(true));
    EXPECT_EQ(support::memberOf(dir / "design.hdf", "new.bit"), "new");
    EXPECT_EQ(support::memberOf(dir / "design.hdf", "small.bit"), "small");
}

TEST(Rewriting, keepsTheOldContainerWhenTheNewOneCantBeWritten)
{
    const TempDir dir;
    writeContainer(dir / "design.hdf");
    const std::string before = support::readFile(dir / "design.hdf");
    const Messages messages;
    const auto def = HHDFHwDefUtils::getHDF(dir / "design.hdf");
    def->addWDIAttr("broken", "\xff");

    EXPECT_FALSE(def->write(true));
    EXPECT_TRUE(support::readFile(dir / "design.hdf") == before);
    EXPECT_EQ(messages.all().size(), 1u) << messages.joined();
}

TEST(Rewriting, keepsADriverThatWasPackedWithoutTheDriversDirectory)
{
    const TempDir dir;
    support::writeFile(dir / "tree/src/x.mdd", "driver");
    {
        HHDFHwDef def(dir / "design.hdf");
        def.addDriverFileToBom("ip", dir / "tree", "src/x.mdd", "");
        ASSERT_TRUE(def.write(true));
    }
    const Messages messages;
    const auto def = HHDFHwDefUtils::getHDF(dir / "design.hdf");
    ASSERT_NE(def, nullptr);
    EXPECT_TRUE(def->write(true));
    EXPECT_TRUE(def->unzipDrivers(dir / "out"));

    EXPECT_EQ(support::memberOf(dir / "design.hdf", "drivers/src/x.mdd"), "driver");
    EXPECT_EQ(support::readFile(dir / "out/drivers/src/x.mdd"), "driver");
    EXPECT_EQ(messages.joined(), "");
}

TEST(Rewriting, carriesTheMembersOfAMergedDefinition)
{
    const TempDir dir;
    writeContainer(dir / "one.hdf");
    support::writeArchive(dir / "two.hdf",
                          {{"hwdef.xml", support::bomOfFiles("0", {"two.bit"})}, {"two.bit", "two"}});
    const auto one = HHDFHwDefUtils::getHDF(dir / "one.hdf");
    const auto two = HHDFHwDefUtils::getHDF(dir / "two.hdf");
    const auto merged = HHDFHwDefUtils::getMrgdHDF({one.get(), two.get()}, dir / "merged.hdf");
    ASSERT_NE(merged, nullptr);

    EXPECT_TRUE(merged->write(true));
    EXPECT_EQ(support::memberOf(dir / "merged.hdf", "small.bit"), "small");
    EXPECT_EQ(support::memberOf(dir / "merged.hdf", "two.bit"), "two");
    EXPECT_EQ(support::memberOf(dir / "merged.hdf", "drivers/src/x.mdd"), "driver");
}
