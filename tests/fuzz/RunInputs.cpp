// Gives files, and all files of directories, to one target: how seeds and inputs that once failed are
// run by every compiler.

#include <boost/filesystem/operations.hpp>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "fuzz/FuzzInput.h"

namespace fs = boost::filesystem;

namespace {

void run(const fs::path& path)
{
    std::ifstream file(path.native(), std::ios::binary);
    const std::string input{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::fprintf(stderr, "%s: %zu bytes\n", path.c_str(), input.size());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

}  // namespace

int main(int count, char** arguments)
{
    std::size_t inputs = 0;
    for (int i = 1; i < count; ++i) {
        if (!fs::is_directory(arguments[i])) {
            run(arguments[i]);
            ++inputs;
            continue;
        }
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(arguments[i])) {
            if (fs::is_regular_file(entry.path())) {
                run(entry.path());
                ++inputs;
            }
        }
    }
    std::fprintf(stderr, "%zu inputs\n", inputs);
    return inputs == 0 ? 1 : 0;  // a run without inputs tells nothing
}
