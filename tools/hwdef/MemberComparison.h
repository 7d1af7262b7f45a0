#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Container.h"

/// A member of a container that is open.
struct MemberPlace {
    const Container* container;
    const HHDFHwDefArchive::Member* member;
};

/// Two members, and whether they have the same bytes.
struct MemberPair {
    MemberPlace left;
    MemberPlace right;
    bool isSame = false;
};

/// Compares the members of each pair byte by byte where size and checksum don't tell them apart, for the
/// same checksum is no proof. Can be followed and ended as one piece of work. Throws HEXAll after a signal,
/// and when a member can't be read. Takes time in proportion to what it reads.
void compareBytes(std::vector<MemberPair>& pairs);
