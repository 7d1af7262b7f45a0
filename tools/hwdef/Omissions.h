#pragma once

#include <string>
#include <vector>

#include "Container.h"

/// Something of a container that a merged definition doesn't have.
struct Omission {
    /// "property" (of the container that properties come from, of all when none gives them), "driver file"
    /// (of a driver that a later container brings with other files), "partition", "configuration", "member"
    /// (that the bill of materials doesn't list), "comment" (of the archive) or "bytes" (of no member).
    const char* kind;
    std::string name;  ///< a property's key, a path, the comment itself, or which bytes
    const Container* container;
};

/// What merging leaves out, by containers in order and by kinds in the order above. `propertySource` is null
/// when no container gives its properties. Cost: n log n.
std::vector<Omission> omissionsOf(const std::vector<Container>& containers, const HHDFHwDef& merged,
                                  const Container* propertySource);
