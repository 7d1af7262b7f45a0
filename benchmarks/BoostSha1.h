#pragma once

#include <string>

namespace bench {

/// Boost's SHA-1 compiled with -O2 and nothing else, as a caller's own build would have it; as the
/// library writes digests: five words in decimal, one behind the other.
std::string boostSha1Text(const std::string& bytes);

}  // namespace bench
