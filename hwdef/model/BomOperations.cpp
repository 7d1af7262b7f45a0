#include <algorithm>
#include <boost/filesystem/path.hpp>

#include "hwdef/container/HHDFCTmpDirObject.h"
#include "hwdef/model/HHDFHwDef.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/HSTStringUtils.h"

namespace {

/// Calls `visit` with each entry in list order.
template <typename Visit>
void forEachEntry(const HHDFHwDefImp* data, Visit visit)
{
    if (!data) {
        return;
    }
    for (HHDFHwDefFile* file : data->bom.slots()) {
        if (file) {
            visit(*file);
        }
    }
}

/// The first entry in list order that `isWanted` accepts; null when there is none.
template <typename IsWanted>
const HHDFHwDefFile* findEntry(const HHDFHwDefImp* data, IsWanted isWanted)
{
    if (!data) {
        return nullptr;
    }
    const std::vector<HHDFHwDefFile*>& files = data->bom.slots();
    const auto found = std::find_if(files.begin(), files.end(),
                                    [&](const HHDFHwDefFile* file) { return file && isWanted(*file); });
    return found == files.end() ? nullptr : *found;
}

/// The first entry of that exact file name; null when there is none.
HHDFHwDefFile* firstNamed(const HHDFHwDefImp* data, std::string_view fileName)
{
    return data ? data->bom.firstNamed(fileName) : nullptr;
}

/// Appends the wanted entries to the caller's vector, or empties it without data.
template <typename IsWanted>
std::size_t listEntries(const HHDFHwDefImp* data, std::vector<HHDFHwDefFile*>& files, IsWanted isWanted)
{
    if (!data) {
        files.clear();
    }
    forEachEntry(data, [&](HHDFHwDefFile& file) {
        if (isWanted(file)) {
            files.push_back(&file);
        }
    });
    return files.size();
}

}  // namespace

bool HHDFHwDef::addFileToBom(const std::string& path, const FileType& type, std::string hwDefPath)
{
    if (!implementation_ || path.empty()) {
        return false;
    }
    auto file = std::make_unique<HHDFHwDefFile>(path);
    file->setFileType(type);
    file->setHwDefFilePath(hwDefPath);
    implementation_->bom.add(std::move(file));
    return true;
}

bool HHDFHwDef::addFileToBom(const std::string& path, const FileType& type, const std::string& hierPath,
                             const BDType& bdType, std::string hwDefPath)
{
    if (!implementation_ || path.empty()) {
        return false;
    }
    auto file = std::make_unique<HHDFHwDefFile>(path);
    file->setFileType(type);
    file->setBDFileType(bdType);
    file->setHierPath(hierPath);
    file->setHwDefFilePath(hwDefPath);
    implementation_->bom.add(std::move(file));
    return true;
}

bool HHDFHwDef::addFileToBom(const std::string& path, std::string hwDefPath)
{
    return addFileToBom(path, HHDFHwDefFileTypes::UNKNOWN, std::move(hwDefPath));
}

bool HHDFHwDef::addFileToBom(const HHDFHwDefFile* file)
{
    if (!implementation_ || !file) {
        return false;
    }
    implementation_->bom.add(std::make_unique<HHDFHwDefFile>(*file));
    return true;
}

bool HHDFHwDef::removeFileFromBom(HHDFHwDefFile* file)
{
    // From here on the entry is the caller's, who holds the pointer.
    return implementation_ && implementation_->bom.remove(file).release() != nullptr;
}

HHDFHwDefFile* HHDFHwDef::getBomFile(std::string& name) const
{
    // Boost's path takes a text apart from its start, and has its own mind on separators at the ends.
    const std::size_t separator = name.rfind('/');
    if (separator != std::string::npos && separator + 1 < name.size() && name.compare(0, 2, "//") != 0) {
        return firstNamed(implementation(), std::string_view(name).substr(separator + 1));
    }
    return firstNamed(implementation(), boost::filesystem::path(name).filename().native());
}

bool HHDFHwDef::isBomFileExistsWithName(const std::string& name) const
{
    return firstNamed(implementation(), name) != nullptr;
}

const std::string& HHDFHwDef::getBomFileHierarchy(const std::string& name) const
{
    const HHDFHwDefFile* file = firstNamed(implementation(), name);
    return file ? file->getHierPath() : emptyText_;
}

std::string HHDFHwDef::getBomFileType(const std::string& name) const
{
    const HHDFHwDefFile* file = firstNamed(implementation(), name);
    return file ? HHDFHwDefFileTypes::getHWHFileTypeStr(file->getFileType()) : std::string();
}

std::string HHDFHwDef::getBomFileHwDefPath(const std::string& name) const
{
    const HHDFHwDefFile* file = firstNamed(implementation(), name);
    return file ? file->getHwDefFilePath() : std::string();
}

void HHDFHwDef::getBomFileForHierarchy(const std::string& cell, std::string& fileName) const
{
    const HHDFHwDefFile* found = findEntry(implementation(), [&](const HHDFHwDefFile& file) {
        const std::string_view path = file.hierPath();
        return path.substr(path.rfind('/') + 1) == cell;
    });
    fileName = found ? found->getFileName() : std::string();
}

bool HHDFHwDef::doesHwDefExist(const std::string& srcDbPath) const
{
    const HUTFile srcDb(srcDbPath);
    return findEntry(implementation(), [&](const HHDFHwDefFile& file) {
               return HSTStringUtils::iequals(file.getHwSrcDB(), srcDb.name());
           }) != nullptr;
}

void HHDFHwDef::setHwSrcDB(std::string path, const std::string& srcDb)
{
    if (!implementation_) {
        return;
    }
    const HUTFile file(std::move(path));
    if (HHDFHwDefFile* entry = implementation_->bom.firstWithoutSrcDb(file.name())) {
        entry->setHwSrcDB(srcDb);
    }
}

bool HHDFHwDef::addFileAttrs(std::string name, Texts& attrs)
{
    HHDFHwDefFile* file = getBomFile(name);
    if (!file) {
        return false;
    }
    for (const auto& [key, value] : attrs) {
        file->addFileAttr(key, value);
    }
    return true;
}

std::size_t HHDFHwDef::getBomFiles(std::vector<std::string>& names) const
{
    forEachEntry(implementation(), [&](const HHDFHwDefFile& file) { names.push_back(file.getFileName()); });
    return names.size();
}

std::size_t HHDFHwDef::getBomFiles(FileType type, std::vector<std::string>& paths) const
{
    if (!implementation_) {
        paths.clear();
    }
    forEachEntry(implementation(), [&](const HHDFHwDefFile& file) {
        if (file.getFileType() == type) {
            paths.push_back(file.getFile());
        }
    });
    return paths.size();
}

std::size_t HHDFHwDef::getBomFiles(BDType type, std::vector<std::string>& paths) const
{
    const std::string top = implementation_ && !implementation_->unzipDir.empty()
                                ? implementation_->unzipDir + "/"
                                : std::string();
    forEachEntry(implementation(), [&](const HHDFHwDefFile& file) {
        if (file.getBDFileType() == type) {
            paths.push_back(top + file.getFileName());
        }
    });
    return paths.size();
}

std::size_t HHDFHwDef::getBomFiles(std::vector<HHDFHwDefFile*>& files) const
{
    return listEntries(implementation(), files, [](const HHDFHwDefFile&) { return true; });
}

std::size_t HHDFHwDef::getBomFiles(FileType type, std::vector<HHDFHwDefFile*>& files) const
{
    return listEntries(implementation(), files, [type](const HHDFHwDefFile& file) {
        return type == HHDFHwDefFileTypes::UNKNOWN || file.getFileType() == type;
    });
}

std::size_t HHDFHwDef::getBomFiles(BDType type, std::vector<HHDFHwDefFile*>& files) const
{
    forEachEntry(implementation(), [&](HHDFHwDefFile& file) {
        if (file.getBDFileType() == type) {
            files.push_back(&file);
        }
    });
    return files.size();
}
