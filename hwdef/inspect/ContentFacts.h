#pragma once

#include <map>
#include <memory>
#include <string>

#include "hwdef/model/HHDFHwDef.h"
#include "platform/iostreams/ArchiveReader.h"

/// Where a fact about a container stands: section, item and field, as HHDFDifference has them.
struct FactKey {
    std::string section;
    std::string item;
    std::string field;

    auto operator<=>(const FactKey&) const = default;
};

/// A container as the facts that make up its content. docs/inspection.md lists them.
class ContentFacts {
public:
    /// Opens the container. Throws HEXAll when that can't be done; opening has then told why.
    explicit ContentFacts(const std::string& path);

    /// Tells who watches the progress how much there is to read.
    void expectWork() const;
    /// Reads everything. Throws platform::Cancelled, and HEXAll when a member can't be read.
    void gather();

    const std::map<FactKey, std::string>& all() const { return facts_; }
    const iostreams::zip::ArchiveReader& archive() const { return *archive_; }

private:
    void set(const char* section, std::string item, const std::string& field, std::string value);
    void addProperties();
    void addResources(const std::string& prefix, const HHDFHwDef::HHDFResourceInfo& info);
    void addFiles();
    void addDrivers();
    void addPartitions();
    void addUnlisted();
    /// "SHA-256, N bytes" of the member; "missing" without one.
    std::string contentOf(const iostreams::zip::Entry* entry);

    std::unique_ptr<HHDFHwDef> definition_;
    std::unique_ptr<iostreams::zip::ArchiveReader> archive_;
    std::map<FactKey, std::string> facts_;
    std::map<const char*, std::string> contents_;  // by directory record
    std::uint64_t leftBytes_;                      // that may still be unpacked
    std::uint64_t takenBytes_ = 0;                 // of memory, about
};
