#include "platform/iostreams/NewMember.h"

#include <limits>
#include <string>

namespace iostreams::zip {

SourceError::~SourceError() = default;

NewMember::~NewMember() = default;

void checkMemberName(std::string_view name)
{
    constexpr std::size_t limit = std::numeric_limits<std::uint16_t>::max();
    if (name.empty()) {
        throw SourceError("a member must have a name, but it is empty");
    }
    if (name.size() > limit) {
        throw SourceError("member \"" + std::string(name.substr(0, 40)) + "...\": its name has " +
                          std::to_string(name.size()) + " bytes, allowed are " + std::to_string(limit));
    }
}

}  // namespace iostreams::zip
