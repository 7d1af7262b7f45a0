#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/File.h"
#include "platform/iostreams/Entry.h"
#include "platform/iostreams/zip.h"

namespace iostreams::zip {

/// An archive open for reading: its file and its directory. Opening reads the tail and the
/// directory, nothing else.
class ArchiveReader {
public:
    /// Throws zip_exception when the path isn't a regular file or can't be read as an archive.
    explicit ArchiveReader(const std::string& path);
    ~ArchiveReader();
    ArchiveReader(const ArchiveReader&) = delete;
    ArchiveReader& operator=(const ArchiveReader&) = delete;

    /// The archive, or null when nothing exists at the path; throws as the constructor does.
    static std::unique_ptr<ArchiveReader> openIfExists(const std::string& path);

    /// Another number for each reader of this process, so that bytes kept from one are never taken
    /// for those of another that stands at the same address.
    std::uint64_t serial() const { return serial_; }
    const std::string& path() const;
    const platform::File& file() const;
    /// All listed members in directory order, a name that is listed twice included twice.
    const std::vector<Entry>& entries() const;
    /// The member of that exact name, the last one when it is listed twice; null when there is none.
    /// The first call may cost a walk over the directory; the index it leaves serves the others.
    const Entry* find(std::string_view name) const;

    /// The member's whole content in memory; throws zip_exception when it can't be read or is larger
    /// than `limitBytes` by its declared or its true size.
    std::string read(const Entry& entry, std::uint64_t limitBytes) const;

private:
    inline static std::atomic<std::uint64_t> opened_{0};
    const std::uint64_t serial_ = ++opened_;

    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace iostreams::zip
