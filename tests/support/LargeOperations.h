#pragma once

#include <vector>

#include "support/Operation.h"

namespace support {

/// Operations on members that don't fit into a buffer, compressible and not: packaging, exports and
/// additions.
std::vector<Operation> largeOperations();

}  // namespace support
