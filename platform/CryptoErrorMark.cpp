#include "platform/CryptoErrorMark.h"

#include <openssl/err.h>

namespace platform {

CryptoErrorMark::CryptoErrorMark()
{
    ERR_set_mark();
}

CryptoErrorMark::~CryptoErrorMark()
{
    ERR_pop_to_mark();
}

}  // namespace platform
