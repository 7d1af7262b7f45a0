#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

/// The members of a JSON document's root object as texts, or why there are none.
struct RootMembers {
    /// Name and value in document order, repeated ones included. Values that aren't strings
    /// as HCRapidJsonReadWriteUtils::GetStringProperty gives them. Empty for any other root.
    std::vector<std::pair<std::string, std::string>> members;
    /// Why the stream could not be read, a clause; empty when it was.
    std::string readError;
    /// Why and where what was read is no JSON document; empty when it is one.
    std::string parseError;
};

/// Reads a stream to its end as one JSON document in UTF-8, of at most `maxBytes` bytes, whose members
/// may take `maxMemoryBytes` as they are collected and sorted into a map.
///
/// Memory grows with the root's members, not with what lies below them but for eight bytes a level;
/// nesting of any depth is parsed without recursion.
RootMembers readRootMembers(std::istream& in, std::size_t maxBytes,
                            std::uint64_t maxMemoryBytes = UINT64_MAX);
