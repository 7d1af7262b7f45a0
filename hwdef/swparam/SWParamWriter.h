#pragma once

#include <string>

#include "platform/Export.h"

/// Writes software-parameter files.
class HWDEF_API SWParamWriter {
public:
    /// Writes a JSON object of two string members, "refName" and `key`, with an indentation of four
    /// spaces, replacing the file at `path`. Always true: a path that can't be written to gives no file.
    static bool writeParamInfo(const std::string& path, std::string refName, const std::string& key,
                               const std::string& value);
};
