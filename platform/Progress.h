#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "platform/Export.h"
#include "platform/HEXAll.h"

namespace platform {

/// How far one call of the library has come.
struct Progress {
    std::uint64_t doneBytes = 0;   ///< never falls during a call
    std::uint64_t totalBytes = 0;  ///< as far as known by now, at least doneBytes; may change on the way
    std::string_view member;       ///< what was worked on last; empty for the archive as a whole
};

/// Is told after each piece of work, at most some MiB apart; false cancels the call. What it throws
/// passes through the library to the caller, but for what derives from HEXAll, which it must not throw. It
/// may call the library itself: that is not reported.
using ProgressFunction = std::function<bool(const Progress&)>;

/// While it lives, calls of the thread that made it report to a function; of several the innermost one
/// is told. Must be destroyed on the same thread, the innermost first.
///
/// These calls report: HHDFHwDef::write (packaging and export), calculateDigest, init and
/// HHDFHwDefUtils::getHDF with an integrity check, unzipDrivers, the member operations and writeHDF of
/// HHDFHwDefUtils, HUTZip::checkIntegrity, and what `hwdef/inspect/` offers. Calls that the library makes
/// inside of one of these belong to it.
///
/// A cancelled call ends as any failing one does: a text that says "cancelled" comes by
/// ComMsgMgr::sendMessage (but for HUTZip::checkIntegrity, whose result says it), the result is false or
/// empty, a container or file to be written is as it was before, and no temporary file stays. Members that
/// were exported or extracted as files before stay. Without a watch nothing is counted.
class HWDEF_API ProgressWatch {
public:
    /// From now on `function` is told.
    explicit ProgressWatch(ProgressFunction function);
    ~ProgressWatch();
    ProgressWatch(const ProgressWatch&) = delete;
    ProgressWatch& operator=(const ProgressWatch&) = delete;

private:
    friend class ProgressWork;

    ProgressFunction function_;
    ProgressWatch* outer_;
    bool isTelling_ = false;  ///< the function is running

    HWDEF_LOCAL static thread_local ProgressWatch* innermost_;
};

/// Ends a call whose progress function said so. Stays inside the library but where an operation is said
/// to throw HEXAll.
class HWDEF_API Cancelled : public HEXAll {
public:
    using HEXAll::HEXAll;
    ~Cancelled() override;
};

}  // namespace platform
