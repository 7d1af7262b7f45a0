#include <algorithm>
#include <boost/filesystem/path.hpp>

#include "hwdef/container/Extraction.h"
#include "hwdef/container/SafePath.h"
#include "hwdef/container/SourceArchives.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/ComMsgMgr.h"
#include "platform/HUTPathUtils.h"
#include "platform/ProgressWork.h"
#include "platform/iostreams/zip.h"

namespace {

/// The name under which containers hold a driver file: below "drivers", which a relative name that has
/// the word anywhere is taken to say itself.
std::string driverMemberName(const std::string& relativeName)
{
    return relativeName.find("drivers") != std::string::npos
               ? relativeName
               : "drivers" + HUTFile::getDirSeparator() + relativeName;
}

/// Extracts driver files of one container into one directory.
class DriverExtraction {
public:
    DriverExtraction(const iostreams::zip::ArchiveReader& archive, const std::string& dir)
        : archive_(archive), dir_(dir.empty() ? "." : dir), safePath_(dir_)
    {
    }

    /// A file that the container doesn't hold is passed over; what can't be read or written draws a
    /// message.
    void extract(const std::string& relativeName)
    {
        const std::string member = driverMemberName(relativeName);
        const std::string objection = safePath_.objection(member);
        if (!objection.empty()) {
            ComMsgMgr::sendMessage(dir_ + ": driver file \"" + member + "\" is not extracted: " + objection,
                                   false);
            return;
        }
        const iostreams::zip::Entry* entry = findDriverFile(archive_, member);
        if (entry == nullptr) {
            return;
        }
        const std::string target = dir_ + HUTFile::getDirSeparator() + member;
        HUTFile::ensureWritableDirectory(boost::filesystem::path(target).parent_path().string());
        try {
            extractor_.extract(archive_, *entry, target, MemberExtractor::Links::REPLACED);
        } catch (const platform::Cancelled&) {
            throw;
        } catch (const HEXAll& error) {
            ComMsgMgr::sendMessage(error.what(), false);
        }
    }

private:
    const iostreams::zip::ArchiveReader& archive_;
    const std::string dir_;
    const SafePath safePath_;
    MemberExtractor extractor_;
};

/// Tells who watches how much there is to extract.
void expectDrivers(const DriverMap& drivers, const iostreams::zip::ArchiveReader& archive)
{
    for (const auto& [name, records] : drivers.files()) {
        for (const HHDFHwDefDriver& record : records) {
            const auto* entry = findDriverFile(archive, driverMemberName(record.getRelativeName()));
            platform::ProgressWork::expect(entry == nullptr ? 0 : entry->size);
        }
    }
}

}  // namespace

std::size_t HHDFHwDef::getDriverFiles(Texts& files) const
{
    files = implementation_->driverDirs;
    return files.size();
}

std::map<std::string, std::vector<HHDFHwDefDriver>> HHDFHwDef::getDriverFilesMap() const
{
    return implementation_->drivers.files();
}

std::map<std::string, std::vector<HHDFHwDefBoard>> HHDFHwDef::getBoardFilesMap() const
{
    return implementation_->boardFiles;
}

bool HHDFHwDef::addDrivers(const std::string& name, const std::string& directory)
{
    if (implementation_ == nullptr || name.empty() || directory.empty()) {
        return false;
    }
    implementation_->driverDirs[name] = directory;
    return true;
}

bool HHDFHwDef::addDrivers(const std::string& name, std::vector<HHDFHwDefDriver> drivers)
{
    if (implementation_ == nullptr) {
        return false;
    }
    implementation_->drivers.replace(name, std::move(drivers));
    return true;
}

bool HHDFHwDef::addDriverDirToBom(const std::string& parentDir, const std::string& name)
{
    if (implementation_ == nullptr || parentDir.empty() || name.empty()) {
        return false;
    }
    const std::string path = parentDir + HUTFile::getDirSeparator() + name;
    if (!HUTPathUtils::exists(path)) {
        return false;
    }
    HUTFile(path).getCanonicalName(implementation_->driverDirs[name]);
    return true;
}

bool HHDFHwDef::addDriverFileToBom(const std::string& name, const std::string& directory,
                                   const std::string& relativeName, std::string hwDefFilePath)
{
    if (implementation_ == nullptr || directory.empty() || relativeName.empty()) {
        return false;
    }
    implementation_->drivers.add(name, HHDFHwDefDriver(directory + HUTFile::getDirSeparator() + relativeName,
                                                       relativeName, hwDefFilePath));
    return true;
}

bool HHDFHwDef::addBoardFileToBom(std::string name, std::string filePath, std::string relativeName,
                                  std::string hwDefFilePath)
{
    if (implementation_ == nullptr || filePath.empty() || relativeName.empty()) {
        return false;
    }
    implementation_->boardFiles[name].emplace_back(filePath, relativeName, hwDefFilePath);
    return true;
}

bool HHDFHwDef::unzipDrivers(const std::string& targetDir) const
{
    if (implementation_ == nullptr) {
        return false;
    }
    std::string container;
    getContainerFullPath(container);
    const platform::ProgressWork work(container);
    try {
        const auto archive = iostreams::zip::ArchiveReader::openIfExists(container);
        if (archive == nullptr || implementation_->drivers.files().empty()) {
            return true;
        }
        DriverExtraction extraction(*archive, targetDir);
        if (platform::ProgressWork::isWatched()) {
            expectDrivers(implementation_->drivers, *archive);
        }
        for (const auto& [name, records] : implementation_->drivers.files()) {
            for (const HHDFHwDefDriver& record : records) {
                extraction.extract(record.getRelativeName());
            }
        }
    } catch (const iostreams::device::detail::zip_exception& error) {
        ComMsgMgr::sendMessage(error.what(), false);
    } catch (const platform::Cancelled& cancelled) {
        ComMsgMgr::sendMessage(cancelled.what(), false);
        return false;
    }
    return true;
}

bool HHDFHwDef::isVELDExist() const
{
    if (implementation_ == nullptr) {
        return false;
    }
    const auto& files = implementation_->bom.slots();
    return std::any_of(files.begin(), files.end(), [](const HHDFHwDefFile* file) {
        if (file == nullptr || !file->hasFileAttrs()) {
            return false;
        }
        const auto type = file->getFileAttrs().find("ip_type");
        return type != file->getFileAttrs().end() && type->second == "VELD";
    });
}
