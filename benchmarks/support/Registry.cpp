#include "support/Registry.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace bench {

namespace {

/// The first run pays for memory and caches that the others find ready, and would weigh the more the
/// fewer runs there are.
void warmUp(const Task& task)
{
    if (task.prepare) {
        task.prepare();
    }
    task.run();
}

void runTask(benchmark::State& state, const std::function<Task()>& make)
{
    try {
        const Task task = make();
        warmUp(task);
        for ([[maybe_unused]] auto _ : state) {
            if (task.prepare) {
                state.PauseTiming();
                task.prepare();
                state.ResumeTiming();
            }
            task.run();
        }
        task.check();
        if (task.bytes > 0) {
            state.SetBytesProcessed(state.iterations() * task.bytes);
        }
    } catch (const std::exception& error) {
        state.SkipWithError(error.what());
    }
}

std::vector<std::size_t> readSizes()
{
    std::ifstream file(workDir() + "/corpus/sizes");
    std::vector<std::size_t> sizes{std::istream_iterator<std::size_t>(file), {}};
    require(sizes.size() == 3, "the corpus isn't there");
    return sizes;
}

}  // namespace

void compare(const std::string& workload, const std::string& contestant, int runs, std::function<Task()> make)
{
    benchmark::RegisterBenchmark((workload + ":" + contestant).c_str(),
                                 [make](benchmark::State& state) { runTask(state, make); })
        ->Iterations(isSmall() ? 1 : runs)
        ->UseRealTime();
}

void require(bool condition, const std::string& what)
{
    if (!condition) {
        throw std::runtime_error(what);
    }
}

const std::string& workDir()
{
    static const std::string dir = [] {
        const char* value = std::getenv("HWDEF_BENCH_DIR");
        return std::string(value == nullptr ? "" : value);
    }();
    return dir;
}

bool isSmall()
{
    const char* value = std::getenv("HWDEF_BENCH_SMALL");
    return value != nullptr && *value != '\0';
}

const std::vector<std::size_t>& sizes()
{
    static const std::vector<std::size_t> sizes = readSizes();
    return sizes;
}

std::string manyContainer(std::size_t count)
{
    return workDir() + "/many" + std::to_string(count) + ".hdf";
}

std::string manyDir()
{
    return workDir() + "/corpus/many";
}

std::string readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    require(file.is_open(), "no file " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const std::string& path, const std::string& content)
{
    std::ofstream file(path, std::ios::binary);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    require(file.good(), "can't write " + path);
}

}  // namespace bench
