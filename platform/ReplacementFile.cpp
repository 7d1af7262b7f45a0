#include "platform/ReplacementFile.h"

#include <limits.h>
#include <unistd.h>

#include <atomic>
#include <boost/filesystem/path.hpp>
#include <cerrno>
#include <cstdint>

#include "platform/SystemCalls.h"

namespace platform {

namespace {

namespace fs = boost::filesystem;

/// As many links in a row as the system itself follows.
constexpr int maxLinks = 40;

/// What stands at the path, links not followed; nothing when it is free. What can't be looked at must
/// not be taken for free: a link, or the permissions of the old file, would be lost.
std::optional<struct stat> look(const std::string& path)
{
    struct stat status = {};
    if (SystemCalls::get().lstat(path.c_str(), &status) == 0) {
        return status;
    }
    if (errno != ENOENT && errno != ENOTDIR) {
        throw FileError(path, "read the status", errno);
    }
    return {};
}

std::string readLink(const std::string& path)
{
    std::string target(PATH_MAX, '\0');
    const ssize_t size = SystemCalls::get().readlink(path.c_str(), target.data(), target.size());
    if (size < 0) {
        throw FileError(path, "read the link", errno);
    }
    target.resize(static_cast<std::size_t>(size));
    return target;
}

/// The path that a chain of links ends at; it need not exist.
fs::path followLinks(fs::path path)
{
    for (int i = 0; i < maxLinks; ++i) {
        const auto status = look(path.string());
        if (!status || !S_ISLNK(status->st_mode)) {
            return path;
        }
        const fs::path next = readLink(path.string());
        path = next.is_absolute() ? next : path.parent_path() / next;
    }
    throw FileError(path.string(), "follow the link", ELOOP);
}

/// A name beside the target that no other call of this process uses; O_EXCL settles the rest. It
/// does not hold the target's name, which may be as long as the system allows.
std::string temporaryName(const fs::path& target)
{
    static std::atomic<std::uint32_t> counter{0};
    const std::string name =
        ".hwdef-" + std::to_string(::getpid()) + "-" + std::to_string(++counter) + ".tmp";
    return (target.parent_path() / name).string();
}

/// The path to replace. Nothing need exist there.
std::string resolve(const std::string& target, ReplacementFile::Links links)
{
    // The system would read the path only up to a NUL, and replace another file than the one named.
    if (target.empty() || target.find('\0') != std::string::npos) {
        throw FileError(target, "replace", target.empty() ? ENOENT : EINVAL);
    }
    return links == ReplacementFile::Links::FOLLOWED ? followLinks(target).string() : target;
}

}  // namespace

ReplacementFile::ReplacementFile(const std::string& target, Links links, std::optional<mode_t> mode)
    : target_(resolve(target, links))
{
    // All links were followed above: one that appears here is to be replaced.
    const auto old = look(target_);
    const bool exists = old && !S_ISLNK(old->st_mode);
    if (exists && !S_ISREG(old->st_mode)) {
        throw FileError(target_, "replace what is no regular file", S_ISDIR(old->st_mode) ? EISDIR : EINVAL);
    }
    if (exists && !mode) {
        mode = old->st_mode & 07777;
    }
    openTemporary(mode);
}

void ReplacementFile::openTemporary(std::optional<mode_t> mode)
{
    while (!file_.isOpen()) {
        temporary_ = temporaryName(target_);
        try {
            file_ = File::open(temporary_, O_RDWR | O_CREAT | O_EXCL, mode ? 0600 : 0666);
        } catch (const FileError& error) {
            // A name that exists was left over by a process that was killed: take the next one.
            if (error.error() != EEXIST) {
                throw FileError(target_, "make a temporary file beside it", error.error());
            }
        }
    }
    try {
        if (mode) {
            file_.setMode(*mode);
        }
    } catch (...) {
        SystemCalls::get().unlink(temporary_.c_str());
        throw;
    }
}

ReplacementFile::~ReplacementFile()
{
    if (!temporary_.empty()) {
        SystemCalls::get().unlink(temporary_.c_str());
    }
}

void ReplacementFile::commit()
{
    file_.close();
    if (SystemCalls::get().rename(temporary_.c_str(), target_.c_str()) != 0) {
        throw FileError(target_, "put the new file in its place", errno);
    }
    temporary_.clear();
}

}  // namespace platform
