// Every allocation of every operation fails, alone and with all that come behind it.

#include "reliability/Allocations.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <new>

#include "hwdef/swparam/SWParamWriter.h"
#include "support/Aftermath.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define HWDEF_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define HWDEF_SANITIZED 1
#endif
#endif

using support::Aftermath;
using support::Operation;

namespace {

// Atomic for the tests of threads in this program, which allocate as well.
std::atomic<bool> isCounting{false};
std::atomic<unsigned> counted{0};
std::atomic<std::ptrdiff_t> held{0};
unsigned failingNth = 0;
allocations::Failing failingHow = allocations::Failing::ONE;

/// Counts an allocation; false when it must fail.
bool mayAllocate()
{
    if (!isCounting) {
        return true;
    }
    const unsigned nth = ++counted;
    return failingHow == allocations::Failing::ONE ? nth != failingNth : nth < failingNth;
}

/// Counts a block that was taken.
void* taken(void* block)
{
    held += block != nullptr ? 1 : 0;
    return block;
}

}  // namespace

void allocations::fail(unsigned nth, Failing failing)
{
    failingNth = nth;
    failingHow = failing;
    counted = 0;
    isCounting = true;
}

unsigned allocations::stop()
{
    isCounting = false;
    return counted;
}

std::ptrdiff_t allocations::blocks()
{
    return held;
}

#ifdef HWDEF_SANITIZED

__attribute__((visibility("default"))) void* operator new(std::size_t size)
{
    void* const block = mayAllocate() ? taken(std::malloc(size)) : nullptr;
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

__attribute__((visibility("default"))) void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return mayAllocate() ? taken(std::malloc(size)) : nullptr;
}

__attribute__((visibility("default"))) void* operator new[](std::size_t size)
{
    return operator new(size);
}

__attribute__((visibility("default"))) void operator delete(void* block) noexcept
{
    held -= block != nullptr ? 1 : 0;
    std::free(block);
}

__attribute__((visibility("default"))) void operator delete(void* block, std::size_t) noexcept
{
    operator delete(block);
}

__attribute__((visibility("default"))) void operator delete[](void* block) noexcept
{
    operator delete(block);
}

__attribute__((visibility("default"))) void operator delete[](void* block, std::size_t) noexcept
{
    operator delete(block);
}

#else

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

__attribute__((visibility("default"))) void* malloc(std::size_t size)
{
    if (!mayAllocate()) {
        errno = ENOMEM;
        return nullptr;
    }
    return taken(__libc_malloc(size));
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size)
{
    if (!mayAllocate()) {
        errno = ENOMEM;
        return nullptr;
    }
    return taken(__libc_calloc(count, size));
}

__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size)
{
    if (!mayAllocate()) {
        errno = ENOMEM;
        return nullptr;
    }
    void* const moved = __libc_realloc(block, size);
    return block == nullptr ? taken(moved) : moved;
}

__attribute__((visibility("default"))) void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    if (!mayAllocate()) {
        errno = ENOMEM;
        return nullptr;
    }
    return taken(__libc_memalign(alignment, size));
}

__attribute__((visibility("default"))) int posix_memalign(void** block, std::size_t alignment,
                                                          std::size_t size)
{
    *block = mayAllocate() ? taken(__libc_memalign(alignment, size)) : nullptr;
    return *block == nullptr ? ENOMEM : 0;
}

__attribute__((visibility("default"))) void free(void* block)
{
    held -= block != nullptr ? 1 : 0;
    __libc_free(block);
}

}  // extern "C"

#endif

namespace {

std::ptrdiff_t openDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

class Allocations : public testing::TestWithParam<Operation> {
protected:
    /// Runs the operation once for each n until it takes no n-th block any more.
    void sweep(allocations::Failing failing)
    {
        for (unsigned nth = 1;; ++nth) {
            SCOPED_TRACE("allocation " + std::to_string(nth));
            aftermath_.reset();
            const std::ptrdiff_t descriptors = openDescriptors();
            const unsigned made = runOnce(nth, failing);
            if (leaked_ != 0) {
                // Something that is made once and stays, or a leak, which comes again.
                aftermath_.reset();
                runOnce(nth, failing);
                EXPECT_EQ(leaked_, 0);
            }
            EXPECT_EQ(openDescriptors(), descriptors);
            if (made < nth || HasFailure()) {
                allocations_ = nth - 1;
                return;
            }
        }
    }

    unsigned runOnce(unsigned nth, allocations::Failing failing)
    {
        unsigned made = 0;
        const std::ptrdiff_t blocks = allocations::blocks();
        {
            const Aftermath::Outcome outcome =
                aftermath_.run([&] { allocations::fail(nth, failing); }, [&] { made = allocations::stop(); });
            aftermath_.expectOldOrNew(outcome);
            reported_ += outcome.isReported() ? 1 : 0;
        }
        leaked_ = allocations::blocks() - blocks;
        return made;
    }

    Aftermath aftermath_{GetParam()};
    unsigned reported_ = 0;
    unsigned allocations_ = 0;
    std::ptrdiff_t leaked_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Of, Allocations, testing::ValuesIn(support::operations()),
                         [](const auto& info) { return info.param.name; });

}  // namespace

TEST(AllocationsOfThisProgram, areCountedAndRefused)
{
    const std::ptrdiff_t blocks = allocations::blocks();
    allocations::fail(2, allocations::Failing::ONE);
    void* const first = ::operator new(1);
    bool refused = false;
    try {
        ::operator delete(::operator new(2));
    } catch (const std::bad_alloc&) {
        refused = true;
    }
    void* const third = ::operator new(3);
    const std::ptrdiff_t more = allocations::blocks() - blocks;
    EXPECT_GE(allocations::stop(), 3U);
    EXPECT_EQ(more, 2);
    ::operator delete(first);
    ::operator delete(third);
    EXPECT_EQ(allocations::blocks(), blocks);
    EXPECT_TRUE(refused);
}

TEST_P(Allocations, thatFailOnceLeaveTheOldOrTheNewState)
{
    sweep(allocations::Failing::ONE);
    RecordProperty("allocations", static_cast<int>(allocations_));
    EXPECT_GE(allocations_, 10U);
    EXPECT_GE(reported_, 5U);
}

TEST_P(Allocations, thatFailFromOneOnLeaveTheOldOrTheNewState)
{
    sweep(allocations::Failing::ALL_FROM);
    EXPECT_GE(allocations_, 10U);
    EXPECT_GE(reported_, 5U);
}

TEST(AllocationsOfAParameterFile, thatFailLeaveAsBadAlloc)
{
    const support::TempDir dir;
    const std::string path = dir / "parameters.json";
    const std::string text(100, 'x');
    bool wasWritten = false;
    unsigned refused = 0;
    for (unsigned nth = 1; !wasWritten; ++nth) {
        allocations::fail(nth, allocations::Failing::ONE);
        try {
            SWParamWriter::writeParamInfo(path, text, text, text);
        } catch (const std::bad_alloc&) {
            ++refused;
        }
        wasWritten = allocations::stop() < nth;
    }
    EXPECT_GE(refused, 5U);
    EXPECT_NE(support::readFile(path).find(text), std::string::npos);
}
