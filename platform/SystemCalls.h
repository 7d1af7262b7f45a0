#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>

namespace platform {

/// The system calls that the library makes itself for all its access to files, so that a test can
/// make any one of them fail. Each operation is the call of that name: same results, same errno.
/// (Walking, making and removing whole trees is left to Boost and the standard library.)
class SystemCalls {
public:
    SystemCalls() = default;
    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;
    virtual ~SystemCalls();

    virtual int open(const char* path, int flags, mode_t mode);
    virtual int close(int file);
    virtual ssize_t read(int file, void* buffer, std::size_t size);
    virtual ssize_t pread(int file, void* buffer, std::size_t size, off_t offset);
    virtual ssize_t write(int file, const void* buffer, std::size_t size);
    virtual ssize_t pwrite(int file, const void* buffer, std::size_t size, off_t offset);
    virtual ssize_t copyFileRange(int from, off_t* fromOffset, int to, off_t* toOffset, std::size_t size);
    virtual int ftruncate(int file, off_t size);
    virtual int fstat(int file, struct stat* status);
    virtual int stat(const char* path, struct stat* status);
    virtual int lstat(const char* path, struct stat* status);
    virtual ssize_t readlink(const char* path, char* buffer, std::size_t size);
    /// access(2) for the effective user.
    virtual int eaccess(const char* path, int mode);
    virtual int fchmod(int file, mode_t mode);
    virtual int rename(const char* from, const char* to);
    virtual int unlink(const char* path);
    virtual char* mkdtemp(char* pattern);

    /// The calls in force: the system's own until a test replaces them.
    static SystemCalls& get();
    /// Puts other calls in force, the system's own for null; returns the earlier ones. The caller
    /// keeps ownership. For single-threaded tests.
    static SystemCalls* replace(SystemCalls* calls);
};

}  // namespace platform
