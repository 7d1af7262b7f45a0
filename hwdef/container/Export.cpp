#include <algorithm>
#include <boost/filesystem/path.hpp>
#include <vector>

#include "hwdef/container/ArchiveOutput.h"
#include "hwdef/container/Extraction.h"
#include "hwdef/container/MemberSource.h"
#include "hwdef/container/SafePath.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/ArchiveDigest.h"
#include "platform/ComMsgMgr.h"
#include "platform/HEXAll.h"
#include "platform/HSTStringUtils.h"
#include "platform/ProgressWork.h"
#include "platform/iostreams/EndRecord.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::ArchiveWriter;
using iostreams::zip::Entry;

namespace {

/// Whether the member is a BOM document under the name that this export does not use. Opening would
/// read it in place of the new one, or beside it.
bool isOtherBom(const HHDFHwDefImp& def, std::string_view name)
{
    return name != def.bomName && (name == "hwdef.xml" || name == "sysdef.xml");
}

/// Carries comment and members of the archive that is there over, except what was written anew.
void keepOtherMembers(const HHDFHwDefImp& def, const ArchiveReader& present, ArchiveWriter& archive)
{
    archive.setComment(platform::ArchiveDigest::withoutDigest(present.endRecord().comment));
    for (const Entry& entry : present.entries()) {
        const bool isListedAgain = present.find(entry.name)->record.data() != entry.record.data();
        if (isListedAgain || archive.contains(entry.name)) {
            continue;
        }
        if (isOtherBom(def, entry.name)) {
            ComMsgMgr::sendMessage(present.path() + ": member \"" + std::string(entry.name) +
                                       "\" is left out: \"" + def.bomName + "\" takes its place as the BOM",
                                   false);
            continue;
        }
        std::string reason;
        if (!archive.addMember(present, entry, std::string(entry.name), reason)) {
            throw HEXAll(present.path() + ": member \"" + std::string(entry.name) +
                         "\" can't be kept, so nothing is added: " + reason);
        }
    }
}

void exportToArchive(const HHDFHwDefImp& def, const std::string& bomPath, const std::string& path)
{
    try {
        const std::unique_ptr<ArchiveReader> present = ArchiveReader::openIfExists(path);
        ArchiveWriter archive(path);
        addAllMembers(def, bomPath, path, archive);
        if (present != nullptr) {
            keepOtherMembers(def, *present, archive);
        }
        archive.commit();
    } catch (const platform::Cancelled&) {
        throw;
    } catch (const HEXAll& error) {
        ComMsgMgr::sendMessage(error.what(), false);
    }
}

class DirectoryOutput : public MemberOutput {
public:
    explicit DirectoryOutput(const std::string& dir) : dir_(dir), safePath_(dir) {}

    std::string place(const std::string& name) const override
    {
        boost::filesystem::path place;
        for (const boost::filesystem::path& component : boost::filesystem::path(name)) {
            if (component.native() != ".") {
                place /= component;
            }
        }
        return place.string();
    }

    bool put(const std::string& name, const MemberSource& source, std::string& reason) override
    {
        reason = safePath_.objection(name);
        if (!reason.empty()) {
            return false;
        }
        const std::string target = dir_ + HUTFile::getDirSeparator() + name;
        const std::string parent = boost::filesystem::path(target).parent_path().string();
        if (!HUTFile::ensureWritableDirectory(parent)) {
            reason = parent + " is no directory that can be written to";
            return false;
        }
        return copy(source, target, reason);
    }

private:
    /// A link at the target's place is replaced, so that two members never share what it points to.
    bool copy(const MemberSource& source, const std::string& target, std::string& reason)
    {
        try {
            if (source.archive == nullptr) {
                copyFile(source.file, target);
            } else {
                extractor_.extract(*source.archive, *source.entry, target, MemberExtractor::Links::REPLACED);
            }
            return true;
        } catch (const platform::Cancelled&) {
            throw;
        } catch (const HEXAll& error) {
            reason = error.what();
            return false;
        }
    }

    const std::string dir_;
    const SafePath safePath_;
    MemberExtractor extractor_;
};

void exportToDirectory(const HHDFHwDefImp& def, const std::string& bomPath, const std::string& dir)
{
    DirectoryOutput output(dir);
    foreseeMembers(def, bomPath, output);
    MemberSource bom;
    bom.file = bomPath;
    std::string reason;
    if (!output.put(def.bomName, bom, reason)) {
        ComMsgMgr::sendMessage(dir + ": member \"" + def.bomName + "\" can't be added: " + reason, false);
    }
    putMembers(def, dir, output);
}

/// Whether a path that is no directory may be written to as an archive, by its extension.
bool isExportArchive(const std::string& path)
{
    std::string extension;
    HUTFile(path).getExt(extension);
    if (extension.empty()) {
        ComMsgMgr::sendMsg("hdf", "@64-27@%s", 1, ComMsgMgr::FAILURE, path.c_str());
        return false;
    }
    if (!HSTStringUtils::iequals(extension, "dsa")) {
        ComMsgMgr::sendMsg("hdf", "@64-26@", 0, ComMsgMgr::FAILURE);
        return false;
    }
    return true;
}

}  // namespace

bool HHDFHwDefImp::write(const std::string& path)
{
    const bool isDirectory = HUTFile(path).isDir();
    if (!isDirectory && !isExportArchive(path)) {
        return false;
    }
    const std::string bomPath = stageBom(*this);
    if (bomPath.empty()) {
        return false;
    }
    const platform::ProgressWork work(path);
    try {
        if (isDirectory) {
            exportToDirectory(*this, bomPath, path);
        } else {
            exportToArchive(*this, bomPath, path);
        }
        return true;
    } catch (const platform::Cancelled& cancelled) {
        ComMsgMgr::sendMessage(cancelled.what(), false);
        return false;
    }
}

bool HHDFHwDef::write(const std::string& path)
{
    if (implementation_ == nullptr) {
        return false;
    }
    implementation_->runDRC();
    return implementation_->write(path);
}

void HHDFHwDefImp::removeUnnecessaryFilesForQVA()
{
    std::vector<const HHDFHwDefFile*> unnecessary;
    for (const HHDFHwDefFile* file : bom.slots()) {
        if (file == nullptr) {
            continue;
        }
        const std::string token = HHDFHwDefFileTypes::getHWHFileTypeStr(file->getFileType());
        if (std::find(qvaExclusions.begin(), qvaExclusions.end(), token) != qvaExclusions.end()) {
            unnecessary.push_back(file);
        }
    }
    for (const HHDFHwDefFile* file : unnecessary) {
        strippedFiles.push_back(bom.remove(file));
    }
}

void HHDFHwDef::removeUnnecessaryFilesForQVA()
{
    if (implementation_ != nullptr) {
        implementation_->removeUnnecessaryFilesForQVA();
    }
}
