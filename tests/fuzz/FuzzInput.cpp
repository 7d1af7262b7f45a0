#include "fuzz/FuzzInput.h"

#include <unistd.h>

#include <boost/filesystem/operations.hpp>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "platform/ComMsgMgr.h"
#include "platform/iostreams/zip.h"
#include "support/ZipBuilder.h"

namespace fs = boost::filesystem;

namespace fuzz {

namespace {

class Directory {
public:
    Directory()
        : path_((fs::is_directory("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path()) /
                fs::unique_path("hwdef-fuzz-%%%%%%%%"))
    {
        fs::create_directory(path_);
    }
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;
    ~Directory()
    {
        boost::system::error_code ignored;
        fs::remove_all(path_, ignored);
    }

    const std::string& path() const { return path_.native(); }

private:
    const fs::path path_;
};

}  // namespace

const std::string& directory()
{
    static const Directory directory;
    return directory.path();
}

std::string writeInput(std::string_view bytes)
{
    const std::string path = directory() + "/input.hdf";
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    require(static_cast<bool>(file.flush()), "the input can be written");
    return path;
}

std::string writeContainer(std::string_view input)
{
    if (input.substr(0, 2) == "PK") {
        return writeInput(input);
    }
    support::ZipBuilder archive;
    while (!input.empty()) {
        const std::string_view member = input.substr(0, input.find(SEPARATOR));
        input.remove_prefix(std::min(input.size(), member.size() + SEPARATOR.size()));
        const std::string_view name = member.substr(0, member.find('\0'));
        const std::string_view content = member.substr(std::min(member.size(), name.size() + 1));
        archive.addStored(std::string(name), std::string(content));
    }
    return writeInput(archive.build());
}

std::string inputOf(const Members& members)
{
    std::string input;
    for (const auto& [name, content] : members) {
        input += (input.empty() ? std::string() : std::string(SEPARATOR)) + name + '\0' + content;
    }
    return input;
}

void dropMessages()
{
    ComMsgMgr::setHandler([](const ComMsg&) {});
}

void require(bool holds, const char* fact)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", fact);
        std::abort();
    }
}

}  // namespace fuzz
