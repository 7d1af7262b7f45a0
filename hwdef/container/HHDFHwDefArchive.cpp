#include "hwdef/container/HHDFHwDefArchive.h"

#include <array>
#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <chrono>
#include <map>
#include <string_view>

#include "hwdef/container/Extraction.h"
#include "hwdef/container/SafePath.h"
#include "platform/ArchiveDigest.h"
#include "platform/HEXAll.h"
#include "platform/HUTFile.h"
#include "platform/ProgressWork.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/ArchiveWriter.h"
#include "platform/iostreams/EndRecord.h"
#include "platform/iostreams/LittleEndian.h"
#include "platform/iostreams/MemberReader.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::ArchiveWriter;
using iostreams::zip::Entry;
using platform::ArchiveDigest;

namespace {

/// The MS-DOS date and time of a directory record (APPNOTE 4.4.6), whose parts may be anything: a day or
/// month of 0 counts back from 1.
std::int64_t modifiedOf(const Entry& entry)
{
    constexpr std::size_t timeOffset = 12;  // in the record, APPNOTE 4.3.12
    const std::uint32_t time = iostreams::zip::load16(entry.record.data() + timeOffset);
    const std::uint32_t date = iostreams::zip::load16(entry.record.data() + timeOffset + 2);
    using namespace std::chrono;
    const year_month_day first = year(1980 + static_cast<int>(date >> 9)) / January / 1;
    const sys_days month = sys_days(first + months(static_cast<int>((date >> 5) & 0xf) - 1));
    const seconds moment = (month + days(static_cast<int>(date & 0x1f) - 1)).time_since_epoch() +
                           hours(time >> 11) + minutes((time >> 5) & 0x3f) + seconds(2 * (time & 0x1f));
    return moment.count();
}

}  // namespace

class HHDFHwDefArchive::Impl {
public:
    explicit Impl(const std::string& path) : reader_(path), comment_(reader_.endRecord().comment)
    {
        for (const Entry& entry : reader_.entries()) {
            if (reader_.find(entry.name)->record.data() == entry.record.data()) {
                places_.emplace(entry.name, members_.size());
                members_.push_back({std::string(entry.name), entry.size, entry.compressedSize, entry.crc,
                                    modifiedOf(entry)});
            }
        }
    }

    const Entry& entry(const std::string& name) const
    {
        const Entry* const found = reader_.find(name);
        if (found == nullptr) {
            throw HEXAll(reader_.path() + ": there is no member \"" + name + "\"");
        }
        return *found;
    }

    void extract(const Entry& entry, const std::string& directory) const
    {
        const std::string dir = directory.empty() ? "." : directory;
        const std::string name(entry.name);
        const std::string objection = SafePath(dir).objection(name);
        if (!objection.empty()) {
            throw HEXAll(dir + ": member \"" + name + "\" is not extracted: " + objection);
        }
        const std::string target = dir + HUTFile::getDirSeparator() + name;
        const std::string parent = boost::filesystem::path(target).parent_path().string();
        if (!HUTFile::ensureWritableDirectory(parent)) {
            throw HEXAll(parent + " is no directory that can be written to");
        }
        extractMember(reader_, entry, target, platform::ReplacementFile::Links::REPLACED);
    }

    ArchiveReader reader_;
    std::string comment_;
    std::vector<Member> members_;
    std::map<std::string_view, std::size_t> places_;  // of the names, in the members
};

namespace {

void add(ArchiveWriter& archive, const std::string& path, const HHDFHwDefArchive::Part& part,
         const ArchiveReader* present, const Entry* entry)
{
    std::string reason;
    const bool isAdded = entry == nullptr ? archive.addFile(part.file, part.name, reason)
                                          : archive.addMember(*present, *entry, part.name, reason,
                                                              iostreams::zip::Origin::KEPT);
    if (!isAdded) {
        throw HEXAll(path + ": member \"" + part.name + "\" can't be added: " + reason);
    }
}

/// Tells who watches how much there is to pack.
void expectParts(std::uint64_t frontBytes, const std::vector<HHDFHwDefArchive::Part>& parts,
                 const HHDFHwDefArchive* present)
{
    if (!platform::ProgressWork::isWatched()) {
        return;
    }
    platform::ProgressWork::expect(frontBytes);
    for (const HHDFHwDefArchive::Part& part : parts) {
        const auto* const member = present == nullptr ? nullptr : present->find(part.name);
        boost::system::error_code error;
        const std::uint64_t bytes = !part.file.empty()  ? boost::filesystem::file_size(part.file, error)
                                    : member != nullptr ? member->packedBytes
                                                        : 0;
        platform::ProgressWork::expect(error ? 0 : bytes);
    }
}

}  // namespace

class HHDFHwDefArchive::Content::Impl {
public:
    iostreams::zip::MemberReader reader_;
    std::array<char, 64 * 1024> buffer_;
};

HHDFHwDefArchive::Content::Content() : impl_(std::make_unique<Impl>()) {}

HHDFHwDefArchive::Content::~Content() = default;

void HHDFHwDefArchive::Content::open(const HHDFHwDefArchive& archive, const std::string& name)
{
    impl_->reader_.open(archive.impl_->reader_, archive.impl_->entry(name));
}

std::string_view HHDFHwDefArchive::Content::next()
{
    return {impl_->buffer_.data(), impl_->reader_.read(impl_->buffer_.data(), impl_->buffer_.size())};
}

HHDFHwDefArchive::HHDFHwDefArchive(const std::string& path) : impl_(std::make_unique<Impl>(path)) {}

HHDFHwDefArchive::~HHDFHwDefArchive() = default;

const std::vector<HHDFHwDefArchive::Member>& HHDFHwDefArchive::members() const
{
    return impl_->members_;
}

const HHDFHwDefArchive::Member* HHDFHwDefArchive::find(const std::string& name) const
{
    const auto place = impl_->places_.find(name);
    return place == impl_->places_.end() ? nullptr : &impl_->members_[place->second];
}

std::string HHDFHwDefArchive::comment() const
{
    return std::string(ArchiveDigest::withoutDigest(impl_->comment_));
}

bool HHDFHwDefArchive::hasDigest() const
{
    return !ArchiveDigest::recordedIn(impl_->comment_).empty();
}

std::uint64_t HHDFHwDefArchive::bytesInFront() const
{
    return impl_->reader_.membersBegin();
}

std::uint64_t HHDFHwDefArchive::bytesBehind() const
{
    return impl_->reader_.file().size() - impl_->reader_.endRecord().end;
}

void HHDFHwDefArchive::extract(const std::string& name, const std::string& dir) const
{
    const platform::ProgressWork work(impl_->reader_.path());
    const Entry& entry = impl_->entry(name);
    platform::ProgressWork::expect(entry.size);
    impl_->extract(entry, dir);
}

std::vector<HHDFHwDefArchive::Failure> HHDFHwDefArchive::extractAll(const std::vector<std::string>& names,
                                                                    const std::string& dir) const
{
    const platform::ProgressWork work(impl_->reader_.path());
    std::uint64_t leftBytes = 0;
    for (const std::string& name : names) {
        const Member* const member = find(name);
        leftBytes += member == nullptr ? 0 : member->sizeBytes;
    }
    platform::ProgressWork::expect(leftBytes);
    std::vector<Failure> failures;
    for (const std::string& name : names) {
        try {
            const Entry& entry = impl_->entry(name);
            leftBytes -= entry.size;
            impl_->extract(entry, dir);
        } catch (const platform::Cancelled&) {
            throw;
        } catch (const HEXAll& error) {
            failures.push_back({name, error.what()});
            platform::ProgressWork::expectLast(leftBytes);
        }
    }
    return failures;
}

void HHDFHwDefArchive::write(const std::string& path, const std::vector<Part>& parts,
                             const HHDFHwDefArchive* present, const std::string& comment, bool attachDigest)
{
    const platform::ProgressWork work(path);
    const ArchiveReader* const reader = present == nullptr ? nullptr : &present->impl_->reader_;
    expectParts(reader == nullptr ? 0 : reader->membersBegin(), parts, present);
    ArchiveWriter archive(path, attachDigest ? ArchiveWriter::Digest::ATTACHED : ArchiveWriter::Digest::NONE);
    if (reader != nullptr) {
        archive.keepFront(*reader);
    }
    for (const Part& part : parts) {
        if (part.file.empty() && reader == nullptr) {
            throw HEXAll(path + ": member \"" + part.name + "\" can't be added: it has no source");
        }
        const Entry* const entry = part.file.empty() ? &present->impl_->entry(part.name) : nullptr;
        add(archive, path, part, reader, entry);
    }
    archive.setComment(comment);
    archive.commit();
}
