#pragma once

#include <cstdint>

#include "platform/Export.h"

/// What an archive that nobody vouches for may make this process take, all limits in one place.
///
/// Each is a parameter of the parameter manager, read anew at every use: a caller who trusts his
/// containers raises it by HPAParamMgr::getParamMgr()->setValue(name, bytes or seconds in decimal digits). A
/// value that is no such number counts as not set.
namespace platform::limits {

/// Largest member, in bytes as unpacked, that opening a container and the parameter reader take into
/// memory.
/// @{
constexpr const char* MAX_MEMBER_IN_MEMORY = "hwdef.maxMemberInMemory";
constexpr std::uint64_t DEFAULT_MAX_MEMBER_IN_MEMORY = std::uint64_t{256} << 20;
HWDEF_API std::uint64_t maxMemberInMemory();
/// @}

/// Most time, in seconds, that unpacking may take: a quarter for the BOM when a container is opened, the rest
/// for the members whose digests are computed. A second more for each 8 MiB of the containers beyond 64 MiB.
/// Several times what it takes when nobody means harm, for most contents a hundred times.
/// @{
constexpr const char* MAX_UNPACK_SECONDS = "hwdef.maxUnpackSeconds";
constexpr std::uint64_t DEFAULT_MAX_UNPACK_SECONDS = 4;
constexpr std::uint64_t UNPACK_FREE_ARCHIVE_BYTES = std::uint64_t{64} << 20;
constexpr double ARCHIVE_BYTES_PER_UNPACK_SECOND = 8 * 1024 * 1024;
constexpr double BOM_SHARE_OF_UNPACK_SECONDS = 0.25;
HWDEF_API std::uint64_t maxUnpackSeconds();
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
