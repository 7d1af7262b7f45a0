#pragma once

#include <cstdint>

#include "platform/Export.h"

/// What an archive that nobody vouches for may make this process take, all limits in one place.
///
/// Each is a parameter of the parameter manager, read anew at every use: a caller who trusts his
/// containers raises it by HPAParamMgr::getParamMgr()->setValue(name, bytes in decimal digits). A value
/// that is no such number counts as not set.
namespace platform::limits {

/// Largest member, in bytes as unpacked, that opening a container and the parameter reader take into
/// memory.
/// @{
constexpr const char* MAX_MEMBER_IN_MEMORY = "hwdef.maxMemberInMemory";
constexpr std::uint64_t DEFAULT_MAX_MEMBER_IN_MEMORY = std::uint64_t{256} << 20;
HWDEF_API std::uint64_t maxMemberInMemory();
/// @}

/// Largest packed form, in bytes, of a deflated BOM; a bound to time, not to memory: deflate has blocks
/// that hold nothing, and each takes as long as thousands of characters.
/// @{
constexpr const char* MAX_PACKED_IN_MEMORY = "hwdef.maxPackedInMemory";
constexpr std::uint64_t DEFAULT_MAX_PACKED_IN_MEMORY = std::uint64_t{16} << 20;
HWDEF_API std::uint64_t maxPackedInMemory();
/// @}

/// Most memory, in bytes, that a document out of a container (the BOM, a software-parameter member) may
/// unfold to, with the definition that is made of it.
/// @{
constexpr const char* MAX_DOCUMENT_MEMORY = "hwdef.maxDocumentMemory";
constexpr std::uint64_t DEFAULT_MAX_DOCUMENT_MEMORY = std::uint64_t{480} << 20;
HWDEF_API std::uint64_t maxDocumentMemory();
/// @}

/// Most bytes of members, as unpacked, that computing a definition's digests reads out of containers;
/// a bound to time, not to memory.
/// @{
constexpr const char* MAX_DIGESTED = "hwdef.maxDigestedBytes";
constexpr std::uint64_t DEFAULT_MAX_DIGESTED = std::uint64_t{4} << 30;
/// Larger containers may unpack to so many times their size in any case.
constexpr std::uint64_t DIGESTED_PER_CONTAINER_BYTE = 64;
HWDEF_API std::uint64_t maxDigested();
/// @}

}  // namespace platform::limits
