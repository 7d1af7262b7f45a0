#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fuzz {

/// Members of an archive in its order: name and content.
using Members = std::vector<std::pair<std::string, std::string>>;

/// The directory of this process, on a file system in memory where there is one, removed at exit.
const std::string& directory();
/// Puts an input at the path that all targets use, in place of the last one, and gives the path.
std::string writeInput(std::string_view bytes);

/// What an input of a target for containers stands for. One that begins like a zip archive is taken
/// as it is. Any other is a list of members, parted by SEPARATOR, each a name and, behind the first
/// zero byte, its content: made an archive here, so that what is behind the checksums can be reached.
/// Gives the archive's path.
std::string writeContainer(std::string_view input);
constexpr std::string_view SEPARATOR = "\xff\xfe";
/// The input that stands for these members.
std::string inputOf(const Members& members);

/// Drops all messages from now on; they are not what is looked for.
void dropMessages();

/// Ends the process as a crash does, after a line on standard error, when a fact does not hold.
void require(bool holds, const char* fact);

inline std::string_view view(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
