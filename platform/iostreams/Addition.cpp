#include "platform/iostreams/Addition.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ArchiveDigest.h"
#include "platform/ReplacementFile.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/EndRecord.h"
#include "platform/iostreams/EntryHeaders.h"
#include "platform/iostreams/LittleEndian.h"
#include "platform/iostreams/ZipException.h"

namespace iostreams::zip {

namespace {

/// Room for the directory record of a new member beside its name, and for the end records beside the
/// comment, zip64 forms included.
constexpr std::uint64_t recordRoom = DIRECTORY_HEADER_BYTES + 4 + 3 * 8;
constexpr std::uint64_t endRoom = ZIP64_END_RECORD_BYTES + ZIP64_LOCATOR_BYTES + END_RECORD_BYTES;

/// What an addition keeps of the archive that it adds to.
struct OldArchive {
    EndRecord end;
    std::string_view records;            ///< the whole directory; lives as long as the archive's reader
    std::uint64_t directory = 0;         ///< its position in the file
    std::uint64_t membersEnd = 0;        ///< where the data of the last member ends, at most `directory`
    std::vector<std::string_view> kept;  ///< records of all members that stay, in stretches
    std::uint64_t keptBytes = 0;
    std::uint64_t keptCount = 0;
    bool inPlace = false;  ///< the file itself can be worked on

    /// Where the end records begin.
    std::uint64_t tail() const { return directory + records.size(); }
};

/// Where the data of a member ends, its descriptor included; nothing when its local header isn't the one
/// that the directory tells of: what it says of its own length can't be relied on then.
std::optional<std::uint64_t> dataEnd(const ArchiveReader& reader, const Entry& entry)
{
    std::array<char, LOCAL_HEADER_BYTES> fixed = {};
    reader.file().readAt(fixed.data(), fixed.size(), entry.headerOffset);
    std::string header(localHeaderLength(std::string_view(fixed.data(), fixed.size())), '\0');
    header.resize(reader.file().readAt(header.data(), header.size(), entry.headerOffset));
    const std::uint64_t descriptor = (entry.flags & FLAG_DESCRIPTOR) != 0 ? LONGEST_DESCRIPTOR_BYTES : 0;
    try {
        return entry.headerOffset + checkLocalHeader(header, entry, reader.path()) + entry.compressedSize +
               descriptor;
    } catch (const zip_exception&) {
        return {};
    }
}

/// Where new data may begin: an addition that was interrupted leaves bytes that belong to no member
/// between the last one and the directory.
std::uint64_t findMembersEnd(const ArchiveReader& reader, std::uint64_t directory)
{
    const std::optional<Entry> last = reader.directory().lastMember();
    return last ? std::min(dataEnd(reader, *last).value_or(directory), directory) : directory;
}

/// Whether the old state can be found whatever happens on the way. The file must begin with a member:
/// a program in front may have its length counted in the offsets, and then nothing tells where it ends.
bool canStayInPlace(const ArchiveReader& reader, const EndRecord& end)
{
    std::array<char, 4> first = {};
    reader.file().readAt(first.data(), first.size(), 0);
    return end.prefixSize == 0 && end.entryCount != 0 && load32(first.data()) == LOCAL_HEADER_SIGNATURE;
}

/// Lists the records that stay: all but those of the name that is replaced.
void listKept(OldArchive& old, std::string_view replaced)
{
    const auto keep = [&](std::string_view stretch) {
        old.kept.push_back(stretch);
        old.keptBytes += stretch.size();
    };
    old.keptCount = old.end.entryCount;
    std::size_t begin = 0;
    std::size_t at = 0;
    while (at < old.records.size()) {
        const std::string_view record = old.records.substr(at);
        const std::size_t behind = at + directoryRecordLength(record);
        if (directoryRecordName(record) == replaced) {
            keep(old.records.substr(begin, at - begin));
            begin = behind;
            --old.keptCount;
        }
        at = behind;
    }
    keep(old.records.substr(begin));
}

OldArchive examine(const ArchiveReader& reader, std::string_view replaced)
{
    OldArchive old;
    old.end = reader.endRecord();
    // Where bytes stood behind it, the comment may hold what would now be the last end record.
    checkComment(reader.path(), old.end.comment);
    old.records = reader.directory().bytes();
    old.directory = reader.directory().position();
    listKept(old, replaced);
    old.inPlace = canStayInPlace(reader, old.end);
    // A digest covers those bytes as well: to restore a state that has one they would have to be kept.
    const bool mayReclaim = old.inPlace && platform::ArchiveDigest::recordedIn(old.end.comment).empty();
    old.membersEnd = mayReclaim ? findMembersEnd(reader, old.directory) : old.directory;
    return old;
}

std::uint64_t maxTailBytes(const OldArchive& old, const NewMember& member)
{
    return old.keptBytes + recordRoom + member.name().size() + endRoom + old.end.comment.size();
}

/// Writes the member, the directory and the end record; nothing of the old archive that is kept lies
/// where the output writes.
void writeNewState(BufferedOutput& out, const OldArchive& old, NewMember& member)
{
    const Entry entry = member.write(out);
    EndRecord end;
    end.prefixSize = old.end.prefixSize;
    end.directoryOffset = out.position() - end.prefixSize;
    end.entryCount = old.keptCount + 1;
    end.comment = platform::ArchiveDigest::withoutDigest(old.end.comment);
    std::string record;
    appendDirectoryRecord(record, entry, entry.headerOffset - end.prefixSize);
    end.directorySize = old.keptBytes + record.size();
    appendEndRecord(record, end);
    for (const std::string_view stretch : old.kept) {
        out.write(stretch);
    }
    out.write(record);
    out.flush();
}

/// One addition to an archive in place.
class InPlace {
public:
    InPlace(platform::File& file, const OldArchive& old) : file_(file), old_(old) {}

    void add(NewMember& member);

private:
    std::uint64_t protectOldState(std::uint64_t newEnd);
    void restore() noexcept;

    platform::File& file_;
    const OldArchive& old_;
    std::string tail_;  ///< what stood behind the directory: the end records
    bool copyIsWhole_ = false;
};

void InPlace::add(NewMember& member)
{
    const std::uint64_t start = old_.membersEnd;
    if (file_.size() > old_.end.end) {
        file_.truncate(old_.end.end);
    }
    try {
        const std::uint64_t limit = protectOldState(start + member.maxBytes() + maxTailBytes(old_, member));
        BufferedOutput out(file_, start, limit);
        writeNewState(out, old_, member);
        file_.truncate(out.position());
    } catch (...) {
        restore();
        throw;
    }
}

/// Sees to it that directory and end record of the old state stand behind `newEnd`, and returns where.
std::uint64_t InPlace::protectOldState(std::uint64_t newEnd)
{
    if (newEnd <= old_.directory) {
        return old_.directory;
    }
    tail_.resize(static_cast<std::size_t>(old_.end.end - old_.tail()));
    if (file_.readAt(tail_.data(), tail_.size(), old_.tail()) < tail_.size()) {
        throw platform::FileError(file_.path(), "read the end record (the file ends early)", EIO);
    }
    EndRecord end = old_.end;
    end.directoryOffset = std::max(newEnd, old_.end.end);
    end.comment = platform::ArchiveDigest::withoutDigest(end.comment);
    // In one piece: an end record that is missing yet would make all of it bytes of no use.
    std::string copy;
    copy.reserve(old_.records.size() + endRoom + end.comment.size());
    copy += old_.records;
    appendEndRecord(copy, end);
    file_.writeAt(copy.data(), copy.size(), end.directoryOffset);
    copyIsWhole_ = true;
    return end.directoryOffset;
}

/// Puts the old bytes and length back. The copy of the old state goes last, so that it serves as the
/// archive for as long as the original isn't whole, and for ever when that can't be made whole.
void InPlace::restore() noexcept
{
    try {
        if (copyIsWhole_) {
            file_.writeAt(old_.records.data(), old_.records.size(), old_.directory);
            file_.writeAt(tail_.data(), tail_.size(), old_.tail());
        }
        file_.truncate(old_.end.end);
    } catch (...) {
        // The error that led here is the one to report, be it of the file or a want of memory; the file
        // holds the old state in any case.
    }
}

/// Writes the archive anew with the member, keeping all bytes of `source` in front of `old.membersEnd`,
/// and puts it in place.
void addToCopy(const std::string& archive, const platform::File* source, const OldArchive& old,
               NewMember& member)
{
    platform::ReplacementFile target(archive);
    if (source != nullptr) {
        source->copyTo(target.file(), old.membersEnd, 0, 0);
    }
    BufferedOutput out(target.file(), old.membersEnd);
    writeNewState(out, old, member);
    target.file().truncate(out.position());
    target.commit();
}

}  // namespace

void addToArchive(const std::string& archive, NewMember& member)
{
    try {
        const auto reader = ArchiveReader::openIfExists(archive);
        if (!reader) {
            addToCopy(archive, nullptr, {}, member);
            return;
        }
        platform::File file = platform::File::openRegular(archive, O_RDWR);
        const OldArchive old = examine(*reader, member.name());
        if (old.inPlace && !member.isReadFrom(file)) {
            InPlace(file, old).add(member);
        } else {
            addToCopy(archive, &file, old, member);
        }
    } catch (const platform::FileError& error) {
        throw archiveError(archive, error);
    }
}

}  // namespace iostreams::zip
