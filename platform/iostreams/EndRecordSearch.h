#pragma once

#include "platform/iostreams/EndRecord.h"

namespace iostreams::zip {

/// Searches the whole file from its end to its start for the last end record whose archive is
/// consistent: it begins with the file's first byte, every directory record can be read, and every
/// member has a local header where the directory says. That is what an addition leaves behind when it
/// was interrupted while the end of the file held no end record. A member that is an archive itself
/// is never taken for the outer one, since its directory's offset counts from the member's start.
///
/// Throws zip_exception when there is none. The work is bounded by a multiple of the file's size.
EndRecord searchBackForEndRecord(const FileTail& tail);

}  // namespace iostreams::zip
