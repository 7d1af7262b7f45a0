#include "hwdef/container/Sha1.h"

#include <openssl/evp.h>

#include <array>
#include <boost/endian/conversion.hpp>
#include <limits>
#include <stdexcept>

#include "platform/CryptoErrorMark.h"
#include "platform/HEXAll.h"

namespace {

constexpr std::size_t wordBytes = 4;
/// A SHA-1 takes less than 2^64 bits.
constexpr std::uint64_t mostBytes = std::numeric_limits<std::uint64_t>::max() / 8;

void require(int result)
{
    if (result != 1) {
        throw HEXAll("libcrypto can't compute a SHA-1");
    }
}

}  // namespace

class Sha1::Engine {
public:
    Engine() { start(); }

    void start()
    {
        require(context_ && algorithm_ ? EVP_DigestInit_ex(context_.get(), algorithm_.get(), nullptr) : 0);
    }
    void add(const void* bytes, std::size_t count)
    {
        require(EVP_DigestUpdate(context_.get(), bytes, count));
    }
    std::array<unsigned char, 5 * wordBytes> finish()
    {
        std::array<unsigned char, 5 * wordBytes> digest = {};
        require(EVP_DigestFinal_ex(context_.get(), digest.data(), nullptr));
        return digest;
    }

private:
    struct Free {
        void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
        void operator()(EVP_MD* algorithm) const { EVP_MD_free(algorithm); }
    };

    // Looked up once: a start with the name alone looks it up each time, which small files would feel.
    std::unique_ptr<EVP_MD, Free> algorithm_{EVP_MD_fetch(nullptr, "SHA1", nullptr)};
    std::unique_ptr<EVP_MD_CTX, Free> context_{EVP_MD_CTX_new()};
};

Sha1::Sha1()
{
    const platform::CryptoErrorMark mark;
    engine_ = std::make_unique<Engine>();
}

Sha1::~Sha1() = default;

void Sha1::add(const void* bytes, std::size_t count)
{
    if (count > mostBytes - bytesTaken_) {
        throw std::runtime_error("sha1 too many bytes");
    }
    const platform::CryptoErrorMark mark;
    engine_->add(bytes, count);
    bytesTaken_ += count;
}

void Sha1::reset()
{
    const platform::CryptoErrorMark mark;
    engine_->start();
    bytesTaken_ = 0;
}

std::string Sha1::finish()
{
    const platform::CryptoErrorMark mark;
    const auto digest = engine_->finish();
    std::string text;
    for (std::size_t i = 0; i < digest.size(); i += wordBytes) {
        text += std::to_string(boost::endian::load_big_u32(digest.data() + i));
    }
    reset();
    return text;
}
