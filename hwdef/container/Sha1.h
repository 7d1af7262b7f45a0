#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

/// The SHA-1 (FIPS 180-4, section 6.1) of bytes that come piece by piece.
class Sha1 {
public:
    Sha1();
    ~Sha1();
    Sha1(const Sha1&) = delete;
    Sha1& operator=(const Sha1&) = delete;

    /// Takes more bytes. std::runtime_error ("sha1 too many bytes") beyond 2^64 bits.
    void add(const void* bytes, std::size_t count);
    /// Forgets all bytes taken.
    void reset();
    /// The digest text of the bytes taken: the five words h0 to h4, each as an unsigned decimal
    /// number, joined without a separator. Does not depend on the locale. Starts anew.
    std::string finish();

private:
    class Engine;
    std::unique_ptr<Engine> engine_;
    std::uint64_t bytesTaken_ = 0;
};
