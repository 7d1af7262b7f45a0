#include "platform/ArchiveDigest.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/Buffer.h"
#include "platform/CryptoErrorMark.h"
#include "platform/ProgressWork.h"

namespace platform {

namespace {

/// Small enough for the processor's nearest caches.
constexpr std::size_t bufferBytes = 64 * 1024;
constexpr std::size_t markSize = sizeof(ArchiveDigest::MARK) - 1;

void require(int result)
{
    if (result != 1) {
        throw HEXAll("libcrypto can't compute a SHA-256");
    }
}

}  // namespace

struct ArchiveDigest::Context {
    struct Free {
        void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
    };
    std::unique_ptr<EVP_MD_CTX, Free> evp{EVP_MD_CTX_new()};
};

ArchiveDigest::ArchiveDigest()
{
    const CryptoErrorMark mark;
    context_ = std::make_unique<Context>();
    require(context_->evp ? EVP_DigestInit_ex(context_->evp.get(), EVP_sha256(), nullptr) : 0);
}

ArchiveDigest::~ArchiveDigest() = default;

void ArchiveDigest::add(std::string_view bytes)
{
    const CryptoErrorMark mark;
    require(EVP_DigestUpdate(context_->evp.get(), bytes.data(), bytes.size()));
}

std::string ArchiveDigest::finish()
{
    constexpr char hexDigits[] = "0123456789abcdef";
    const CryptoErrorMark mark;
    std::array<unsigned char, DIGITS / 2> digest = {};
    require(EVP_DigestFinal_ex(context_->evp.get(), digest.data(), nullptr));
    std::string digits;
    for (const unsigned char byte : digest) {
        digits += hexDigits[byte >> 4];
        digits += hexDigits[byte & 0xf];
    }
    return digits;
}

std::string ArchiveDigest::ofFile(const File& file, std::uint64_t sizeBytes)
{
    ArchiveDigest digest;
    Buffer buffer(bufferBytes);
    // The digest is the last that an archive gets or is asked for.
    ProgressWork::expectLast(sizeBytes);
    for (std::uint64_t done = 0; done < sizeBytes;) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(bufferBytes, sizeBytes - done));
        if (file.readAt(buffer.data(), wanted, done) < wanted) {
            throw FileError(file.path(), "read (the file ends early)", EIO);
        }
        digest.add({buffer.data(), wanted});
        done += wanted;
        ProgressWork::advance({}, wanted);
    }
    return digest.finish();
}

std::string_view ArchiveDigest::recordedIn(std::string_view comment)
{
    if (comment.size() < markSize + DIGITS) {
        return {};
    }
    const std::string_view digits = comment.substr(comment.size() - DIGITS);
    const bool marked = comment.substr(comment.size() - DIGITS - markSize, markSize) == MARK;
    const bool isHex = digits.find_first_not_of("0123456789abcdef") == std::string_view::npos;
    return marked && isHex ? digits : std::string_view();
}

std::string_view ArchiveDigest::withoutDigest(std::string_view comment)
{
    return recordedIn(comment).empty() ? comment : comment.substr(0, comment.size() - DIGITS - markSize);
}

}  // namespace platform
