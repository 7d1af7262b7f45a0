#include "hwdef/container/HHDFCTmpDirObject.h"

#include "platform/ComMsgMgr.h"
#include "platform/HEXAll.h"
#include "platform/HUTEnv.h"
#include "platform/HUTFile.h"
#include "platform/HUTFileUtils.h"

HHDFCTmpDirObject::HHDFCTmpDirObject(const std::string& name)
{
    try {
        open(name);
    } catch (...) {
        closeWithoutThrowing();
        throw;
    }
}

HHDFCTmpDirObject::~HHDFCTmpDirObject()
{
    closeWithoutThrowing();
}

void HHDFCTmpDirObject::open(const std::string& name)
{
    if (dir_.empty()) {
        createTmpDir(name);
    }
}

bool HHDFCTmpDirObject::createTmpDir(const std::string& name)
{
    std::string path;
    try {
        path = HUTEnv::getHDITmpDir() + HUTFile::getDirSeparator() + (name.empty() ? "HWH" : name);
    } catch (const HEXAll& error) {
        // Without a scratch root a container can still be read; what needs the directory fails later.
        ComMsgMgr::sendMessage(error.what(), false);
        return false;
    }
    HUTFileUtils::uniquifyFilenameInDir(path);
    HUTFileUtils::makeAbsolutePath(path);
    dir_ = path;
    HUTFile::mkDirRecursive(dir_);
    return HUTFile::ensureWritableDirectory(dir_);
}

void HHDFCTmpDirObject::deleteTmpDir()
{
    if (dir_.empty()) {
        return;
    }
    const HUTFile directory(dir_);
    if (!directory.isDir()) {
        return;
    }
    HUTFile::rmRecursive(dir_);
    if (directory.isDir()) {
        ComMsgMgr::sendMsg("hdf", "@64-28@%s", 1, ComMsgMgr::NOTICE, dir_.c_str());
    }
}

void HHDFCTmpDirObject::close()
{
    deleteTmpDir();
    dir_.clear();
}

void HHDFCTmpDirObject::closeWithoutThrowing() noexcept
{
    try {
        close();
    } catch (...) {
        // Without memory the directory can't be removed now; it goes with the scratch root.
    }
}
