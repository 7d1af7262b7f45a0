// Reading one member of a large archive: each run opens the archive anew, as a build's tools do.

#include <minizip/unzip.h>

#include "Workloads.h"
#include "support/Design.h"
#include "support/Libzip.h"

namespace bench {

namespace {

std::string readByLibrary(const std::string& archive, const std::string& member)
{
    return HHDFHwDefUtils::getFileBufferFromHDF(member, archive);
}

std::string readByLibzip(const std::string& path, const std::string& member)
{
    const LibzipArchive archive = openLibzip(path);
    return readLibzip(archive.get(), member);
}

std::string readByMinizip(const std::string& path, const std::string& member)
{
    const std::unique_ptr<void, decltype(&unzClose)> archive(unzOpen64(path.c_str()), &unzClose);
    constexpr int caseSensitive = 1;
    require(unzLocateFile(archive.get(), member.c_str(), caseSensitive) == UNZ_OK,
            "minizip has no such member");
    unz_file_info64 info;
    unzGetCurrentFileInfo64(archive.get(), &info, nullptr, 0, nullptr, 0, nullptr, 0);
    std::string content(info.uncompressed_size, '\0');
    require(unzOpenCurrentFile(archive.get()) == UNZ_OK, "minizip can't open a member");
    require(unzReadCurrentFile(archive.get(), content.data(), static_cast<unsigned>(content.size())) ==
                static_cast<int>(content.size()),
            "minizip can't read a member");
    require(unzCloseCurrentFile(archive.get()) == UNZ_OK, "minizip finds a wrong CRC");
    return content;
}

using Reader = std::string (*)(const std::string&, const std::string&);

/// Reads members spread evenly over the archive, another one each time.
Task memberTask(std::size_t count, Reader read)
{
    struct State {
        Files files;
        std::size_t next = 0;
        std::vector<std::pair<std::string, std::string>> found;
    };
    const auto state = std::make_shared<State>();
    state->files = filesOf(manyDir(), count);
    Task task;
    task.run = [=] {
        const std::string& path = state->files[state->next].first;
        state->found.emplace_back(path, read(manyContainer(count), nameOf(path)));
        state->next = (state->next + count / 2 + count / 29) % count;
    };
    task.check = [=] {
        for (const auto& [path, content] : state->found) {
            require(content == readFile(path), "the member " + nameOf(path) + " differs");
        }
    };
    return task;
}

}  // namespace

void addMembers()
{
    const std::size_t count = sizes()[2];
    constexpr int runs = 29;
    compare("member", "hwdef", runs, [=] { return memberTask(count, readByLibrary); });
    compare("member", "libzip", runs, [=] { return memberTask(count, readByLibzip); });
    compare("member", "minizip", runs, [=] { return memberTask(count, readByMinizip); });
}

}  // namespace bench
