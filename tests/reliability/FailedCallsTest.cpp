// Every system call of every operation fails once.

#include <gtest/gtest.h>

#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "support/Aftermath.h"
#include "support/FailingSystemCalls.h"

using support::Aftermath;
using support::FailingSystemCalls;
using support::Operation;

namespace {

constexpr unsigned transfers =
    FailingSystemCalls::READ | FailingSystemCalls::WRITE | FailingSystemCalls::COPY;

/// Descriptors that this process has open, however they were opened.
std::ptrdiff_t openDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// Calls of which one transfer is short: it gives or takes half of the bytes that it could.
class HalvedTransfer : public FailingSystemCalls {
public:
    /// Halves the n-th transfer from now on; `halved` counts it if it had a half.
    void halve(unsigned nth, unsigned& halved)
    {
        left_ = nth;
        halved_ = &halved;
    }

    ssize_t read(int file, void* buffer, std::size_t size) override
    {
        const ssize_t done = FailingSystemCalls::read(file, buffer, size);
        const ssize_t given = next(done);
        if (given < done) {
            ::lseek(file, given - done, SEEK_CUR);
        }
        return given;
    }
    ssize_t pread(int file, void* buffer, std::size_t size, off_t offset) override
    {
        return next(FailingSystemCalls::pread(file, buffer, size, offset));
    }
    ssize_t write(int file, const void* buffer, std::size_t size) override
    {
        return FailingSystemCalls::write(file, buffer, next(size));
    }
    ssize_t pwrite(int file, const void* buffer, std::size_t size, off_t offset) override
    {
        return FailingSystemCalls::pwrite(file, buffer, next(size), offset);
    }
    ssize_t copyFileRange(int from, off_t* fromOffset, int to, off_t* toOffset, std::size_t size) override
    {
        return FailingSystemCalls::copyFileRange(from, fromOffset, to, toOffset, next(size));
    }

private:
    /// What becomes of this many bytes of the next transfer.
    template <typename Bytes>
    Bytes next(Bytes bytes)
    {
        if (left_ == 0 || --left_ > 0 || bytes < Bytes{2}) {
            return bytes;
        }
        ++*halved_;
        return bytes / 2;
    }

    unsigned left_ = 0;
    unsigned* halved_ = nullptr;
};

class FailedCalls : public testing::TestWithParam<Operation> {
protected:
    /// Runs the operation once for each n, `disturb` having said what becomes of the n-th call, until n
    /// is beyond its last one; expects each time that nothing is lost or left over.
    template <typename Calls = FailingSystemCalls, typename Disturb>
    void sweep(Disturb disturb)
    {
        for (unsigned nth = 1;; ++nth) {
            SCOPED_TRACE("call " + std::to_string(nth));
            aftermath_.reset();
            const std::ptrdiff_t descriptors = openDescriptors();
            Aftermath::Outcome outcome;
            unsigned made = 0;
            bool removalFailed = false;
            {
                Calls calls;
                disturb(calls, nth);
                outcome = aftermath_.run();
                made = calls.count();
                removalFailed = made >= nth && isPartOfRemoval(calls.kind(nth));
            }
            aftermath_.expectOldOrNew(outcome);
            EXPECT_EQ(openDescriptors(), descriptors);
            reported_ += outcome.isReported() ? 1 : 0;
            if (!removalFailed) {
                aftermath_.expectNoScratch();
            }
            if (made < nth || HasFailure()) {
                EXPECT_FALSE(outcome.isReported()) << outcome.messages;
                calls_ = nth - 1;
                return;
            }
        }
    }

    /// A scratch directory whose removal fails stays until the process ends.
    static bool isPartOfRemoval(FailingSystemCalls::Kind kind)
    {
        return (kind & (FailingSystemCalls::FROM_LIBRARY | FailingSystemCalls::LOOK)) != 0;
    }

    Aftermath aftermath_{GetParam()};
    unsigned reported_ = 0;
    unsigned calls_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Of, FailedCalls, testing::ValuesIn(support::operations()),
                         [](const auto& info) { return info.param.name; });

}  // namespace

TEST_P(FailedCalls, forWantOfSpaceLeaveTheOldOrTheNewState)
{
    sweep([](FailingSystemCalls& calls, unsigned nth) { calls.fail(FailingSystemCalls::ANY, nth, ENOSPC); });
    EXPECT_GE(calls_, 5U);
    EXPECT_GE(reported_, 2U);
    RecordProperty("calls", static_cast<int>(calls_));
}

TEST_P(FailedCalls, ofADamagedDiskLeaveTheOldOrTheNewState)
{
    sweep([](FailingSystemCalls& calls, unsigned nth) { calls.fail(FailingSystemCalls::ANY, nth, EIO); });
    EXPECT_GE(calls_, 5U);
    EXPECT_GE(reported_, 2U);
}

TEST_P(FailedCalls, thatASignalInterruptsLeaveTheOldOrTheNewState)
{
    sweep([](FailingSystemCalls& calls, unsigned nth) { calls.fail(FailingSystemCalls::ANY, nth, EINTR); });
    EXPECT_GE(calls_, 5U);
}

TEST_P(FailedCalls, thatASignalInterruptsAreRepeated)
{
    constexpr unsigned repeated = FailingSystemCalls::OPEN | FailingSystemCalls::CREATE |
                                  FailingSystemCalls::READ | FailingSystemCalls::WRITE |
                                  FailingSystemCalls::COPY | FailingSystemCalls::TRUNCATE |
                                  FailingSystemCalls::CLOSE;
    FailingSystemCalls calls;
    calls.interruptAll(repeated);
    const Aftermath::Outcome outcome = aftermath_.run();
    EXPECT_FALSE(outcome.isReported()) << outcome.messages;
    aftermath_.expectOldOrNew(outcome);
    EXPECT_GE(calls.count(repeated), 4U);
}

TEST_P(FailedCalls, ofWhichOneTransfersOneByteAreContinued)
{
    sweep([](FailingSystemCalls& calls, unsigned nth) { calls.shorten(transfers, nth, 1); });
    EXPECT_EQ(reported_, 0U);
}

TEST_P(FailedCalls, ofWhichOneTransfersHalfAreContinued)
{
    unsigned halved = 0;
    sweep<HalvedTransfer>([&](HalvedTransfer& calls, unsigned nth) { calls.halve(nth, halved); });
    EXPECT_EQ(reported_, 0U);
    EXPECT_GE(halved, 2U);
    RecordProperty("halved", static_cast<int>(halved));
}

TEST_P(FailedCalls, thatAllTransferOneByteAreContinued)
{
    FailingSystemCalls calls;
    calls.shortenAll(transfers, 1);
    const Aftermath::Outcome outcome = aftermath_.run();
    EXPECT_FALSE(outcome.isReported()) << outcome.messages;
    aftermath_.expectOldOrNew(outcome);
    EXPECT_GE(calls.count(transfers), 50U);
}
