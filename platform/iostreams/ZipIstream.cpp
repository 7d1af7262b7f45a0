#include <array>
#include <streambuf>

#include "platform/iostreams/zip.h"

namespace iostreams {

/// Reads from a source; what that throws becomes the bad state of the stream, so that those who read
/// through the buffer learn of it in the same way as those who read through the stream.
class zip_istream::Buffer : public std::streambuf {
public:
    Buffer(std::ios& stream, const std::string& member, const std::string& archive)
        : stream_(stream), source_(member, archive)
    {
    }

    bool is_open() const { return source_.is_open(); }
    void close()
    {
        source_.close();
        setg(nullptr, nullptr, nullptr);
    }

protected:
    int_type underflow() override
    {
        std::streamsize got = 0;
        try {
            got = source_.read(bytes_.data(), static_cast<std::streamsize>(bytes_.size()));
        } catch (const HEXAll&) {
            stream_.setstate(std::ios::badbit);
        }
        if (got <= 0) {
            return traits_type::eof();
        }
        setg(bytes_.data(), bytes_.data(), bytes_.data() + got);
        return traits_type::to_int_type(*gptr());
    }

private:
    std::ios& stream_;
    device::file_source source_;
    std::array<char, 16 * 1024> bytes_;
};

zip_istream::zip_istream(const std::string& member, const std::string& archive, int) : std::istream(nullptr)
{
    try {
        buffer_ = std::make_unique<Buffer>(*this, member, archive);
        rdbuf(buffer_.get());
    } catch (const HEXAll&) {
        setstate(std::ios::badbit);
    }
    if (!is_open()) {
        setstate(std::ios::failbit);
    }
}

zip_istream::~zip_istream() = default;

bool zip_istream::is_open() const
{
    return buffer_ != nullptr && buffer_->is_open();
}

void zip_istream::close()
{
    if (buffer_ != nullptr) {
        buffer_->close();
    }
}

}  // namespace iostreams
