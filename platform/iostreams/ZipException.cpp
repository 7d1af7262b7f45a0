#include "platform/iostreams/ZipException.h"

namespace iostreams {

namespace device::detail {

zip_exception::~zip_exception() = default;

}  // namespace device::detail

namespace zip {

ChecksumError::~ChecksumError() = default;
TimeError::~TimeError() = default;

namespace {

constexpr char hexDigits[] = "0123456789abcdef";

/// What a FileError says without the path, which the archive's messages begin with anyway.
std::string reasonOf(const platform::FileError& error, const std::string& archive)
{
    const std::string text = error.what();
    const std::string lead = archive + ": ";
    return text.compare(0, lead.size(), lead) == 0 ? text.substr(lead.size()) : text;
}

}  // namespace

zip_exception archiveError(const std::string& archive, const std::string& reason)
{
    return zip_exception(archive + ": " + reason);
}

zip_exception memberError(const std::string& archive, std::string_view member, const std::string& reason)
{
    return zip_exception(archive + ": member " + quoted(member) + ": " + reason);
}

zip_exception archiveError(const std::string& archive, const platform::FileError& error)
{
    return archiveError(archive, reasonOf(error, archive));
}

zip_exception memberError(const std::string& archive, std::string_view member,
                          const platform::FileError& error)
{
    return memberError(archive, member, reasonOf(error, archive));
}

std::string endsEarly(std::size_t got, std::size_t wanted, std::uint64_t offset)
{
    return "the file has become shorter: it has " + std::to_string(got) + " of " + std::to_string(wanted) +
           " bytes at " + std::to_string(offset);
}

std::string quoted(std::string_view name)
{
    std::string text = "\"";
    for (const char character : name) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7f) {
            text += "\\x";
            text += hexDigits[byte >> 4];
            text += hexDigits[byte & 0xf];
        } else {
            text += character;
        }
    }
    return text + '"';
}

std::string hex(std::uint32_t number)
{
    std::string text;
    for (int shift = 28; shift >= 0; shift -= 4) {
        text += hexDigits[(number >> shift) & 0xf];
    }
    return text;
}

}  // namespace zip

}  // namespace iostreams
