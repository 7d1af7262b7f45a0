#pragma once

#include <cstdint>
#include <string_view>

namespace iostreams::zip {

/// Compression methods (APPNOTE 4.4.5) that are read and written.
constexpr std::uint16_t METHOD_STORED = 0;
constexpr std::uint16_t METHOD_DEFLATED = 8;

/// One member as the central directory lists it (APPNOTE 4.3.12), zip64 fields resolved.
struct Entry {
    std::string_view name;    ///< bytes as stored; lives as long as the directory
    std::string_view record;  ///< the whole directory record as stored, from its signature on
    std::uint64_t compressedSize = 0;
    std::uint64_t size = 0;          ///< uncompressed, in bytes
    std::uint64_t headerOffset = 0;  ///< of the local header, from the file's first byte
    std::uint32_t crc = 0;
    std::uint16_t method = METHOD_STORED;
    std::uint16_t flags = 0;
};

}  // namespace iostreams::zip
