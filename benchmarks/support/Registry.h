#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Registers in-process comparisons with Google Benchmark.
namespace bench {

/// One measured task. Only `run` is timed; each of the functions may throw to fail the benchmark.
struct Task {
    std::function<void()> prepare;  ///< before every run; may be empty
    std::function<void()> run;
    std::function<void()> check;  ///< after the last run; throws when the result isn't right
    std::int64_t bytes = 0;       ///< that one run works on, for a throughput; 0 for none
};

/// Registers a task as "workload:contestant". `make` is called once a repetition and the task
/// run once, both untimed; the task is then run `runs` times (once in a small trial).
void compare(const std::string& workload, const std::string& contestant, int runs,
             std::function<Task()> make);

/// Throws std::runtime_error with `what` unless the condition holds.
void require(bool condition, const std::string& what);

/// The directory with the corpus and the containers made of it.
const std::string& workDir();
/// True for a trial that only shows that everything works.
bool isSmall();
/// Numbers of members of the three containers, smallest first.
const std::vector<std::size_t>& sizes();
/// The container of that many members, and the directory with its files.
std::string manyContainer(std::size_t count);
std::string manyDir();

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& content);

}  // namespace bench
