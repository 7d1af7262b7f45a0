#include "platform/HSTStringUtils.h"

#include <algorithm>

namespace {

char lowered(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

}  // namespace

bool HSTStringUtils::iequals(std::string_view left, std::string_view right)
{
    // What is equal to the letter, as it nearly always is, is seen much faster.
    return left.size() == right.size() &&
           (left == right || std::equal(left.begin(), left.end(), right.begin(),
                                        [](char a, char b) { return lowered(a) == lowered(b); }));
}
