#include "support/WithoutPrivileges.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace support {

namespace {

constexpr unsigned nobody = 65534;

}  // namespace

WithoutPrivileges::WithoutPrivileges(const std::string& readOnly) : readOnly_(readOnly), user_(::geteuid())
{
    struct stat status = {};
    EXPECT_EQ(::stat(readOnly_.c_str(), &status), 0) << readOnly_;
    mode_ = status.st_mode & 07777;
    EXPECT_EQ(::chmod(readOnly_.c_str(), 0555), 0) << readOnly_;
    EXPECT_TRUE(user_ != 0 || ::seteuid(nobody) == 0);
}

WithoutPrivileges::~WithoutPrivileges()
{
    EXPECT_TRUE(user_ != 0 || ::seteuid(user_) == 0);
    EXPECT_EQ(::chmod(readOnly_.c_str(), mode_), 0) << readOnly_;
}

}  // namespace support
