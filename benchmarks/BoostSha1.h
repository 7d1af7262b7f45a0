#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace bench {

/// Boost's SHA-1 compiled with -O2 and nothing else, as a caller's own build would have it.
std::array<std::uint32_t, 5> boostSha1(const std::string& bytes);

}  // namespace bench
