// The scratch root of a process that can't be made, or is made while memory runs out.

#include <gtest/gtest.h>

#include <cstdlib>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/HUTEnv.h"
#include "reliability/Allocations.h"
#include "support/Aftermath.h"
#include "support/ChildProcess.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/Messages.h"
#include "support/TempDir.h"

using support::FailingSystemCalls;
using support::TempDir;

namespace {

/// Ends the child with code 1 when the claim is wrong.
void require(bool claim)
{
    if (!claim) {
        std::exit(1);
    }
}

/// A directory that child processes make their scratch roots in.
class ScratchRoot : public testing::Test {
protected:
    const TempDir dir_;
    const TempDir work_;
    const support::TmpdirVariable variable_{dir_.path()};
};

}  // namespace

TEST_F(ScratchRoot, thatCantBeMadeKeepsNobodyFromReading)
{
    const std::string path = work_ / "design.hdf";
    support::writeArchive(path, {{"hwdef.xml", support::bomOfFiles("0", {"a"})}, {"a", "content"}});
    for (const int error : {ENOSPC, EACCES, EIO}) {
        EXPECT_EQ(support::inChild([&] {
                      const support::Messages messages;
                      FailingSystemCalls calls;
                      calls.failAll(FailingSystemCalls::MAKE, error);
                      const auto def = HHDFHwDefUtils::getHDF(path, true);
                      require(def != nullptr && messages.all().size() == 1);
                      require(HHDFHwDefUtils::getFileBufferFromHDF("a", path) == "content");
                      require(!def->write(true) && messages.all().size() == 2);
                  }),
                  0);
    }
    EXPECT_EQ(support::namesIn(path), "hwdef.xml a");
    EXPECT_EQ(work_.list(), "design.hdf");
}

TEST_F(ScratchRoot, goesWithTheProcessWhateverAllocationFailed)
{
    int refused = 0;
    for (unsigned nth = 1; nth <= 20; ++nth) {
        const int status = support::inChild([&] {
            allocations::fail(nth, allocations::Failing::ONE);
            try {
                HUTEnv::getHDITmpDir();
            } catch (const std::bad_alloc&) {
                allocations::stop();
                std::exit(2);
            }
            std::exit(allocations::stop() < nth ? 0 : 3);
        });
        refused += WEXITSTATUS(status) == 2 ? 1 : 0;
        EXPECT_NE(WEXITSTATUS(status), 3) << nth;
        EXPECT_EQ(dir_.list(), "") << nth;
    }
    EXPECT_GE(refused, 3);
}

TEST_F(ScratchRoot, goesWithTheProcessWhenItHasAnotherSinceACallFailed)
{
    EXPECT_EQ(support::inChild([&] {
                  const std::string first = HUTEnv::getHDITmpDir();
                  {
                      FailingSystemCalls calls;
                      calls.fail(FailingSystemCalls::LOOK, 1, EIO);
                      require(HUTEnv::getHDITmpDir() != first);
                  }
                  require(HUTEnv::getHDITmpDir() == first);
                  std::exit(0);
              }),
              0);
    EXPECT_EQ(dir_.list(), "");
}
