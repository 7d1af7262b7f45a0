#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hwdef/hwdef.h"

/// One kind of resource: what the design uses, and what the device offers.
struct Resource {
    const char* name;
    std::string used;
    std::string available;

    /// Empty when either isn't a number, or nothing is on offer.
    std::optional<double> percent() const;
};

/// The kinds of which a definition tells anything.
std::vector<Resource> resourcesOf(const HHDFHwDef& definition);

/// One digit behind the point: "12.5 %".
std::string percentText(double percent);
