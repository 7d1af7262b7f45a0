#include "Embedded.h"

namespace {

constexpr std::size_t indentation = 4;

}  // namespace

std::string embedded(const std::string& document, std::size_t depth)
{
    std::string result;
    for (const char character : document) {
        result += character;
        if (character == '\n') {  // texts hold none: they are escaped
            result.append(indentation * depth, ' ');
        }
    }
    return result;
}

std::string embeddedArray(const std::vector<std::string>& documents)
{
    const std::string line = "\n" + std::string(2 * indentation, ' ');
    std::string array;
    for (const std::string& document : documents) {
        array += (array.empty() ? line : "," + line) + embedded(document, 2);
    }
    return "[" + array + (array.empty() ? "]" : "\n" + std::string(indentation, ' ') + "]");
}
