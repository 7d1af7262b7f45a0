#include "hwdef/container/MemberSource.h"

#include <boost/filesystem/operations.hpp>
#include <unordered_map>
#include <unordered_set>

#include "hwdef/bom/HHDFHwDefBomWriter.h"
#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/container/MemberEntry.h"
#include "hwdef/container/SourceArchives.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/ComMsgMgr.h"
#include "platform/HUTCoreContainer.h"
#include "platform/KeyedHash.h"
#include "platform/ProgressWork.h"

namespace {

/// One run over a definition's members.
class Transfer {
public:
    Transfer(const HHDFHwDefImp& def, const std::string& outputPath, MemberOutput& output)
        : def_(def), outputPath_(outputPath), output_(output), bomPlace_(output.place(def.bomName))
    {
    }

    void take(const MemberEntry& member)
    {
        const std::string name = member.name();
        const std::string place = output_.place(name);
        // Opening prefers "hwdef.xml" whatever the other BOM document says.
        if (place == bomPlace_ || place == output_.place("hwdef.xml")) {
            say(name, "from " + member.origin() + " is left out: the name is that of a BOM document");
            return;
        }
        const auto earlier = taken_.find(place);
        if (earlier != taken_.end() && earlier->second.hasSameSource(member)) {
            return;
        }
        MemberSource source;
        std::string reason;
        if (!locate(member, source, reason) || !output_.put(name, source, reason)) {
            say(name, "can't be added from " + member.origin() + ": " + reason);
            return;
        }
        if (earlier == taken_.end()) {
            taken_.emplace(place, member);
            return;
        }
        say(name, "from " + member.origin() + " takes the place of the one from " + earlier->second.origin());
        earlier->second = member;
    }

private:
    bool locate(const MemberEntry& member, MemberSource& source, std::string& reason)
    {
        if (member.name().empty()) {
            reason = "a member must have a name";
            return false;
        }
        const std::string archive = member.archive();
        return archive.empty() ? locateOnDisk(member, source, reason)
                               : locateInArchive(archive, member, source, reason);
    }

    bool locateInArchive(const std::string& archive, const MemberEntry& member, MemberSource& source,
                         std::string& reason)
    {
        source.archive = archives_.open(archive, reason);
        if (source.archive == nullptr) {
            reason = reason.empty() ? "there is no such container" : reason;
            return false;
        }
        source.entry = findMember(*source.archive, member);
        reason = "the container has no such member";
        return source.entry != nullptr;
    }

    bool locateOnDisk(const MemberEntry& member, MemberSource& source, std::string& reason) const
    {
        source.file = member.diskPath();
        if (!HUTCoreContainer::hasParentCoreContainer(source.file, false)) {
            return true;
        }
        const std::string& scratch = def_.tmpDir->getDir();
        if (scratch.empty()) {
            reason = "there is no scratch directory to copy it to";
            return false;
        }
        // The copy is put at once, before the next file of the same name takes its place.
        const std::string copy =
            scratch + HUTFile::getDirSeparator() + std::string(HUTFile(source.file).name());
        const bool copied = HUTCoreContainer::cp(source.file, copy, true, &reason);
        source.file = copy;
        return copied;
    }

    void say(const std::string& name, const std::string& what) const
    {
        ComMsgMgr::sendMessage(outputPath_ + ": member \"" + name + "\" " + what, false);
    }

    const HHDFHwDefImp& def_;
    const std::string& outputPath_;
    MemberOutput& output_;
    const std::string bomPlace_;
    SourceArchives archives_;
    std::unordered_map<std::string, MemberEntry, platform::KeyedHash> taken_;
};

}  // namespace

void foreseeMembers(const HHDFHwDefImp& def, const std::string& bomPath, const MemberOutput& output)
{
    if (!platform::ProgressWork::isWatched()) {
        return;
    }
    boost::system::error_code error;
    const std::uintmax_t bomBytes = boost::filesystem::file_size(bomPath, error);
    platform::ProgressWork::expect(error ? 0 : bomBytes);
    SourceArchives archives;
    std::unordered_set<std::string, platform::KeyedHash> places;
    forEachMember(def, [&](const MemberEntry& member) {
        if (places.insert(output.place(member.name())).second) {
            platform::ProgressWork::expect(sourceBytes(archives, member, output.takesStored()));
        }
    });
}

void putMembers(const HHDFHwDefImp& def, const std::string& outputPath, MemberOutput& output)
{
    Transfer transfer(def, outputPath, output);
    forEachMember(def, [&transfer](const MemberEntry& member) { transfer.take(member); });
}

std::string stageBom(const HHDFHwDefImp& def)
{
    const std::string& dir = def.tmpDir->getDir();
    if (dir.empty()) {
        ComMsgMgr::sendMessage(
            def.container->path() + ": there is no scratch directory for \"" + def.bomName + "\"", false);
        return {};
    }
    const std::string path = dir + HUTFile::getDirSeparator() + def.bomName;
    return HHDFHwDefBomWriter().write(def.owner, path) ? path : std::string();
}
