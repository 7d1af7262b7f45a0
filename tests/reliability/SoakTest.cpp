// One process that opens and writes for long: neither its memory nor its descriptors grow. The numbers
// are for a quick look; `make soak` sets higher ones by the environment.

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "reliability/Allocations.h"
#include "support/Container.h"
#include "support/TempDir.h"

using support::TempDir;
using Utils = HHDFHwDefUtils;

namespace {

struct Use {
    std::size_t residentKiB = 0;
    std::ptrdiff_t descriptors = 0;
    std::ptrdiff_t blocks = 0;
};

Use useNow()
{
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    Use use;
    use.residentKiB = pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) / 1024;
    use.descriptors = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    use.blocks = allocations::blocks();
    return use;
}

unsigned numberFrom(const char* variable, unsigned otherwise)
{
    const char* const text = std::getenv(variable);
    return text != nullptr ? static_cast<unsigned>(std::stoul(text)) : otherwise;
}

class Soak : public testing::Test {
protected:
    Soak()
    {
        support::writeFile(dir_ / "a.bit", support::textBytes(2000, 1));
        support::writeFile(dir_ / "x.mdd", "driver");
        const auto def = Utils::createHDF(path_);
        def->setMajorVersion(1);
        def->setMinorVersion(3);
        def->setModeType(HHDFHwDefFileTypes::PRE_SYNTHESIS);
        def->addFileToBom(dir_ / "a.bit", HHDFHwDefFileTypes::BIT);
        def->addDriverFileToBom("ip", dir_.path(), "x.mdd", "");
        EXPECT_TRUE(def->write(true));
    }

    /// Repeats the work, the first tenth to warm up, and compares what the process uses.
    template <typename Work>
    void repeat(unsigned times, Work work)
    {
        for (unsigned i = 0; i < times / 10; ++i) {
            work();
        }
        const Use before = useNow();
        for (unsigned i = times / 10; i < times; ++i) {
            work();
        }
        const Use after = useNow();
        std::cout << times << " times: " << before.residentKiB << " KiB, then " << after.residentKiB
                  << " KiB; " << before.descriptors << " descriptors, then " << after.descriptors << "; "
                  << before.blocks << " blocks of memory, then " << after.blocks << "\n";
        EXPECT_EQ(after.descriptors, before.descriptors);
        EXPECT_EQ(after.blocks, before.blocks);
        // The sanitizers hold back what is freed, to see late uses of it.
        EXPECT_TRUE(allocations::SANITIZED || after.residentKiB <= before.residentKiB + allowanceKiB);
    }

    /// Pages that the allocator takes late; a leak of 32 bytes a time shows in `make soak`.
    static constexpr std::size_t allowanceKiB = 2048;

    const TempDir dir_;
    const std::string path_ = dir_ / "design.hdf";
};

}  // namespace

TEST_F(Soak, opensWithoutGrowing)
{
    unsigned failures = 0;
    repeat(numberFrom("HWDEF_SOAK_OPENS", 1000), [&] {
        const auto def = Utils::getHDF(path_, true);
        failures += def == nullptr ? 1 : 0;
    });
    EXPECT_EQ(failures, 0U);
}

TEST_F(Soak, writesWithoutGrowing)
{
    unsigned failures = 0;
    repeat(numberFrom("HWDEF_SOAK_WRITES", 100), [&] {
        const auto def = Utils::getHDF(path_);
        failures += def == nullptr || !def->write(true) ? 1 : 0;
        failures += Utils::writeFileToHDF(dir_ / "a.bit", "more", path_) ? 0 : 1;
        failures += Utils::writeFileFromHDF(dir_ / "out", "a.bit", path_) ? 0 : 1;
    });
    EXPECT_EQ(failures, 0U);
    EXPECT_EQ(dir_.list(), "a.bit design.hdf out x.mdd");
}

TEST_F(Soak, failsWithoutGrowing)
{
    support::writeFile(dir_ / "broken.hdf", support::readFile(path_).substr(0, 500));
    unsigned successes = 0;
    repeat(numberFrom("HWDEF_SOAK_WRITES", 100), [&] {
        successes += Utils::getHDF(dir_ / "broken.hdf", true) != nullptr ? 1 : 0;
        const auto def = Utils::createHDF(dir_ / "missing/design.hdf");
        successes += def->write(true) ? 1 : 0;
    });
    EXPECT_EQ(successes, 0U);
}
