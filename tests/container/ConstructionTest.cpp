// What a fresh definition holds, and what its end frees.

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/HUTEnv.h"
#include "support/Parameter.h"

using support::Parameter;

namespace {

using Tokens = std::vector<std::string>;

Tokens exclusionsOf(const HHDFHwDef& def)
{
    return def.implementation()->qvaExclusions;
}

}  // namespace

TEST(Construction, givesEveryFieldItsInitialValue)
{
    const HHDFHwDef def("/nowhere/design.hdf");
    const HHDFHwDefImp& imp = *def.implementation();

    EXPECT_EQ(imp.productVersion, HUTEnv::getProductVersion());
    EXPECT_EQ(imp.bomName, "hwdef.xml");
    EXPECT_EQ(imp.mode, HHDFHwDefFileTypes::MODE_UNSET);
    EXPECT_EQ(imp.unzipDir, "");
    EXPECT_EQ(imp.digest, "");
    EXPECT_TRUE(imp.fileDigests.all().empty());
    EXPECT_TRUE(imp.bom.slots().empty());
    EXPECT_EQ(imp.container->path(), "/nowhere/design.hdf");
    EXPECT_EQ(imp.owner, &def);
}

TEST(Construction, namesTheScratchDirectoryAfterTheContainersFile)
{
    const HHDFHwDef def("/nowhere/design.hdf");
    const boost::filesystem::path scratch = def.implementation()->tmpDir->getDir();

    EXPECT_TRUE(boost::filesystem::is_directory(scratch));
    EXPECT_EQ(scratch.filename().string().compare(0, 10, "design.hdf"), 0) << scratch;
}

TEST(Construction, removesTheScratchDirectoryAtTheEnd)
{
    std::string scratch;
    {
        const HHDFHwDef def("/nowhere/design.hdf");
        scratch = def.implementation()->tmpDir->getDir();
    }
    EXPECT_FALSE(boost::filesystem::exists(scratch));
}

TEST(Construction, leavesProcessorFilesInQvaArchivesByDefault)
{
    const HHDFHwDef def("/nowhere/design.hdf");

    EXPECT_EQ(exclusionsOf(def), (Tokens{"SYSMON_DATA", "POWER_DATA", "IO_DATA", "BD_TCL"}));
}

TEST(Construction, excludesProcessorFilesWhenTheParameterSaysSo)
{
    const Parameter parameter("project.removeVELDFilesFromQVA", "true");
    const HHDFHwDef def("/nowhere/design.hdf");

    EXPECT_EQ(exclusionsOf(def), (Tokens{"SYSMON_DATA", "POWER_DATA", "IO_DATA", "CDO", "ELF", "BD_TCL"}));
}

TEST(Construction, readsTheParameterOnce)
{
    const HHDFHwDef def("/nowhere/design.hdf");
    const Parameter parameter("project.removeVELDFilesFromQVA", "true");

    EXPECT_EQ(exclusionsOf(def).size(), 4u);
}

// The leak checker sees what the destructor forgets.
TEST(Construction, ownsPartitionsAndConfigurations)
{
    HHDFHwDef def("/nowhere/design.hdf");
    std::string path = "top/rp", module = "rm", file = "rm.bit";
    def.addPartitionInfo(path, module, file, true);
    def.addPartitionCell("config_1", "top/rp", "rm", "rm.bit", true);

    EXPECT_EQ(def.getPartitionInfo().size(), 1u);
    EXPECT_EQ(def.getPartitionConfigs().size(), 1u);
}
