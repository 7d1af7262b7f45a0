#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hwdef/hwdef.h"

/// Opens a container without checking its integrity. Throws CommandError, which says what is wrong with
/// the file, or what it is when it is no container.
std::unique_ptr<HHDFHwDef> openContainer(const std::string& path);

/// What stands at a path, as far as its first bytes tell: "a directory", "an ELF file", "a zip archive".
/// Empty when that isn't known.
std::string kindOf(const std::string& path);

/// The tokens of all file types.
std::vector<std::string> typeTokens();
/// The file type of a token in any case. Throws CommandError with the nearest token.
HHDFHwDefFileTypes::HWHFileType typeOf(const std::string& token);
