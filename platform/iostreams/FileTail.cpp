#include "platform/iostreams/FileTail.h"

#include <algorithm>
#include <cstring>

#include "platform/iostreams/ZipException.h"

namespace iostreams::zip {

FileTail::FileTail(const platform::File& file) : file_(file), fileSize_(file.size()) {}

void FileTail::load(std::size_t size)
{
    std::string bytes(static_cast<std::size_t>(std::min<std::uint64_t>(size, fileSize_)), '\0');
    read(bytes.data(), bytes.size(), fileSize_ - bytes.size());
    bytes_ = std::move(bytes);
}

void FileTail::read(char* buffer, std::size_t size, std::uint64_t offset) const
{
    if (offset >= this->offset() && offset + size <= fileSize_) {
        std::memcpy(buffer, bytes_.data() + (offset - this->offset()), size);
        return;
    }
    const std::size_t got = file_.readAt(buffer, size, offset);
    if (got < size) {
        throw archiveError(file_.path(), endsEarly(got, size, offset));
    }
}

}  // namespace iostreams::zip
