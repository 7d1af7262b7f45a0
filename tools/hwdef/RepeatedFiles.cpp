#include "RepeatedFiles.h"

#include <strings.h>

#include <set>

#include "platform/HXMLWInterface.h"

namespace {

std::string attributeOf(const HXMLWElement& element, const char* name)
{
    const char* const value = element.getAttribute(name);
    return value == nullptr ? "" : value;
}

bool hasRepeated(const std::vector<Recipe::File>& files)
{
    std::set<std::string_view> names;
    for (const Recipe::File& file : files) {
        if (!names.insert(file.name).second) {
            return true;
        }
    }
    return false;
}

/// Whether an element makes an entry.
bool isEntry(const HXMLWElement& element)
{
    using Types = HHDFHwDefFileTypes;
    return ::strcasecmp(element.getTagName(), "File") == 0 && !attributeOf(element, "Name").empty() &&
           Types::getHWHFileType(attributeOf(element, "Type")) != Types::DRIVER_SRC;
}

HHDFHwDef::Texts attributesOf(const HXMLWElement& file)
{
    HHDFHwDef::Texts attributes;
    const auto children = file.getChildren();
    for (const HXMLWElement* const child : *children) {
        attributes[attributeOf(*child, "ATTRNAME")] = attributeOf(*child, "ATTRVAL");
    }
    std::erase_if(attributes, [](const auto& one) { return one.first.empty() || one.second.empty(); });
    return attributes;
}

}  // namespace

void takeApartRepeated(const Container& container, std::vector<Recipe::File>& files)
{
    if (!hasRepeated(files)) {
        return;
    }
    HXMLWInterface document;
    document.readFromBuffer(HHDFHwDefUtils::getFileBufferFromHDF(container.bomName(), container.path));
    const HXMLWElement* const root = document.getRootElement();
    if (root == nullptr) {
        return;  // the file has changed since it was opened
    }
    const auto elements = root->getChildren();
    auto file = files.begin();
    for (const HXMLWElement* const element : *elements) {
        if (isEntry(*element) && file != files.end()) {
            file->attributes = attributesOf(*element);
            file->sourceDatabase = attributeOf(*element, "src_db");
            ++file;
        }
    }
}
