#include "platform/CryptoErrorMark.h"

#include <gtest/gtest.h>
#include <openssl/err.h>

TEST(CryptoErrorMark, takesOffWhatCameInItsLife)
{
    ERR_clear_error();
    {
        const platform::CryptoErrorMark mark;
        ERR_raise(ERR_LIB_CRYPTO, ERR_R_MALLOC_FAILURE);
    }
    EXPECT_EQ(ERR_peek_error(), 0UL);
}

TEST(CryptoErrorMark, leavesWhatWasThereBefore)
{
    ERR_clear_error();
    ERR_raise(ERR_LIB_CRYPTO, ERR_R_INTERNAL_ERROR);
    {
        const platform::CryptoErrorMark mark;
        ERR_raise(ERR_LIB_CRYPTO, ERR_R_MALLOC_FAILURE);
    }
    EXPECT_EQ(ERR_GET_REASON(ERR_peek_last_error()), ERR_R_INTERNAL_ERROR);
    ERR_clear_error();
}
