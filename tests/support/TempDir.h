#pragma once

#include <string>

namespace support {

/// A directory of its own for one test, removed with all it holds at the end.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    /// The path of `name` in the directory.
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    /// Names of what the directory holds (not below), sorted.
    std::string list() const;

private:
    std::string path_;
};

/// The whole content of a file; fails the test when it can't be read.
std::string readFile(const std::string& path);
/// Writes the file with missing parents, replacing what was there.
void writeFile(const std::string& path, const std::string& content);
bool exists(const std::string& path);
/// `size` bytes that do not compress, the same for the same seed.
std::string randomBytes(std::size_t size, unsigned seed);
/// `size` bytes of text that compresses well, the same for the same seed.
std::string textBytes(std::size_t size, unsigned seed);

}  // namespace support
