#include "hwdef/container/SafePath.h"

#include <algorithm>
#include <filesystem>

#include "platform/File.h"

namespace {

// The standard library's paths and not Boost's, which end the process when memory runs out while two of
// them are compared.
namespace fs = std::filesystem;

bool isMissing(const std::error_code& error)
{
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

std::string cantLookAt(const fs::path& path, const std::error_code& error)
{
    return platform::FileError(path.string(), "read the status", error.value()).what();
}

/// No member has a longer name (APPNOTE 4.4.10). A path object of one takes fifty times its text.
constexpr std::size_t longestNameBytes = 65535;

std::string lexicalObjection(const std::string& name)
{
    if (name.empty()) {
        return "the name is empty";
    }
    if (name.size() > longestNameBytes) {
        return "the name has " + std::to_string(name.size()) + " bytes, allowed are " +
               std::to_string(longestNameBytes);
    }
    if (name.find('\0') != std::string::npos) {
        return "the name holds a null character";
    }
    if (name.front() == '/') {
        return "the name is absolute";
    }
    if (name.back() == '/') {
        return "the name is that of a directory";
    }
    const fs::path path(name);
    if (std::find(path.begin(), path.end(), fs::path("..")) != path.end()) {
        return "the name climbs out by \"..\"";
    }
    if (path.filename() == ".") {
        return "the name is that of a directory";
    }
    return {};
}

bool isBelow(const fs::path& path, const fs::path& dir)
{
    const auto [dirEnd, pathEnd] = std::mismatch(dir.begin(), dir.end(), path.begin(), path.end());
    return dirEnd == dir.end();
}

}  // namespace

SafePath::SafePath(const std::string& dir)
{
    std::error_code error;
    dir_ = fs::canonical(dir.empty() ? "." : dir, error).string();
    if (!error) {
        return;
    }
    dir_.clear();  // nothing there yet, so there are no links below it
    if (!isMissing(error)) {
        objection_ = cantLookAt(dir, error);
    }
}

std::string SafePath::objection(const std::string& name) const
{
    const std::string lexical = lexicalObjection(name);
    if (!lexical.empty() || dir_.empty()) {
        return lexical.empty() ? objection_ : lexical;
    }
    fs::path place(dir_);
    for (const fs::path& component : fs::path(name)) {
        place /= component;
        std::error_code error;
        const fs::file_type type = fs::symlink_status(place, error).type();
        if (type == fs::file_type::not_found) {
            break;  // all that follows will be made anew
        }
        if (error) {
            return cantLookAt(place, error);
        }
        if (type != fs::file_type::symlink) {
            continue;
        }
        const fs::path target = fs::canonical(place, error);
        if (error) {
            return place.string() + " is a link that leads nowhere";
        }
        if (!isBelow(target, dir_)) {
            return place.string() + " is a link that leaves the directory";
        }
        place = target;
    }
    return {};
}
