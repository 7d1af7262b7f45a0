#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/filesystem.hpp>
#include <fstream>
#include <random>
#include <sstream>
#include <vector>

namespace support {

namespace fs = boost::filesystem;

TempDir::TempDir() : path_((fs::temp_directory_path() / fs::unique_path("hwdef-test-%%%%%%%%%%%%")).string())
{
    fs::create_directories(path_);
}

TempDir::~TempDir()
{
    boost::system::error_code error;
    fs::remove_all(path_, error);
}

std::string TempDir::list() const
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(path_)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    std::string joined;
    for (const std::string& name : names) {
        joined += (joined.empty() ? "" : " ") + name;
    }
    return joined;
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in.good()) << path << " can't be read";
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

void writeFile(const std::string& path, const std::string& content)
{
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    out.close();
    EXPECT_TRUE(out.good()) << path << " can't be written";
}

bool exists(const std::string& path)
{
    return fs::exists(path);
}

std::string randomBytes(std::size_t size, unsigned seed)
{
    std::mt19937_64 engine(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(engine() & 0xff);
    }
    return bytes;
}

std::string textBytes(std::size_t size, unsigned seed)
{
    std::mt19937 engine(seed);
    std::string bytes;
    while (bytes.size() < size) {
        bytes += "register " + std::to_string(engine() % 64) + " = value\n";
    }
    bytes.resize(size);
    return bytes;
}

}  // namespace support
