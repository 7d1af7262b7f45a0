#include "platform/HUTFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/filesystem/operations.hpp>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "platform/ReplacementFile.h"
#include "platform/SystemCalls.h"

namespace {

constexpr char separator = '/';

/// The system would read a path only up to a NUL: one that holds a NUL names nothing.
bool isNameable(const std::string& path)
{
    return !path.empty() && path.find('\0') == std::string::npos;
}

/// The status of what a path leads to, links followed.
bool getStatus(const std::string& path, struct stat& status)
{
    return isNameable(path) && platform::SystemCalls::get().stat(path.c_str(), &status) == 0;
}

/// Whether a status that failed so says nothing about what stands at the path. The others say that
/// nothing is there, or nothing that could be replaced.
bool isUncertain(int error)
{
    return error != ENOENT && error != ENOTDIR && error != EACCES && error != ELOOP && error != ENAMETOOLONG;
}

bool isDirectory(const std::string& path)
{
    struct stat status = {};
    return getStatus(path, status) && S_ISDIR(status.st_mode);
}

std::string_view withoutTrailingSeparators(std::string_view path)
{
    const std::size_t last = path.find_last_not_of(separator);
    return path.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

std::string_view lastComponent(std::string_view path)
{
    const std::string_view trimmed = withoutTrailingSeparators(path);
    // The C library's search, many bytes at a time; string_view's goes one by one.
    const auto* const last = static_cast<const char*>(memrchr(trimmed.data(), separator, trimmed.size()));
    return last ? trimmed.substr(static_cast<std::size_t>(last + 1 - trimmed.data())) : trimmed;
}

/// Calls `visit` with each component, the empty ones between separators included.
template <typename Visit>
void forEachComponent(std::string_view path, Visit visit)
{
    while (!path.empty()) {
        const std::size_t end = std::min(path.find(separator), path.size());
        visit(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
}

/// Whether an absolute path is its own canonical name, as most are.
bool isCanonical(std::string_view path)
{
    if (path.size() > 1 && path.back() == separator) {
        return false;
    }
    bool canonical = true;
    forEachComponent(path.substr(1), [&](std::string_view component) {
        canonical = canonical && !component.empty() && component != "." && component != "..";
    });
    return canonical;
}

/// The absolute path without empty, "." and ".." components. What climbs above the root stays there.
std::string canonicalised(std::string_view path)
{
    std::string result;
    result.reserve(path.size());
    forEachComponent(path, [&](std::string_view component) {
        if (component == "..") {
            result.resize(result.empty() ? 0 : result.rfind(separator));
        } else if (!component.empty() && component != ".") {
            (result += separator) += component;
        }
    });
    return result.empty() ? std::string(1, separator) : result;
}

/// Records why something failed, for callers who want to know; always false.
bool refuse(std::string* reason, const std::string& text)
{
    if (reason != nullptr) {
        *reason = text;
    }
    return false;
}

}  // namespace

HUTFile::HUTFile(std::string path) : path_(std::move(path)) {}

bool HUTFile::exists() const
{
    struct stat status = {};
    return getStatus(path_, status);
}

bool HUTFile::mayExist() const
{
    return isNameable(path_) && (exists() || isUncertain(errno));
}

bool HUTFile::isDir() const
{
    return isDirectory(path_);
}

bool HUTFile::getCanonicalName(std::string& name) const
{
    name.clear();
    if (path_.empty()) {
        return false;
    }
    if (path_.front() == separator) {
        name = isCanonical(path_) ? path_ : canonicalised(path_);
        return true;
    }
    boost::system::error_code error;
    const boost::filesystem::path directory = boost::filesystem::current_path(error);
    if (error) {
        return false;
    }
    name = canonicalised(directory.string() + separator + path_);
    return true;
}

bool HUTFile::getFullPath(std::string& path) const
{
    path = path_;
    return !path.empty();
}

bool HUTFile::getName(std::string& name) const
{
    name = this->name();
    return !name.empty();
}

bool HUTFile::getLastMod(long& seconds) const
{
    struct stat status = {};
    if (!getStatus(path_, status)) {
        return false;
    }
    seconds = status.st_mtime;
    return true;
}

bool HUTFile::getExt(std::string& extension) const
{
    extension.clear();
    const std::string_view whole = name();
    const std::size_t dot = whole.rfind('.');
    if (dot != 0 && dot != std::string_view::npos) {
        extension = whole.substr(dot + 1);
    }
    return !extension.empty();
}

std::string_view HUTFile::name() const
{
    return lastComponent(path_);
}

std::string HUTFile::getDirSeparator()
{
    return std::string(1, separator);
}

bool HUTFile::mkDirRecursive(const std::string& path)
{
    // The standard library's operation and not Boost's, which recurses once per component: a long
    // path out of an archive must not overflow the stack.
    if (isNameable(path)) {
        std::error_code error;
        std::filesystem::create_directories(path, error);
    }
    return isDirectory(path);
}

bool HUTFile::ensureWritableDirectory(const std::string& path)
{
    const std::string directory = path.empty() ? "." : path;
    return mkDirRecursive(directory) &&
           platform::SystemCalls::get().eaccess(directory.c_str(), W_OK | X_OK) == 0;
}

bool HUTFile::rmRecursive(const std::string& path)
{
    if (path.empty()) {
        return true;
    }
    // A separator behind a link would lead through it; "." and ".." name what the caller stands in.
    const std::string entry(withoutTrailingSeparators(path));
    const std::string_view name = lastComponent(entry);
    if (!isNameable(entry) || name == "." || name == "..") {
        return false;
    }
    // The standard library's operation and not Boost's: it walks by descriptors, so that a directory
    // that is swapped for a link meanwhile isn't followed.
    std::error_code error;
    std::filesystem::remove_all(entry, error);
    struct stat status = {};
    return platform::SystemCalls::get().lstat(entry.c_str(), &status) != 0 &&
           (errno == ENOENT || errno == ENOTDIR);
}

bool HUTFile::copyToDir(const std::string& dir, std::uint32_t mode, std::string* reason) const
{
    if (!isDirectory(dir.empty() ? "." : dir)) {
        return refuse(reason, dir + ": can't copy " + path_ + " there: not an existing directory");
    }
    const std::string target = (dir.empty() ? "." : dir) + separator + std::string(name());
    struct stat status = {};
    if (mode != COPY_OVERWRITE &&
        (platform::SystemCalls::get().lstat(target.c_str(), &status) == 0 || isUncertain(errno))) {
        return refuse(reason, target + ": can't copy " + path_ + " there: it exists and is to be kept");
    }
    try {
        const platform::File source = platform::File::openRegular(path_, O_RDONLY);
        platform::ReplacementFile copy(target, platform::ReplacementFile::Links::REPLACED,
                                       source.mode() & 0777);
        source.copyTo(copy.file(), source.size(), 0, 0);
        copy.commit();
    } catch (const HEXAll& error) {
        return refuse(reason, error.what());
    }
    return true;
}
