#pragma once

#include <cstddef>
#include <memory>

namespace platform {

/// Memory to read into or to gather in, left as it is found: to fill a buffer with zeros that a small
/// file then hardly touches costs more than the file.
class Buffer {
public:
    explicit Buffer(std::size_t size) : size_(size), bytes_(std::make_unique_for_overwrite<char[]>(size)) {}

    char* data() { return bytes_.get(); }
    const char* data() const { return bytes_.get(); }
    std::size_t size() const { return size_; }

private:
    std::size_t size_;
    std::unique_ptr<char[]> bytes_;
};

}  // namespace platform
