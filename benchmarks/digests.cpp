// The library's SHA-1 alone, against Boost's.

#include "BoostSha1.h"
#include "Workloads.h"
#include "hwdef/container/Sha1.h"

namespace bench {

namespace {

std::string byLibrary(const std::string& bytes)
{
    Sha1 sha1;
    sha1.add(bytes.data(), bytes.size());
    return sha1.finish();
}

std::string byBoost(const std::string& bytes)
{
    return boostSha1Text(bytes);
}

Task sha1Task(std::string (*digest)(const std::string&))
{
    struct State {
        std::string bytes = readFile(workDir() + "/corpus/random/noise00.bin");
        std::string found;
    };
    const auto state = std::make_shared<State>();
    Task task;
    task.run = [=] { state->found = digest(state->bytes); };
    task.check = [=] {
        require(byLibrary(state->bytes) == byBoost(state->bytes) && state->found == byBoost(state->bytes),
                "the digests differ");
    };
    task.bytes = static_cast<std::int64_t>(state->bytes.size());
    return task;
}

}  // namespace

void addDigests()
{
    compare("sha1", "hwdef", 10, [] { return sha1Task(byLibrary); });
    compare("sha1", "Boost at -O2", 10, [] { return sha1Task(byBoost); });
}

}  // namespace bench
