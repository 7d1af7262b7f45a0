#include "platform/iostreams/Directory.h"

#include <algorithm>
#include <new>

#include "platform/iostreams/EntryHeaders.h"
#include "platform/iostreams/ZipException.h"

namespace iostreams::zip {

namespace {

/// Small enough to be still in the processor's cache when its records are looked at.
constexpr std::size_t chunkBytes = 256 * 1024;

/// The least that a member takes in the file. Its local extra field isn't known before it is read.
std::uint64_t leastLength(const Entry& entry)
{
    return LOCAL_HEADER_BYTES + entry.name.size() + entry.compressedSize;
}

/// A member's place, for the search of overlaps.
struct Extent {
    std::uint64_t begin;
    std::uint64_t end;
    std::size_t record;  // offset in the directory
};

std::unique_ptr<char[]> allocate(std::size_t size, const std::string& archive)
{
    try {
        return std::make_unique_for_overwrite<char[]>(size);
    } catch (const std::bad_alloc&) {
        throw archiveError(archive, "no memory for a directory of " + std::to_string(size) + " bytes");
    }
}

}  // namespace

/// Brings the directory's bytes in, a chunk at a time, just ahead of the records that are looked at.
class Directory::Loader {
public:
    Loader(const FileTail& tail, const Directory& directory) : tail_(tail), directory_(directory) {}

    /// The bytes from `offset` on: at least one whole record, or all that is left.
    std::string_view recordAt(std::size_t offset)
    {
        for (;;) {
            const std::string_view there(directory_.bytes_.get() + offset, loaded_ - offset);
            const std::size_t length = directoryRecordLength(there);
            if ((length != 0 && length <= there.size()) || loaded_ == directory_.size_) {
                return there;
            }
            const std::size_t chunk = std::min(chunkBytes, directory_.size_ - loaded_);
            tail_.read(directory_.bytes_.get() + loaded_, chunk, directory_.position_ + loaded_);
            loaded_ += chunk;
        }
    }

private:
    const FileTail& tail_;
    const Directory& directory_;
    std::size_t loaded_ = 0;
};

Directory::Directory(const FileTail& tail, const EndRecord& end)
    : archive_(tail.file().path()),
      prefixSize_(end.prefixSize),
      position_(end.prefixSize + end.directoryOffset),
      entryCount_(end.entryCount),
      size_(static_cast<std::size_t>(end.directorySize)),
      bytes_(allocate(size_, archive_))
{
    Loader loader(tail, *this);
    std::size_t offset = 0;
    std::uint64_t lastEnd = 0;
    bool ordered = true;
    for (std::uint64_t count = 0; count < entryCount_; ++count) {
        const Entry entry = parseDirectoryRecord(loader.recordAt(offset), prefixSize_, archive_);
        checkPlace(entry);
        ordered = ordered && entry.headerOffset >= lastEnd;
        lastMember_ = offset;
        lastEnd = entry.headerOffset + leastLength(entry);
        offset += entry.record.size();
    }
    if (offset != size_) {
        throw archiveError(archive_, "the directory's " + std::to_string(entryCount_) + " records have " +
                                         std::to_string(offset) + " bytes, the end record says " +
                                         std::to_string(size_));
    }
    if (!ordered) {
        checkOverlaps();
    }
}

void Directory::checkPlace(const Entry& entry) const
{
    if (entry.compressedSize > position_ || entry.headerOffset > position_ ||
        leastLength(entry) > position_ - entry.headerOffset) {
        throw memberError(archive_, entry.name,
                          std::to_string(entry.compressedSize) + " bytes at " +
                              std::to_string(entry.headerOffset) + " don't fit before the directory at " +
                              std::to_string(position_));
    }
}

/// For members that don't lie in the directory's order.
void Directory::checkOverlaps()
{
    std::vector<Extent> extents;
    extents.reserve(static_cast<std::size_t>(entryCount_));
    for (std::size_t offset = 0; offset < size_;) {
        const Entry entry = entryAt(offset);
        extents.push_back({entry.headerOffset, entry.headerOffset + leastLength(entry), offset});
        offset += entry.record.size();
    }
    std::sort(extents.begin(), extents.end(),
              [](const Extent& left, const Extent& right) { return left.begin < right.begin; });
    sortedOffsets_.reserve(extents.size());
    for (std::size_t at = 0; at < extents.size(); ++at) {
        if (at > 0 && extents[at].begin < extents[at - 1].end) {
            throw memberError(archive_, entryAt(extents[at].record).name,
                              "begins at " + std::to_string(extents[at].begin) + ", inside member " +
                                  quoted(entryAt(extents[at - 1].record).name) + ", which ends at " +
                                  std::to_string(extents[at - 1].end) + " or later");
        }
        sortedOffsets_.push_back(extents[at].begin);
    }
    lastMember_ = extents.back().record;
}

Entry Directory::entryAt(std::size_t offset) const
{
    return parseDirectoryRecord(bytes().substr(offset), prefixSize_, archive_);
}

std::optional<Entry> Directory::lastMember() const
{
    return size_ == 0 ? std::nullopt : std::optional<Entry>(entryAt(lastMember_));
}

std::optional<Entry> Directory::find(std::string_view name) const
{
    std::optional<std::size_t> last;
    for (std::size_t offset = 0; offset < size_;) {
        const std::string_view record = bytes().substr(offset);
        if (directoryRecordName(record) == name) {
            last = offset;
        }
        offset += directoryRecordLength(record);
    }
    return last ? std::optional<Entry>(entryAt(*last)) : std::nullopt;
}

std::uint64_t Directory::dataLimit(const Entry& entry) const
{
    if (sortedOffsets_.empty()) {
        const auto next = static_cast<std::size_t>(entry.record.data() + entry.record.size() - bytes_.get());
        return next == size_ ? position_ : entryAt(next).headerOffset;
    }
    const auto next = std::upper_bound(sortedOffsets_.begin(), sortedOffsets_.end(), entry.headerOffset);
    return next == sortedOffsets_.end() ? position_ : *next;
}

}  // namespace iostreams::zip
