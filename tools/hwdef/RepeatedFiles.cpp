#include "RepeatedFiles.h"

#include <strings.h>

#include <algorithm>
#include <set>

#include "platform/HXMLWInterface.h"

namespace {

std::string attributeOf(const HXMLWElement& element, const char* name)
{
    const char* const value = element.getAttribute(name);
    return value == nullptr ? "" : value;
}

bool hasRepeated(const std::vector<HHDFHwDefFile*>& files)
{
    std::set<std::string_view> names;
    return !std::all_of(files.begin(), files.end(),
                        [&](const HHDFHwDefFile* file) { return names.insert(file->fileName()).second; });
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

std::vector<ListedFile> listedFiles(const Container& container)
{
    if (!hasRepeated(container.files())) {
        return {};
    }
    HXMLWInterface document;
    document.readFromBuffer(HHDFHwDefUtils::getFileBufferFromHDF(container.bomName(), container.path));
    const HXMLWElement* const root = document.getRootElement();
    if (root == nullptr) {
        return {};  // the file has changed since it was opened
    }
    std::vector<ListedFile> listed;
    const auto elements = root->getChildren();
    for (const HXMLWElement* const element : *elements) {
        if (isEntry(*element)) {
            listed.push_back({attributesOf(*element), attributeOf(*element, "src_db")});
        }
    }
    listed.resize(container.files().size());
    return listed;
}

void takeApartRepeated(Container& container)
{
    HHDFHwDef& definition = *container.definition;
    const auto entries = container.files();
    auto entry = entries.begin();
    for (const ListedFile& listed : listedFiles(container)) {
        definition.removeFileFromBom(*entry);
        const std::unique_ptr<HHDFHwDefFile> earlier(*entry++);
        HHDFHwDefFile file(earlier->getFile());
        file.setFileType(earlier->getFileType());
        file.setBDFileType(earlier->getBDFileType());
        file.setHierPath(earlier->getHierPath());
        file.setHwDefFilePath(earlier->getHwDefFilePath());
        file.setHwSrcDB(listed.sourceDatabase);
        for (const auto& [name, value] : listed.attributes) {
            file.addFileAttr(name, value);
        }
        definition.addFileToBom(&file);
    }
}
