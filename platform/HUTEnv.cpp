#include "platform/HUTEnv.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>

#include "platform/File.h"
#include "platform/HUTFile.h"
#include "platform/HUTFileUtils.h"
#include "platform/NoDestructor.h"

namespace {

struct ScratchRoot {
    std::mutex mutex;
    std::string path;  // empty until it is made
    pid_t maker = 0;

    /// Whether the root is this process's own and still there: a service that clears old files may
    /// have taken it, and anybody the name since.
    bool isUsable() const
    {
        struct stat status = {};
        return maker == ::getpid() && ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
               status.st_uid == ::geteuid();
    }

    void make()
    {
        const char* parent = ::secure_getenv("TMPDIR");
        std::string made = parent != nullptr && *parent != '\0' ? parent : "/tmp";
        made += "/hwdef-XXXXXX";
        HUTFileUtils::makeAbsolutePath(made);
        if (::mkdtemp(made.data()) == nullptr) {
            throw platform::FileError(made, "make the scratch root of the process", errno);
        }
        path = made;
        maker = ::getpid();
    }
};

ScratchRoot& scratchRoot()
{
    static platform::NoDestructor<ScratchRoot> instance;
    return *instance;
}

/// Runs when the process ends or the library is unloaded, and so after the destructors of all static
/// objects that may own something below the root, in whatever order they were made.
__attribute__((destructor)) void removeScratchRoot()
{
    ScratchRoot& root = scratchRoot();
    if (root.maker == ::getpid()) {
        HUTFile::rmRecursive(root.path);
    }
}

}  // namespace

std::string HUTEnv::getHDITmpDir()
{
    ScratchRoot& root = scratchRoot();
    const std::lock_guard lock(root.mutex);
    if (!root.isUsable()) {
        root.make();
    }
    return root.path;
}

std::string HUTEnv::getProductVersion()
{
    return HWDEF_VERSION;
}
