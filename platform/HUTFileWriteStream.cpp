#include "platform/HUTFileWriteStream.h"

#include <fcntl.h>

#include <array>
#include <streambuf>

#include "platform/File.h"

/// Collects characters and writes them through platform::File. A write that fails drops what was
/// collected, so that the failure is reported once and closing doesn't try again.
class HUTFileWriteStream::Buffer : public std::streambuf {
public:
    ~Buffer() override { close(); }

    bool isOpen() const { return file_.isOpen(); }

    bool open(const std::string& path, std::ios_base::openmode mode)
    {
        const int start = (mode & std::ios_base::app) != 0 ? O_APPEND : O_TRUNC;
        try {
            file_ = platform::File::open(path, O_WRONLY | O_CREAT | start);
        } catch (const HEXAll&) {
            return false;
        }
        setp(area_.data(), area_.data() + area_.size());
        return true;
    }

    bool close()
    {
        const bool wasOpen = file_.isOpen();
        const bool written = flushArea();
        setp(nullptr, nullptr);
        try {
            file_.close();
        } catch (const HEXAll&) {
            return false;
        }
        return wasOpen && written;
    }

protected:
    int_type overflow(int_type character) override
    {
        if (!isOpen() || !flushArea()) {
            return traits_type::eof();
        }
        return traits_type::eq_int_type(character, traits_type::eof())
                   ? traits_type::not_eof(character)
                   : sputc(traits_type::to_char_type(character));
    }

    int sync() override { return isOpen() && flushArea() ? 0 : -1; }

private:
    bool flushArea()
    {
        const auto size = static_cast<std::size_t>(pptr() - pbase());
        setp(pbase(), epptr());
        try {
            if (size > 0) {
                file_.write(pbase(), size);
            }
        } catch (const HEXAll&) {
            return false;
        }
        return true;
    }

    platform::File file_;
    std::array<char, 16 * 1024> area_;
};

HUTFileWriteStream::HUTFileWriteStream(const std::string& path, std::ios_base::openmode mode)
    : std::ostream(nullptr), buffer_(std::make_unique<Buffer>())
{
    init(buffer_.get());
    if (!buffer_->open(path, mode)) {
        setstate(std::ios_base::failbit);
    }
}

HUTFileWriteStream::~HUTFileWriteStream() = default;

bool HUTFileWriteStream::is_open() const
{
    return buffer_->isOpen();
}

void HUTFileWriteStream::close()
{
    if (!buffer_->close()) {
        setstate(std::ios_base::failbit);
    }
}
