#include "platform/SystemCalls.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"

using platform::SystemCalls;
using support::FailingSystemCalls;

TEST(SystemCalls, areTheSystemsOwnUntilReplaced)
{
    SystemCalls* const systemsOwn = &SystemCalls::get();
    SystemCalls other;
    EXPECT_EQ(SystemCalls::replace(&other), nullptr);
    EXPECT_EQ(&SystemCalls::get(), &other);
    EXPECT_EQ(SystemCalls::replace(nullptr), &other);
    EXPECT_EQ(&SystemCalls::get(), systemsOwn);
}

TEST(SystemCalls, doWhatTheirNamesSay)
{
    const support::TempDir dir;
    SystemCalls& calls = SystemCalls::get();
    const int file = calls.open((dir / "a").c_str(), O_RDWR | O_CREAT, 0600);
    ASSERT_GE(file, 0);
    EXPECT_EQ(calls.write(file, "012345", 6), 6);
    EXPECT_EQ(calls.pwrite(file, "ab", 2, 1), 2);
    off_t from = 0;
    off_t to = 6;
    EXPECT_EQ(calls.copyFileRange(file, &from, file, &to, 2), 2);
    EXPECT_EQ(calls.ftruncate(file, 7), 0);
    EXPECT_EQ(calls.fchmod(file, 0640), 0);
    struct stat status = {};
    EXPECT_EQ(calls.fstat(file, &status), 0);
    EXPECT_EQ(status.st_size, 7);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    char buffer[4] = {};
    EXPECT_EQ(calls.read(file, buffer, 4), 1);
    EXPECT_EQ(calls.pread(file, buffer, 4, 1), 4);
    EXPECT_EQ(std::string(buffer, 4), "ab34");
    EXPECT_EQ(calls.close(file), 0);
    EXPECT_EQ(calls.rename((dir / "a").c_str(), (dir / "b").c_str()), 0);
    EXPECT_EQ(dir.list(), "b");
    EXPECT_EQ(calls.unlink((dir / "b").c_str()), 0);
    EXPECT_EQ(dir.list(), "");
}

TEST(SystemCalls, lookAtPathsAsTheirNamesSay)
{
    const support::TempDir dir;
    SystemCalls& calls = SystemCalls::get();
    support::writeFile(dir / "file", "1234");
    ASSERT_EQ(::symlink("file", (dir / "link").c_str()), 0);
    struct stat status = {};
    EXPECT_EQ(calls.stat((dir / "link").c_str(), &status), 0);
    EXPECT_EQ(status.st_size, 4);
    EXPECT_EQ(calls.lstat((dir / "link").c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    char target[16] = {};
    EXPECT_EQ(calls.readlink((dir / "link").c_str(), target, sizeof target), 4);
    EXPECT_EQ(std::string(target), "file");
    EXPECT_EQ(calls.eaccess((dir / "file").c_str(), R_OK), 0);
    EXPECT_EQ(calls.eaccess((dir / "missing").c_str(), F_OK), -1);
    std::string made = dir / "d-XXXXXX";
    EXPECT_EQ(calls.mkdtemp(made.data()), made.data());
    EXPECT_EQ(calls.lstat(made.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700u);
}

TEST(SystemCalls, reportByErrno)
{
    const support::TempDir dir;
    errno = 0;
    EXPECT_EQ(SystemCalls::get().open((dir / "missing").c_str(), O_RDONLY, 0), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(SystemCalls::get().unlink((dir / "missing").c_str()), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST(FailingSystemCalls, fail)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    calls.fail(FailingSystemCalls::WRITE, 2, ENOSPC);
    const int file = calls.open((dir / "a").c_str(), O_RDWR | O_CREAT, 0600);
    EXPECT_EQ(calls.write(file, "a", 1), 1);
    EXPECT_EQ(calls.pwrite(file, "b", 1, 1), -1);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(calls.write(file, "c", 1), 1);
    EXPECT_EQ(calls.openDescriptors(), 1);
    calls.close(file);
    EXPECT_EQ(support::readFile(dir / "a"), "ac");
    EXPECT_EQ(calls.count(FailingSystemCalls::WRITE), 3u);
    EXPECT_EQ(calls.count(), 5u);
    EXPECT_EQ(calls.openDescriptors(), 0);
}

TEST(FailingSystemCalls, shortenAndInterrupt)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    calls.shorten(FailingSystemCalls::WRITE, 1, 2);
    const int file = calls.open((dir / "a").c_str(), O_RDWR | O_CREAT, 0600);
    EXPECT_EQ(calls.write(file, "abcd", 4), 2);
    EXPECT_EQ(calls.write(file, "cd", 2), 2);
    calls.interruptAll(FailingSystemCalls::WRITE);
    EXPECT_EQ(calls.write(file, "ef", 2), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(calls.write(file, "ef", 2), 2);
    EXPECT_EQ(calls.write(file, "gh", 2), -1);
    calls.close(file);
    EXPECT_EQ(support::readFile(dir / "a"), "abcdef");
}

TEST(FailingSystemCalls, dieInsideAWrite)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    const int file = calls.open((dir / "a").c_str(), O_RDWR | O_CREAT, 0600);
    calls.dieAt(FailingSystemCalls::CHANGES, 2, 3);
    EXPECT_EQ(calls.write(file, "ab", 2), 2);
    EXPECT_EQ(calls.write(file, "cdefg", 5), 3);
    EXPECT_TRUE(calls.died());
    EXPECT_EQ(calls.write(file, "fg", 2), -1);
    EXPECT_EQ(calls.unlink((dir / "a").c_str()), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(calls.close(file), -1);
    EXPECT_EQ(support::readFile(dir / "a"), "abcde");
    calls.restart();
    EXPECT_EQ(calls.unlink((dir / "a").c_str()), 0);
}
