#include "platform/XmlText.h"

#include <algorithm>
#include <boost/locale/utf.hpp>
#include <cstdio>

namespace platform {

namespace {

namespace utf = boost::locale::utf;

bool isXmlCharacter(utf::code_point c)
{
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= 0x10FFFF);
}

std::string describe(utf::code_point c, char firstByte)
{
    char text[64];
    if (utf::is_valid_codepoint(c)) {
        std::snprintf(text, sizeof text, "XML 1.0 can't carry the character U+%04X", c);
    } else {
        std::snprintf(text, sizeof text, "0x%02X begins no valid UTF-8 sequence",
                      static_cast<unsigned>(static_cast<unsigned char>(firstByte)));
    }
    return text;
}

bool isNameStart(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == ':' ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool isNameCharacter(char c)
{
    return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

}  // namespace

std::optional<XmlTextDefect> findXmlTextDefect(std::string_view text)
{
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at != end;) {
        // Plain ASCII, nearly all there is, needs no decoding.
        const auto byte = static_cast<unsigned char>(*at);
        if (byte >= 0x20 && byte <= 0x7F) {
            ++at;
            continue;
        }
        const char* const start = at;
        const utf::code_point c = utf::utf_traits<char>::decode(at, end);
        if (!isXmlCharacter(c)) {
            return XmlTextDefect{static_cast<std::size_t>(start - text.data()), describe(c, *start)};
        }
    }
    return std::nullopt;
}

bool isXmlName(std::string_view text)
{
    return !text.empty() && isNameStart(text.front()) &&
           std::all_of(text.begin(), text.end(), isNameCharacter) && !findXmlTextDefect(text);
}

}  // namespace platform
