#include "platform/iostreams/ArchiveWriter.h"

#include <limits>
#include <map>
#include <string>

#include "platform/ArchiveDigest.h"
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
    bool contains(std::string_view name) const { return index_.find(name) != RecordIndex::NONE; }
    bool add(NewMember& member, std::string& reason);
    void commit();

    std::string path_;
    std::string comment_;

private:
    void makeWay(std::size_t oldRecord, Entry& entry);
    void writeDirectory(EndRecord& end);

    platform::ReplacementFile target_;
    BufferedOutput out_;
    const bool attachesDigest_;
    std::string directory_;                       ///< the records, dropped ones included
    std::map<std::size_t, std::size_t> dropped_;  ///< position and size of records in `directory_`
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

bool ArchiveWriter::Impl::add(NewMember& member, std::string& reason)
{
    const std::uint64_t begin = out_.position();
    try {
        Entry entry = member.write(out_);
        std::size_t& record = index_.placeOf(entry.name);
        if (record != RecordIndex::NONE) {
            makeWay(record, entry);
        }
        record = directory_.size();
        appendDirectoryRecord(directory_, entry, entry.headerOffset);
        return true;
    } catch (const SourceError& error) {
        out_.rewind(begin);
        reason = error.what();
        return false;
    }
}

/// Drops the member that the one just written replaces, and its bytes as well when it was the last.
void ArchiveWriter::Impl::makeWay(std::size_t oldRecord, Entry& entry)
{
    const Entry old = parseDirectoryRecord(std::string_view(directory_).substr(oldRecord), 0, path_);
    const std::uint64_t end = old.headerOffset + localHeaderLength(old) + old.compressedSize;
    dropped_.emplace(oldRecord, old.record.size());
    if (end == entry.headerOffset) {
        out_.removeStretch(old.headerOffset, end);
        entry.headerOffset = old.headerOffset;
    }
}

void ArchiveWriter::Impl::writeDirectory(EndRecord& end)
{
    end.directoryOffset = out_.position();
    std::size_t from = 0;
    for (const auto& [record, size] : dropped_) {
        out_.write(std::string_view(directory_).substr(from, record - from));
        from = record + size;
    }
    out_.write(std::string_view(directory_).substr(from));
    end.directorySize = out_.position() - end.directoryOffset;
    end.entryCount = index_.size();
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
    writeDirectory(end);
    if (attachesDigest_) {
        const std::uint64_t covered = out_.position() - platform::ArchiveDigest::DIGITS;
        out_.overwrite(covered, out_.digest(covered));
    }
    out_.flush();
    // A member that was taken back may have left more bytes than those that took its place.
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
