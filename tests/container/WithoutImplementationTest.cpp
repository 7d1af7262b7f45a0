// A definition without data: what works on containers does nothing and says so.

#include <gtest/gtest.h>

#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/model/HHDFHwDef.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "support/Messages.h"
#include "support/TempDir.h"

namespace {

class Bare : public HHDFHwDef {
public:
    Bare() : HHDFHwDef(std::unique_ptr<HHDFHwDefImp>()) {}
};

}  // namespace

TEST(HHDFHwDef, writesAndReadsNothingWithoutImplementation)
{
    const support::TempDir dir;
    const support::Messages messages;
    Bare def;

    EXPECT_FALSE(def.init(true, ""));
    EXPECT_FALSE(def.write(true));
    EXPECT_FALSE(def.write(dir.path()));
    EXPECT_FALSE(def.unzipDrivers(dir.path()));
    EXPECT_EQ(dir.list(), "");
    EXPECT_EQ(messages.joined(), "");
}

TEST(HHDFHwDef, takesNoDriversWithoutImplementation)
{
    Bare def;
    EXPECT_FALSE(def.addDrivers("ip", std::vector<HHDFHwDefDriver>()));
    EXPECT_FALSE(def.addDrivers("ip", "/drivers/ip"));
    EXPECT_FALSE(def.isVELDExist());
}

TEST(HHDFHwDef, hasNoDigestsToCompareWithoutImplementation)
{
    Bare def;
    std::string overall;
    HHDFHwDef::Texts digests;
    std::string message = "untouched";

    EXPECT_TRUE(def.calculateDigest(overall, digests));
    EXPECT_TRUE(digests.empty());
    EXPECT_FALSE(def.compareDigest(overall, digests, message));
    EXPECT_EQ(message, "untouched");
}
