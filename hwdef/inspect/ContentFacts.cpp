#include "hwdef/inspect/ContentFacts.h"

#include <algorithm>
#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <stdexcept>
#include <utility>
#include <vector>

#include "hwdef/bom/BomNames.h"
#include "hwdef/bom/Elements.h"
#include "hwdef/container/SourceArchives.h"
#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/ArchiveDigest.h"
#include "platform/Buffer.h"
#include "platform/HXMLWInterface.h"
#include "platform/Limits.h"
#include "platform/ProgressWork.h"
#include "platform/iostreams/MemberReader.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::Entry;
using Types = HHDFHwDefFileTypes;

namespace {

constexpr std::size_t bufferBytes = 128 * 1024;
constexpr const char* missing = "missing";

/// Nothing of a document of another version is read, and two of such would seem to be the same.
void checkVersion(const std::string& path)
{
    const ArchiveReader archive(path);
    const Entry* const preferred = archive.find("hwdef.xml");
    const Entry* const entry = preferred == nullptr ? archive.find("sysdef.xml") : preferred;
    HXMLWInterface document;
    if (entry != nullptr) {
        document.readFromBuffer(archive.read(*entry, platform::limits::maxMemberInMemory()));
    }
    const std::string version = bom::attributeOf(document.getRootElement(), bom::attribute::VERSION);
    if (version != "1") {
        throw HEXAll(path + ": the version of the BOM is \"" + version + "\", \"1\" is known");
    }
}

/// Whether there is anything that was read for sure.
bool isFilled(const HHDFHwDef& definition)
{
    std::vector<HHDFHwDefFile*> files;
    definition.getBomFiles(files);
    return !files.empty() || !definition.getDriverFilesMap().empty();
}

std::unique_ptr<HHDFHwDef> open(const std::string& path)
{
    const char* what = "";
    try {
        std::unique_ptr<HHDFHwDef> definition = HHDFHwDefUtils::getHDF(path);
        if (definition == nullptr) {
            throw HEXAll(path + ": the container can't be opened");
        }
        if (!isFilled(*definition)) {
            checkVersion(path);
        }
        return definition;
    } catch (const std::logic_error&) {
        what = "a version";
    } catch (const boost::bad_lexical_cast&) {
        what = "the number of dies";
    }
    throw HEXAll(path + ": " + what + " in the BOM is no number");
}

/// The attributes of a file, told apart from its other fields.
std::string attributeField(const std::string& name)
{
    return "attribute " + name;
}

/// An entry that is to be told, with all by which entries of one name are put in order.
struct FileFacts {
    std::string name;
    std::vector<std::pair<std::string, std::string>> fields;

    auto operator<=>(const FileFacts&) const = default;
};

FileFacts factsOf(const HHDFHwDefFile& file)
{
    FileFacts facts = {file.getFileName(), {{"type", Types::getHWHFileTypeStr(file.getFileType())}}};
    if (file.getFileType() == Types::HW_HANDOFF) {
        facts.fields.emplace_back("role", Types::getHWHBDTypeStr(file.getBDFileType()));
        facts.fields.emplace_back("hierarchy", file.getHierPath());
    }
    for (const auto& [name, value] : file.getFileAttrs()) {
        facts.fields.emplace_back(attributeField(name), value);
    }
    return facts;
}

}  // namespace

ContentFacts::ContentFacts(const std::string& path)
    : definition_(open(path)),
      archive_(std::make_unique<ArchiveReader>(path)),
      leftBytes_(std::max(platform::limits::maxDigested(),
                          platform::limits::DIGESTED_PER_CONTAINER_BYTE * archive_->file().size()))
{
}

void ContentFacts::expectWork() const
{
    if (platform::ProgressWork::isWatched()) {
        for (const Entry& entry : archive_->entries()) {
            platform::ProgressWork::expect(entry.size);
        }
    }
}

void ContentFacts::gather()
{
    addProperties();
    addFiles();
    addDrivers();
    addUnlisted();
    addPartitions();
}

void ContentFacts::set(const char* section, std::string item, const std::string& field, std::string value)
{
    // A container may have very many members, and each makes several facts.
    constexpr std::uint64_t factBytes = 256;
    takenBytes_ += factBytes + item.size() + field.size() + value.size();
    const std::uint64_t most = platform::limits::maxDocumentMemory();
    if (takenBytes_ > most) {
        throw HEXAll(archive_->path() + ": telling its content takes more than the " + std::to_string(most) +
                     " bytes of memory that are allowed");
    }
    facts_[{section, std::move(item), field}] = std::move(value);
}

void ContentFacts::addProperties()
{
    const HHDFHwDef& def = *definition_;
    set("property", "version", "",
        std::to_string(def.getMajorVersion()) + "." + std::to_string(def.getMinorVersion()));
    set("property", "mode", "", def.getModeName());
    set("property", "tool", "", def.getToolVersion());
    set("property", "board", "", def.getBoard());
    set("property", "part", "", def.getPart());
    set("property", "arch", "", def.getArch());
    set("property", "package", "", def.getPackage());
    set("property", "device", "", def.getDevice());
    set("property", "speed", "", def.getSpeed());
    set("property", "top", "", def.getHierTopModuleName());
    set("property", "stacked", "", def.isTIER() ? "true" : "false");
    set("property", "dies", "", std::to_string(def.getSLRNo()));
    addResources("used ", def.getUsedResourceInfo());
    addResources("available ", def.getSystemResourceInfo());
    HHDFHwDef::Texts attributes;
    def.getWDIAttrs(attributes);
    for (const auto& [name, value] : attributes) {
        set("attribute", name, "", value);
    }
}

void ContentFacts::addResources(const std::string& prefix, const HHDFHwDef::HHDFResourceInfo& info)
{
    set("resource", prefix + "LUT", "", info.lut);
    set("resource", prefix + "FF", "", info.ff);
    set("resource", prefix + "BRAM", "", info.bram);
    set("resource", prefix + "DSP", "", info.dsp);
}

void ContentFacts::addFiles()
{
    std::vector<HHDFHwDefFile*> files;
    definition_->getBomFiles(files);
    std::vector<FileFacts> sorted;
    sorted.reserve(files.size());
    for (const HHDFHwDefFile* file : files) {
        sorted.push_back(factsOf(*file));
    }
    std::sort(sorted.begin(), sorted.end());
    std::size_t number = 0;
    for (std::size_t at = 0; at < sorted.size(); ++at) {
        const FileFacts& file = sorted[at];
        number = at > 0 && sorted[at - 1].name == file.name ? number + 1 : 1;
        const std::string item = number == 1 ? file.name : file.name + " #" + std::to_string(number);
        set("file", item, "", "listed");
        set("file", item, "content", contentOf(archive_->find(file.name)));
        for (const auto& [field, value] : file.fields) {
            set("file", item, field, value);
        }
    }
}

void ContentFacts::addDrivers()
{
    for (const auto& [name, records] : definition_->getDriverFilesMap()) {
        for (const HHDFHwDefDriver& record : records) {
            const std::string item = name + ": " + record.getRelativeName();
            set("driver", item, "", "listed");
            set("driver", item, "content", contentOf(findDriverFile(*archive_, record.getRelativeName())));
        }
    }
}

/// The members that no entry has named so far.
void ContentFacts::addUnlisted()
{
    for (const Entry& listed : archive_->entries()) {
        const Entry* const entry = archive_->find(listed.name);
        const bool isBom = listed.name == "hwdef.xml" || listed.name == "sysdef.xml";
        if (!isBom && !listed.name.ends_with('/') && !contents_.contains(entry->record.data())) {
            const std::string name(listed.name);
            set("member", name, "", "present");
            set("member", name, "content", contentOf(entry));
        }
    }
}

void ContentFacts::addPartitions()
{
    for (const auto& [path, partition] : definition_->getPartitionInfo()) {
        set("partition", path, "", "present");
        set("partition", path, "default", partition->getDefaultRmName());
        for (const auto& [module, files] : partition->getRmToFilesMap()) {
            set("partition", path, "module " + module, "present");
        }
    }
    for (const auto& [name, configuration] : definition_->getPartitionConfigs()) {
        set("configuration", name, "", "present");
        set("configuration", name, "active", configuration->isActive() ? "true" : "false");
        for (const auto& [path, cell] : configuration->getPartitionCellRMs()) {
            set("configuration", name, "cell " + path, cell->getRmName());
        }
        for (const std::string& path : configuration->getGrayBoxCells()) {
            set("configuration", name, "gray box " + path, "present");
        }
    }
}

std::string ContentFacts::contentOf(const Entry* entry)
{
    if (entry == nullptr) {
        return missing;
    }
    const auto [known, isNew] = contents_.try_emplace(entry->record.data());
    if (!isNew) {
        return known->second;
    }
    const std::uint64_t cost = std::max(entry->size, entry->compressedSize);
    if (cost > leftBytes_) {
        throw HEXAll(archive_->path() + ": member \"" + std::string(entry->name) + "\" has " +
                     std::to_string(entry->size) + " bytes, no more than " + std::to_string(leftBytes_) +
                     " may still be unpacked");
    }
    leftBytes_ -= cost;
    platform::ArchiveDigest digest;
    platform::Buffer buffer(bufferBytes);
    iostreams::zip::MemberReader content(*archive_, *entry);
    while (const std::size_t count = content.read(buffer.data(), buffer.size())) {
        digest.add({buffer.data(), count});
    }
    known->second = digest.finish() + ", " + std::to_string(entry->size) + " bytes";
    return known->second;
}
