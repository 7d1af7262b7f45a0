#include "hwdef/container/ArchiveOutput.h"

#include "hwdef/container/MemberSource.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/HEXAll.h"

using iostreams::zip::ArchiveWriter;

namespace {

class ArchiveOutput : public MemberOutput {
public:
    explicit ArchiveOutput(ArchiveWriter& archive) : archive_(archive) {}

    bool takesStored() const override { return true; }

    bool put(const std::string& name, const MemberSource& source, std::string& reason) override
    {
        return source.archive == nullptr ? archive_.addFile(source.file, name, reason)
                                         : archive_.addMember(*source.archive, *source.entry, name, reason);
    }

private:
    ArchiveWriter& archive_;
};

}  // namespace

void addAllMembers(const HHDFHwDefImp& def, const std::string& bomPath, const std::string& archivePath,
                   ArchiveWriter& archive)
{
    ArchiveOutput output(archive);
    foreseeMembers(def, bomPath, output);
    std::string reason;
    if (!archive.addFile(bomPath, def.bomName, reason)) {
        throw HEXAll(archivePath + ": member \"" + def.bomName + "\" can't be added: " + reason);
    }
    putMembers(def, archivePath, output);
}
