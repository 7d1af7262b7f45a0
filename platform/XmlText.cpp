#include "platform/XmlText.h"

#include <algorithm>
#include <boost/locale/utf.hpp>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <utility>

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

/// Where a stretch that begins at `at` and holds no references ends; `at` itself where none begins.
std::size_t skipLiteral(std::string_view document, std::size_t at)
{
    static constexpr std::pair<std::string_view, std::string_view> literals[] = {
        {"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};
    for (const auto& [open, close] : literals) {
        if (document.substr(at, open.size()) == open) {
            const std::size_t end = document.find(close, at + open.size());
            return end == std::string_view::npos ? document.size() : end + close.size();
        }
    }
    return at;
}

/// The number of the reference whose "&#" ends in front of `at`; 0, which is no character, for one
/// beyond all characters. Nothing for what is no whole reference.
std::optional<utf::code_point> referenceNumber(std::string_view document, std::size_t at)
{
    const bool hexadecimal = document.substr(at, 1) == "x";
    const std::string_view rest = document.substr(hexadecimal ? at + 1 : at);
    utf::code_point number = 0;
    // The digits end where they end: to look for the ";" first would go through the whole document for
    // each reference that has none.
    const auto [end, error] =
        std::from_chars(rest.data(), rest.data() + rest.size(), number, hexadecimal ? 16 : 10);
    if (error == std::errc::invalid_argument || end == rest.data() + rest.size() || *end != ';') {
        return std::nullopt;
    }
    return error == std::errc::result_out_of_range ? 0 : number;
}

constexpr std::ptrdiff_t wordSize = sizeof(std::uint64_t);

/// Whether the next eight bytes are plain ASCII without control characters.
bool isPlainWord(const char* text)
{
    constexpr std::uint64_t everyByte = 0x0101010101010101;
    std::uint64_t word = 0;
    std::memcpy(&word, text, wordSize);
    // A byte below 0x20 borrows, a byte from 0x80 on has its highest bit anyway. What a borrow does to the
    // bytes above it doesn't matter: there was one.
    return (((word - 0x20 * everyByte) | word) & (0x80 * everyByte)) == 0;
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
        if (end - at >= wordSize && isPlainWord(at)) {
            at += wordSize;
            continue;
        }
        const auto byte = static_cast<unsigned char>(*at);
        if ((byte >= 0x20 && byte <= 0x7F) || byte == '\n') {
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

std::optional<XmlTextDefect> findBadReference(std::string_view document)
{
    if (document.find("&#") == std::string_view::npos) {
        return std::nullopt;
    }
    std::size_t at = document.find_first_of("<&");
    while (at != std::string_view::npos) {
        const std::size_t behind = skipLiteral(document, at);
        if (behind == at && document.substr(at, 2) == "&#") {
            const auto number = referenceNumber(document, at + 2);
            if (number && !isXmlCharacter(*number)) {
                return XmlTextDefect{at, "reference to a character that XML 1.0 doesn't have"};
            }
        }
        at = document.find_first_of("<&", std::max(behind, at + 1));
    }
    return std::nullopt;
}

bool isXmlName(std::string_view text)
{
    return !text.empty() && isNameStart(text.front()) &&
           std::all_of(text.begin(), text.end(), isNameCharacter) && !findXmlTextDefect(text);
}

XmlParts countXmlParts(std::string_view document)
{
    XmlParts parts;
    parts.attributes = 1;  // the parser makes one more before it stumbles over it
    bool mayBeginText = true;
    bool mayBeginValue = false;
    char before = '\0';
    for (const char c : document) {
        if (before == '<') {
            parts.elements += c != '/' && c != '!' && c != '?';
            parts.texts += c == '!';  // a CDATA section, or less
        }
        before = c;
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
            continue;
        }
        parts.attributes += mayBeginValue && (c == '"' || c == '\'');
        mayBeginValue = c == '=';
        parts.texts += mayBeginText && c != '<';
        mayBeginText = c == '>';
    }
    return parts;
}

XmlParts boundXmlParts(std::string_view document)
{
    // In stretches so short that a byte holds each count: the compiler then compares many characters at once.
    constexpr std::size_t stretch = 255;
    XmlParts parts;
    parts.texts = 1;  // in front of everything
    std::size_t quotes = 0;
    const std::size_t size =
        document.empty() ? 0 : document.size() - 1;  // nothing follows the last character
    for (std::size_t begin = 0; begin < size; begin += stretch) {
        const std::size_t end = std::min(begin + stretch, size);
        std::uint8_t elements = 0;
        std::uint8_t marks = 0;
        std::uint8_t ends = 0;
        for (std::size_t at = begin; at < end; ++at) {
            const char c = document[at];
            const char next = document[at + 1];
            const bool isElement = (c == '<') & (next != '/') & (next != '!') & (next != '?');
            elements = static_cast<std::uint8_t>(elements + isElement);
            marks = static_cast<std::uint8_t>(marks + ((c == '"') | (c == '\'')));
            ends = static_cast<std::uint8_t>(ends + ((c == '>') | ((c == '<') & (next == '!'))));
        }
        parts.elements += elements;
        parts.texts += ends;
        quotes += marks;
    }
    parts.attributes = quotes / 2 + 1;
    return parts;
}

}  // namespace platform
