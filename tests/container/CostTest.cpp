// Work that must not grow with the number of members, counted in system calls. A BOM that is written
// costs a file and a rename of its own.

#include <gtest/gtest.h>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"

using support::FailingSystemCalls;
using support::TempDir;

namespace {

/// A container of that many files, with the directory to be written to.
class Cost : public testing::TestWithParam<int> {
protected:
    Cost()
    {
        std::vector<std::string> names;
        support::Members members = {{"hwdef.xml", ""}};
        for (int i = 0; i < GetParam(); ++i) {
            names.push_back(std::to_string(i) + ".bit");
            members.emplace_back(names.back(), "content");
        }
        members[0].second = support::bomOfFiles("0", names);
        support::writeArchive(dir / "design.hdf", members);
    }

    std::unique_ptr<HHDFHwDef> open() const { return HHDFHwDefUtils::getHDF(dir / "design.hdf"); }

    const TempDir dir;
};

INSTANTIATE_TEST_SUITE_P(Members, Cost, testing::Values(10, 500));

}  // namespace

TEST_P(Cost, ofOpeningIsAHandfulOfReads)
{
    const FailingSystemCalls calls;
    ASSERT_NE(open(), nullptr);

    EXPECT_EQ(calls.count(FailingSystemCalls::OPEN), 1u);
    EXPECT_LE(calls.count(FailingSystemCalls::READ), 8u);
}

TEST_P(Cost, ofDigestsIsOneOpenedContainer)
{
    const auto def = open();
    std::string digest;
    HHDFHwDef::Texts digests;
    const FailingSystemCalls calls;
    def->calculateDigest(digest, digests);

    EXPECT_EQ(digests.size(), static_cast<std::size_t>(GetParam()));
    EXPECT_EQ(calls.count(FailingSystemCalls::OPEN), 1u);
}

TEST_P(Cost, ofPackagingIsOneOpenedContainerAndOneNew)
{
    const auto def = open();
    const FailingSystemCalls calls;
    ASSERT_TRUE(def->write(true));

    EXPECT_LE(calls.count(FailingSystemCalls::OPEN), 3u);
    EXPECT_LE(calls.count(FailingSystemCalls::RENAME), 2u);
    EXPECT_LE(calls.count(FailingSystemCalls::WRITE), 30u);
    EXPECT_EQ(support::readArchive(dir / "design.hdf").size(), static_cast<std::size_t>(GetParam()) + 1);
}

TEST_P(Cost, ofAnExportIntoAnArchiveIsOneNewArchive)
{
    const auto def = open();
    ASSERT_TRUE(def->write(dir / "out.dsa"));
    const FailingSystemCalls calls;
    ASSERT_TRUE(def->write(dir / "out.dsa"));

    EXPECT_LE(calls.count(FailingSystemCalls::OPEN), 4u);
    EXPECT_LE(calls.count(FailingSystemCalls::RENAME), 2u);
}

TEST_P(Cost, ofExtractingDriversIsOneOpenedContainer)
{
    auto def = open();
    for (int i = 0; i < GetParam(); ++i) {
        support::writeFile(dir / ("in/drivers/" + std::to_string(i)), "driver");
        def->addDriverFileToBom("ip", dir / "in", "drivers/" + std::to_string(i), "");
    }
    ASSERT_TRUE(def->write(true));
    const FailingSystemCalls calls;
    ASSERT_TRUE(def->unzipDrivers(dir / "out"));

    EXPECT_EQ(calls.count(FailingSystemCalls::OPEN), 1u);
    EXPECT_EQ(support::readFile(dir / "out/drivers/9"), "driver");
}
