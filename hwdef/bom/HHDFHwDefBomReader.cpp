#include "hwdef/bom/HHDFHwDefBomReader.h"

#include <algorithm>
#include <boost/lexical_cast.hpp>
#include <cstdint>

#include "hwdef/bom/BomNames.h"
#include "hwdef/bom/Elements.h"
#include "hwdef/model/HHDFHwDefImp.h"

using bom::attributeOf;
using bom::forEachChild;
using bom::isNamed;
using bom::textOf;
namespace attribute = bom::attribute;
namespace element = bom::element;
namespace value = bom::value;

namespace {

/// std::stoi's reading of a version, negative numbers included, as the definition holds it.
std::uint32_t versionOf(const std::string& text)
{
    return static_cast<std::uint32_t>(std::stoi(text));
}

/// The whole text as a decimal number. Anything but digits behind a sign is refused beforehand:
/// lexical_cast alone would take the global locale's digit groups.
int integerOf(const std::string& text)
{
    if (text.find_first_not_of("0123456789", text.find_first_of("+-") == 0 ? 1 : 0) != std::string::npos) {
        throw boost::bad_lexical_cast(typeid(std::string), typeid(int));
    }
    return boost::lexical_cast<int>(text);
}

std::string containerPathOf(const HHDFHwDef& def)
{
    std::string path;
    def.getContainerFullPath(path);
    return path;
}

HHDFHwDef::Texts fileAttributesOf(const HXMLWElement* file)
{
    HHDFHwDef::Texts attributes;
    forEachChild(file, [&](const HXMLWElement* child) {
        attributes[attributeOf(child, attribute::ATTRNAME)] = attributeOf(child, attribute::ATTRVAL);
    });
    return attributes;
}

/// One of the reader's operations as a row of its table takes it.
template <bool (HHDFHwDefBomReader::*populate)(HXMLWElement*)>
bool with(HHDFHwDefBomReader& reader, HXMLWElement* child, const std::string&)
{
    return (reader.*populate)(child);
}

}  // namespace

HHDFHwDefBomReader::HHDFHwDefBomReader(HHDFHwDef* def, HXMLWElement* root) : def_(def), root_(root) {}

bool HHDFHwDefBomReader::readHDF(std::string driverPath)
{
    if (!def_ || !root_) {
        return false;
    }
    def_->setMajorVersion(versionOf(attributeOf(root_, attribute::VERSION)));
    def_->setMinorVersion(versionOf(attributeOf(root_, attribute::MINOR)));
    std::string digest = attributeOf(root_, attribute::DIGEST);
    def_->setDigest(digest);
    const auto children = root_->getChildren();
    if (!children) {
        return false;
    }
    for (HXMLWElement* child : *children) {
        readRootChild(child, driverPath);
    }
    return true;
}

void HHDFHwDefBomReader::readRootChild(HXMLWElement* child, const std::string& driverPath)
{
    using Reader = HHDFHwDefBomReader;
    struct Row {
        const char* name;
        bool (*read)(Reader& reader, HXMLWElement* child, const std::string& driverPath);
    };
    static constexpr Row rows[] = {
        {element::FILE, with<&Reader::populateFiles>},
        {element::MODE, with<&Reader::populateBomMode>},
        {element::TOOL_VERSION, with<&Reader::populateToolVersion>},
        {element::HIERARCHY, with<&Reader::populateAddrTags>},
        {element::SYSTEMINFO, with<&Reader::populateSystemInfo>},
        {element::USEDRESOURCES, with<&Reader::populateUsedResources>},
        {element::DRIVERS, [](Reader& reader, HXMLWElement* drivers,
                              const std::string& path) { return reader.populateDrivers(drivers, path); }},
        {element::WDIATTRS, with<&Reader::populateWDIAttrs>},
        {element::INSTANCE_PATHS, with<&Reader::populatePartitionInfo>},
        {element::PR_CONFIGURATIONS, with<&Reader::populateConfigurations>},
        {element::PART, with<&Reader::populatePart>},
    };
    const auto row = std::find_if(std::begin(rows), std::end(rows),
                                  [&](const Row& candidate) { return isNamed(child, candidate.name); });
    if (row != std::end(rows)) {
        row->read(*this, child, driverPath);
    }
}

std::string HHDFHwDefBomReader::valueOrEmpty(const char* text)
{
    return text ? text : "";
}

bool HHDFHwDefBomReader::populateToolVersion(HXMLWElement* element)
{
    return def_->setToolVersion(attributeOf(element, attribute::VERSION));
}

bool HHDFHwDefBomReader::populateBomMode(HXMLWElement* element)
{
    const bool preSynthesis = attributeOf(element, attribute::NAME) == value::PRE_SYNTHESIS;
    def_->setModeType(preSynthesis ? HHDFHwDefFileTypes::PRE_SYNTHESIS : HHDFHwDefFileTypes::POST_SYNTHESIS);
    return true;
}

bool HHDFHwDefBomReader::populateSystemInfo(HXMLWElement* element)
{
    def_->setBoard(attributeOf(element, attribute::BOARD));
    def_->setPart(attributeOf(element, attribute::PART));
    def_->setArch(attributeOf(element, attribute::ARCH));
    def_->setPackage(attributeOf(element, attribute::PACKAGE));
    def_->setDevice(attributeOf(element, attribute::DEVICE));
    def_->setSpeed(attributeOf(element, attribute::SPEED));
    HHDFHwDef::HHDFResourceInfo info;
    populateResourceInfo(element, info);
    def_->setSystemResourceInfo(info);
    return true;
}

bool HHDFHwDefBomReader::populateResourceInfo(HXMLWElement* element, HHDFHwDef::HHDFResourceInfo& info)
{
    info.lut = attributeOf(element, attribute::LUT);
    info.ff = attributeOf(element, attribute::FF);
    info.bram = attributeOf(element, attribute::BRAM);
    info.dsp = attributeOf(element, attribute::DSP);
    return true;
}

// The element's "Name" repeats the part of SYSTEMINFO, which is the one that counts.
bool HHDFHwDefBomReader::populatePart(HXMLWElement* element)
{
    if (!element) {
        return false;
    }
    forEachChild(element, [&](const HXMLWElement* child) {
        if (isNamed(child, element::TIER)) {
            def_->setTIER(HSTStringUtils::iequals(attributeOf(child, attribute::IS_TIER), value::ONE));
        } else if (isNamed(child, element::NUM_OF_SLRS)) {
            def_->setSLRNo(integerOf(attributeOf(child, attribute::VALUE)));
        }
    });
    return true;
}

bool HHDFHwDefBomReader::populateAddrTags(HXMLWElement* element)
{
    const std::string topModule = attributeOf(element, attribute::NAME);
    if (topModule.empty()) {
        return false;
    }
    def_->setHierTopModuleName(topModule);
    return true;
}

bool HHDFHwDefBomReader::populateFiles(HXMLWElement* element)
{
    const std::string_view name = textOf(element, attribute::NAME);
    HHDFHwDefImp* const imp = def_->implementation();
    if (imp) {
        imp->fileDigests.set(name, textOf(element, attribute::DIGEST));
    }
    if (name.empty()) {
        return false;
    }
    const auto type = fileTypeOf(textOf(element, attribute::TYPE));
    if (type == HHDFHwDefFileTypes::DRIVER_SRC) {
        return populateDriverSource(std::string(name));
    }
    if (imp) {
        addEntry(*imp, name, type, element);
    }
    return true;
}

HHDFHwDef::FileType HHDFHwDefBomReader::fileTypeOf(std::string_view token)
{
    if (token.empty() || token != typeToken_) {
        typeToken_ = token;
        type_ = HHDFHwDefFileTypes::getHWHFileType(typeToken_);
    }
    return type_;
}

void HHDFHwDefBomReader::addEntry(HHDFHwDefImp& imp, std::string_view name, HHDFHwDef::FileType type,
                                  const HXMLWElement* element)
{
    std::string path;
    path.reserve(imp.unzipDir.size() + 1 + name.size());
    path.append(imp.unzipDir).append(1, '/').append(name);
    auto file = std::make_unique<HHDFHwDefFile>(std::move(path));
    file->setFileType(type);
    if (type == HHDFHwDefFileTypes::HW_HANDOFF) {
        const std::string token = attributeOf(element, attribute::BD_TYPE);
        file->setBDFileType(token.empty() ? HHDFHwDefFileTypes::DEFAULT_BD
                                          : HHDFHwDefFileTypes::getHWHBDType(token));
        file->setHierPath(attributeOf(element, attribute::DESIGN_HIERARCHY));
    }
    if (!container_) {
        container_ = std::make_shared<const std::string>(containerPathOf(*def_));
    }
    if (!container_->empty()) {
        file->shareHwDefFilePath(container_);
    }
    const HHDFHwDefFile& added = *file;
    imp.bom.add(std::move(file));
    // Both go to the first entry of that file name: of two entries with one name, the earlier one gets
    // the attributes.
    HHDFHwDef::Texts attributes = fileAttributesOf(element);
    if (!attributes.empty()) {
        def_->addFileAttrs(imp.unzipDir + "/" + std::string(name), attributes);
    }
    const std::string_view srcDb = textOf(element, attribute::SRC_DB);
    HHDFHwDefFile* const taker = srcDb.empty() ? nullptr : imp.bom.firstWithoutSrcDb(added.fileName());
    if (taker) {
        taker->setHwSrcDB(std::string(srcDb));
    }
}

bool HHDFHwDefBomReader::populateDrivers(HXMLWElement* element, std::string driverPath)
{
    const std::string topDir =
        (driverPath.empty() ? def_->getUnzipDir() : driverPath) + "/" + value::DRIVERS_DIR;
    def_->setDriversTopDir(topDir);
    const std::string container = containerPathOf(*def_);
    HHDFHwDefImp* const imp = def_->implementation();
    forEachChild(element, [&](const HXMLWElement* driver) {
        DriverMap::Files* list = nullptr;  // a driver without files is none
        forEachChild(driver, [&](const HXMLWElement* file) {
            const std::string path = attributeOf(file, attribute::PATH);
            if (path.empty() || !imp) {
                return;
            }
            if (!list) {
                list = &imp->drivers.listOf(attributeOf(driver, attribute::IP_VLNV));
            }
            imp->drivers.add(*list, HHDFHwDefDriver(topDir + '/' + path, path, container));
            const std::string digest = attributeOf(file, attribute::DIGEST);
            if (!digest.empty()) {
                def_->addDigestForFile(path, digest);
            }
        });
    });
    return true;
}

bool HHDFHwDefBomReader::populateUsedResources(HXMLWElement* element)
{
    HHDFHwDef::HHDFResourceInfo info;
    populateResourceInfo(element, info);
    def_->setUsedResourceInfo(info);
    return true;
}

bool HHDFHwDefBomReader::populateWDIAttrs(HXMLWElement* element)
{
    forEachChild(element, [&](const HXMLWElement* child) {
        def_->addWDIAttr(attributeOf(child, attribute::ATTRNAME), attributeOf(child, attribute::ATTRVAL));
    });
    return true;
}

bool HHDFHwDefBomReader::populatePartitionInfo(HXMLWElement* element)
{
    forEachChild(element, [&](const HXMLWElement* partition) {
        if (!isNamed(partition, element::RECONFIGURABLE_PARTITION)) {
            return;
        }
        std::string path = attributeOf(partition, attribute::INSTANCE_PATH);
        const std::string defaultRm = attributeOf(partition, attribute::DEFAULT_CONFIG_RM);
        HHDFHwDefPartitionInfo* info = nullptr;
        forEachChild(partition, [&](const HXMLWElement* module) {
            std::string rmName = attributeOf(module, attribute::RM_NAME);
            // A module's file names are not read back: this text stands for all of them.
            std::string file = "bitFile";
            const bool isDefault = HSTStringUtils::iequals(rmName, defaultRm);
            if (info) {
                info->addPartitionInfo(rmName, file, isDefault);
            } else {
                def_->addPartitionInfo(path, rmName, file, isDefault);
                info = def_->getPartitionInfo().at(path);
            }
        });
    });
    return true;
}

bool HHDFHwDefBomReader::populateConfigurations(HXMLWElement* element)
{
    HHDFHwDefImp* const imp = def_->implementation();
    forEachChild(element, [&](const HXMLWElement* configuration) {
        if (!isNamed(configuration, element::PR_CONFIGURATION)) {
            return;
        }
        HHDFHwDefConfig* config = nullptr;  // one without cells is none
        forEachChild(configuration, [&](const HXMLWElement* cell) {
            const bool isMapped = isNamed(cell, element::PARTITION_INST_MAP);
            if (!isMapped && !isNamed(cell, element::GRAY_BOX_INST)) {
                return;
            }
            if (!config) {
                const bool active =
                    HSTStringUtils::iequals(attributeOf(configuration, attribute::ACTIVE), value::YES);
                config = &imp->configNamed(attributeOf(configuration, attribute::NAME), active);
            }
            imp->addPartitionCell(*config,
                                  attributeOf(cell, isMapped ? attribute::INSTANCE_PATH : attribute::NAME),
                                  isMapped ? attributeOf(cell, attribute::RM_NAME) : std::string(), "");
        });
    });
    return true;
}
