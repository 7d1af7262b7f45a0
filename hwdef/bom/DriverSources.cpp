// The driver source directories that a BOM names.

#include <algorithm>
#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/exception.hpp>
#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <filesystem>

#include "hwdef/bom/HHDFHwDefBomReader.h"
#include "platform/ComMsgMgr.h"
#include "platform/HUTPathUtils.h"

namespace fs = boost::filesystem;

namespace {

/// Whether `path` is `dir` or lies below it; links resolved in both.
bool liesIn(const fs::path& path, const fs::path& dir)
{
    return std::mismatch(dir.begin(), dir.end(), path.begin(), path.end()).first == dir.end();
}

/// The path with links resolved; empty when nothing exists there.
fs::path resolved(const fs::path& path)
{
    boost::system::error_code error;
    fs::path result = fs::canonical(path, error);
    return error ? fs::path() : result;
}

/// Whether `name`, behind `dir` and a separator, leads out of `dir`, by what it says or by the links on
/// its way.
bool leaves(const std::string& name, const std::string& dir)
{
    // The standard library's normal form: Boost's keeps a ".." behind a leading ".".
    const std::filesystem::path normal = std::filesystem::path("./" + name).lexically_normal();
    if (!normal.empty() && *normal.begin() == "..") {
        return true;
    }
    const fs::path target = resolved(dir + "/" + name);
    return !target.empty() && !liesIn(target, resolved(dir + "/"));
}

void refuse(const HHDFHwDef& def, const std::string& name, const std::string& dir)
{
    std::string where;
    def.getContainerFullPath(where);
    ComMsgMgr::sendMessage(where + ": driver source \"" + name + "\" leads out of \"" + dir +
                               "\", expected one inside; not read",
                           false);
}

/// A regular file, or a link to one. What the system can't tell (links in a circle) is none.
bool isFile(const fs::directory_entry& entry)
{
    boost::system::error_code error;
    return fs::is_regular_file(entry.status(error));
}

}  // namespace

bool HHDFHwDefBomReader::populateDriverSource(const std::string& name)
{
    const std::string unzipDir = def_->getUnzipDir();
    // Without an unzip directory there is nothing to leave: the caller stands for the names.
    if (!unzipDir.empty() && leaves(name, unzipDir)) {
        refuse(*def_, name, unzipDir);
        return false;
    }
    return populateDriverFiles(unzipDir + "/" + name);
}

bool HHDFHwDefBomReader::populateDriverFiles(const std::string& path)
{
    if (path.empty()) {
        return false;
    }
    boost::system::error_code error;
    if (!fs::exists(fs::status(path, error))) {
        ComMsgMgr::sendMsg("hdf", "@64-5@%s", 1, ComMsgMgr::FAILURE, path.c_str());
        return false;
    }
    def_->setDriversTopDir(path);
    try {
        registerDriverFiles(path);
        return true;
    } catch (const fs::filesystem_error& failure) {
        ComMsgMgr::sendMessage(failure.what(), false);
        return false;
    }
}

void HHDFHwDefBomReader::registerDriverFiles(const std::string& path)
{
    const fs::path top = fs::canonical(path);
    const fs::path unzipDir = resolved(def_->getUnzipDir());
    // Links may lead about within the unpacked container; a tree elsewhere is its own limit.
    const fs::path& limit = !unzipDir.empty() && liesIn(top, unzipDir) ? unzipDir : top;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
        if (!isFile(entry)) {
            continue;
        }
        const std::string file = entry.path().string();
        if (fs::is_symlink(entry.symlink_status()) && !liesIn(fs::canonical(file), limit)) {
            refuse(*def_, file, limit.string());
            continue;
        }
        def_->addDriverDirToBom(path, HUTPathUtils::makeRelativePath(file, path));
    }
}
