#include "hwdef/utils/HHDFHwDefUtils.h"

#include <gtest/gtest.h>

#include <fstream>

#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"

using support::Messages;
using support::TempDir;

TEST(HHDFHwDefUtils, createsNoDefinitionForAnEmptyPath)
{
    const Messages messages;
    EXPECT_EQ(HHDFHwDefUtils::createHDF(""), nullptr);
    EXPECT_EQ(messages.joined(), "");
}

TEST(HHDFHwDefUtils, createsADefinitionForAFileThatDoesNotExist)
{
    const TempDir dir;
    const auto def = HHDFHwDefUtils::createHDF(dir / "design.hdf");
    ASSERT_NE(def, nullptr);
    std::string path;
    def->getContainerFullPath(path);
    EXPECT_EQ(path, dir / "design.hdf");
    EXPECT_TRUE(support::exists(def->implementation()->tmpDir->getDir()));
    EXPECT_FALSE(support::exists(dir / "design.hdf"));
}

TEST(HHDFHwDefUtils, opensNothingAtAnEmptyPath)
{
    const Messages messages;
    EXPECT_EQ(HHDFHwDefUtils::getHDF(""), nullptr);
    EXPECT_EQ(messages.joined(), "");
}

TEST(HHDFHwDefUtils, saysThatAContainerIsMissing)
{
    const TempDir dir;
    const Messages messages;
    EXPECT_EQ(HHDFHwDefUtils::getHDF(dir / "none.hdf"), nullptr);
    EXPECT_EQ(messages.joined(), "hdf @64-5@%s 20000000 [" + (dir / "none.hdf") + "]\n");
}

TEST(HHDFHwDefUtils, opensAContainerWithoutCheckingUnlessAsked)
{
    const TempDir dir;
    const std::string bom =
        "<Project Version=\"1\" Minor=\"2\" DIGEST=\"wrong\"><File Type=\"BIT\" Name=\"a\"/></Project>";
    support::writeArchive(dir / "d.hdf", {{"hwdef.xml", bom}, {"a", "x"}});
    EXPECT_NE(HHDFHwDefUtils::getHDF(dir / "d.hdf"), nullptr);
    const Messages messages;
    EXPECT_EQ(HHDFHwDefUtils::getHDF(dir / "d.hdf", true), nullptr);
    EXPECT_EQ(messages.joined(), "hdf @64-23@%s 20000000 [File: a has been tampered.]\n");
}

TEST(HHDFHwDefUtils, releasesEveryDefinitionAndPassesOverNull)
{
    const TempDir dir;
    const std::vector<HHDFHwDef*> definitions = {HHDFHwDefUtils::createHDF(dir / "a").release(), nullptr,
                                                 HHDFHwDefUtils::createHDF(dir / "b").release()};
    const std::string scratch = definitions[2]->implementation()->tmpDir->getDir();
    HHDFHwDefUtils::releaseHDFs(definitions);
    EXPECT_FALSE(support::exists(scratch));
    EXPECT_EQ(definitions.size(), 3u);
}

TEST(HHDFHwDefUtils, findsARecordWhoseThreeTextsAreTheSame)
{
    const std::vector<HHDFHwDefDriver> list = {{"/d/a.c", "a.c", "x.hdf"}, {"/d/b.c", "b.c", ""}};
    EXPECT_TRUE(HHDFHwDefUtils::isAlreadyPresent(list, {"/d/b.c", "b.c", ""}));
    EXPECT_FALSE(HHDFHwDefUtils::isAlreadyPresent(list, {"/d/a.c", "a.c", "y.hdf"}));
    EXPECT_FALSE(HHDFHwDefUtils::isAlreadyPresent(list, {"/d/a.c", "A.c", "x.hdf"}));
    EXPECT_FALSE(HHDFHwDefUtils::isAlreadyPresent(list, {"/D/a.c", "a.c", "x.hdf"}));
    EXPECT_FALSE(HHDFHwDefUtils::isAlreadyPresent({}, {"/d/a.c", "a.c", "x.hdf"}));
}
