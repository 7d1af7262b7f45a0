#pragma once

#include <string>

/// One thing that two containers don't have in common.
struct HHDFDifference {
    /// Which of the two containers has it: the second one only, the first one only, or both.
    enum Kind { ADDED, REMOVED, CHANGED };

    /// "property", "resource", "attribute", "file", "driver", "member", "partition", "configuration" or
    /// "parameter".
    std::string section;
    std::string item;     ///< the name of the thing: a property's, a file's, a partition's path
    std::string field;    ///< what of it; empty when it is there as a whole or not
    Kind kind = CHANGED;  ///< what became of it
    std::string before;   ///< in the first container; empty when it isn't there
    std::string after;    ///< in the second one

    /// "added", "removed" or "changed".
    const char* kindName() const { return kind == ADDED ? "added" : kind == REMOVED ? "removed" : "changed"; }
};
