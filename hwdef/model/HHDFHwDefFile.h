#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "hwdef/model/HHDFHwDefFileTypes.h"
#include "platform/Export.h"
#include "platform/HUTFile.h"

class BomList;

/// One design file that the BOM lists.
///
/// Paths are kept exactly as passed. The file need not exist.
class HWDEF_API HHDFHwDefFile {
public:
    /// An entry for the file at `path`, of type UNKNOWN and role UNKNOWN_BD, with no hierarchy path,
    /// container path, source database or attributes. An empty path gives an entry without a file.
    /// @{
    explicit HHDFHwDefFile(const std::string& path);
    explicit HHDFHwDefFile(std::string&& path);
    /// @}
    /// A copy for the other entry's canonical path, with all its fields and attributes. Belongs to no
    /// BOM list.
    HHDFHwDefFile(const HHDFHwDefFile& other);
    HHDFHwDefFile& operator=(const HHDFHwDefFile&) = delete;
    ~HHDFHwDefFile();

    /// The canonical path of the file; empty when there is none.
    std::string getFile() const;
    /// The last component of the path; empty when there is no file.
    std::string getFileName() const;
    /// The same without a copy; lives as long as the entry.
    std::string_view fileName() const;

    /// What kind of file it is, and its role in the block design.
    /// @{
    const HHDFHwDefFileTypes::HWHFileType& getFileType() const { return fileType_; }
    void setFileType(const HHDFHwDefFileTypes::HWHFileType& type) { fileType_ = type; }
    const HHDFHwDefFileTypes::HWHBDType& getBDFileType() const { return bdFileType_; }
    void setBDFileType(const HHDFHwDefFileTypes::HWHBDType& type) { bdFileType_ = type; }
    /// @}

    /// Instance path, in the design hierarchy, of the block design or cell the file belongs to.
    const std::string& getHierPath() const { return extras().hierPath; }
    /// The same for walks over many entries: makes nothing, and lives until the path is set.
    std::string_view hierPath() const
    {
        return extras_ ? std::string_view(extras_->hierPath) : std::string_view();
    }
    /// False and nothing changed for an empty path.
    bool setHierPath(const std::string& path);

    /// The container archive that the file lives in as a member; empty for a file on disk.
    std::string getHwDefFilePath() const { return hwDefFilePath_ ? *hwDefFilePath_ : std::string(); }
    /// False and nothing changed for an empty path.
    bool setHwDefFilePath(const std::string& path);

    /// The same for many entries of one container, which then share the text. Null for a file on disk.
    void shareHwDefFilePath(std::shared_ptr<const std::string> path) { hwDefFilePath_ = std::move(path); }

    /// The design database the file came from.
    const std::string& getHwSrcDB() const { return hwSrcDB_; }
    /// Stores the text, the empty one included.
    void setHwSrcDB(const std::string& srcDb);

    /// Whether there are attributes; for walks over many entries.
    bool hasFileAttrs() const { return extras_ && !extras_->fileAttrs.empty(); }
    /// Free attributes, by name.
    const std::map<std::string, std::string>& getFileAttrs() const { return extras().fileAttrs; }
    /// Sets an attribute, replacing an earlier value; false and nothing changed when either text is
    /// empty.
    bool addFileAttr(const std::string& name, const std::string& value);

    /// Equality of file, file type, role, hierarchy path, container path and source database, texts
    /// without regard to case. Attributes do not count.
    bool operator==(const HHDFHwDefFile& other) const;

private:
    friend class BomList;

    // What most entries don't have, apart from them: a container may list very many. Made when first
    // set or asked for, so that a reference given out stays good while the entry lives.
    struct Extras {
        std::string hierPath;
        std::map<std::string, std::string> fileAttrs;
    };
    Extras& extras() const;

    HUTFile file_;  // of the empty path when there is none
    HHDFHwDefFileTypes::HWHFileType fileType_ = HHDFHwDefFileTypes::UNKNOWN;
    HHDFHwDefFileTypes::HWHBDType bdFileType_ = HHDFHwDefFileTypes::UNKNOWN_BD;
    std::shared_ptr<const std::string> hwDefFilePath_;  // shared with neighbours and copies; null for empty
    std::string hwSrcDB_;
    mutable std::unique_ptr<Extras> extras_;
    BomList* list_ = nullptr;  // the list that this entry is on, if any
    std::uint32_t slot_ = 0;   // and its place there
};
