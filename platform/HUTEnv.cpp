#include "platform/HUTEnv.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <vector>

#include "platform/File.h"
#include "platform/HUTFile.h"
#include "platform/HUTFileUtils.h"
#include "platform/NoDestructor.h"
#include "platform/SystemCalls.h"

namespace {

/// The scratch roots made by this process: one as a rule, and one more for each time that the earlier
/// ones could not be used any longer.
struct ScratchRoots {
    std::mutex mutex;
    std::vector<std::string> paths;
    pid_t maker = 0;
};

ScratchRoots& scratchRoots()
{
    static platform::NoDestructor<ScratchRoots> instance;
    return *instance;
}

/// Whether a root is still there and the user's: a service that clears old files may have taken it,
/// and anybody its name since; the process may have changed its user.
bool isUsable(const std::string& root)
{
    struct stat status = {};
    return platform::SystemCalls::get().lstat(root.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid();
}

std::string makeScratchRoot()
{
    const char* parent = ::secure_getenv("TMPDIR");
    std::string path = parent != nullptr && *parent != '\0' ? parent : "/tmp";
    path += "/hwdef-XXXXXX";
    HUTFileUtils::makeAbsolutePath(path);
    if (platform::SystemCalls::get().mkdtemp(path.data()) == nullptr) {
        throw platform::FileError(path, "make the scratch root of the process", errno);
    }
    return path;
}

/// Runs when the process ends or the library is unloaded, and so after the destructors of all static
/// objects that may own something below the root, in whatever order they were made.
__attribute__((destructor)) void removeScratchRoots()
{
    const ScratchRoots& roots = scratchRoots();
    if (roots.maker != ::getpid()) {
        return;
    }
    for (const std::string& path : roots.paths) {
        try {
            if (isUsable(path)) {
                HUTFile::rmRecursive(path);
            }
        } catch (...) {
            // Without memory it stays, as it does when the process is killed.
        }
    }
}

}  // namespace

std::string HUTEnv::getHDITmpDir()
{
    ScratchRoots& roots = scratchRoots();
    const std::lock_guard lock(roots.mutex);
    if (roots.maker != ::getpid()) {
        // A forked child: what it inherited is its parent's to use and to remove.
        roots.paths.clear();
        roots.maker = ::getpid();
    }
    const auto usable = std::find_if(roots.paths.begin(), roots.paths.end(), isUsable);
    if (usable != roots.paths.end()) {
        return *usable;
    }
    // A place first: a root that is made must not be lost for want of memory.
    roots.paths.reserve(roots.paths.size() + 1);
    return roots.paths.emplace_back(makeScratchRoot());
}

std::string HUTEnv::getProductVersion()
{
    return HWDEF_VERSION;
}
