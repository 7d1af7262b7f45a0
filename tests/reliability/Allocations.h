#pragma once

#include <cstddef>

/// The memory that this program takes: counted, and refused where a test wants it. Plain builds count
/// malloc, calloc and realloc, and so the operators new, which take theirs there; builds with sanitizers,
/// which have a malloc of their own, count the operators alone. For single-threaded tests.
namespace allocations {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool SANITIZED = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
inline constexpr bool SANITIZED = true;
#else
inline constexpr bool SANITIZED = false;
#endif
#else
inline constexpr bool SANITIZED = false;
#endif

/// Which allocations fail.
enum class Failing {
    ONE,       ///< the n-th alone
    ALL_FROM,  ///< the n-th and all behind it
};

/// From now on the n-th allocation fails; starts to count anew.
void fail(unsigned nth, Failing failing);
/// No allocation fails any more; returns how many there were.
unsigned stop();
/// Blocks that are taken and not given back.
std::ptrdiff_t blocks();

}  // namespace allocations
