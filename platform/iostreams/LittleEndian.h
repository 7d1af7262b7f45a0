#pragma once

#include <boost/endian/conversion.hpp>

#include <cstdint>
#include <string>

/// Numbers as zip archives store them: little-endian, not aligned.
namespace iostreams::zip {

inline std::uint16_t load16(const char* bytes)
{
    return boost::endian::load_little_u16(reinterpret_cast<const unsigned char*>(bytes));
}

inline std::uint32_t load32(const char* bytes)
{
    return boost::endian::load_little_u32(reinterpret_cast<const unsigned char*>(bytes));
}

inline std::uint64_t load64(const char* bytes)
{
    return boost::endian::load_little_u64(reinterpret_cast<const unsigned char*>(bytes));
}

inline void append16(std::string& out, std::uint16_t number)
{
    const std::uint16_t little = boost::endian::native_to_little(number);
    out.append(reinterpret_cast<const char*>(&little), sizeof little);
}

inline void append32(std::string& out, std::uint32_t number)
{
    const std::uint32_t little = boost::endian::native_to_little(number);
    out.append(reinterpret_cast<const char*>(&little), sizeof little);
}

inline void append64(std::string& out, std::uint64_t number)
{
    const std::uint64_t little = boost::endian::native_to_little(number);
    out.append(reinterpret_cast<const char*>(&little), sizeof little);
}

}  // namespace iostreams::zip
