#include "platform/iostreams/EndRecordSearch.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <vector>

#include "platform/iostreams/Directory.h"
#include "platform/iostreams/EntryHeaders.h"
#include "platform/iostreams/LittleEndian.h"
#include "platform/iostreams/ZipException.h"

namespace iostreams::zip {

namespace {

constexpr std::size_t bufferBytes = 256 * 1024;
constexpr std::size_t signatureBytes = 4;
/// An interruption leaves the wanted record as one of the last ones; a file made to keep a reader busy
/// has millions.
constexpr int mostSignatures = 64 * 1024;
constexpr int mostDirectories = 64;
/// Small files may have as many bytes read as directories, all others twice their size.
constexpr std::uint64_t leastBytes = 1024 * 1024;

std::uint32_t signatureAt(const FileTail& tail, std::uint64_t position)
{
    std::array<char, signatureBytes> bytes = {};
    tail.read(bytes.data(), bytes.size(), position);
    return load32(bytes.data());
}

/// Walks back through a file from one place to the next that holds an end record's signature.
class SignatureWalk {
public:
    explicit SignatureWalk(const FileTail& tail) : tail_(tail), begin_(tail.fileSize())
    {
        append32(signature_, END_RECORD_SIGNATURE);
    }

    std::optional<std::uint64_t> next()
    {
        while (found_.empty()) {
            if (begin_ == 0) {
                return std::nullopt;
            }
            readFurtherInFront();
        }
        const std::uint64_t position = found_.back();
        found_.pop_back();
        return position;
    }

private:
    /// Searches the bytes in front of the buffer, together with the few at its start that may be the
    /// rest of a signature.
    void readFurtherInFront()
    {
        const std::string rest = buffer_.substr(0, signatureBytes - 1);
        buffer_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(bufferBytes, begin_)));
        begin_ -= buffer_.size();
        tail_.read(buffer_.data(), buffer_.size(), begin_);
        buffer_ += rest;
        // memmem is quick whatever the bytes, unlike a search for the signature's first one.
        const char* end = buffer_.data() + buffer_.size();
        for (const char* at = buffer_.data(); at < end; at += signatureBytes) {
            at = static_cast<const char*>(
                memmem(at, static_cast<std::size_t>(end - at), signature_.data(), signatureBytes));
            if (at == nullptr) {
                break;
            }
            found_.push_back(begin_ + static_cast<std::uint64_t>(at - buffer_.data()));
        }
    }

    const FileTail& tail_;
    std::string signature_;
    std::string buffer_;
    std::uint64_t begin_;               // of the buffer in the file
    std::vector<std::uint64_t> found_;  // in the buffer, and not yet told
};

/// Checks candidates, with a limit to the work that they may cause.
class Candidates {
public:
    explicit Candidates(const FileTail& tail)
        : tail_(tail), bytesLeft_(std::max(leastBytes, 2 * tail.fileSize()))
    {
    }

    /// The end record at `position` if all that it names is there.
    std::optional<EndRecord> check(std::uint64_t position)
    {
        --signaturesLeft_;
        try {
            EndRecord record = parseEndRecord(tail_, position);
            if (record.prefixSize != 0 || !mayBeFirst(record)) {
                return std::nullopt;
            }
            requireBudget(record.directorySize);
            requireMembers(Directory(tail_, record));
            readComment(tail_, position, record);
            return record;
        } catch (const zip_exception&) {
            return std::nullopt;
        }
    }

    bool mayGoOn() const { return signaturesLeft_ > 0 && directoriesLeft_ > 0; }

private:
    /// Whether the directory begins as one, the cheapest sign that the record is no accident.
    bool mayBeFirst(const EndRecord& record) const
    {
        return record.entryCount == 0
                   ? record.position == 0
                   : signatureAt(tail_, record.directoryOffset) == DIRECTORY_HEADER_SIGNATURE;
    }

    void requireBudget(std::uint64_t directorySize)
    {
        --directoriesLeft_;
        if (directorySize > bytesLeft_) {
            directoriesLeft_ = 0;
            throw archiveError(tail_.file().path(), "too many end records");
        }
        bytesLeft_ -= directorySize;
    }

    void requireMembers(const Directory& directory) const
    {
        for (std::size_t offset = 0; offset < directory.bytes().size();) {
            const Entry entry = directory.entryAt(offset);
            if (signatureAt(tail_, entry.headerOffset) != LOCAL_HEADER_SIGNATURE) {
                throw memberError(tail_.file().path(), entry.name, "no local header");
            }
            offset += entry.record.size();
        }
    }

    const FileTail& tail_;
    std::uint64_t bytesLeft_;
    int signaturesLeft_ = mostSignatures;
    int directoriesLeft_ = mostDirectories;
};

/// Whether the file begins as an archive does, which spares any other file the search.
bool beginsAsArchive(const FileTail& tail)
{
    if (tail.fileSize() < END_RECORD_BYTES) {
        return false;
    }
    const std::uint32_t signature = signatureAt(tail, 0);
    return signature == LOCAL_HEADER_SIGNATURE || signature == END_RECORD_SIGNATURE;
}

}  // namespace

EndRecord searchBackForEndRecord(const FileTail& tail)
{
    if (beginsAsArchive(tail)) {
        SignatureWalk walk(tail);
        Candidates candidates(tail);
        while (candidates.mayGoOn()) {
            const std::optional<std::uint64_t> position = walk.next();
            if (!position) {
                break;
            }
            if (std::optional<EndRecord> record = candidates.check(*position)) {
                return *record;
            }
        }
    }
    throw archiveError(tail.file().path(),
                       "no end of central directory record: no zip archive, or one cut off");
}

}  // namespace iostreams::zip
