#include <boost/filesystem/path.hpp>
#include <unordered_set>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/ComMsgMgr.h"
#include "platform/HEXAll.h"
#include "platform/HUTCoreContainer.h"
#include "platform/HUTEnv.h"
#include "platform/HUTFile.h"
#include "platform/HUTFileUtils.h"

namespace {

using TypedFiles = std::vector<std::pair<std::string, HHDFHwDefFileTypes::HWHFileType>>;

bool fail(const char* id)
{
    // Sent without arguments, although two of the identifiers have a place for one.
    ComMsgMgr::sendMsg("hdf", id, 0, ComMsgMgr::FAILURE);
    return false;
}

/// The private directory of one build, which stands in for core containers. Removed at the end.
class StagingDir {
public:
    /// Named after the container's file. Throws HEXAll when there is no scratch root.
    explicit StagingDir(const std::string& outputName)
    {
        const std::string separator = HUTFile::getDirSeparator();
        path_ = HUTEnv::getHDITmpDir() + separator + "HWH" + separator + outputName;
        HUTFileUtils::uniquifyFilenameInDir(path_);
        HUTFileUtils::makeAbsolutePath(path_);
        used_.insert(outputName);
        try {
            HUTFile::mkDirRecursive(path_);
            HUTFile::ensureWritableDirectory(path_);
        } catch (...) {
            remove();
            throw;
        }
    }

    ~StagingDir()
    {
        if (!kept_) {
            remove();
        }
    }

    StagingDir(const StagingDir&) = delete;
    StagingDir& operator=(const StagingDir&) = delete;

    std::string pathOf(const std::string& name) const { return path_ + HUTFile::getDirSeparator() + name; }

    /// Copies a file out of its core container and returns the copy's path. A second file of one name
    /// gets a directory of its own. When the copy fails, `reason` says why, and nothing is there for
    /// the write to find.
    std::string stage(const std::string& file, std::string& reason)
    {
        const std::string name(HUTFile(file).name());
        std::string copy = pathOf(name);
        if (!used_.insert(name).second) {
            HUTFileUtils::uniquifyFilenameInDir(copy);
            HUTFile::mkDirRecursive(copy);
            copy += HUTFile::getDirSeparator() + name;
        }
        HUTCoreContainer::cp(file, copy, true, &reason);
        return copy;
    }

    void keep() { kept_ = true; }

private:
    void remove() noexcept
    {
        try {
            if (HUTFile(path_).isDir()) {
                HUTFile::rmRecursive(path_);
            }
        } catch (...) {
            // Without memory the directory can't be removed now; it goes with the scratch root.
        }
    }

    std::string path_;
    std::unordered_set<std::string> used_;
    bool kept_ = false;
};

/// Whether the container may be written at the path, as far as that shows beforehand.
bool mayWrite(const std::string& path, bool overwrite)
{
    if (path.empty()) {
        return fail("@64-10@");
    }
    if (!overwrite && (HUTFile(path).mayExist() || HUTCoreContainer::contains(path))) {
        return fail("@64-14@%s");
    }
    const boost::filesystem::path parent = boost::filesystem::path(path).parent_path();
    const std::string dir = parent.empty() ? "." : parent.string();
    if (HUTFile(dir).isDir() && !HUTFile::ensureWritableDirectory(dir)) {
        return fail("@64-15@%s");
    }
    return true;
}

void say(const std::string& container, const std::string& file, const std::string& reason)
{
    ComMsgMgr::sendMessage(container + ": member \"" + std::string(HUTFile(file).name()) +
                               "\" can't be added from \"" + file + "\": " + reason,
                           false);
}

void addFiles(HHDFHwDef& def, const std::string& container, const TypedFiles& files,
              const std::map<std::string, HHDFHwDefUtils::Attributes>& fileAttributes, StagingDir& staging)
{
    for (const auto& [file, type] : files) {
        std::string reason;
        const std::string path =
            HUTCoreContainer::hasParentCoreContainer(file, false) ? staging.stage(file, reason) : file;
        if (!def.addFileToBom(path, type, std::string())) {
            reason = "a file must have a path";
        }
        if (!reason.empty()) {
            say(container, file, reason);
        }
        const auto attributes = fileAttributes.find(path);
        if (attributes != fileAttributes.end() && !attributes->second.empty()) {
            HHDFHwDefUtils::Attributes copy = attributes->second;
            def.addFileAttrs(path, copy);
        }
    }
}

/// Puts the finished container into its core container. The result of the build does not tell of it.
void deliver(const std::string& container, const std::string& path)
{
    std::string reason;
    if (!HUTCoreContainer::cp(container, path, true, &reason)) {
        ComMsgMgr::sendMessage(path + ": the finished container can't be put there: " + reason, false);
    }
}

bool build(const std::string& path, const TypedFiles& files,
           const std::map<std::string, HHDFHwDefUtils::Attributes>& fileAttributes,
           const HHDFHwDefUtils::Attributes& wdiAttributes)
{
    const std::string outputName(HUTFile(path).name());
    StagingDir staging(outputName);
    const std::string container =
        HUTCoreContainer::hasParentCoreContainer(path, false) ? staging.pathOf(outputName) : path;
    const std::unique_ptr<HHDFHwDef> def = HHDFHwDefUtils::createHDF(container);
    if (def == nullptr) {
        staging.keep();
        return false;
    }
    addFiles(*def, path, files, fileAttributes, staging);
    for (const auto& [name, value] : wdiAttributes) {
        def->addWDIAttr(name, value);
    }
    const bool written = def->write(true);
    if (written && container != path) {
        deliver(container, path);
    }
    return written;
}

}  // namespace

bool HHDFHwDefUtils::writeHDF(const std::string& path, const TypedFiles& files, bool overwrite,
                              const std::map<std::string, Attributes>& fileAttributes,
                              const Attributes& wdiAttributes)
{
    if (!mayWrite(path, overwrite)) {
        return false;
    }
    try {
        return build(path, files, fileAttributes, wdiAttributes);
    } catch (const HEXAll& error) {
        ComMsgMgr::sendMessage(error.what(), false);
        return false;
    }
}
