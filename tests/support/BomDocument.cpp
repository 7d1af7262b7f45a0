#include "support/BomDocument.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include "hwdef/bom/HHDFHwDefBomReader.h"
#include "hwdef/bom/HHDFHwDefBomWriter.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/HXMLWInterface.h"
#include "support/TempDir.h"

namespace support {

namespace {

std::string textOf(const xmlChar* text)
{
    return text ? reinterpret_cast<const char*>(text) : "";
}

std::string valueOf(const xmlAttr* attribute)
{
    xmlChar* value = xmlNodeListGetString(attribute->doc, attribute->children, 1);
    const std::string text = textOf(value);
    xmlFree(value);
    return text;
}

std::string outlineOf(const xmlNode* element, const std::string& indent)
{
    std::string lines = indent + textOf(element->name);
    for (const xmlAttr* attribute = element->properties; attribute; attribute = attribute->next) {
        lines += " " + textOf(attribute->name) + "='" + valueOf(attribute) + "'";
    }
    lines += "\n";
    for (const xmlNode* child = element->children; child; child = child->next) {
        if (child->type == XML_ELEMENT_NODE) {
            lines += outlineOf(child, indent + "  ");
        }
    }
    return lines;
}

}  // namespace

std::unique_ptr<HHDFHwDef> definition(const std::string& unzipDir)
{
    auto def = std::make_unique<HHDFHwDef>("/data/design.hdf");
    def->implementation()->unzipDir = unzipDir;
    return def;
}

std::unique_ptr<FakeElement> project()
{
    return std::make_unique<FakeElement>("Project",
                                         FakeElement::Attributes{{"Version", "1"}, {"Minor", "0"}});
}

bool readBom(HHDFHwDef& def, FakeElement& root, const std::string& driverPath)
{
    return HHDFHwDefBomReader(&def, &root).readHDF(driverPath);
}

bool readBomText(HHDFHwDef& def, const std::string& document, const std::string& driverPath)
{
    HXMLWInterface xml;
    EXPECT_TRUE(xml.readFromBuffer(document)) << xml.error().text;
    return HHDFHwDefBomReader(&def, xml.getRootElement()).readHDF(driverPath);
}

std::string writtenBom(const HHDFHwDef& def)
{
    TempDir dir;
    EXPECT_TRUE(HHDFHwDefBomWriter().write(&def, dir / "bom.xml"));
    return readFile(dir / "bom.xml");
}

std::string outline(const std::string& document)
{
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> parsed(
        xmlReadMemory(document.data(), static_cast<int>(document.size()), nullptr, nullptr, XML_PARSE_NONET),
        &xmlFreeDoc);
    if (!parsed) {
        ADD_FAILURE() << "no XML document:\n" << document;
        return {};
    }
    return outlineOf(xmlDocGetRootElement(parsed.get()), "");
}

std::string entriesOf(const HHDFHwDef& def)
{
    std::vector<HHDFHwDefFile*> files;
    def.getBomFiles(files);
    std::string lines;
    for (const HHDFHwDefFile* file : files) {
        lines += file->getFile() + " " + HHDFHwDefFileTypes::getHWHFileTypeStr(file->getFileType()) + " " +
                 HHDFHwDefFileTypes::getHWHBDTypeStr(file->getBDFileType()) + " '" + file->getHierPath() +
                 "' '" + file->getHwSrcDB() + "' [";
        for (const auto& [name, value] : file->getFileAttrs()) {
            lines += (lines.back() == '[' ? "" : " ") + name + "=" + value;
        }
        lines += "]\n";
    }
    return lines;
}

std::string driversOf(const HHDFHwDef& def)
{
    std::string lines;
    for (const auto& [name, files] : def.getDriverFilesMap()) {
        for (const HHDFHwDefDriver& file : files) {
            lines += name + ": " + file.getFilePath() + ", " + file.getRelativeName() + ", " +
                     file.getHwDefFilePath() + "\n";
        }
    }
    return lines;
}

}  // namespace support
