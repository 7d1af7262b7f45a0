#pragma once

#include <string>
#include <vector>

#include "Container.h"

/// A name that more than one container brings.
struct Meeting {
    const char* kind;  ///< "file", "file type", "file attribute", "driver" or "attribute"
    std::string name;
    std::string from;    ///< the container that counts
    bool isSame = true;  ///< content, list of files, or value
};

/// What met in containers that `merged` is made of, by kinds in the order above and by names. Reads the bytes
/// of files where size and checksum don't tell them apart. Throws HEXAll when they can't be read.
std::vector<Meeting> meetingsOf(const std::vector<Container>& containers, const HHDFHwDef& merged);
