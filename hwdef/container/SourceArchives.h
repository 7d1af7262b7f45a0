#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "platform/iostreams/ArchiveReader.h"

class MemberEntry;

/// The containers that one operation reads members from, each opened once.
class SourceArchives {
public:
    /// The archive at `path`, open until the next call; null when it can't be had: `reason` then
    /// says why, and is empty when nothing exists there.
    const iostreams::zip::ArchiveReader* open(const std::string& path, std::string& reason);

private:
    struct Opened {
        std::unique_ptr<iostreams::zip::ArchiveReader> reader;
        std::string reason;
    };
    std::unordered_map<std::string, Opened> opened_;
};

/// How many bytes the member has that an entry stands for, as they are stored or as unpacked; 0 when it
/// can't be had. For telling progress: nothing is reported.
std::uint64_t sourceBytes(SourceArchives& archives, const MemberEntry& member, bool asStored);

/// The member that an entry stands for; null when the archive has none.
///
/// A driver file without the leading "drivers" in its relative name is packed under that name but
/// listed in the BOM with the directory in front. So one that isn't found is looked for under the
/// other of its two names.
const iostreams::zip::Entry* findMember(const iostreams::zip::ArchiveReader& archive,
                                        const MemberEntry& member);
/// The same for a driver file by name.
const iostreams::zip::Entry* findDriverFile(const iostreams::zip::ArchiveReader& archive,
                                            const std::string& name);
