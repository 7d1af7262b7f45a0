#pragma once

#include <cstdint>
#include <string>

#include "platform/Export.h"

/// The process-wide parameter manager: named settings as text. All operations may be called from
/// several threads.
class HWDEF_API HPAParamMgr {
public:
    /// The manager of the process; never null, lives until the process ends.
    static HPAParamMgr* getParamMgr();

    HPAParamMgr(const HPAParamMgr&) = delete;
    HPAParamMgr& operator=(const HPAParamMgr&) = delete;

    /// The parameter read as a boolean: true for "true", "1", "yes" and "on" in any case, false for
    /// any other text; `fallback` when the parameter was never set or was removed.
    bool getValueIfExistAsBool(const std::string& name, bool fallback) const;

    /// The parameter read as a number of decimal digits only; `fallback` when the parameter isn't set,
    /// or its text is anything else or above what 64 bits hold.
    std::uint64_t getValueIfExistAsNumber(const std::string& name, std::uint64_t fallback) const;

    /// Sets or replaces a parameter.
    void setValue(const std::string& name, const std::string& value);

    /// Removes a parameter; nothing when it isn't set.
    void removeValue(const std::string& name);

private:
    HPAParamMgr() = default;
    ~HPAParamMgr() = default;
};
