#include "platform/HUTFileUtils.h"

#include <limits.h>
#include <sys/stat.h>

#include <atomic>
#include <cstdint>

#include "platform/HUTFile.h"
#include "platform/SystemCalls.h"

namespace {

/// Whether anything stands at the path, a link that leads nowhere included. What can't be looked at
/// counts as free: the caller learns the reason when it makes the path.
bool isTaken(const std::string& path)
{
    struct stat status = {};
    return path.find('\0') == std::string::npos &&
           platform::SystemCalls::get().lstat(path.c_str(), &status) == 0;
}

}  // namespace

void HUTFileUtils::uniquifyFilenameInDir(std::string& path)
{
    static std::atomic<std::uint64_t> counter{0};
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    const std::size_t nameStart = path.rfind('/') + 1;
    std::string candidate;
    do {
        const std::string suffix = "-" + std::to_string(++counter);
        candidate = path.substr(0, nameStart + NAME_MAX - suffix.size()) + suffix;
    } while (isTaken(candidate));
    path = candidate;
}

void HUTFileUtils::makeAbsolutePath(std::string& path)
{
    std::string absolute;
    if (HUTFile(path).getCanonicalName(absolute)) {
        path = absolute;
    }
}
