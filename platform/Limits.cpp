#include "platform/Limits.h"

#include "platform/HPAParamMgr.h"

namespace platform::limits {

std::uint64_t maxMemberInMemory()
{
    return HPAParamMgr::getParamMgr()->getValueIfExistAsNumber(MAX_MEMBER_IN_MEMORY,
                                                               DEFAULT_MAX_MEMBER_IN_MEMORY);
}

std::uint64_t maxUnpackSeconds()
{
    return HPAParamMgr::getParamMgr()->getValueIfExistAsNumber(MAX_UNPACK_SECONDS,
                                                               DEFAULT_MAX_UNPACK_SECONDS);
}

std::uint64_t maxDocumentMemory()
{
    return HPAParamMgr::getParamMgr()->getValueIfExistAsNumber(MAX_DOCUMENT_MEMORY,
                                                               DEFAULT_MAX_DOCUMENT_MEMORY);
}

std::uint64_t maxDigested()
{
    return HPAParamMgr::getParamMgr()->getValueIfExistAsNumber(MAX_DIGESTED, DEFAULT_MAX_DIGESTED);
}

}  // namespace platform::limits
