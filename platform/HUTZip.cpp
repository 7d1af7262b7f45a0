#include "platform/HUTZip.h"

#include <fcntl.h>

#include <algorithm>
#include <limits>

#include "platform/ArchiveDigest.h"
#include "platform/HUTFile.h"
#include "platform/ProgressWork.h"
#include "platform/ReplacementFile.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/ArchiveWriter.h"
#include "platform/iostreams/EndRecord.h"
#include "platform/iostreams/ZipException.h"

namespace zip = iostreams::zip;

namespace {

/// The member's name for a file: its path without leading separators (APPNOTE 4.4.17), or its last
/// component.
std::string memberName(const std::string& file, std::uint32_t options)
{
    if ((options & HUTZip::ZIP_NAME_ONLY) != 0) {
        return std::string(HUTFile(file).name());
    }
    return file.substr(std::min(file.find_first_not_of('/'), file.size()));
}

/// The old comment with room for a new digest at its end.
std::string commentForDigest(const std::string& archive, const std::string& comment)
{
    std::string result(platform::ArchiveDigest::withoutDigest(comment));
    result += platform::ArchiveDigest::MARK;
    result.append(platform::ArchiveDigest::DIGITS, '0');
    if (result.size() > std::numeric_limits<std::uint16_t>::max()) {
        throw zip::archiveError(archive, "its comment of " + std::to_string(comment.size()) +
                                             " bytes leaves no room for a digest");
    }
    return result;
}

void writeDigested(const std::string& path)
{
    const zip::ArchiveReader reader(path);
    zip::EndRecord end = reader.endRecord();
    end.comment = commentForDigest(path, end.comment);
    std::string record;
    zip::appendEndRecord(record, end);

    platform::ReplacementFile target(path);
    reader.file().copyTo(target.file(), end.position, 0, 0);
    target.file().writeAt(record.data(), record.size(), end.position);
    const std::uint64_t covered = end.position + record.size() - platform::ArchiveDigest::DIGITS;
    const std::string digits = platform::ArchiveDigest::ofFile(target.file(), covered);
    target.file().writeAt(digits.data(), digits.size(), covered);
    target.commit();
}

int compareDigest(const std::string& path)
{
    const platform::File file = platform::File::openRegular(path, O_RDONLY);
    const zip::EndRecord end = zip::findEndRecord(file);
    const std::string_view recorded = platform::ArchiveDigest::recordedIn(end.comment);
    if (recorded.empty()) {
        return HUTZip::NO_DIGEST;
    }
    const std::uint64_t covered = end.end - platform::ArchiveDigest::DIGITS;
    const bool same = end.end == file.size() && platform::ArchiveDigest::ofFile(file, covered) == recorded;
    return same ? HUTZip::INTACT : HUTZip::WRONG_DIGEST;
}

}  // namespace

void HUTZip::compress(const HUTFile& archive, const std::string& file, std::uint32_t options)
{
    const std::string& path = archive.path();
    if ((options & ZIP_REPLACE) == 0 && archive.mayExist()) {
        throw zip::archiveError(path, "exists already and must not be replaced");
    }
    zip::ArchiveWriter writer(path);
    std::string reason;
    if (!writer.addFile(file, memberName(file, options), reason)) {
        throw zip::archiveError(path, reason);
    }
    writer.commit();
}

void HUTZip::attachDigest(const HUTFile& archive)
{
    try {
        writeDigested(archive.path());
    } catch (const platform::FileError& error) {
        throw zip::archiveError(archive.path(), error);
    }
}

int HUTZip::checkIntegrity(const HUTFile& archive)
{
    const platform::ProgressWork work(archive.path());
    try {
        return compareDigest(archive.path());
    } catch (const platform::Cancelled&) {
        return CANCELLED;
    } catch (const HEXAll&) {
        return UNREADABLE;
    }
}

bool HUTZip::containsFile(const HUTFile& archive, const std::string& member)
{
    return zip::is_file(member, archive.path());
}
