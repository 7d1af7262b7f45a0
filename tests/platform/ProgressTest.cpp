#include "platform/Progress.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "platform/ProgressWork.h"

using platform::Progress;
using platform::ProgressWatch;
using platform::ProgressWork;

namespace {

/// What a function was told, one call a line: "done/total member".
class Log {
public:
    bool operator()(const Progress& progress)
    {
        text += std::to_string(progress.doneBytes) + "/" + std::to_string(progress.totalBytes) + " " +
                std::string(progress.member) + "\n";
        return true;
    }

    std::string text;
};

}  // namespace

TEST(Progress, tellsDoneAndTotalOfOneCall)
{
    Log log;
    const ProgressWatch watch(std::ref(log));
    const ProgressWork work("design.hdf");
    ProgressWork::expect(10);
    ProgressWork::expect(5);
    ProgressWork::advance("a", 10);
    ProgressWork::advance("b", 5);

    EXPECT_EQ(log.text, "10/15 a\n15/15 b\n");
}

TEST(Progress, neverTellsOfMoreThanTheTotal)
{
    Log log;
    const ProgressWatch watch(std::ref(log));
    const ProgressWork work("design.hdf");
    ProgressWork::expect(1);
    ProgressWork::advance("a", 3);

    EXPECT_EQ(log.text, "3/3 a\n");
}

TEST(Progress, isToldWhatIsLastAndForgetsWhatWasExpected)
{
    Log log;
    const ProgressWatch watch(std::ref(log));
    const ProgressWork work("design.hdf");
    ProgressWork::expect(20);
    ProgressWork::advance("a", 10);
    ProgressWork::expectLast(7);
    ProgressWork::advance({}, 7);

    EXPECT_EQ(log.text, "10/20 a\n17/17 \n");
}

TEST(Progress, countsWorkWithinWorkAsPartOfIt)
{
    Log log;
    const ProgressWatch watch(std::ref(log));
    const ProgressWork outer("design.hdf");
    ProgressWork::expect(4);
    {
        const ProgressWork inner("other.hdf");
        ProgressWork::advance("a", 1);
    }
    ProgressWork::advance("b", 3);

    EXPECT_EQ(log.text, "1/4 a\n4/4 b\n");
}

TEST(Progress, isSilentOutsideOfWorkAndAfterTheWatch)
{
    Log log;
    {
        const ProgressWatch watch(std::ref(log));
        ProgressWork::advance("a", 1);
    }
    const ProgressWork work("design.hdf");
    ProgressWork::advance("a", 1);

    EXPECT_FALSE(ProgressWork::isWatched());
    EXPECT_EQ(log.text, "");
}

TEST(Progress, tellsTheInnermostWatchOnly)
{
    Log outer;
    Log inner;
    const ProgressWatch outerWatch(std::ref(outer));
    {
        const ProgressWatch innerWatch(std::ref(inner));
        const ProgressWork work("design.hdf");
        ProgressWork::advance("a", 1);
    }
    const ProgressWork work("design.hdf");
    ProgressWork::advance("b", 1);

    EXPECT_EQ(inner.text, "1/1 a\n");
    EXPECT_EQ(outer.text, "1/1 b\n");
}

TEST(Progress, countsNothingOfWhatTheFunctionDoes)
{
    int calls = 0;
    const ProgressWatch watch([&calls](const Progress&) {
        ++calls;
        const ProgressWork own("other.hdf");
        ProgressWork::advance("x", 1);
        return true;
    });
    const ProgressWork work("design.hdf");
    ProgressWork::advance("a", 1);
    ProgressWork::advance("a", 1);

    EXPECT_EQ(calls, 2);
}

TEST(Progress, saysWhereItWasCancelled)
{
    const ProgressWatch watch([](const Progress&) { return false; });
    const ProgressWork work("design.hdf");
    ProgressWork::expect(8);
    try {
        ProgressWork::advance("top.bit", 3);
        FAIL();
    } catch (const platform::Cancelled& cancelled) {
        EXPECT_STREQ(cancelled.what(), "design.hdf: cancelled after 3 of 8 bytes, at member \"top.bit\"");
    }
}

TEST(Progress, letsThroughWhatTheFunctionThrows)
{
    int calls = 0;
    const ProgressWatch watch([&calls](const Progress&) -> bool {
        ++calls;
        throw std::length_error("no");
    });
    {
        const ProgressWork work("design.hdf");
        EXPECT_THROW(ProgressWork::advance("a", 1), std::length_error);
        EXPECT_THROW(ProgressWork::advance("a", 1), std::length_error);
    }
    EXPECT_FALSE(ProgressWork::isWatched());
    EXPECT_EQ(calls, 2);
}

TEST(Progress, copiesPieceByPieceOnlyWhenWatched)
{
    constexpr std::uint64_t bytes = (std::uint64_t{8} << 20) + 1;
    std::vector<std::uint64_t> sizes;
    const auto note = [&sizes](std::uint64_t, std::uint64_t size) { sizes.push_back(size); };
    ProgressWork::copyInSteps("a", bytes, note);
    EXPECT_EQ(sizes, std::vector<std::uint64_t>({bytes}));

    sizes.clear();
    Log log;
    const ProgressWatch watch(std::ref(log));
    const ProgressWork work("design.hdf");
    ProgressWork::copyInSteps("a", bytes, note);
    EXPECT_EQ(sizes, std::vector<std::uint64_t>({4u << 20, 4u << 20, 1}));
}
