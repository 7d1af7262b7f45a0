// A container that another process changes while it is read.

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/Aftermath.h"
#include "support/FailingSystemCalls.h"

using support::Aftermath;
using support::FailingSystemCalls;
using support::Operation;

namespace {

/// Lets something happen to the disk in front of the n-th read.
class InterferingCalls : public FailingSystemCalls {
public:
    InterferingCalls(unsigned nth, std::function<void()> interfere)
        : nth_(nth), interfere_(std::move(interfere))
    {
    }

    ssize_t read(int file, void* buffer, std::size_t size) override
    {
        interfereInTime();
        return FailingSystemCalls::read(file, buffer, size);
    }
    ssize_t pread(int file, void* buffer, std::size_t size, off_t offset) override
    {
        interfereInTime();
        return FailingSystemCalls::pread(file, buffer, size, offset);
    }
    ssize_t copyFileRange(int from, off_t* fromOffset, int to, off_t* toOffset, std::size_t size) override
    {
        interfereInTime();
        return FailingSystemCalls::copyFileRange(from, fromOffset, to, toOffset, size);
    }
    unsigned reads() const { return reads_; }

private:
    void interfereInTime()
    {
        if (++reads_ == nth_) {
            interfere_();
        }
    }

    const unsigned nth_;
    const std::function<void()> interfere_;
    unsigned reads_ = 0;
};

/// The operations that read the container they find at DIR/design.hdf and write none there.
std::vector<Operation> readingOperations()
{
    std::vector<Operation> some;
    for (const Operation& operation : support::operations()) {
        for (const char* name :
             {"exportToNewArchive", "exportToDirectory", "extract", "unzipDrivers", "open",
              "openCheckingTheArchive", "openCheckingTheMembers", "readMember", "readParameters", "merge"}) {
            if (operation.name == name) {
                some.push_back(operation);
            }
        }
    }
    return some;
}

class ChangedContainer : public testing::TestWithParam<Operation> {
protected:
    /// Runs the operation once for each n, with the container changed in front of the n-th read. Expects
    /// the result without a change or a report, and no wrong bytes in what was written.
    void sweep(const std::function<void(const std::string& path)>& change)
    {
        const std::string path = aftermath_.dir() + "/design.hdf";
        const std::string whole = support::readFile(path);
        for (unsigned nth = 1;; ++nth) {
            SCOPED_TRACE("read " + std::to_string(nth));
            aftermath_.reset();
            InterferingCalls calls(nth, [&] { change(path); });
            const Aftermath::Outcome outcome = aftermath_.run();
            const unsigned reads = calls.reads();
            support::writeFile(path, whole);  // the change is not the operation's doing
            aftermath_.expectOldOrNew(outcome);
            aftermath_.expectNoScratch();
            reported_ += outcome.isReported() ? 1 : 0;
            if (reads < nth || HasFailure()) {
                EXPECT_GE(nth, 3U);
                return;
            }
        }
    }

    Aftermath aftermath_{GetParam()};
    unsigned reported_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Of, ChangedContainer, testing::ValuesIn(readingOperations()),
                         [](const auto& info) { return info.param.name; });

}  // namespace

TEST_P(ChangedContainer, thatIsEmptiedIsReported)
{
    sweep([](const std::string& path) { EXPECT_EQ(::truncate(path.c_str(), 0), 0); });
    EXPECT_GE(reported_, 2U);
}

TEST_P(ChangedContainer, thatIsCutIsReportedOrReadWhole)
{
    for (const off_t bytes : {1, 30, 100, 500, 1000}) {
        sweep([bytes](const std::string& path) { EXPECT_EQ(::truncate(path.c_str(), bytes), 0); });
    }
    EXPECT_GE(reported_, 5U);
}

TEST_P(ChangedContainer, thatIsOverwrittenIsReportedOrReadWhole)
{
    sweep([](const std::string& path) {
        const std::string bytes = support::readFile(path);
        support::writeFile(path, std::string(bytes.size(), 'x'));
    });
    EXPECT_GE(reported_, 2U);
}

TEST_P(ChangedContainer, thatIsReplacedByItsEqualIsReadAsIfNothingHappened)
{
    sweep([](const std::string& path) {
        const std::string bytes = support::readFile(path);
        support::writeFile(path + ".new", bytes);
        EXPECT_EQ(::rename((path + ".new").c_str(), path.c_str()), 0);
    });
    EXPECT_EQ(reported_, 0U);
}

TEST(ChangedContainerOfMany, thatIsReplacedGivesBytesOfOneOfTheTwo)
{
    const support::TempDir dir;
    const std::string path = dir / "design.hdf";
    const std::string first = support::textBytes(5000, 1);
    const std::string second = support::randomBytes(7000, 2);
    for (unsigned nth = 1; nth <= 6; ++nth) {
        support::writeArchive(path, {{"a", first}});
        InterferingCalls calls(nth, [&] {
            support::writeArchive(dir / "new", {{"first", "x"}, {"a", second}});
            ASSERT_EQ(::rename((dir / "new").c_str(), path.c_str()), 0);
        });
        const std::string content = HHDFHwDefUtils::getFileBufferFromHDF("a", path);
        EXPECT_TRUE(content == first || content == second) << nth;
    }
}
