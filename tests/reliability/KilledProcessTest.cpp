// A process that is killed in each system call of each operation, and the one that comes after it.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "reliability/Allocations.h"
#include "support/Aftermath.h"
#include "support/ChildProcess.h"
#include "support/FailingSystemCalls.h"

using support::Aftermath;
using support::FailingSystemCalls;
using support::inChild;
using support::Operation;
using support::wasKilled;

namespace {

class KilledProcess : public testing::TestWithParam<Operation> {
protected:
    /// Kills a process in the n-th of these calls, for each n there is; expects the old or the new state
    /// each time, and that the operation then succeeds beside what is left over.
    void sweep(unsigned kinds, std::size_t bytes)
    {
        for (unsigned nth = 1;; ++nth) {
            SCOPED_TRACE("call " + std::to_string(nth));
            aftermath_.reset();
            const int status = inChild([&] {
                FailingSystemCalls calls;
                calls.killAt(kinds, nth, bytes);
                aftermath_.run();
            });
            aftermath_.expectOldOrNewAfterDeath();
            if (!wasKilled(status)) {
                EXPECT_EQ(status, 0);
                return;
            }
            ++deaths_;
            aftermath_.expectSuccessAfterDeath();
            if (HasFailure()) {
                return;
            }
        }
    }

    Aftermath aftermath_{GetParam()};
    unsigned deaths_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Of, KilledProcess, testing::ValuesIn(support::operations()),
                         [](const auto& info) { return info.param.name; });

}  // namespace

TEST_P(KilledProcess, leavesTheOldOrTheNewStateInEachCall)
{
    sweep(FailingSystemCalls::ANY, 0);
    EXPECT_GE(deaths_, 5U);
    RecordProperty("deaths", static_cast<int>(deaths_));
}

TEST_P(KilledProcess, leavesTheOldOrTheNewStateBehindSomeBytesOfEachWrite)
{
    sweep(FailingSystemCalls::WRITE | FailingSystemCalls::COPY, 30);
    EXPECT_EQ(deaths_ > 0, aftermath_.writes());
}

TEST_P(KilledProcess, leavesTemporaryFilesWhichHinderNobody)
{
    // As many as a process of the same number may have left, each under the name that comes next.
    const std::string prefix = aftermath_.dir() + "/.hwdef-" + std::to_string(::getpid()) + "-";
    for (int i = 1; i <= 300; ++i) {
        support::writeFile(prefix + std::to_string(i) + ".tmp", "left over");
    }
    aftermath_.expectSuccessAfterDeath();
    EXPECT_EQ(support::readFile(prefix + "300.tmp"), "left over");
}

TEST_P(KilledProcess, isNoneWhenItEndsAndTakesItsScratchRootAlong)
{
    // Whatever removal failed or was short of memory while definitions went away.
    const auto rootsLeft = [&] {
        return std::distance(std::filesystem::directory_iterator(aftermath_.scratch()), {});
    };
    const auto rootsBefore = rootsLeft();
    // A sanitized process takes long to end: it looks for leaks, so only some of them are tried.
    for (unsigned nth = 1; nth <= 40; nth += allocations::SANITIZED ? 10 : 1) {
        const int status = inChild([&] {
            {
                FailingSystemCalls calls;
                calls.fail(FailingSystemCalls::FROM_LIBRARY | FailingSystemCalls::LOOK, nth, EIO);
                aftermath_.run();
            }
            aftermath_.run([&] { allocations::fail(nth * 5, allocations::Failing::ONE); },
                           [] { allocations::stop(); });
            std::exit(0);
        });
        EXPECT_EQ(status, 0);
        EXPECT_EQ(rootsLeft(), rootsBefore) << nth;
    }
}

TEST(KilledProcessWithADefinition, leavesAScratchDirectoryThatHindersNobody)
{
    const support::TempDir dir;
    const support::TmpdirVariable scratch(dir.path());
    const int status = inChild([&] {
        const auto def = HHDFHwDefUtils::createHDF(dir / "design.hdf");
        ::kill(::getpid(), SIGKILL);
    });
    ASSERT_TRUE(wasKilled(status));
    const std::string left = dir.list();
    EXPECT_EQ(left.compare(0, 6, "hwdef-"), 0) << left;

    EXPECT_EQ(inChild([&] {
                  const auto def = HHDFHwDefUtils::createHDF(dir / "design.hdf");
                  std::exit(def->write(true) ? 0 : 1);
              }),
              0);
    EXPECT_EQ(dir.list(), "design.hdf " + left);
}
