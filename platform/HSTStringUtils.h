#pragma once

#include <string_view>

#include "platform/Export.h"

/// Text operations that do not depend on the locale.
class HWDEF_API HSTStringUtils {
public:
    HSTStringUtils() = delete;

    /// Equality that takes ASCII letters without regard to case; all other bytes must be the same.
    static bool iequals(std::string_view left, std::string_view right);
};
