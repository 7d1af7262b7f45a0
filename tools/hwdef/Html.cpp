#include "Html.h"

#include <cmath>

#include "Text.h"

std::string html(std::string_view text)
{
    std::string escaped;
    for (const char character : printable(text)) {
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\'':
                escaped += "&#39;";
                break;
            default:
                escaped += character;
        }
    }
    return escaped;
}

std::string pixels(double length)
{
    const long long tenths = std::llround(length * 10);
    return std::to_string(tenths / 10) + "." + std::to_string(std::llabs(tenths % 10));
}
