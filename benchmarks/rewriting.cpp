// Rewriting an opened container unchanged, against copying its bytes.

#include <openssl/evp.h>

#include <array>
#include <filesystem>

#include "Workloads.h"
#include "support/Design.h"
#include "support/Libzip.h"

namespace bench {

namespace {

std::string target()
{
    return workDir() + "/rewritten-in-process.hdf";
}

void startOver()
{
    const auto overwrite = std::filesystem::copy_options::overwrite_existing;
    std::filesystem::copy_file(workDir() + "/mixed.hdf", target(), overwrite);
}

void checkTarget()
{
    const LibzipArchive archive = openLibzip(target());
    for (const auto& [path, type] : filesOf(workDir() + "/corpus/mixed")) {
        require(readLibzip(archive.get(), nameOf(path)) == readFile(path), nameOf(path) + " differs");
    }
}

/// By libcrypto itself; the digest is the end of the file.
void checkDigest()
{
    constexpr std::size_t digits = 64;
    const std::string bytes = readFile(target());
    require(bytes.size() > digits, "no archive");
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    require(
        EVP_Digest(bytes.data(), bytes.size() - digits, digest.data(), nullptr, EVP_sha256(), nullptr) == 1,
        "no SHA-256");
    std::string text;
    for (std::size_t i = 0; i < digits / 2; ++i) {
        constexpr char hexadecimal[] = "0123456789abcdef";
        text += {hexadecimal[digest[i] / 16], hexadecimal[digest[i] % 16]};
    }
    require(bytes.ends_with(text), "the archive digest differs");
}

Task rewriteTask()
{
    startOver();
    const std::shared_ptr<HHDFHwDef> definition = HHDFHwDefUtils::getHDF(target());
    require(definition != nullptr, "opening failed");
    return {{},
            [=] { require(definition->write(true), "writing failed"); },
            [] {
                checkTarget();
                checkDigest();
            }};
}

Task copyTask()
{
    return {[] { std::filesystem::remove(target()); }, startOver, checkTarget};
}

}  // namespace

void addRewriting()
{
    compare("rewrite-opened", "hwdef", 20, rewriteTask);
    compare("rewrite-opened", "copy of the bytes", 20, copyTask);
}

}  // namespace bench
