#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/File.h"

namespace platform {

/// The SHA-256 (FIPS 180-4) that a container carries in its zip comment, computed as bytes come; the
/// comment ends in MARK and DIGITS lower-case hexadecimal digits.
class ArchiveDigest {
public:
    static constexpr char MARK[] = "hwdef-sha256:";
    static constexpr std::size_t DIGITS = 64;

    /// Throws HEXAll when libcrypto can't serve.
    ArchiveDigest();
    ~ArchiveDigest();
    ArchiveDigest(const ArchiveDigest&) = delete;
    ArchiveDigest& operator=(const ArchiveDigest&) = delete;

    void add(std::string_view bytes);
    /// The digits of all bytes added. Nothing can be added afterwards.
    std::string finish();

    /// The digits of the first `sizeBytes` bytes of a file. Throws FileError, also when it ends before.
    static std::string ofFile(const File& file, std::uint64_t sizeBytes);

    /// The digits that an archive comment ends in; empty when it ends in no digest.
    static std::string_view recordedIn(std::string_view comment);
    /// The comment without the digest that it ends in.
    static std::string_view withoutDigest(std::string_view comment);

private:
    struct Context;
    std::unique_ptr<Context> context_;
};

}  // namespace platform
