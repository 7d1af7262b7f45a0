#include "platform/HUTCoreContainer.h"

#include <fcntl.h>

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <memory>
#include <optional>

#include "platform/Buffer.h"
#include "platform/HUTFile.h"
#include "platform/Progress.h"
#include "platform/ReplacementFile.h"
#include "platform/iostreams/Append.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/MemberReader.h"

namespace zip = iostreams::zip;
namespace fs = boost::filesystem;

namespace {

constexpr std::size_t bufferBytes = 128 * 1024;

/// What keeps a copy from being made; `what()` is the reason that the caller sees.
class CopyError : public HEXAll {
public:
    using HEXAll::HEXAll;
};

/// A path that lies inside an archive.
struct InArchive {
    std::string archive;
    std::string member;
};

bool isArchive(const std::string& path)
{
    try {
        zip::ArchiveReader::openIfExists(path);
        return true;
    } catch (const HEXAll&) {
        return false;
    }
}

/// Puts the component `name` in front of a member's name; false for "..", which leads out of an
/// archive as it leads out of no file.
bool prepend(const std::string& name, std::string& member)
{
    if (name == "..") {
        return false;
    }
    if (name != "." && !name.empty()) {
        member = member.empty() ? name : name + "/" + member;
    }
    return true;
}

/// Looks for the archive that the path lies in, from the nearest ancestor up: the first one that
/// exists decides.
std::optional<InArchive> locate(const std::string& path)
{
    std::string member;
    fs::path ancestor(path);
    while (ancestor.has_parent_path() && prepend(ancestor.filename().string(), member)) {
        ancestor = ancestor.parent_path();
        boost::system::error_code error;
        const fs::file_type type = fs::status(ancestor, error).type();
        if (type == fs::regular_file && !member.empty() && isArchive(ancestor.string())) {
            return InArchive{ancestor.string(), member};
        }
        if (type != fs::file_not_found && type != fs::status_error) {
            break;
        }
    }
    return {};
}

const zip::Entry& findMember(const zip::ArchiveReader& archive, const std::string& member)
{
    const zip::Entry* entry = archive.find(member);
    if (entry == nullptr) {
        throw CopyError(archive.path() + ": has no member \"" + member + "\"");
    }
    return *entry;
}

void checkOverwrite(const std::string& to, const std::optional<InArchive>& place)
{
    const bool exists =
        place ? zip::ArchiveReader(place->archive).find(place->member) != nullptr : HUTFile(to).mayExist();
    if (exists) {
        throw CopyError(to + ": exists already and must not be replaced");
    }
}

void makeParent(const std::string& path)
{
    const std::string parent = fs::path(path).parent_path().string();
    if (!HUTFile::ensureWritableDirectory(parent)) {
        throw CopyError(path + ": its directory can't be made or written to");
    }
}

void copyOnDisk(const std::string& from, const std::string& to)
{
    const platform::File source = platform::File::openRegular(from, O_RDONLY);
    makeParent(to);
    const auto mode = HUTFile(to).exists() ? std::optional<mode_t>() : source.mode() & 0777;
    platform::ReplacementFile target(to, platform::ReplacementFile::Links::FOLLOWED, mode);
    source.copyTo(target.file(), source.size(), 0, 0);
    target.commit();
}

void copyOut(const InArchive& from, const std::string& to)
{
    const zip::ArchiveReader archive(from.archive);
    zip::MemberReader member(archive, findMember(archive, from.member));
    makeParent(to);
    platform::ReplacementFile target(to);
    platform::Buffer buffer(bufferBytes);
    while (const std::size_t got = member.read(buffer.data(), buffer.size())) {
        target.file().write(buffer.data(), got);
    }
    target.commit();
}

void copyIn(const std::string& from, const InArchive& to)
{
    std::string reason;
    if (!zip::appendFile(from, to.member, to.archive, reason)) {
        throw CopyError(reason);
    }
}

void copyAcross(const InArchive& from, const InArchive& to)
{
    const zip::ArchiveReader archive(from.archive);
    std::string reason;
    if (!zip::appendMember(archive, findMember(archive, from.member), to.member, to.archive, reason)) {
        throw CopyError(reason);
    }
}

void copy(const std::string& from, const std::string& to, bool overwrite)
{
    const std::optional<InArchive> source = locate(from);
    const std::optional<InArchive> target = locate(to);
    if (!overwrite) {
        checkOverwrite(to, target);
    }
    if (source && target) {
        copyAcross(*source, *target);
    } else if (source) {
        copyOut(*source, to);
    } else if (target) {
        copyIn(from, *target);
    } else {
        copyOnDisk(from, to);
    }
}

}  // namespace

bool HUTCoreContainer::hasParentCoreContainer(const std::string& path, bool)
{
    return locate(path).has_value();
}

bool HUTCoreContainer::contains(const std::string& path)
{
    const std::optional<InArchive> place = locate(path);
    return place && zip::is_file(place->member, place->archive);
}

bool HUTCoreContainer::cp(const std::string& from, const std::string& to, bool overwrite, std::string* reason)
{
    try {
        copy(from, to, overwrite);
        return true;
    } catch (const platform::Cancelled&) {
        throw;  // a call that this one is part of ends
    } catch (const HEXAll& error) {
        if (reason != nullptr) {
            *reason = error.what();
        }
    } catch (const fs::filesystem_error& error) {
        if (reason != nullptr) {
            *reason = error.what();
        }
    }
    return false;
}
