#include "platform/iostreams/StreamPlace.h"

#include <sys/mman.h>

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>

namespace iostreams::zip {

namespace {

/// The hash is taken of an address in steps of 64 KiB.
constexpr unsigned hashedShift = 16;
/// Bits of the hash that level 1 uses at most; shorter input has tables of fewer slots and takes fewer.
constexpr std::uint32_t hashMask = 0x1fff;
/// Places lie 4 GiB apart from here, 32 TiB up, which programs and the sanitizers leave free; the heap serves
/// streams beyond so many at a time.
constexpr std::uint32_t firstPlace = 0x2000;
constexpr std::uint32_t places = 1024;

/// ISA-L's hash: the processor's CRC-32C of four bytes, begun at zero, of which the table takes the low bits.
constexpr std::uint32_t hashOf(std::uint32_t value)
{
    constexpr std::uint32_t polynomial = 0x82f63b78;
    for (int bit = 0; bit < 32; ++bit) {
        value = (value >> 1) ^ ((value & 1) != 0 ? polynomial : 0);
    }
    return value & hashMask;
}

/// The hashes of the 16 powers of two whose sums fill up a place's low half.
constexpr auto lowHashes = [] {
    std::array<std::uint32_t, 16> hashes{};
    for (std::size_t bit = 0; bit < hashes.size(); ++bit) {
        hashes[bit] = hashOf(std::uint32_t{1} << bit);
    }
    return hashes;
}();

/// The address of that place. A CRC of a sum without carries is the sum of the CRCs, so the low half can
/// change by one bit at a time (a Gray code) until the hash is zero; the 16 hashes span all 13 bits, so it
/// becomes zero.
std::uintptr_t addressOf(std::uint32_t place)
{
    const std::uint32_t high = (firstPlace + place) << 16;
    std::uint32_t low = 0;
    std::uint32_t hash = hashOf(high);
    for (std::uint32_t step = 1; hash != 0; ++step) {
        const auto bit = static_cast<unsigned>(std::countr_zero(step));
        low ^= std::uint32_t{1} << bit;
        hash ^= lowHashes.at(bit);
    }
    return static_cast<std::uintptr_t>(high | low) << hashedShift;
}

void unmap(isal_zstream* stream)
{
    munmap(stream, sizeof(isal_zstream));
}

void release(isal_zstream* stream)
{
    delete stream;
}

/// A free place, looked for from the one after the last; null where the system gives none, as on a kernel
/// before 4.17.
isal_zstream* mapped()
{
    static std::atomic<std::uint32_t> next{0};
    for (std::uint32_t tried = 0; tried < places; ++tried) {
        void* const wanted = reinterpret_cast<void*>(addressOf(next++ % places));
        void* const got = mmap(wanted, sizeof(isal_zstream), PROT_READ | PROT_WRITE,
                               MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
        if (got == wanted) {
            return static_cast<isal_zstream*>(got);
        }
        if (got != MAP_FAILED) {
            munmap(got, sizeof(isal_zstream));
            return nullptr;
        }
    }
    return nullptr;
}

}  // namespace

StreamPlace::StreamPlace() : stream_(mapped(), unmap)
{
    if (stream_ == nullptr) {
        stream_ = {new isal_zstream, release};
    }
}

}  // namespace iostreams::zip
