// What the machine itself needs for the corpus: the floor under the other figures.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "BoostSha1.h"
#include "Workloads.h"
#include "hwdef/container/Sha1.h"
#include "platform/File.h"
#include "support/Design.h"

namespace bench {

namespace {

using platform::File;

constexpr std::size_t bufferBytes = 128 * 1024;
constexpr std::size_t pageBytes = 4096;

long minorFaults()
{
    rusage usage;
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

struct Corpus {
    Files files;
    std::vector<std::string> contents;
    std::int64_t bytes = 0;

    Corpus()
    {
        for (const char* dir : {"/corpus/files", "/corpus/random"}) {
            const Files more = filesOf(workDir() + dir);
            files.insert(files.end(), more.begin(), more.end());
        }
        for (const auto& [path, type] : files) {
            contents.push_back(readFile(path));
            bytes += static_cast<std::int64_t>(contents.back().size());
        }
    }
};

Task taskOf(const std::shared_ptr<Corpus>& corpus, std::function<void()> run, std::function<void()> check)
{
    Task task;
    task.run = std::move(run);
    task.check = std::move(check);
    task.bytes = corpus->bytes;
    return task;
}

Task memcpyTask()
{
    const auto corpus = std::make_shared<Corpus>();
    const auto copy = std::make_shared<std::string>(static_cast<std::size_t>(corpus->bytes), '\0');
    return taskOf(
        corpus,
        [=] {
            char* target = copy->data();
            for (const std::string& content : corpus->contents) {
                // NOLINTNEXTLINE(bugprone-not-null-terminated-result): bytes, no text
                std::memcpy(target, content.data(), content.size());
                target += content.size();
            }
        },
        [=] {
            require(copy->starts_with(corpus->contents.front()) && copy->ends_with(corpus->contents.back()),
                    "the copy differs");
        });
}

Task readTask()
{
    const auto corpus = std::make_shared<Corpus>();
    const auto total = std::make_shared<std::int64_t>(0);
    Task task = taskOf(
        corpus,
        [=] {
            *total = 0;
            std::vector<char> buffer(bufferBytes);
            for (const auto& [path, type] : corpus->files) {
                const File file = File::openRegular(path, O_RDONLY);
                while (const std::size_t count = file.read(buffer.data(), buffer.size())) {
                    *total += static_cast<std::int64_t>(count);
                }
            }
        },
        [=] { require(*total == corpus->bytes, "another number of bytes"); });
    return task;
}

/// One file per member, as an export makes them.
Task writeTask()
{
    const auto corpus = std::make_shared<Corpus>();
    const std::string dir = workDir() + "/limits";
    Task task = taskOf(
        corpus,
        [=] {
            for (std::size_t i = 0; i < corpus->files.size(); ++i) {
                const File file = File::open(dir + "/" + std::to_string(i), O_WRONLY | O_CREAT | O_EXCL);
                file.write(corpus->contents[i].data(), corpus->contents[i].size());
            }
        },
        [=] {
            for (std::size_t i = 0; i < corpus->files.size(); ++i) {
                require(readFile(dir + "/" + std::to_string(i)) == corpus->contents[i], "a copy differs");
            }
            std::filesystem::remove_all(dir);
        });
    task.prepare = [=] {
        std::filesystem::remove_all(dir);
        std::filesystem::create_directory(dir);
    };
    return task;
}

Task sha1Task()
{
    const auto corpus = std::make_shared<Corpus>();
    const auto text = std::make_shared<std::string>();
    return taskOf(
        corpus,
        [=] {
            Sha1 sha1;
            for (const std::string& content : corpus->contents) {
                sha1.add(content.data(), content.size());
            }
            *text = sha1.finish();
        },
        [=] {
            std::string all;
            for (const std::string& content : corpus->contents) {
                all += content;
            }
            require(*text == boostSha1Text(all), "the digest differs from Boost's");
        });
}

/// Fresh memory, touched a page at a time as small allocations reach it: what keeping so many bytes costs
/// before one of them is written.
Task pageFaultTask()
{
    const auto corpus = std::make_shared<Corpus>();
    const auto faults = std::make_shared<long>(0);
    const auto bytes = static_cast<std::size_t>(corpus->bytes);
    return taskOf(
        corpus,
        [=] {
            void* const memory =
                ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            require(memory != MAP_FAILED, "no memory");
            ::madvise(memory, bytes, MADV_NOHUGEPAGE);
            const long before = minorFaults();
            for (std::size_t i = 0; i < bytes; i += pageBytes) {
                static_cast<volatile char*>(memory)[i] = 1;
            }
            *faults = minorFaults() - before;
            ::munmap(memory, bytes);
        },
        [=] { require(*faults >= static_cast<long>(bytes / pageBytes), "pages came without a fault"); });
}

}  // namespace

void addLimits()
{
    compare("limits", "memcpy", 5, memcpyTask);
    compare("limits", "page-cache read", 5, readTask);
    compare("limits", "page-cache write", 5, writeTask);
    compare("limits", "SHA-1", 2, sha1Task);
    compare("limits", "page faults of fresh memory", 5, pageFaultTask);
}

}  // namespace bench
