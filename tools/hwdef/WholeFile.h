#pragma once

#include <string>
#include <string_view>

/// Writes a file that appears whole or not at all; until then, what stands at the path stays. Of a link,
/// what it leads to is replaced; a device or a pipe is written to. Throws CommandError with the reason.
void writeWhole(const std::string& path, std::string_view bytes);
