#pragma once

#include <cstddef>
#include <vector>

#include "platform/SystemCalls.h"

namespace support {

/// The system's calls, counted, that fail where a test wants them to. In force while it lives; for
/// single-threaded tests, one at a time or nested.
///
/// A typical sweep runs the operation once to learn count(CHANGES), then once for each n up to that
/// number with dieAt(CHANGES, n), and looks at what is left on disk each time.
class FailingSystemCalls : public platform::SystemCalls {
public:
    /// Sorts of calls, to be combined with "|".
    enum Kind : unsigned {
        OPEN = 0x001,    ///< open of what exists
        CREATE = 0x002,  ///< open with O_CREAT or O_TRUNC
        CLOSE = 0x004,
        READ = 0x008,   ///< read and pread
        WRITE = 0x010,  ///< write and pwrite
        COPY = 0x020,   ///< copy_file_range
        TRUNCATE = 0x040,
        STATUS = 0x080,
        MODE = 0x100,
        RENAME = 0x200,
        UNLINK = 0x400,
        LOOK = 0x800,           ///< stat, lstat, readlink and access
        MAKE = 0x1000,          ///< mkdtemp
        FROM_LIBRARY = 0x2000,  ///< a call that a library under ours makes; see refusesLibraryCall()
        /// Every call after which the disk may look different.
        CHANGES = CREATE | WRITE | COPY | TRUNCATE | MODE | RENAME | UNLINK | MAKE,
        ANY = 0x3fff,
    };

    FailingSystemCalls();
    ~FailingSystemCalls() override;

    /// Calls of these kinds made so far, failed and interrupted ones included.
    unsigned count(unsigned kinds = ANY) const;
    /// The kind of the n-th call made so far, 1 being the first.
    Kind kind(unsigned nth) const { return calls_.at(nth - 1); }
    /// Descriptors opened through this object and not yet closed.
    int openDescriptors() const { return openDescriptors_; }
    /// Forgets all rules and counts (open descriptors are still known), and lives on after a death.
    void restart();

    /// The n-th call of these kinds from now on (1 is the next one) fails with this errno, and does
    /// nothing. A failing close closes all the same, as the system does.
    void fail(unsigned kinds, unsigned nth, int error);
    void failAll(unsigned kinds, int error);
    /// The n-th call of these kinds from now on transfers at most `bytes` bytes. Has a meaning for
    /// READ, WRITE and COPY.
    void shorten(unsigned kinds, unsigned nth, std::size_t bytes);
    void shortenAll(unsigned kinds, std::size_t bytes);
    /// Each call of these kinds is interrupted (EINTR) before it works at its repetition.
    void interruptAll(unsigned kinds);
    /// The process dies in the n-th call of these kinds from now on. That call still transfers
    /// `bytes` bytes when it transfers any; then nothing happens any more: every call fails with EIO
    /// and leaves the disk alone (descriptors are closed, as a dying process closes them).
    void dieAt(unsigned kinds, unsigned nth, std::size_t bytes = 0);
    bool died() const { return died_; }
    /// The same, but the process is killed indeed: by SIGKILL in the n-th call, or right behind it when
    /// it transfers `bytes` bytes.
    void killAt(unsigned kinds, unsigned nth, std::size_t bytes = 0);

    /// The object in force; null when there is none.
    static FailingSystemCalls* inForce();
    /// For interposed functions of the C library: counts a call and applies the rules; true, with errno
    /// set, when it must fail and do nothing. Calls that this object makes itself don't count.
    bool refusesLibraryCall();

    int open(const char* path, int flags, mode_t mode) override;
    int close(int file) override;
    ssize_t read(int file, void* buffer, std::size_t size) override;
    ssize_t pread(int file, void* buffer, std::size_t size, off_t offset) override;
    ssize_t write(int file, const void* buffer, std::size_t size) override;
    ssize_t pwrite(int file, const void* buffer, std::size_t size, off_t offset) override;
    ssize_t copyFileRange(int from, off_t* fromOffset, int to, off_t* toOffset, std::size_t size) override;
    int ftruncate(int file, off_t size) override;
    int fstat(int file, struct stat* status) override;
    int stat(const char* path, struct stat* status) override;
    int lstat(const char* path, struct stat* status) override;
    ssize_t readlink(const char* path, char* buffer, std::size_t size) override;
    int eaccess(const char* path, int mode) override;
    int fchmod(int file, mode_t mode) override;
    int rename(const char* from, const char* to) override;
    int unlink(const char* path) override;
    char* mkdtemp(char* pattern) override;

private:
    enum class Action { FAIL, SHORTEN, INTERRUPT, DIE };
    struct Rule {
        unsigned kinds;
        unsigned nth;  // 0: every call
        Action action;
        int error;
        std::size_t bytes;
        unsigned seen = 0;
    };

    int apply(Rule& rule, std::size_t* size);
    bool refuses(Kind kind, std::size_t* size = nullptr);
    template <typename Call>
    auto pass(Call call);
    template <typename Transfer>
    ssize_t transfer(Kind kind, std::size_t size, Transfer call);

    std::vector<Rule> rules_;
    std::vector<Kind> calls_;
    bool died_ = false;
    bool isKilled_ = false;  // by a death that is one
    bool isPassing_ = false;
    int openDescriptors_ = 0;
    platform::SystemCalls* earlier_ = nullptr;
    FailingSystemCalls* earlierObject_ = nullptr;
};

}  // namespace support
