#pragma once

#include <string>

#include "platform/Export.h"

/// One file of a board tree: three paths, kept exactly as passed.
class HWDEF_API HHDFHwDefBoard {
public:
    /// A record of three empty texts.
    HHDFHwDefBoard() = default;
    /// A record of these texts.
    HHDFHwDefBoard(const std::string& filePath, const std::string& relativeName,
                   const std::string& hwDefFilePath);

    /// Full path of the file on disk.
    std::string getFilePath() const { return filePath_; }
    /// Name of the file relative to the top of its tree; fixed at construction.
    std::string getRelativeName() const { return relativeName_; }
    /// The container archive that the file lives in; empty for a file on disk.
    std::string getHwDefFilePath() const { return hwDefFilePath_; }

    /// False and nothing changed for an empty path.
    bool setFilePath(const std::string& path);
    /// False and nothing changed for an empty path.
    bool setHwDefFilePath(const std::string& path);

private:
    std::string filePath_;
    std::string relativeName_;
    std::string hwDefFilePath_;
};
