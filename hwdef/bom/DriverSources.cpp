// The driver source directories that a BOM names.

#include <algorithm>
#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/exception.hpp>
#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <filesystem>
#include <string_view>

#include "hwdef/bom/HHDFHwDefBomReader.h"
#include "platform/ComMsgMgr.h"
#include "platform/HUTPathUtils.h"

namespace fs = boost::filesystem;

namespace {

// Paths of the standard library and not of Boost are compared and resolved: Boost ends the process when
// memory runs out meanwhile.
using Resolved = std::filesystem::path;

/// So many parts of paths are resolved for the driver sources of one BOM, which takes two seconds.
constexpr std::size_t mostParts = 1'000'000;

/// Whether `path` is `dir` or lies below it; links resolved in both.
bool liesIn(const Resolved& path, const Resolved& dir)
{
    return std::mismatch(dir.begin(), dir.end(), path.begin(), path.end()).first == dir.end();
}

/// The path with links resolved; filesystem_error when nothing exists there.
Resolved resolvedOrThrow(const std::string& path)
{
    std::error_code error;
    Resolved result = std::filesystem::canonical(path, error);
    if (error) {
        throw fs::filesystem_error("can't resolve the path", path,
                                   {error.value(), boost::system::system_category()});
    }
    return result;
}

/// The same; empty when nothing exists there.
Resolved resolved(const std::string& path)
{
    std::error_code error;
    Resolved result = std::filesystem::canonical(path, error);
    return error ? Resolved() : result;
}

/// Whether `name`, behind a directory and a separator, says by its ".." that it leads out of it.
bool climbsOut(std::string_view name)
{
    std::size_t depth = 0;
    while (!name.empty()) {
        const std::string_view component = name.substr(0, name.find('/'));
        if (component == "..") {
            if (depth == 0) {
                return true;
            }
            --depth;
        } else if (!component.empty() && component != ".") {
            ++depth;
        }
        name.remove_prefix(std::min(component.size() + 1, name.size()));
    }
    return false;
}

/// Whether something is at `path`, links followed; says that nothing is. One status call: what a document
/// names is mostly not there, and resolving a path takes far longer.
bool existsOrSay(const std::string& path)
{
    boost::system::error_code error;
    if (fs::exists(fs::status(path, error))) {
        return true;
    }
    ComMsgMgr::sendMsg("hdf", "@64-5@%s", 1, ComMsgMgr::FAILURE, path.c_str());
    return false;
}

void say(const HHDFHwDef& def, const std::string& name, const std::string& what)
{
    std::string where;
    def.getContainerFullPath(where);
    ComMsgMgr::sendMessage(where + ": driver source \"" + name + "\" " + what + "; not read", false);
}

void refuse(const HHDFHwDef& def, const std::string& name, const std::string& dir)
{
    say(def, name, "leads out of \"" + dir + "\", expected one inside");
}

/// A regular file, or a link to one; links in a circle are none. What can't be looked at throws
/// filesystem_error.
bool isFile(const fs::directory_entry& entry)
{
    boost::system::error_code error;
    const fs::file_status status = entry.status(error);
    if (status.type() == fs::status_error && error != boost::system::errc::too_many_symbolic_link_levels) {
        throw fs::filesystem_error("can't read the status", entry.path(), error);
    }
    return fs::is_regular_file(status);
}

}  // namespace

bool HHDFHwDefBomReader::populateDriverSource(const std::string& name)
{
    const std::string unzipDir = def_->getUnzipDir();
    // Without an unzip directory there is nothing to leave: the caller stands for the names.
    const bool isConfined = !unzipDir.empty();
    if (isConfined && climbsOut(name)) {
        refuse(*def_, name, unzipDir);
        return false;
    }
    const std::string path = unzipDir + "/" + name;
    if (!existsOrSay(path)) {
        return false;
    }
    // Each part of a path costs a system call to resolve.
    resolvedParts_ += static_cast<std::size_t>(std::count(path.begin(), path.end(), '/'));
    if (resolvedParts_ > mostParts) {
        say(*def_, name,
            "comes after paths of " + std::to_string(mostParts) +
                " parts in all, the most that are resolved");
        return false;
    }
    const Resolved place = resolved(path);
    if (isConfined && !place.empty() && !liesIn(place, resolved(unzipDir + "/"))) {
        refuse(*def_, name, unzipDir);
        return false;
    }
    const auto walked = walkedSources_.find(place.native());
    if (walked == walkedSources_.end()) {
        const std::string failure = walkDriverFiles(path);
        walkedSources_.emplace(place.native(), failure);
        return failure.empty();
    }
    def_->setDriversTopDir(path);  // what a second walk would change
    if (!walked->second.empty()) {
        ComMsgMgr::sendMessage(walked->second, false);
    }
    return walked->second.empty();
}

bool HHDFHwDefBomReader::populateDriverFiles(const std::string& path)
{
    return !path.empty() && existsOrSay(path) && walkDriverFiles(path).empty();
}

std::string HHDFHwDefBomReader::walkDriverFiles(const std::string& path)
{
    def_->setDriversTopDir(path);
    try {
        registerDriverFiles(path);
        return {};
    } catch (const fs::filesystem_error& failure) {
        ComMsgMgr::sendMessage(failure.what(), false);
        return failure.what();
    }
}

void HHDFHwDefBomReader::registerDriverFiles(const std::string& path)
{
    const Resolved top = resolvedOrThrow(path);
    const Resolved unzipDir = resolved(def_->getUnzipDir());
    // Links may lead about within the unpacked container; a tree elsewhere is its own limit.
    const Resolved& limit = !unzipDir.empty() && liesIn(top, unzipDir) ? unzipDir : top;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
        if (!isFile(entry)) {
            continue;
        }
        const std::string file = entry.path().string();
        if (fs::is_symlink(entry.symlink_status()) && !liesIn(resolvedOrThrow(file), limit)) {
            refuse(*def_, file, limit.string());
            continue;
        }
        if (!def_->addDriverDirToBom(path, HUTPathUtils::makeRelativePath(file, path))) {
            say(*def_, file, "was there and can't be found now");
        }
    }
}
