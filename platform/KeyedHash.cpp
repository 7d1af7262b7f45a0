#include "platform/KeyedHash.h"

#include <bit>
#include <boost/endian/conversion.hpp>
#include <random>

namespace platform {

namespace {

/// The four words that SipHash works on.
class State {
public:
    explicit State(const std::array<std::uint64_t, 2>& key)
        : v0_(key[0] ^ 0x736f6d6570736575),
          v1_(key[1] ^ 0x646f72616e646f6d),
          v2_(key[0] ^ 0x6c7967656e657261),
          v3_(key[1] ^ 0x7465646279746573)
    {
    }

    void add(std::uint64_t word)
    {
        v3_ ^= word;
        round();
        round();
        v0_ ^= word;
    }

    std::uint64_t finish()
    {
        v2_ ^= 0xff;
        for (int i = 0; i < 4; ++i) {
            round();
        }
        return v0_ ^ v1_ ^ v2_ ^ v3_;
    }

private:
    void round()
    {
        v0_ += v1_;
        v1_ = std::rotl(v1_, 13) ^ v0_;
        v0_ = std::rotl(v0_, 32);
        v2_ += v3_;
        v3_ = std::rotl(v3_, 16) ^ v2_;
        v0_ += v3_;
        v3_ = std::rotl(v3_, 21) ^ v0_;
        v2_ += v1_;
        v1_ = std::rotl(v1_, 17) ^ v2_;
        v2_ = std::rotl(v2_, 32);
    }

    std::uint64_t v0_, v1_, v2_, v3_;
};

std::array<std::uint64_t, 2> drawKey()
{
    std::random_device device;
    const auto draw = [&] { return std::uint64_t{device()} << 32U | device(); };
    return {draw(), draw()};
}

}  // namespace

std::uint64_t sipHash(const std::array<std::uint64_t, 2>& key, std::string_view bytes)
{
    State state(key);
    std::string_view rest = bytes;
    for (; rest.size() >= 8; rest.remove_prefix(8)) {
        state.add(boost::endian::load_little_u64(reinterpret_cast<const unsigned char*>(rest.data())));
    }
    std::uint64_t last = std::uint64_t{bytes.size()} << 56U;
    for (std::size_t at = 0; at < rest.size(); ++at) {
        last |= std::uint64_t{static_cast<unsigned char>(rest[at])} << (8 * at);
    }
    state.add(last);
    return state.finish();
}

std::size_t KeyedHash::operator()(std::string_view text) const
{
    static const std::array<std::uint64_t, 2> key = drawKey();
    return sipHash(key, text);
}

}  // namespace platform
