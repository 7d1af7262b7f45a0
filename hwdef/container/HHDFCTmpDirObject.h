#pragma once

#include <string>

#include "platform/Export.h"

/// Owns one scratch directory on disk: there while the object lives, removed with all it holds at
/// its end.
class HWDEF_API HHDFCTmpDirObject {
public:
    /// Opens a directory at once; see open().
    explicit HHDFCTmpDirObject(const std::string& name);
    ~HHDFCTmpDirObject();
    HHDFCTmpDirObject(const HHDFCTmpDirObject&) = delete;
    HHDFCTmpDirObject& operator=(const HHDFCTmpDirObject&) = delete;

    /// Makes a directory when this object holds none; nothing otherwise.
    void open(const std::string& name);
    /// Makes a new directory below the process's scratch root, named `name` ("HWH" when that is
    /// empty) made unique, and stores its absolute path. True when it can be written to. Without a
    /// scratch root its reason is sent by ComMsgMgr::sendMessage and the object holds no directory.
    bool createTmpDir(const std::string& name);
    /// The directory's absolute path; empty when the object holds none.
    const std::string& getDir() const { return dir_; }
    /// Removes the directory from disk and keeps its path. One that can't be removed draws the notice
    /// "@64-28@%s"; a path that is no directory is left alone.
    void deleteTmpDir();
    /// Removes the directory and forgets it.
    void close();

private:
    HWDEF_LOCAL void closeWithoutThrowing() noexcept;

    std::string dir_;
};
