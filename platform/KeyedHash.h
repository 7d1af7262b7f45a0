#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform {

/// SipHash-2-4 (Aumasson and Bernstein, 2012) of the bytes. The key is 16 bytes as two numbers of 8, each
/// read from its lowest byte on.
std::uint64_t sipHash(const std::array<std::uint64_t, 2>& key, std::string_view bytes);

/// A hash of texts for tables in memory, under a key that each process draws anew: whoever chooses the
/// texts (the names in an archive, say) can't make them collide. std::hash is the same everywhere, and
/// with it a table of such names costs the square of their number.
struct KeyedHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const;
};

}  // namespace platform
