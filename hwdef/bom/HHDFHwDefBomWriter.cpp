#include "hwdef/bom/HHDFHwDefBomWriter.h"

#include <cstdint>
#include <limits>

#include "hwdef/bom/BomNames.h"
#include "hwdef/model/HHDFHwDef.h"
#include "platform/ComMsgMgr.h"
#include "platform/HEXAll.h"
#include "platform/HPAParamMgr.h"
#include "platform/HUTFile.h"
#include "platform/HXMLWriterBase.h"

namespace attribute = bom::attribute;
namespace element = bom::element;
namespace value = bom::value;

namespace {

std::string versionText(std::uint32_t version)
{
    const bool unset = version == std::numeric_limits<std::uint32_t>::max();
    return unset ? "1" : std::to_string(version);
}

void addAttrUnlessEmpty(HXMLWriterBase& xml, const char* name, const std::string& text)
{
    if (!text.empty()) {
        xml.addAttr(name, text);
    }
}

/// What stands in "src_db" of a file whose database isn't known: the container's own file name.
std::string containerNameOf(const HHDFHwDef& def)
{
    std::string path;
    def.getContainerFullPath(path);
    std::string name;
    HUTFile(path).getName(name);
    return name;
}

void writeToolVersion(HXMLWriterBase& xml, const HHDFHwDef& def)
{
    xml.addAttr(attribute::VERSION, def.getToolVersion());
    xml.wrEmptyTag(element::TOOL_VERSION);
}

void writeMode(HXMLWriterBase& xml, const HHDFHwDef& def)
{
    xml.addAttr(attribute::NAME, def.getModeName());
    xml.wrEmptyTag(element::MODE);
}

void addResourceInfo(HXMLWriterBase& xml, const HHDFHwDef::HHDFResourceInfo& info)
{
    addAttrUnlessEmpty(xml, attribute::LUT, info.lut);
    addAttrUnlessEmpty(xml, attribute::FF, info.ff);
    addAttrUnlessEmpty(xml, attribute::BRAM, info.bram);
    addAttrUnlessEmpty(xml, attribute::DSP, info.dsp);
}

void writeSystemInfo(HXMLWriterBase& xml, const HHDFHwDef& def)
{
    xml.addAttr(attribute::BOARD, def.getBoard());
    xml.addAttr(attribute::PART, def.getPart());
    xml.addAttr(attribute::ARCH, def.getArch());
    xml.addAttr(attribute::PACKAGE, def.getPackage());
    xml.addAttr(attribute::DEVICE, def.getDevice());
    xml.addAttr(attribute::SPEED, def.getSpeed());
    addResourceInfo(xml, def.getSystemResourceInfo());
    xml.wrEmptyTag(element::SYSTEMINFO);
}

void writePart(HXMLWriterBase& xml, const HHDFHwDef& def)
{
    if (!HPAParamMgr::getParamMgr()->getValueIfExistAsBool("project.generateAiePrimitive", false)) {
        return;
    }
    xml.addAttr(attribute::NAME, def.getPart());
    xml.wrStartTag(element::PART);
    xml.addAttr(attribute::IS_TIER, def.isTIER() ? value::ONE : value::ZERO);
    xml.wrEmptyTag(element::TIER);
    xml.addAttr(attribute::VALUE, std::to_string(def.getSLRNo()));
    xml.wrEmptyTag(element::NUM_OF_SLRS);
    xml.wrEndTag(element::PART);
}

void writeHierarchy(HXMLWriterBase& xml, const HHDFHwDef& def)
{
    xml.addAttr(attribute::NAME, def.getHierTopModuleName());
    xml.wrEmptyTag(element::HIERARCHY);
}

void writeFileAttrs(HXMLWriterBase& xml, const std::map<std::string, std::string>& attrs)
{
    for (const auto& [name, text] : attrs) {
        xml.addAttr(attribute::ATTRNAME, name);
        xml.addAttr(attribute::ATTRVAL, text);
        xml.wrEmptyTag(element::FILEATTR);
    }
}

void writeFile(HXMLWriterBase& xml, const HHDFHwDefFile& file, const std::string& containerName)
{
    xml.addAttr(attribute::TYPE, HHDFHwDefFileTypes::getHWHFileTypeStr(file.getFileType()));
    xml.addAttr(attribute::NAME, file.getFileName());
    xml.addAttr(attribute::SRC_DB, file.getHwSrcDB().empty() ? containerName : file.getHwSrcDB());
    if (file.getFileType() == HHDFHwDefFileTypes::HW_HANDOFF) {
        xml.addAttr(attribute::DESIGN_HIERARCHY, file.getHierPath());
        xml.addAttr(attribute::BD_TYPE, HHDFHwDefFileTypes::getHWHBDTypeStr(file.getBDFileType()));
    }
    xml.wrStartTag(element::FILE);
    // Asking for the attributes of an entry without any would make room for them.
    if (file.hasFileAttrs()) {
        writeFileAttrs(xml, file.getFileAttrs());
    }
    xml.wrEndTag(element::FILE);
}

void writeFiles(HXMLWriterBase& xml, const HHDFHwDef& def)
{
    std::vector<HHDFHwDefFile*> files;
    def.getBomFiles(files);
    const std::string containerName = containerNameOf(def);
    for (const HHDFHwDefFile* file : files) {
        writeFile(xml, *file, containerName);
    }
}

/// A driver file's place in the container: below "drivers" unless its name speaks of that already.
std::string driverPathOf(const HHDFHwDefDriver& driver)
{
    const std::string name = driver.getRelativeName();
    const bool prefixed = name.find(value::DRIVERS_DIR) != std::string::npos;
    return prefixed ? name : value::DRIVERS_DIR + HUTFile::getDirSeparator() + name;
}

void writeDrivers(HXMLWriterBase& xml, const HHDFHwDef& def)
{
    const auto drivers = def.getDriverFilesMap();
    if (drivers.empty()) {
        return;
    }
    xml.wrStartTag(element::DRIVERS);
    for (const auto& [vlnv, files] : drivers) {
        xml.addAttr(attribute::IP_VLNV, vlnv);
        xml.wrStartTag(element::DRIVER);
        for (const HHDFHwDefDriver& file : files) {
            xml.addAttr(attribute::PATH, driverPathOf(file));
            xml.wrEmptyTag(element::FILE);
        }
        xml.wrEndTag(element::DRIVER);
    }
    xml.wrEndTag(element::DRIVERS);
}

/// The mark that driver sources are known; which ones is not stored.
void writeDriverSource(HXMLWriterBase& xml, const HHDFHwDef& def)
{
    HHDFHwDef::Texts sources;
    def.getDriverFiles(sources);
    if (sources.empty()) {
        return;
    }
    xml.addAttr(attribute::TYPE, HHDFHwDefFileTypes::getHWHFileTypeStr(HHDFHwDefFileTypes::DRIVER_SRC));
    xml.addAttr(attribute::NAME, value::DRIVERS_DIR);
    xml.wrEmptyTag(element::FILE);
}

void writeUsedResources(HXMLWriterBase& xml, const HHDFHwDef& def)
{
    addResourceInfo(xml, def.getUsedResourceInfo());
    xml.wrEmptyTag(element::USEDRESOURCES);
}

void writeWDIAttrs(HXMLWriterBase& xml, const HHDFHwDef& def)
{
    HHDFHwDef::Texts attributes;
    def.getWDIAttrs(attributes);
    if (attributes.empty()) {
        return;
    }
    xml.wrStartTag(element::WDIATTRS);
    for (const auto& [name, text] : attributes) {
        xml.addAttr(attribute::ATTRNAME, name);
        xml.addAttr(attribute::ATTRVAL, text);
        xml.wrEmptyTag(element::WDIATTR);
    }
    xml.wrEndTag(element::WDIATTRS);
}

void writePartition(HXMLWriterBase& xml, const std::string& path, const HHDFHwDefPartitionInfo& partition)
{
    xml.addAttr(attribute::INSTANCE_PATH, path);
    xml.addAttr(attribute::DEFAULT_CONFIG_RM, partition.getDefaultRmName());
    xml.wrStartTag(element::RECONFIGURABLE_PARTITION);
    for (const auto& [module, files] : partition.getRmToFilesMap()) {
        for (const std::string& file : files) {
            xml.addAttr(attribute::RM_NAME, module);
            xml.addAttr(attribute::NAME, file);
            xml.wrEmptyTag(element::FILE);
        }
    }
    xml.wrEndTag(element::RECONFIGURABLE_PARTITION);
}

void writePartitionInfo(HXMLWriterBase& xml, const HHDFHwDef& def)
{
    const auto& partitions = def.getPartitionInfo();
    if (partitions.empty()) {
        return;
    }
    xml.wrStartTag(element::INSTANCE_PATHS);
    for (const auto& [path, partition] : partitions) {
        writePartition(xml, path, *partition);
    }
    xml.wrEndTag(element::INSTANCE_PATHS);
}

void writeConfiguration(HXMLWriterBase& xml, const HHDFHwDefConfig& configuration)
{
    xml.addAttr(attribute::NAME, configuration.getName());
    xml.addAttr(attribute::ACTIVE, configuration.isActive() ? value::YES : value::NO);
    xml.wrStartTag(element::PR_CONFIGURATION);
    for (const auto& [path, cell] : configuration.getPartitionCellRMs()) {
        xml.addAttr(attribute::INSTANCE_PATH, path);
        xml.addAttr(attribute::RM_NAME, cell->getRmName());
        xml.wrStartTag(element::PARTITION_INST_MAP);
        for (const auto& [type, file] : cell->getFilesMap()) {
            xml.addAttr(attribute::NAME, file);
            xml.wrEmptyTag(element::FILE);
        }
        xml.wrEndTag(element::PARTITION_INST_MAP);
    }
    for (const std::string& cell : configuration.getGrayBoxCells()) {
        xml.addAttr(attribute::NAME, cell);
        xml.wrEmptyTag(element::GRAY_BOX_INST);
    }
    xml.wrEndTag(element::PR_CONFIGURATION);
}

void writeConfigurations(HXMLWriterBase& xml, const HHDFHwDef& def)
{
    const auto& configurations = def.getPartitionConfigs();
    if (configurations.empty()) {
        return;
    }
    xml.wrStartTag(element::PR_CONFIGURATIONS);
    for (const auto& [name, configuration] : configurations) {
        writeConfiguration(xml, *configuration);
    }
    xml.wrEndTag(element::PR_CONFIGURATIONS);
}

void writeProject(HXMLWriterBase& xml, const HHDFHwDef& def)
{
    xml.addAttr(attribute::VERSION, versionText(def.getMajorVersion()));
    xml.addAttr(attribute::MINOR, versionText(def.getMinorVersion()));
    xml.addAttr(attribute::DIGEST, def.getDigest());
    xml.wrStartTag(element::PROJECT);
    writeToolVersion(xml, def);
    writeMode(xml, def);
    writeSystemInfo(xml, def);
    writePart(xml, def);
    writeHierarchy(xml, def);
    writeFiles(xml, def);
    writeDrivers(xml, def);
    writeDriverSource(xml, def);
    writeUsedResources(xml, def);
    writeWDIAttrs(xml, def);
    writePartitionInfo(xml, def);
    writeConfigurations(xml, def);
    xml.wrEndTag(element::PROJECT);
}

}  // namespace

HHDFHwDefBomWriter::HHDFHwDefBomWriter() = default;
HHDFHwDefBomWriter::~HHDFHwDefBomWriter() = default;

bool HHDFHwDefBomWriter::write(const HHDFHwDef* def, const std::string& path) const
{
    if (!def) {
        return false;
    }
    try {
        HXMLWriterBase xml(path);
        writeProject(xml, *def);
        xml.closeDoc();
        return true;
    } catch (const HEXAll& error) {
        ComMsgMgr::sendMessage(error.what(), false);
        return false;
    }
}
