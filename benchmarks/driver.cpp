// The library's side of the whole-process comparisons: one task a run, as a tool would do it.
//
// Prints one line "name value" for each of: elapsed and task_cpu (seconds of the task itself, without
// the start of the process), peak (KiB of memory, of the whole process), and what the task has to tell.

#include <sys/resource.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <iostream>
#include <stdexcept>

#include "support/Design.h"

namespace {

using Arguments = std::vector<std::string>;

void require(bool condition, const std::string& what)
{
    if (!condition) {
        throw std::runtime_error("failed: " + what);
    }
}

std::unique_ptr<HHDFHwDef> open(const std::string& container)
{
    auto definition = HHDFHwDefUtils::getHDF(container);
    require(definition != nullptr, "opening " + container);
    return definition;
}

std::size_t countOf(const HHDFHwDef& definition)
{
    std::vector<HHDFHwDefFile*> files;
    return definition.getBomFiles(files);
}

double seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

double cpuSeconds()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double wallSeconds()
{
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

/// What getrusage tells may stem from the process that started this one.
std::string peakKiB()
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "VmHWM:") {
            status >> word;
            return word;
        }
    }
    throw std::runtime_error("no VmHWM");
}

void timed(const std::function<void()>& task)
{
    const double cpu = cpuSeconds();
    const double wall = wallSeconds();
    task();
    std::cout << "elapsed " << wallSeconds() - wall << "\ntask_cpu " << cpuSeconds() - cpu << "\n";
}

/// pack CONTAINER DIR...
void pack(const Arguments& arguments)
{
    bench::Files files;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const bench::Files more = bench::filesOf(arguments[i]);
        files.insert(files.end(), more.begin(), more.end());
    }
    timed([&] { require(HHDFHwDefUtils::writeHDF(arguments[0], files, true, {}, {}), "packing"); });
}

/// make CONTAINER DIR COUNT
void make(const Arguments& arguments)
{
    const bench::Files files = bench::filesOf(arguments[1], std::stoul(arguments[2]));
    timed([&] { require(bench::design(arguments[0], files)->write(true), "packing"); });
}

/// export CONTAINER DIR
void exportAll(const Arguments& arguments)
{
    timed([&] { require(open(arguments[0])->write(arguments[1]), "exporting"); });
}

/// open CONTAINER
void openOnly(const Arguments& arguments)
{
    std::unique_ptr<HHDFHwDef> definition;
    timed([&] { definition = open(arguments[0]); });
    std::cout << "entries " << countOf(*definition) << "\n";
}

/// rewrite CONTAINER
void rewrite(const Arguments& arguments)
{
    const auto definition = open(arguments[0]);
    timed([&] { require(definition->write(true), "rewriting"); });
}

/// digest CONTAINER
void digest(const Arguments& arguments)
{
    std::string overall;
    HHDFHwDef::Texts digests;
    timed([&] { open(arguments[0])->calculateDigest(overall, digests); });
    for (const auto& [name, text] : digests) {
        std::cout << name << " " << text << "\n";
    }
}

/// append CONTAINER DIR: every file of the directory by a call of its own
void append(const Arguments& arguments)
{
    const bench::Files files = bench::filesOf(arguments[1]);
    std::vector<double> ends = {0};
    timed([&] {
        const double start = wallSeconds();
        for (const auto& [path, type] : files) {
            require(HHDFHwDefUtils::writeFileToHDF(path, bench::nameOf(path), arguments[0]),
                    "adding " + path);
            ends.push_back(wallSeconds() - start);
        }
    });
    const std::size_t part = files.size() / 10;
    std::cout << "first " << ends[part] << "\nlast " << ends.back() - ends[files.size() - part] << "\n";
}

/// copy MEMBER CONTAINER DESTINATION
void copy(const Arguments& arguments)
{
    timed([&] {
        require(HHDFHwDefUtils::writeFileFromHDFToHDF(arguments[0], arguments[1], arguments[0], arguments[2]),
                "copying");
    });
}

struct Task {
    std::string name;
    std::size_t minArguments;
    void (*run)(const Arguments&);
};

const std::vector<Task> tasks = {
    {"pack", 2, pack},       {"make", 3, make},     {"export", 2, exportAll}, {"open", 1, openOnly},
    {"rewrite", 1, rewrite}, {"digest", 1, digest}, {"append", 2, append},    {"copy", 3, copy},
};

void run(const std::string& name, const Arguments& arguments)
{
    for (const Task& task : tasks) {
        if (task.name == name && arguments.size() >= task.minArguments) {
            task.run(arguments);
            std::cout << "peak " << peakKiB() << "\n";
            return;
        }
    }
    throw std::runtime_error("usage: bench_driver TASK ARGUMENT...");
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        run(argc > 1 ? argv[1] : "", Arguments(argv + std::min(argc, 2), argv + argc));
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return EXIT_FAILURE;
    }
}
