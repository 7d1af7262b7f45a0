#include "platform/File.h"
#include "platform/Buffer.h"

#include <string.h>  // strerrordesc_np

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/SystemCalls.h"

namespace platform {

namespace {

constexpr std::size_t copyBufferBytes = 128 * 1024;

off_t asOffset(std::uint64_t offset)
{
    return static_cast<off_t>(offset);
}

/// The system's text, in no language but English: messages don't change with the process's locale.
std::string describe(int error)
{
    const char* text = ::strerrordesc_np(error);
    return text != nullptr ? text : "error " + std::to_string(error);
}

/// Repeats a call for as long as a signal interrupts it.
template <typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// Whether copy_file_range can't serve this pair of files, so that plain reads and writes must.
bool needsPlainCopy(int error)
{
    // EIO does not say which of the two files it is about; plain reads and writes do.
    return error == EXDEV || error == EINVAL || error == ENOSYS || error == EOPNOTSUPP || error == EPERM ||
           error == EIO;
}

void copyThroughBuffer(const File& from, const File& to, std::uint64_t size, std::uint64_t fromOffset,
                       std::uint64_t toOffset)
{
    Buffer buffer(static_cast<std::size_t>(std::min<std::uint64_t>(size, copyBufferBytes)));
    while (size > 0) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(size, buffer.size()));
        const std::size_t got = from.readAt(buffer.data(), wanted, fromOffset);
        if (got < wanted) {
            throw FileError(from.path(), "read (the file ends early)", EIO);
        }
        to.writeAt(buffer.data(), got, toOffset);
        size -= got;
        fromOffset += got;
        toOffset += got;
    }
}

}  // namespace

FileError::FileError(const std::string& path, const std::string& operation, int error)
    : HEXAll(path + ": can't " + operation + ": " + describe(error)), error_(error), path_(path)
{
}

FileError::~FileError() = default;

File::File(int descriptor, std::string path) : descriptor_(descriptor), path_(std::move(path)) {}

File::File(File&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), path_(std::move(other.path_))
{
}

File& File::operator=(File&& other) noexcept
{
    std::swap(descriptor_, other.descriptor_);
    std::swap(path_, other.path_);
    return *this;
}

File::~File()
{
    if (descriptor_ >= 0) {
        SystemCalls::get().close(descriptor_);
    }
}

File File::open(const std::string& path, int flags, mode_t mode)
{
    // The system would read the path only up to a NUL, and open another file than the one named.
    if (path.find('\0') != std::string::npos) {
        throw FileError(path, "open", EINVAL);
    }
    File file(-1, path);  // memory may run out here, but not while nobody owns a descriptor
    file.descriptor_ =
        uninterrupted([&] { return SystemCalls::get().open(path.c_str(), flags | O_CLOEXEC, mode); });
    if (!file.isOpen()) {
        throw FileError(path, "open", errno);
    }
    return file;
}

File File::openRegular(const std::string& path, int flags)
{
    // O_NONBLOCK keeps the open of a FIFO from waiting for its other end; it means nothing to a
    // regular file.
    File file = open(path, flags | O_NONBLOCK);
    struct stat status = {};
    if (SystemCalls::get().fstat(file.descriptor_, &status) != 0) {
        throw FileError(path, "read the status", errno);
    }
    if (!S_ISREG(status.st_mode)) {
        throw FileError(path, "open as a regular file", EINVAL);
    }
    return file;
}

std::uint64_t File::size() const
{
    struct stat status = {};
    if (SystemCalls::get().fstat(descriptor_, &status) != 0) {
        throw FileError(path_, "read the status", errno);
    }
    return static_cast<std::uint64_t>(status.st_size);
}

mode_t File::mode() const
{
    struct stat status = {};
    if (SystemCalls::get().fstat(descriptor_, &status) != 0) {
        throw FileError(path_, "read the status", errno);
    }
    return status.st_mode & 07777;
}

std::size_t File::readAt(void* buffer, std::size_t size, std::uint64_t offset) const
{
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = uninterrupted([&] {
            return SystemCalls::get().pread(descriptor_, static_cast<char*>(buffer) + done, size - done,
                                            asOffset(offset + done));
        });
        if (got < 0) {
            throw FileError(path_, "read", errno);
        }
        if (got == 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    return done;
}

std::size_t File::read(void* buffer, std::size_t size) const
{
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = uninterrupted([&] {
            return SystemCalls::get().read(descriptor_, static_cast<char*>(buffer) + done, size - done);
        });
        if (got < 0) {
            throw FileError(path_, "read", errno);
        }
        if (got == 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    return done;
}

void File::writeAt(const void* buffer, std::size_t size, std::uint64_t offset) const
{
    std::size_t done = 0;
    while (done < size) {
        const ssize_t put = uninterrupted([&] {
            return SystemCalls::get().pwrite(descriptor_, static_cast<const char*>(buffer) + done,
                                             size - done, asOffset(offset + done));
        });
        if (put <= 0) {
            throw FileError(path_, "write", put < 0 ? errno : ENOSPC);
        }
        done += static_cast<std::size_t>(put);
    }
}

void File::write(const void* buffer, std::size_t size) const
{
    std::size_t done = 0;
    while (done < size) {
        const ssize_t put = uninterrupted([&] {
            return SystemCalls::get().write(descriptor_, static_cast<const char*>(buffer) + done,
                                            size - done);
        });
        if (put <= 0) {
            throw FileError(path_, "write", put < 0 ? errno : ENOSPC);
        }
        done += static_cast<std::size_t>(put);
    }
}

void File::copyTo(const File& to, std::uint64_t size, std::uint64_t fromOffset, std::uint64_t toOffset) const
{
    while (size > 0) {
        off_t from = asOffset(fromOffset);
        off_t target = asOffset(toOffset);
        const ssize_t copied = uninterrupted([&] {
            return SystemCalls::get().copyFileRange(descriptor_, &from, to.descriptor_, &target,
                                                    static_cast<std::size_t>(size));
        });
        if (copied < 0 && !needsPlainCopy(errno)) {
            throw FileError(to.path_, "copy from " + path_, errno);
        }
        if (copied <= 0) {
            copyThroughBuffer(*this, to, size, fromOffset, toOffset);
            return;
        }
        size -= static_cast<std::uint64_t>(copied);
        fromOffset += static_cast<std::uint64_t>(copied);
        toOffset += static_cast<std::uint64_t>(copied);
    }
}

void File::truncate(std::uint64_t size) const
{
    if (uninterrupted([&] { return SystemCalls::get().ftruncate(descriptor_, asOffset(size)); }) != 0) {
        throw FileError(path_, "set the size", errno);
    }
}

void File::setMode(mode_t mode) const
{
    if (SystemCalls::get().fchmod(descriptor_, mode) != 0) {
        throw FileError(path_, "set the permissions", errno);
    }
}

void File::close()
{
    const int descriptor = std::exchange(descriptor_, -1);
    // An interrupted close has released the descriptor all the same.
    if (descriptor >= 0 && SystemCalls::get().close(descriptor) != 0 && errno != EINTR) {
        throw FileError(path_, "close", errno);
    }
}

}  // namespace platform
