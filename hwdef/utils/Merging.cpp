#include <algorithm>
#include <unordered_set>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/ComMsgMgr.h"
#include "platform/KeyedHash.h"

namespace {

using Keys = std::unordered_set<std::string, platform::KeyedHash>;

/// Appends a text so that no two lists of texts give the same key: each with its length in front.
void appendTo(std::string& key, const std::string& text)
{
    key += std::to_string(text.size());
    key += ':';
    key += text;
}

/// The same for texts that are compared without regard to the case of ASCII letters.
void appendCaseless(std::string& key, std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    appendTo(key, text);
}

/// Two entries have the same key exactly when HHDFHwDefFile::operator== finds them equal.
std::string keyOf(const HHDFHwDefFile& file)
{
    std::string key;
    appendCaseless(key, file.getFile());
    appendTo(key, std::to_string(file.getFileType()));
    appendTo(key, std::to_string(file.getBDFileType()));
    appendCaseless(key, file.getHierPath());
    appendCaseless(key, file.getHwDefFilePath());
    appendCaseless(key, file.getHwSrcDB());
    return key;
}

void copyProperties(HHDFHwDef& merged, const HHDFHwDef& def)
{
    merged.setMajorVersion(def.getMajorVersion());
    merged.setMinorVersion(def.getMinorVersion());
    merged.setModeType(def.getModeType());
    merged.setToolVersion(def.getToolVersion());
    merged.setSystemResourceInfo(def.getSystemResourceInfo());
    merged.setBoard(def.getBoard());
    merged.setArch(def.getArch());
    merged.setPackage(def.getPackage());
    merged.setDevice(def.getDevice());
    merged.setSpeed(def.getSpeed());
    merged.setPart(def.getPart());
    merged.setTIER(def.isTIER());
    merged.setSLRNo(def.getSLRNo());
    merged.setHierTopModuleName({});
}

void addAttributes(HHDFHwDef& merged, const HHDFHwDef& def)
{
    HHDFHwDef::Texts attributes;
    def.getWDIAttrs(attributes);
    for (const auto& [name, value] : attributes) {
        merged.addWDIAttr(name, value);
    }
}

/// Adds the entries that `present`, the keys of the merged list, doesn't hold; all of them when
/// `isFirst` is set.
void addFiles(HHDFHwDef& merged, const HHDFHwDef& def, bool isFirst, Keys& present)
{
    std::vector<HHDFHwDefFile*> files;
    def.getBomFiles(files);
    for (const HHDFHwDefFile* file : files) {
        if (file != nullptr && (present.insert(keyOf(*file)).second || isFirst)) {
            merged.addFileToBom(file);
        }
    }
}

void addAllDrivers(HHDFHwDef& merged, const HHDFHwDef& def)
{
    HHDFHwDef::Texts directories;
    def.getDriverFiles(directories);
    for (const auto& [name, directory] : directories) {
        merged.addDrivers(name, directory);
    }
    for (const auto& [name, records] : def.getDriverFilesMap()) {
        merged.addDrivers(name, records);
    }
}

}  // namespace

std::unique_ptr<HHDFHwDef> HHDFHwDefUtils::getMrgdHDF(const std::vector<HHDFHwDef*>& definitions,
                                                      const std::string& path)
{
    if (path.empty()) {
        ComMsgMgr::sendMsg("hdf", "@64-13@", 0, ComMsgMgr::FAILURE);
        return nullptr;
    }
    if (definitions.empty()) {
        ComMsgMgr::sendMsg("hdf", "@64-12@%s", 1, ComMsgMgr::FAILURE, path.c_str());
        return nullptr;
    }
    auto merged = std::make_unique<HHDFHwDef>(path);
    if (definitions.size() == 1) {
        if (definitions.front() != nullptr) {
            merged->copyFrom(definitions.front());
        }
        return merged;
    }
    Keys present;
    bool isFirst = true;
    for (const HHDFHwDef* def : definitions) {
        if (def == nullptr) {
            break;
        }
        if (merged->getPart().empty() && !def->getPart().empty()) {
            copyProperties(*merged, *def);
        }
        addAttributes(*merged, *def);
        addFiles(*merged, *def, isFirst, present);
        addAllDrivers(*merged, *def);
        isFirst = false;
    }
    return merged;
}
