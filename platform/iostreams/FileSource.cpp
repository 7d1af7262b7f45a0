#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/MemberReader.h"
#include "platform/iostreams/zip.h"

namespace iostreams::device {

class file_source::Impl {
public:
    Impl(const std::string& member, const std::string& archive)
        : archive_(zip::ArchiveReader::openIfExists(archive))
    {
        const zip::Entry* entry = archive_ ? archive_->find(member) : nullptr;
        if (entry != nullptr) {
            reader_ = std::make_unique<zip::MemberReader>(*archive_, *entry);
        }
    }

    void close()
    {
        reader_.reset();
        archive_.reset();
    }

    std::unique_ptr<zip::ArchiveReader> archive_;
    std::unique_ptr<zip::MemberReader> reader_;  // of the archive, so it goes first
};

file_source::file_source(const std::string& member, const std::string& archive, std::ios_base::openmode)
    : impl_(std::make_shared<Impl>(member, archive))
{
}

bool file_source::is_open() const
{
    return impl_->reader_ != nullptr;
}

std::streamsize file_source::read(char* buffer, std::streamsize count)
{
    if (!is_open() || count <= 0) {
        return is_open() ? 0 : -1;
    }
    const std::size_t got = impl_->reader_->read(buffer, static_cast<std::size_t>(count));
    return got > 0 ? static_cast<std::streamsize>(got) : -1;
}

void file_source::close()
{
    impl_->close();
}

}  // namespace iostreams::device
