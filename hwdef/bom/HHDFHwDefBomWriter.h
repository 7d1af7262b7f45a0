#pragma once

#include <string>

#include "platform/Export.h"

class HHDFHwDef;

/// Writes a definition's BOM document.
class HWDEF_API HHDFHwDefBomWriter {
public:
    /// Stateless: one writer serves any number of calls.
    HHDFHwDefBomWriter();
    ~HHDFHwDefBomWriter();

    /// Writes the whole document to `path`, replacing what was there. False for a null definition,
    /// and, after the reason was sent by ComMsgMgr::sendMessage, when the file can't be written or a
    /// text can't be carried by XML.
    bool write(const HHDFHwDef* def, const std::string& path) const;
};
