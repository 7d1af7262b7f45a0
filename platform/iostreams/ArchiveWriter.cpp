#include "platform/iostreams/ArchiveWriter.h"

#include <limits>
#include <set>
#include <string>
#include <vector>

#include "platform/ArchiveDigest.h"
#include "platform/ProgressWork.h"
#include "platform/ReplacementFile.h"
#include "platform/iostreams/EndRecord.h"
#include "platform/iostreams/EntryHeaders.h"
#include "platform/iostreams/MemberCopier.h"
#include "platform/iostreams/MemberWriter.h"
#include "platform/iostreams/RecordIndex.h"
#include "platform/iostreams/ZipException.h"

namespace iostreams::zip {

/// The new archive as far as it is written. The two kinds of source are made when they are first
/// needed: each holds buffers that a run without such members can do without.
class ArchiveWriter::Impl {
public:
    Impl(const std::string& path, Digest digest);

    MemberWriter& files();
    MemberCopier& members();
    void keepFront(const ArchiveReader& archive);
    bool contains(std::string_view name) const { return index_.find(name) != RecordIndex::NONE; }
    bool add(NewMember& member, std::string& reason);
    void commit();

    std::string path_;
    std::string comment_;

private:
    void dropReplaced();
    void writeDirectory(EndRecord& end);

    platform::ReplacementFile target_;
    BufferedOutput out_;
    const bool attachesDigest_;
    std::string frontEnd_;          ///< the last bytes of what stands in front of the members
    std::uint64_t prefixSize_ = 0;  ///< bytes in front that stored offsets don't count
    std::string directory_;  ///< the records in the order of the members, until commit() replaced ones, too
    std::set<std::size_t> replaced_;  ///< where records of members that others replaced begin in `directory_`
    RecordIndex index_{directory_};
    std::unique_ptr<MemberWriter> files_;
    std::unique_ptr<MemberCopier> members_;
};

ArchiveWriter::Impl::Impl(const std::string& path, Digest digest)
    : path_(path), target_(path), out_(target_.file(), 0), attachesDigest_(digest == Digest::ATTACHED)
{
    if (attachesDigest_) {
        out_.startDigest();
    }
}

MemberWriter& ArchiveWriter::Impl::files()
{
    if (!files_) {
        files_ = std::make_unique<MemberWriter>();
    }
    return *files_;
}

MemberCopier& ArchiveWriter::Impl::members()
{
    if (!members_) {
        members_ = std::make_unique<MemberCopier>();
    }
    return *members_;
}

void ArchiveWriter::Impl::keepFront(const ArchiveReader& archive)
{
    prefixSize_ = archive.endRecord().prefixSize;
    const std::uint64_t sizeBytes = archive.membersBegin();
    if (sizeBytes >= ZIP64_LOCATOR_BYTES) {
        frontEnd_.resize(ZIP64_LOCATOR_BYTES);
        archive.file().readAt(frontEnd_.data(), frontEnd_.size(), sizeBytes - frontEnd_.size());
    }
    platform::ProgressWork::copyInSteps({}, sizeBytes, [&](std::uint64_t offset, std::uint64_t size) {
        out_.copyFrom(archive.file(), size, offset);
    });
}

bool ArchiveWriter::Impl::add(NewMember& member, std::string& reason)
{
    const std::uint64_t begin = out_.position();
    try {
        const Entry entry = member.write(out_);
        std::size_t& record = index_.placeOf(entry.name);
        if (record != RecordIndex::NONE) {
            replaced_.insert(record);
        }
        record = directory_.size();
        appendDirectoryRecord(directory_, entry, entry.headerOffset - prefixSize_);
        return true;
    } catch (const SourceError& error) {
        out_.rewind(begin);
        reason = error.what();
        return false;
    }
}

/// Takes the members that others replaced out of the archive and the directory.
void ArchiveWriter::Impl::dropReplaced()
{
    if (replaced_.empty()) {
        return;
    }
    const std::uint64_t end = out_.position();
    const auto entryAt = [&](std::size_t record) {
        return parseDirectoryRecord(std::string_view(directory_).substr(record), prefixSize_, path_);
    };
    std::vector<BufferedOutput::Stretch> gaps;
    std::string kept;
    std::uint64_t gapBytes = 0;
    for (std::size_t record = 0; record < directory_.size();) {
        const Entry entry = entryAt(record);
        const std::size_t next = record + entry.record.size();
        if (replaced_.contains(record)) {
            gaps.push_back({entry.headerOffset, next < directory_.size() ? entryAt(next).headerOffset : end});
            gapBytes += gaps.back().end - gaps.back().begin;
        } else {
            appendDirectoryRecord(kept, entry, entry.headerOffset - gapBytes - prefixSize_);
        }
        record = next;
    }
    out_.removeStretches(gaps);
    directory_ = std::move(kept);
}

void ArchiveWriter::Impl::writeDirectory(EndRecord& end)
{
    end.prefixSize = prefixSize_;
    end.directoryOffset = out_.position() - prefixSize_;
    out_.write(directory_);
    end.directorySize = directory_.size();
    end.entryCount = index_.size();
    checkInFront(path_, end, directory_.empty() ? frontEnd_ : directory_);
    std::string record;
    appendEndRecord(record, end);
    out_.hold();  // the digest in it comes last, and it may be too long for the buffer
    out_.write(record);
    out_.release();
}

void ArchiveWriter::Impl::commit()
{
    EndRecord end;
    end.comment = comment_;
    if (attachesDigest_) {
        end.comment += platform::ArchiveDigest::MARK + std::string(platform::ArchiveDigest::DIGITS, '0');
    }
    if (end.comment.size() > std::numeric_limits<std::uint16_t>::max()) {
        throw archiveError(path_,
                           "a comment of " + std::to_string(end.comment.size()) + " bytes is too long");
    }
    checkComment(path_, end.comment);
    dropReplaced();
    writeDirectory(end);
    if (attachesDigest_) {
        const std::uint64_t covered = out_.position() - platform::ArchiveDigest::DIGITS;
        out_.overwrite(covered, out_.digest(covered));
    }
    out_.flush();
    // Members that were taken back or replaced may have left more bytes than those that took their place.
    target_.file().truncate(out_.position());
    target_.commit();
}

ArchiveWriter::ArchiveWriter(const std::string& path, Digest digest)
try : impl_(std::make_unique<Impl>(path, digest)) {
} catch (const platform::FileError& error) {
    throw archiveError(path, error);
}

ArchiveWriter::~ArchiveWriter() = default;

void ArchiveWriter::setComment(std::string_view comment)
{
    impl_->comment_ = comment;
}

void ArchiveWriter::keepFront(const ArchiveReader& archive)
{
    try {
        impl_->keepFront(archive);
    } catch (const platform::FileError& error) {
        throw archiveError(impl_->path_, error);
    }
}

bool ArchiveWriter::contains(std::string_view name) const
{
    return impl_->contains(name);
}

bool ArchiveWriter::addFile(const std::string& source, const std::string& name, std::string& reason)
{
    try {
        impl_->files().openFile(source, name);
        return impl_->add(impl_->files(), reason);
    } catch (const SourceError& error) {
        reason = error.what();
        return false;
    } catch (const platform::FileError& error) {
        throw archiveError(impl_->path_, error);
    }
}

bool ArchiveWriter::addMember(const ArchiveReader& archive, const Entry& entry, const std::string& name,
                              std::string& reason, Origin origin)
{
    try {
        impl_->members().open(archive, entry, name, origin);
        return impl_->add(impl_->members(), reason);
    } catch (const SourceError& error) {
        reason = error.what();
        return false;
    } catch (const platform::FileError& error) {
        throw archiveError(impl_->path_, error);
    }
}

void ArchiveWriter::commit()
{
    try {
        impl_->commit();
    } catch (const platform::FileError& error) {
        throw archiveError(impl_->path_, error);
    }
}

}  // namespace iostreams::zip
