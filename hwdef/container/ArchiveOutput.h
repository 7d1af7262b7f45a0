#pragma once

#include <string>

#include "platform/iostreams/ArchiveWriter.h"

class HHDFHwDefImp;

/// Adds the BOM document `bomPath` and then every member of a definition to an archive that is being
/// written; see putMembers. Throws HEXAll when the archive or the BOM fails.
void addAllMembers(const HHDFHwDefImp& def, const std::string& bomPath, const std::string& archivePath,
                   iostreams::zip::ArchiveWriter& archive);
