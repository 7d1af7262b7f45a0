#pragma once

#include <string>

#include "platform/Export.h"

/// Facts of the running process.
class HWDEF_API HUTEnv {
public:
    HUTEnv() = delete;

    /// The scratch root of this process: an absolute path without a trailing separator.
    ///
    /// The directory is made at the first call, below $TMPDIR (or /tmp), under a name that nobody
    /// could have prepared, with mode 0700, and is removed with all it holds when the process ends
    /// normally, after the destructors of static objects. Another one is made when someone has
    /// removed it, when the process runs as another user, and in a forked child. Throws HEXAll when
    /// it can't be made. Safe from several threads.
    static std::string getHDITmpDir();

    /// The version of this library, "major.minor.patch".
    static std::string getProductVersion();
};
