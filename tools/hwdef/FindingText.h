#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "hwdef/hwdef.h"

/// How many findings there are of each severity.
struct FindingCounts {
    std::size_t errors = 0;
    std::size_t warnings = 0;
    std::size_t notices = 0;

    explicit FindingCounts(const std::vector<HHDFFinding>& findings);
    /// "1 error, 2 warnings"; "no findings".
    std::string text() const;
};

/// Where a finding is: `member "top.bit"`, `hwdef.xml:12`, `byte 136`; empty when it is about everything.
std::string placeOf(const HHDFFinding& finding);
/// What was found; of a file that is no archive, what it is instead.
std::string textOf(const HHDFFinding& finding, const std::string& path);
