#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/File.h"

namespace iostreams::zip {

/// The last bytes of a file, read once: what lies among them is not read again. The file's size is
/// taken at the start and holds from then on. The file must outlive this object.
class FileTail {
public:
    explicit FileTail(const platform::File& file);

    const platform::File& file() const { return file_; }
    std::uint64_t fileSize() const { return fileSize_; }
    std::string_view bytes() const { return bytes_; }
    /// Where bytes() begin in the file.
    std::uint64_t offset() const { return fileSize_ - bytes_.size(); }

    /// Makes bytes() the last `size` bytes, or the whole file when it is shorter.
    void load(std::size_t size);
    /// Reads from anywhere in the file. Throws zip_exception when it has become shorter.
    void read(char* buffer, std::size_t size, std::uint64_t offset) const;

private:
    const platform::File& file_;
    std::uint64_t fileSize_;
    std::string bytes_;
};

}  // namespace iostreams::zip
