#include "hwdef/container/Extraction.h"

#include <vector>

#include "platform/ReplacementFile.h"
#include "platform/iostreams/MemberReader.h"

namespace {

constexpr std::size_t bufferBytes = 128 * 1024;

}  // namespace

void streamMember(const iostreams::zip::ArchiveReader& archive, const iostreams::zip::Entry& entry,
                  const platform::File& target)
{
    iostreams::zip::MemberReader content(archive, entry);
    std::vector<char> buffer(bufferBytes);
    while (const std::size_t count = content.read(buffer.data(), buffer.size())) {
        target.write(buffer.data(), count);
    }
}

void extractMember(const iostreams::zip::ArchiveReader& archive, const iostreams::zip::Entry& entry,
                   const std::string& target)
{
    platform::ReplacementFile file(target);
    streamMember(archive, entry, file.file());
    file.commit();
}
