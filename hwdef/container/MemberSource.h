#pragma once

#include <string>

#include "platform/iostreams/ArchiveReader.h"

class HHDFHwDefImp;

/// Where a member's bytes are: a member of an open archive, or a file on disk.
struct MemberSource {
    const iostreams::zip::ArchiveReader* archive = nullptr;  ///< null for a file on disk
    const iostreams::zip::Entry* entry = nullptr;
    std::string file;
};

/// Where members go: an archive that is being written, or a directory.
class MemberOutput {
public:
    virtual ~MemberOutput() = default;
    MemberOutput() = default;
    MemberOutput(const MemberOutput&) = delete;
    MemberOutput& operator=(const MemberOutput&) = delete;

    /// Names of the same place stand for the same member.
    virtual std::string place(const std::string& name) const { return name; }
    /// Whether members of archives are taken as they are stored there, not unpacked.
    virtual bool takesStored() const { return false; }
    /// Adds a member or replaces it. False, with `reason` in one sentence, when that can't be done;
    /// the member is then as it was before.
    virtual bool put(const std::string& name, const MemberSource& source, std::string& reason) = 0;
};

/// Tells who watches the progress how much there is to put, the BOM in `bomPath` included.
void foreseeMembers(const HHDFHwDefImp& def, const std::string& bomPath, const MemberOutput& output);

/// Gives every member of a definition but the BOM to `output`, in the order of forEachMember.
///
/// A file inside a core container is copied into the scratch directory and taken from there. An entry
/// that names a container is taken from it as a member. Any other is taken from disk.
///
/// A member that can't be had or put is left out; of two entries for one member the later one wins,
/// and none replaces the BOM or takes the name "hwdef.xml", which opening reads as the BOM. Each of
/// these draws one text by ComMsgMgr::sendMessage that names `outputPath`, member, sources and reason;
/// entries that repeat the same source draw none.
void putMembers(const HHDFHwDefImp& def, const std::string& outputPath, MemberOutput& output);

/// Writes the BOM document into the definition's scratch directory and returns its path; empty, after
/// the reason was sent, when it can't be written.
std::string stageBom(const HHDFHwDefImp& def);
