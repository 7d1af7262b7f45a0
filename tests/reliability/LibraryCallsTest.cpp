// The functions of the C library by which Boost and the standard library look at, walk, make and remove
// directories: in this program they go through the failing system calls of tests, too.

#include <dirent.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/filesystem.hpp>
#include <cerrno>
#include <cstdarg>
#include <filesystem>

#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"

using support::FailingSystemCalls;
using support::TempDir;

namespace {

bool mustFail()
{
    FailingSystemCalls* const calls = FailingSystemCalls::inForce();
    return calls != nullptr && calls->refusesLibraryCall();
}

/// The function that is called when this program defines none of that name.
template <typename Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

// NOLINTBEGIN(bugprone-macro-parentheses): types and lists of parameters take none
#define HWDEF_INTERPOSE(result, name, failed, parameters, arguments)                \
    extern "C" __attribute__((visibility("default"))) result name parameters        \
    {                                                                               \
        static result(*const original) parameters = next<result parameters>(#name); \
        return mustFail() ? failed : original arguments;                            \
    }
// NOLINTEND(bugprone-macro-parentheses)

HWDEF_INTERPOSE(int, stat, -1, (const char* path, struct stat* status), (path, status))
HWDEF_INTERPOSE(int, lstat, -1, (const char* path, struct stat* status), (path, status))
HWDEF_INTERPOSE(int, stat64, -1, (const char* path, struct stat64* status), (path, status))
HWDEF_INTERPOSE(int, lstat64, -1, (const char* path, struct stat64* status), (path, status))
HWDEF_INTERPOSE(ssize_t, readlink, -1, (const char* path, char* buffer, size_t size), (path, buffer, size))
HWDEF_INTERPOSE(char*, getcwd, nullptr, (char* buffer, size_t size), (buffer, size))
HWDEF_INTERPOSE(int, mkdir, -1, (const char* path, mode_t mode), (path, mode))
HWDEF_INTERPOSE(int, unlinkat, -1, (int dir, const char* path, int flags), (dir, path, flags))
HWDEF_INTERPOSE(DIR*, opendir, nullptr, (const char* path), (path))
HWDEF_INTERPOSE(DIR*, fdopendir, nullptr, (int dir), (dir))
HWDEF_INTERPOSE(struct dirent*, readdir, nullptr, (DIR * dir), (dir))
HWDEF_INTERPOSE(struct dirent64*, readdir64, nullptr, (DIR * dir), (dir))

extern "C" __attribute__((visibility("default"))) int openat(int dir, const char* path, int flags, ...)
{
    static auto* const original = next<int(int, const char*, int, ...)>("openat");
    std::va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    return mustFail() ? -1 : original(dir, path, flags, mode);
}

namespace {

/// How many calls of libraries `work` makes.
template <typename Work>
unsigned callsOf(Work work)
{
    FailingSystemCalls calls;
    work();
    return calls.count(FailingSystemCalls::FROM_LIBRARY);
}

}  // namespace

TEST(LibraryCalls, areThoseOfBoost)
{
    const TempDir dir;
    boost::system::error_code error;
    EXPECT_GE(callsOf([&] { boost::filesystem::status(dir.path(), error); }), 1U);
    EXPECT_GE(callsOf([&] { boost::filesystem::canonical(dir.path(), error); }), 2U);
    EXPECT_GE(callsOf([&] { boost::filesystem::current_path(error); }), 1U);
    EXPECT_GE(callsOf([&] { boost::filesystem::directory_iterator walk(dir.path(), error); }), 2U);
}

TEST(LibraryCalls, areThoseOfTheStandardLibrary)
{
    const TempDir dir;
    std::error_code error;
    EXPECT_GE(callsOf([&] { std::filesystem::create_directories(dir / "a/b", error); }), 3U);
    EXPECT_TRUE(support::exists(dir / "a/b"));
    EXPECT_GE(callsOf([&] { std::filesystem::remove_all(dir / "a", error); }), 4U);
    EXPECT_FALSE(support::exists(dir / "a"));
}

TEST(LibraryCalls, failWhereATestWantsIt)
{
    const TempDir dir;
    std::error_code error;
    {
        FailingSystemCalls calls;
        calls.failAll(FailingSystemCalls::FROM_LIBRARY, EIO);
        EXPECT_FALSE(std::filesystem::create_directory(dir / "a", error));
    }
    EXPECT_EQ(error.value(), EIO);
    EXPECT_FALSE(support::exists(dir / "a"));
}

TEST(LibraryCalls, areNotThoseOfTheSystemCallsThemselves)
{
    const TempDir dir;
    FailingSystemCalls calls;
    struct stat status = {};
    EXPECT_EQ(platform::SystemCalls::get().stat(dir.path().c_str(), &status), 0);
    std::string name = dir / "XXXXXX";
    EXPECT_NE(platform::SystemCalls::get().mkdtemp(name.data()), nullptr);
    EXPECT_EQ(calls.count(FailingSystemCalls::FROM_LIBRARY), 0U);
    EXPECT_EQ(calls.count(), 2U);
}
