#include "platform/iostreams/ArchiveReader.h"

namespace iostreams::zip {

bool is_file(const std::string& member, const std::string& archive)
{
    try {
        const std::unique_ptr<ArchiveReader> reader = ArchiveReader::openIfExists(archive);
        return reader != nullptr && reader->find(member) != nullptr;
    } catch (const HEXAll&) {
        return false;
    }
}

}  // namespace iostreams::zip
