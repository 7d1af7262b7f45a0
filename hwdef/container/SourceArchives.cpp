#include "hwdef/container/SourceArchives.h"

#include <boost/filesystem/operations.hpp>

#include "hwdef/container/MemberEntry.h"
#include "platform/HUTFile.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::Entry;

namespace {

/// Entries usually come from one container; a merged definition of many must not run out of
/// descriptors.
constexpr std::size_t maxOpenArchives = 64;

std::string otherDriverName(const std::string& name)
{
    const std::string top = "drivers" + HUTFile::getDirSeparator();
    return name.compare(0, top.size(), top) == 0 ? name.substr(top.size()) : top + name;
}

}  // namespace

const ArchiveReader* SourceArchives::open(const std::string& path, std::string& reason)
{
    auto found = opened_.find(path);
    if (found == opened_.end()) {
        if (opened_.size() >= maxOpenArchives) {
            opened_.clear();
        }
        Opened opened;
        try {
            opened.reader = ArchiveReader::openIfExists(path);
        } catch (const HEXAll& error) {
            opened.reason = error.what();
        }
        found = opened_.emplace(path, std::move(opened)).first;
    }
    reason = found->second.reason;
    return found->second.reader.get();
}

std::uint64_t sourceBytes(SourceArchives& archives, const MemberEntry& member, bool asStored)
{
    const std::string path = member.archive();
    if (path.empty()) {
        boost::system::error_code error;
        const std::uintmax_t size = boost::filesystem::file_size(member.diskPath(), error);
        return error ? 0 : size;
    }
    std::string reason;
    const ArchiveReader* archive = archives.open(path, reason);
    const Entry* entry = archive == nullptr ? nullptr : findMember(*archive, member);
    if (entry == nullptr) {
        return 0;
    }
    return asStored ? entry->compressedSize : entry->size;
}

const Entry* findMember(const ArchiveReader& archive, const MemberEntry& member)
{
    return member.isDriver() ? findDriverFile(archive, member.name()) : archive.find(member.name());
}

const Entry* findDriverFile(const ArchiveReader& archive, const std::string& name)
{
    const Entry* entry = archive.find(name);
    return entry != nullptr ? entry : archive.find(otherDriverName(name));
}
