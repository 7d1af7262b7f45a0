#include "hwdef/container/Extraction.h"

#include <fcntl.h>

#include "platform/Buffer.h"
#include "platform/ProgressWork.h"
#include "platform/iostreams/MemberReader.h"

namespace {

constexpr std::size_t bufferBytes = 128 * 1024;

}  // namespace

void streamMember(const iostreams::zip::ArchiveReader& archive, const iostreams::zip::Entry& entry,
                  const platform::File& target)
{
    iostreams::zip::MemberReader content(archive, entry);
    platform::Buffer buffer(bufferBytes);
    while (const std::size_t count = content.read(buffer.data(), buffer.size())) {
        target.write(buffer.data(), count);
    }
}

void checkMember(const iostreams::zip::ArchiveReader& archive, const iostreams::zip::Entry& entry)
{
    iostreams::zip::MemberReader content(archive, entry);
    platform::Buffer buffer(bufferBytes);
    while (content.read(buffer.data(), buffer.size()) > 0) {
    }
}

void extractMember(const iostreams::zip::ArchiveReader& archive, const iostreams::zip::Entry& entry,
                   const std::string& target, platform::ReplacementFile::Links links)
{
    platform::ReplacementFile file(target, links);
    streamMember(archive, entry, file.file());
    file.commit();
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
