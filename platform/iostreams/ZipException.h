#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/File.h"
#include "platform/iostreams/zip.h"

/// The texts of zip_exception. Control characters of a member's name appear as \xNN.
namespace iostreams::zip {

using device::detail::zip_exception;

/// A member whose content is not what its CRC-32 says.
class ChecksumError : public zip_exception {
public:
    using zip_exception::zip_exception;
    ~ChecksumError() override;
};

/// A member that takes longer to unpack than is allowed.
class TimeError : public zip_exception {
public:
    using zip_exception::zip_exception;
    ~TimeError() override;
};

/// `design.hdf: REASON`
zip_exception archiveError(const std::string& archive, const std::string& reason);
/// `design.hdf: member "top.bit": REASON`
zip_exception memberError(const std::string& archive, std::string_view member, const std::string& reason);

/// The system's refusal, as an error of the archive or of one of its members.
zip_exception archiveError(const std::string& archive, const platform::FileError& error);
zip_exception memberError(const std::string& archive, std::string_view member,
                          const platform::FileError& error);

/// The reason for a read that was cut off by the end of a file, which was longer when it was opened.
std::string endsEarly(std::size_t got, std::size_t wanted, std::uint64_t offset);
/// The name in double quotes.
std::string quoted(std::string_view name);
/// Eight hexadecimal digits.
std::string hex(std::uint32_t number);

}  // namespace iostreams::zip
