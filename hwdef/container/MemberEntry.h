#pragma once

#include <functional>
#include <string>

class HHDFHwDefDriver;
class HHDFHwDefFile;
class HHDFHwDefImp;

/// One entry of a definition that stands for a member of its container: a BOM file or a driver file.
/// Refers to the entry and must not outlive it.
class MemberEntry {
public:
    explicit MemberEntry(const HHDFHwDefFile& file) : file_(&file) {}
    explicit MemberEntry(const HHDFHwDefDriver& driver) : driver_(&driver) {}

    /// The member's path inside the container: the file's name, or the driver file's relative name.
    std::string name() const;
    /// The file on disk that the entry stands for; empty when there is none.
    std::string diskPath() const;
    /// The container that holds the bytes as a member; empty for a file on disk.
    std::string archive() const;
    bool isDriver() const { return driver_ != nullptr; }

    /// Where the bytes come from, for people: the container, or the file on disk.
    std::string origin() const;
    /// Whether both entries take the same bytes: same container and name, or same file on disk.
    bool hasSameSource(const MemberEntry& other) const;

private:
    const HHDFHwDefFile* file_ = nullptr;
    const HHDFHwDefDriver* driver_ = nullptr;
};

/// Visits every member of a definition but the BOM: the BOM files in list order, then the driver files
/// in key order, each driver's in insertion order. Null entries are passed over.
void forEachMember(const HHDFHwDefImp& def, const std::function<void(const MemberEntry&)>& visit);
