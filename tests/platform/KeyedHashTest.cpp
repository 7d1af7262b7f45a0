#include "platform/KeyedHash.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace {

/// The key of the published test vectors: bytes 0 to 15.
constexpr std::array<std::uint64_t, 2> key = {0x0706050403020100, 0x0f0e0d0c0b0a0908};

/// The bytes 0, 1, 2, ...
std::string counting(std::size_t size)
{
    std::string bytes;
    for (std::size_t at = 0; at < size; ++at) {
        bytes += static_cast<char>(at);
    }
    return bytes;
}

}  // namespace

TEST(KeyedHash, isSipHashAsItWasPublished)
{
    EXPECT_EQ(platform::sipHash(key, ""), 0x726fdb47dd0e0e31U);
    EXPECT_EQ(platform::sipHash(key, counting(1)), 0x74f839c593dc67fdU);
    EXPECT_EQ(platform::sipHash(key, counting(7)), 0xab0200f58b01d137U);
    EXPECT_EQ(platform::sipHash(key, counting(8)), 0x93f5f5799a932462U);
    EXPECT_EQ(platform::sipHash(key, counting(15)), 0xa129ca6149be45e5U);
    EXPECT_EQ(platform::sipHash(key, counting(63)), 0x958a324ceb064572U);
}

TEST(KeyedHash, staysTheSameInAProcess)
{
    EXPECT_EQ(platform::KeyedHash()("top.bit"), platform::KeyedHash()(std::string("top.bit")));
    EXPECT_NE(platform::KeyedHash()("top.bit"), platform::KeyedHash()("top.bin"));
}
