#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/HEXAll.h"

namespace platform {

/// A file operation that the system refused: `what()` names the path, the operation and the reason.
class FileError : public HEXAll {
public:
    /// `error` is an errno value.
    FileError(const std::string& path, const std::string& operation, int error);
    ~FileError() override;

    int error() const { return error_; }
    const std::string& path() const { return path_; }

private:
    int error_;
    std::string path_;
};

/// One open file. Owns its descriptor; moved, not copied. Interrupted calls are repeated and short
/// ones continued. What fails throws FileError.
class File {
public:
    File() = default;
    /// Takes the descriptor over; `path` is for messages.
    File(int descriptor, std::string path);
    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;
    ~File();

    /// Opens with the flags of open(2), O_CLOEXEC added.
    static File open(const std::string& path, int flags, mode_t mode = 0666);
    /// Opens an existing file for reading only when it is a regular one (never blocks on a FIFO and
    /// never reads a device): throws FileError otherwise, with EINVAL for another kind.
    static File openRegular(const std::string& path, int flags);

    bool isOpen() const { return descriptor_ >= 0; }
    int descriptor() const { return descriptor_; }
    const std::string& path() const { return path_; }

    std::uint64_t size() const;
    /// Permission bits.
    mode_t mode() const;
    /// Reads at `offset` until `size` bytes are there or the file ends; returns how many.
    std::size_t readAt(void* buffer, std::size_t size, std::uint64_t offset) const;
    /// Reads on from the file's own position until `size` bytes are there or the input ends.
    std::size_t read(void* buffer, std::size_t size) const;
    /// Writes all bytes.
    void writeAt(const void* buffer, std::size_t size, std::uint64_t offset) const;
    void write(const void* buffer, std::size_t size) const;
    /// Copies `size` bytes to another file, inside the kernel where that is possible. Throws when
    /// this file ends before.
    void copyTo(const File& to, std::uint64_t size, std::uint64_t fromOffset, std::uint64_t toOffset) const;
    void truncate(std::uint64_t size) const;
    void setMode(mode_t mode) const;
    /// Closes now; throws when the system reports a late write error.
    void close();

private:
    int descriptor_ = -1;
    std::string path_;
};

}  // namespace platform
