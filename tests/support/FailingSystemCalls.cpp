#include "support/FailingSystemCalls.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace support {

namespace {

FailingSystemCalls* objectInForce = nullptr;

void killThisProcess()
{
    ::kill(::getpid(), SIGKILL);
}

}  // namespace

FailingSystemCalls::FailingSystemCalls() : earlier_(replace(this)), earlierObject_(objectInForce)
{
    objectInForce = this;
}

FailingSystemCalls::~FailingSystemCalls()
{
    objectInForce = earlierObject_;
    replace(earlier_);
}

FailingSystemCalls* FailingSystemCalls::inForce()
{
    return objectInForce;
}

unsigned FailingSystemCalls::count(unsigned kinds) const
{
    return static_cast<unsigned>(
        std::count_if(calls_.begin(), calls_.end(), [&](Kind kind) { return (kind & kinds) != 0; }));
}

void FailingSystemCalls::restart()
{
    rules_.clear();
    calls_.clear();
    died_ = false;
}

void FailingSystemCalls::fail(unsigned kinds, unsigned nth, int error)
{
    rules_.push_back({kinds, nth, Action::FAIL, error, 0});
}

void FailingSystemCalls::failAll(unsigned kinds, int error)
{
    fail(kinds, 0, error);
}

void FailingSystemCalls::shorten(unsigned kinds, unsigned nth, std::size_t bytes)
{
    rules_.push_back({kinds, nth, Action::SHORTEN, 0, bytes});
}

void FailingSystemCalls::shortenAll(unsigned kinds, std::size_t bytes)
{
    shorten(kinds, 0, bytes);
}

void FailingSystemCalls::interruptAll(unsigned kinds)
{
    rules_.push_back({kinds, 0, Action::INTERRUPT, EINTR, 0});
}

void FailingSystemCalls::dieAt(unsigned kinds, unsigned nth, std::size_t bytes)
{
    rules_.push_back({kinds, nth, Action::DIE, EIO, bytes});
}

void FailingSystemCalls::killAt(unsigned kinds, unsigned nth, std::size_t bytes)
{
    dieAt(kinds, nth, bytes);
    isKilled_ = true;
}

/// What the rule makes of its `seen`-th call: the errno to fail with, or 0. Calls that transfer bytes
/// give their `size`, which may be made smaller.
int FailingSystemCalls::apply(Rule& rule, std::size_t* size)
{
    switch (rule.action) {
        case Action::INTERRUPT:
            return rule.seen % 2 == 1 ? rule.error : 0;
        case Action::DIE:
            died_ = true;
            if (size == nullptr || rule.bytes == 0) {
                if (isKilled_) {
                    killThisProcess();
                }
                return rule.error;
            }
            [[fallthrough]];
        case Action::SHORTEN:
            if (size != nullptr) {
                *size = std::min(*size, rule.bytes);
            }
            return 0;
        case Action::FAIL:
            break;
    }
    return rule.error;
}

/// Counts the call and applies the rules; true, with errno set, when it must fail and do nothing.
bool FailingSystemCalls::refuses(Kind kind, std::size_t* size)
{
    calls_.push_back(kind);
    int error = died_ ? EIO : 0;
    for (Rule& rule : rules_) {
        if (error == 0 && (rule.kinds & kind) != 0 && (++rule.seen == rule.nth || rule.nth == 0)) {
            error = apply(rule, size);
        }
    }
    if (error != 0) {
        errno = error;
    }
    return error != 0;
}

bool FailingSystemCalls::refusesLibraryCall()
{
    return !isPassing_ && refuses(FROM_LIBRARY);
}

/// Makes a call of the system's that must not count as one of a library.
template <typename Call>
auto FailingSystemCalls::pass(Call call)
{
    isPassing_ = true;
    const auto result = call();
    isPassing_ = false;
    return result;
}

template <typename Transfer>
ssize_t FailingSystemCalls::transfer(Kind kind, std::size_t size, Transfer call)
{
    if (refuses(kind, &size)) {
        return -1;
    }
    const ssize_t result = pass([&] { return call(size); });
    if (died_ && isKilled_) {
        killThisProcess();
    }
    return result;
}

int FailingSystemCalls::open(const char* path, int flags, mode_t mode)
{
    if (refuses((flags & (O_CREAT | O_TRUNC)) != 0 ? CREATE : OPEN)) {
        return -1;
    }
    const int file = pass([&] { return SystemCalls::open(path, flags, mode); });
    openDescriptors_ += file >= 0 ? 1 : 0;
    return file;
}

int FailingSystemCalls::close(int file)
{
    --openDescriptors_;
    const bool refused = refuses(CLOSE);
    const int error = errno;
    const int result = pass([&] { return SystemCalls::close(file); });
    if (refused) {
        errno = error;
        return -1;
    }
    return result;
}

ssize_t FailingSystemCalls::read(int file, void* buffer, std::size_t size)
{
    return transfer(READ, size, [&](std::size_t some) { return SystemCalls::read(file, buffer, some); });
}

ssize_t FailingSystemCalls::pread(int file, void* buffer, std::size_t size, off_t offset)
{
    return transfer(READ, size,
                    [&](std::size_t some) { return SystemCalls::pread(file, buffer, some, offset); });
}

ssize_t FailingSystemCalls::write(int file, const void* buffer, std::size_t size)
{
    return transfer(WRITE, size, [&](std::size_t some) { return SystemCalls::write(file, buffer, some); });
}

ssize_t FailingSystemCalls::pwrite(int file, const void* buffer, std::size_t size, off_t offset)
{
    return transfer(WRITE, size,
                    [&](std::size_t some) { return SystemCalls::pwrite(file, buffer, some, offset); });
}

ssize_t FailingSystemCalls::copyFileRange(int from, off_t* fromOffset, int to, off_t* toOffset,
                                          std::size_t size)
{
    return transfer(COPY, size, [&](std::size_t some) {
        return SystemCalls::copyFileRange(from, fromOffset, to, toOffset, some);
    });
}

int FailingSystemCalls::ftruncate(int file, off_t size)
{
    return refuses(TRUNCATE) ? -1 : pass([&] { return SystemCalls::ftruncate(file, size); });
}

int FailingSystemCalls::fstat(int file, struct stat* status)
{
    return refuses(STATUS) ? -1 : pass([&] { return SystemCalls::fstat(file, status); });
}

int FailingSystemCalls::stat(const char* path, struct stat* status)
{
    return refuses(LOOK) ? -1 : pass([&] { return SystemCalls::stat(path, status); });
}

int FailingSystemCalls::lstat(const char* path, struct stat* status)
{
    return refuses(LOOK) ? -1 : pass([&] { return SystemCalls::lstat(path, status); });
}

ssize_t FailingSystemCalls::readlink(const char* path, char* buffer, std::size_t size)
{
    return refuses(LOOK) ? -1 : pass([&] { return SystemCalls::readlink(path, buffer, size); });
}

int FailingSystemCalls::eaccess(const char* path, int mode)
{
    return refuses(LOOK) ? -1 : pass([&] { return SystemCalls::eaccess(path, mode); });
}

int FailingSystemCalls::fchmod(int file, mode_t mode)
{
    return refuses(MODE) ? -1 : pass([&] { return SystemCalls::fchmod(file, mode); });
}

int FailingSystemCalls::rename(const char* from, const char* to)
{
    return refuses(RENAME) ? -1 : pass([&] { return SystemCalls::rename(from, to); });
}

int FailingSystemCalls::unlink(const char* path)
{
    return refuses(UNLINK) ? -1 : pass([&] { return SystemCalls::unlink(path); });
}

char* FailingSystemCalls::mkdtemp(char* pattern)
{
    return refuses(MAKE) ? nullptr : pass([&] { return SystemCalls::mkdtemp(pattern); });
}

}  // namespace support
