#pragma once

#include <string>
#include <utility>
#include <vector>

#include "hwdef/hwdef.h"

/// The designs that the benchmarks hand over.
namespace bench {

using Files = std::vector<std::pair<std::string, HHDFHwDefFileTypes::HWHFileType>>;

/// The first `count` regular files of a directory in byte-wise order of their names (all for 0), each
/// with a type that goes with its suffix. Throws std::runtime_error when there are fewer.
Files filesOf(const std::string& dir, std::size_t count = 0);

/// A definition for the container `path` with the properties that a tool sets, and with these files.
/// Every fourth file has an attribute, every tenth is a handoff with a place in the hierarchy.
std::unique_ptr<HHDFHwDef> design(const std::string& path, const Files& files);

/// The name of a file in a container.
std::string nameOf(const std::string& path);

}  // namespace bench
