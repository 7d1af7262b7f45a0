#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "platform/Export.h"

/// Reads software-parameter members: JSON objects of string members, with a "refName".
class HWDEF_API SWParamReader {
public:
    /// Largest member that is read, in bytes as unpacked, unless the parameter "hwdef.maxMemberInMemory"
    /// says otherwise (platform/Limits.h, with the limit to memory).
    static constexpr std::size_t MAX_MEMBER_BYTES = std::size_t{256} << 20;

    /// Reads one member straight out of a container. Both outputs are emptied first and stay empty
    /// after any failure, for a root that isn't an object and for one without "refName".
    ///
    /// Values that aren't strings: numbers and booleans as their JSON text, the empty text for null,
    /// arrays and objects. "pss_io" and "pss_power" are unwrapped; of repeated members the last one
    /// counts. A member that isn't in the container sends nothing, one that can't be opened the notice
    /// "@36-530@%s%s" (member, container). One that doesn't parse, can't be read to its end, is too large
    /// or has too many members sends a text by ComMsgMgr::sendMessage. The std::out_of_range of
    /// processIOString passes through. Memory grows with the root's members, not with what lies below
    /// them, but for eight bytes a level; nesting of any depth is parsed without recursion.
    static void parseAttributeJsonFile(const std::string& member, const std::string& container,
                                       std::string& refName, std::map<std::string, std::string>& attributes);

    /// The text without leading and trailing characters of the set `characters`.
    static std::string trimWithArgument(const std::string& text, const std::string& characters);
};

/// Unwraps a processing-system IO setting in place: cuts each line at its first "\n\" (three
/// characters), then keeps what stands between "(*PSS_IO= \"" and "\" *)". The markers are not
/// checked for: a missing opening marker lets the text start at position 10, a missing closing one
/// keeps everything behind the start. The newline that ends the last line is added when it is missing
/// and counts, an empty text stays empty. Throws std::out_of_range, the text unchanged, when the start
/// lies beyond the end.
HWDEF_API void processIOString(std::string& text);

/// Unwraps a processing-system power setting in place: joins its lines without their trailing
/// backslashes (a line of backslashes only is kept), then keeps what stands between "(*PSS_POWER= \""
/// and "\" *)"; empty when a marker is missing, everything behind the opening one when the closing one
/// stands before the opening one's end.
HWDEF_API void processPowerString(std::string& text);
