#include "hwdef/container/Extraction.h"

#include <fcntl.h>

#include "platform/ProgressWork.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::Entry;

namespace {

constexpr std::size_t bufferBytes = 128 * 1024;

}  // namespace

MemberExtractor::MemberExtractor() : buffer_(bufferBytes) {}

void MemberExtractor::extract(const ArchiveReader& archive, const Entry& entry, const std::string& target,
                              Links links)
{
    platform::ReplacementFile file(target, links);
    stream(archive, entry, file.file());
    file.commit();
}

void MemberExtractor::stream(const ArchiveReader& archive, const Entry& entry, const platform::File& target)
{
    content_.open(archive, entry);
    while (const std::size_t count = content_.read(buffer_.data(), buffer_.size())) {
        target.write(buffer_.data(), count);
    }
}

void MemberExtractor::check(const ArchiveReader& archive, const Entry& entry)
{
    content_.open(archive, entry);
    while (content_.read(buffer_.data(), buffer_.size()) > 0) {
    }
}

void extractMember(const ArchiveReader& archive, const Entry& entry, const std::string& target,
                   platform::ReplacementFile::Links links)
{
    MemberExtractor().extract(archive, entry, target, links);
}

void streamMember(const ArchiveReader& archive, const Entry& entry, const platform::File& target)
{
    MemberExtractor().stream(archive, entry, target);
}

void checkMember(const ArchiveReader& archive, const Entry& entry)
{
    MemberExtractor().check(archive, entry);
}

void copyFile(const std::string& source, const std::string& target)
{
    const platform::File from = platform::File::openRegular(source, O_RDONLY);
    platform::ReplacementFile file(target, platform::ReplacementFile::Links::REPLACED, from.mode() & 0777);
    platform::ProgressWork::copyInSteps(source, from.size(), [&](std::uint64_t offset, std::uint64_t size) {
        from.copyTo(file.file(), size, offset, offset);
    });
    file.commit();
}
