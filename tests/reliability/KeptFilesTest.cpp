// Files that must not be replaced stay, whatever call fails while that is found out.

#include <gtest/gtest.h>

#include <functional>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/HEXAll.h"
#include "platform/HUTCoreContainer.h"
#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/Messages.h"
#include "support/TempDir.h"

using support::FailingSystemCalls;
using support::TempDir;

namespace {

class KeptFiles : public testing::Test {
protected:
    KeptFiles()
    {
        support::writeFile(dir_ / "new", "new content");
        support::writeArchive(dir_ / "kept.hdf", {{"new", "old content"}});
        support::writeFile(dir_ / "out/new", "old content");
        archive_ = support::readFile(dir_ / "kept.hdf");
    }

    /// Makes each call of the work fail, which must give false or throw HEXAll, and change nothing.
    void sweep(const std::function<bool()>& work)
    {
        const support::Messages messages;
        for (unsigned nth = 1;; ++nth) {
            FailingSystemCalls calls;
            calls.fail(FailingSystemCalls::ANY, nth, EIO);
            try {
                EXPECT_FALSE(work()) << nth;
            } catch (const HEXAll&) {
            }
            const bool isOver = calls.count() < nth;
            calls.restart();
            EXPECT_TRUE(support::readFile(dir_ / "kept.hdf") == archive_) << nth;
            EXPECT_EQ(support::readFile(dir_ / "out/new"), "old content") << nth;
            if (isOver || HasFailure()) {
                EXPECT_GE(nth, 2U);
                return;
            }
        }
    }

    const TempDir dir_;
    std::string archive_;
};

}  // namespace

TEST_F(KeptFiles, areThoseThatABuildFinds)
{
    sweep([&] {
        return HHDFHwDefUtils::writeHDF(dir_ / "kept.hdf", {{dir_ / "new", HHDFHwDefFileTypes::BIT}}, false,
                                        {}, {});
    });
}

TEST_F(KeptFiles, areThoseThatACompressionFinds)
{
    sweep([&] {
        HUTZip::compress(HUTFile(dir_ / "kept.hdf"), dir_ / "new", HUTZip::ZIP_NAME_ONLY);
        return true;
    });
}

TEST_F(KeptFiles, areThoseThatACopyFinds)
{
    sweep([&] { return HUTFile(dir_ / "new").copyToDir(dir_ / "out", 0); });
    sweep([&] { return HUTCoreContainer::cp(dir_ / "new", dir_ / "out/new", false); });
}

TEST_F(KeptFiles, areThoseThatACopyFindsInAnArchive)
{
    sweep([&] { return HUTCoreContainer::cp(dir_ / "new", dir_ / "kept.hdf/new", false); });
}
