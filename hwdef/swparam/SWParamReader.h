#pragma once

#include <map>
#include <string>

#include "platform/Export.h"

/// Reads software-parameter members: JSON objects of string members, with a "refName".
class HWDEF_API SWParamReader {
public:
    /// Reads one member straight out of a container. Both outputs are emptied first and stay empty
    /// after any failure and for a document without "refName". "pss_io" and "pss_power" are unwrapped;
    /// of repeated members the last one counts. A member that can't be opened sends the notice
    /// "@36-530@%s%s", one that doesn't parse a text by ComMsgMgr::sendMessage. Nesting of any depth is
    /// parsed without recursion.
    static void parseAttributeJsonFile(const std::string& member, const std::string& container,
                                       std::string& refName, std::map<std::string, std::string>& attributes);

    /// The text without leading and trailing characters of the set.
    static std::string trimWithArgument(const std::string& text, const std::string& characters);
};

/// Unwraps a processing-system IO setting in place: cuts each line at its first "\n\" (three
/// characters), then keeps what stands between "(*PSS_IO= \"" and "\" *)". The markers are not
/// checked for: a missing opening marker lets the text start at position 10, a missing closing one
/// keeps everything behind the start. Throws std::out_of_range, the text unchanged, when the start
/// lies beyond the end.
HWDEF_API void processIOString(std::string& text);

/// Unwraps a processing-system power setting in place: joins its lines without their trailing
/// backslashes, then keeps what stands between "(*PSS_POWER= \"" and "\" *)"; empty when a marker is
/// missing.
HWDEF_API void processPowerString(std::string& text);
