#include "platform/SystemCalls.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "platform/NoDestructor.h"

namespace platform {

namespace {

SystemCalls& systemsOwn()
{
    static NoDestructor<SystemCalls> calls;
    return *calls;
}

SystemCalls* inForce = nullptr;

}  // namespace

SystemCalls::~SystemCalls() = default;

int SystemCalls::open(const char* path, int flags, mode_t mode)
{
    return ::open(path, flags, mode);
}

int SystemCalls::close(int file)
{
    return ::close(file);
}

ssize_t SystemCalls::read(int file, void* buffer, std::size_t size)
{
    return ::read(file, buffer, size);
}

ssize_t SystemCalls::pread(int file, void* buffer, std::size_t size, off_t offset)
{
    return ::pread(file, buffer, size, offset);
}

ssize_t SystemCalls::write(int file, const void* buffer, std::size_t size)
{
    return ::write(file, buffer, size);
}

ssize_t SystemCalls::pwrite(int file, const void* buffer, std::size_t size, off_t offset)
{
    return ::pwrite(file, buffer, size, offset);
}

ssize_t SystemCalls::copyFileRange(int from, off_t* fromOffset, int to, off_t* toOffset, std::size_t size)
{
    return ::copy_file_range(from, fromOffset, to, toOffset, size, 0);
}

int SystemCalls::ftruncate(int file, off_t size)
{
    return ::ftruncate(file, size);
}

int SystemCalls::fstat(int file, struct stat* status)
{
    return ::fstat(file, status);
}

int SystemCalls::stat(const char* path, struct stat* status)
{
    return ::stat(path, status);
}

int SystemCalls::lstat(const char* path, struct stat* status)
{
    return ::lstat(path, status);
}

ssize_t SystemCalls::readlink(const char* path, char* buffer, std::size_t size)
{
    return ::readlink(path, buffer, size);
}

int SystemCalls::eaccess(const char* path, int mode)
{
    return ::faccessat(AT_FDCWD, path, mode, AT_EACCESS);
}

int SystemCalls::fchmod(int file, mode_t mode)
{
    return ::fchmod(file, mode);
}

int SystemCalls::rename(const char* from, const char* to)
{
    return ::rename(from, to);
}

int SystemCalls::unlink(const char* path)
{
    return ::unlink(path);
}

char* SystemCalls::mkdtemp(char* pattern)
{
    return ::mkdtemp(pattern);
}

SystemCalls& SystemCalls::get()
{
    return inForce != nullptr ? *inForce : systemsOwn();
}

SystemCalls* SystemCalls::replace(SystemCalls* calls)
{
    SystemCalls* earlier = inForce;
    inForce = calls;
    return earlier;
}

}  // namespace platform
