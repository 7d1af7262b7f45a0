// Adding a small member to a small and to a large container.

#include <filesystem>
#include <fstream>

#include "Workloads.h"
#include "support/Design.h"
#include "support/Libzip.h"

namespace bench {

namespace {

constexpr std::size_t mib = 1024 * 1024;

/// A container of that many bytes, made on first use: noise stays as large as it is.
std::string containerOf(const std::string& name, std::size_t mibs)
{
    std::string path = workDir() + "/grown-" + name + ".hdf";
    if (!std::filesystem::exists(path)) {
        const std::string source = workDir() + "/grown.bin";
        const std::string noise = readFile(workDir() + "/corpus/random/noise00.bin").substr(0, mib);
        std::ofstream file(source, std::ios::binary);
        for (std::size_t i = 0; i < mibs; ++i) {
            file << noise;
        }
        file.close();
        require(HHDFHwDefUtils::writeHDF(path, {{source, HHDFHwDefFileTypes::BIT}}, true, {}, {}),
                "packing failed");
        std::filesystem::remove(source);
        require(std::filesystem::file_size(path) >= mibs * mib, "the container is too small");
    }
    return path;
}

Task addTask(const std::string& name, std::size_t mibs)
{
    struct State {
        std::string container, source, added;
    };
    static int number = 0;
    const auto state = std::make_shared<State>();
    state->container = containerOf(name, mibs);
    state->source = workDir() + "/four-kib.dat";
    writeFile(state->source, readFile(workDir() + "/corpus/added/added0000.c").substr(0, 4096));
    Task task;
    task.prepare = [=] { state->added = "added" + std::to_string(++number); };
    task.run = [=] {
        require(HHDFHwDefUtils::writeFileToHDF(state->source, state->added, state->container),
                "adding failed");
    };
    task.check = [=] {
        const LibzipArchive archive = openLibzip(state->container);
        require(readLibzip(archive.get(), state->added) == readFile(state->source),
                "the added member differs");
    };
    return task;
}

}  // namespace

void addAppending()
{
    const std::size_t large = isSmall() ? 32 : 1024;
    compare("add-4k", "1 MiB", 30, [] { return addTask("small", 1); });
    compare("add-4k", "1 GiB", 30, [=] { return addTask("large", large); });
}

}  // namespace bench
