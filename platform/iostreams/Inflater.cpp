#include "platform/iostreams/Inflater.h"

#include <isa-l/igzip_lib.h>

#include <cassert>
#include <limits>

namespace iostreams::zip {

namespace {

const char* describe(int error)
{
    switch (error) {
        case ISAL_INVALID_BLOCK:
            return "invalid block";
        case ISAL_INVALID_SYMBOL:
            return "invalid symbol";
        case ISAL_INVALID_LOOKBACK:
            return "reference to before the start";
        default:
            return "invalid data";
    }
}

}  // namespace

struct Inflater::State : inflate_state {};

Inflater::Inflater() : state_(new State)  // 90 KiB, which isal_inflate_init sets as far as need be
{
    restart();
}

Inflater::~Inflater() = default;

void Inflater::restart()
{
    isal_inflate_init(state_.get());
    state_->crc_flag = ISAL_DEFLATE;
    damage_ = nullptr;
}

void Inflater::feed(std::string_view input)
{
    assert(needsInput() && input.size() <= std::numeric_limits<std::uint32_t>::max());
    // The library reads through a pointer that isn't const.
    state_->next_in = reinterpret_cast<std::uint8_t*>(const_cast<char*>(input.data()));
    state_->avail_in = static_cast<std::uint32_t>(input.size());
}

bool Inflater::needsInput() const
{
    return state_->avail_in == 0 && !isFinished();
}

std::size_t Inflater::unpack(char* buffer, std::size_t size)
{
    assert(size <= std::numeric_limits<std::uint32_t>::max());
    if (size == 0 || damage_ != nullptr || isFinished()) {
        return 0;
    }
    const std::uint32_t inputBefore = state_->avail_in;
    state_->next_out = reinterpret_cast<std::uint8_t*>(buffer);
    state_->avail_out = static_cast<std::uint32_t>(size);
    const int result = isal_inflate(state_.get());
    const std::size_t unpacked = size - state_->avail_out;
    const bool stuck = unpacked == 0 && inputBefore > 0 && state_->avail_in == inputBefore && !isFinished();
    if (result < 0 || stuck) {
        damage_ = describe(result);
        return 0;
    }
    return unpacked;
}

bool Inflater::isFinished() const
{
    return state_->block_state == ISAL_BLOCK_FINISH;
}

std::size_t Inflater::unusedBytes() const
{
    // Whole bytes may wait in the bit buffer, taken from the input ahead of need.
    return state_->avail_in + static_cast<std::size_t>(state_->read_in_length) / 8;
}

}  // namespace iostreams::zip
