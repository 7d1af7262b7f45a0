#include "platform/iostreams/Deflater.h"

#include <isa-l/igzip_lib.h>

#include <array>
#include <cassert>
#include <cstdint>
#include <limits>

#include "platform/iostreams/StreamPlace.h"

namespace iostreams::zip {

namespace {

constexpr std::size_t outputBytes = 64 * 1024;

}  // namespace

/// The stream's state with the two buffers it works on.
class Deflater::Impl {
public:
    StreamPlace place;
    isal_zstream& stream = place.stream();
    std::array<std::uint8_t, ISAL_DEF_LVL1_DEFAULT> levelBuffer;
    std::array<std::uint8_t, outputBytes> output;
};

Deflater::Deflater() : impl_(new Impl)  // 0.4 MiB of buffers, which need no value
{
    isal_deflate_init(&impl_->stream);
    impl_->stream.level = 1;
    impl_->stream.level_buf = impl_->levelBuffer.data();
    impl_->stream.level_buf_size = ISAL_DEF_LVL1_DEFAULT;
    impl_->stream.gzip_flag = IGZIP_DEFLATE;
    impl_->stream.flush = NO_FLUSH;
}

Deflater::~Deflater() = default;

void Deflater::restart()
{
    isal_deflate_reset(&impl_->stream);
    impl_->stream.avail_in = 0;
    impl_->stream.end_of_stream = 0;
}

void Deflater::feed(std::string_view input, bool last)
{
    assert(impl_->stream.avail_in == 0 && input.size() <= std::numeric_limits<std::uint32_t>::max());
    // ISA-L takes a pointer to non-const bytes, yet only reads them.
    impl_->stream.next_in = reinterpret_cast<std::uint8_t*>(const_cast<char*>(input.data()));
    impl_->stream.avail_in = static_cast<std::uint32_t>(input.size());
    impl_->stream.end_of_stream = last ? 1 : 0;
}

std::string_view Deflater::drain()
{
    isal_zstream& stream = impl_->stream;
    stream.next_out = impl_->output.data();
    stream.avail_out = outputBytes;
    if (stream.internal_state.state != ZSTATE_END) {
        [[maybe_unused]] const int result = isal_deflate(&stream);
        assert(result == COMP_OK);
    }
    return {reinterpret_cast<const char*>(impl_->output.data()), outputBytes - stream.avail_out};
}

std::size_t Deflater::trialSize(std::string_view input, std::size_t atMost)
{
    restart();
    feed(input, true);
    std::size_t size = 0;
    for (std::string_view piece = drain(); !piece.empty() && size < atMost; piece = drain()) {
        size += piece.size();
    }
    return size < atMost ? size : atMost;
}

}  // namespace iostreams::zip
