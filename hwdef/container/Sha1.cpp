#include "hwdef/container/Sha1.h"

#include <array>
#include <boost/static_assert.hpp>
#include <boost/throw_exception.hpp>
#include <boost/uuid/uuid.hpp>
#include <cstdint>
#include <stdexcept>
#include <type_traits>

// The header is a set of inline functions that this file alone is compiled for (see the build's flags
// for it). Under their own names another copy of them, compiled without these flags, could take
// their place at link time; so they get names and visibility that no other copy has.
#define sha1 hwdefOwnSha1
#define left_rotate hwdefOwnLeftRotate
#pragma GCC visibility push(hidden)
#include <boost/uuid/detail/sha1.hpp>
#pragma GCC visibility pop
#undef left_rotate
#undef sha1

using BoostSha1 = boost::uuids::detail::hwdefOwnSha1;

namespace {

using Words = std::array<std::uint32_t, 5>;

/// The five words of a digest, which older versions of Boost give as words and newer ones as the
/// twenty bytes of these words, the highest byte first.
template <typename Digest>
Words wordsOf(const Digest& digest)
{
    Words words = {};
    static_assert(sizeof digest == sizeof words);
    constexpr std::size_t partsPerWord = std::extent_v<Digest> / Words().size();
    for (std::size_t i = 0; i < std::extent_v<Digest>; ++i) {
        // A whole word must not be shifted by its own width.
        std::uint32_t& word = words[i / partsPerWord];
        word = (partsPerWord == 1 ? 0 : word << 8) | digest[i];
    }
    return words;
}

}  // namespace

class Sha1::Engine {
public:
    BoostSha1 sha1;
};

Sha1::Sha1() : engine_(std::make_unique<Engine>()) {}

Sha1::~Sha1() = default;

void Sha1::add(const void* bytes, std::size_t count)
{
    engine_->sha1.process_bytes(bytes, count);
}

void Sha1::reset()
{
    engine_->sha1.reset();
}

std::string Sha1::finish()
{
    BoostSha1::digest_type digest;
    engine_->sha1.get_digest(digest);
    std::string text;
    for (const std::uint32_t word : wordsOf(digest)) {
        text += std::to_string(word);
    }
    reset();
    return text;
}
