#pragma once

#include "hwdef/inspect/BomFindings.h"
#include "hwdef/inspect/FindingList.h"
#include "platform/iostreams/ArchiveReader.h"

/// Reads every member to its end, and tells which are damaged or have another digest than the BOM `bom`
/// records. `listing` is null when there is no BOM to hold them against. Throws platform::Cancelled.
void findContentFaults(const iostreams::zip::ArchiveReader& archive, const std::string& bom,
                       const BomListing* listing, FindingList& findings);

/// What a zip_exception says of a member, without archive and name in front.
std::string reasonOf(const std::string& text, const std::string& archive, std::string_view member);
