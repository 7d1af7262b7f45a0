#include "PartitionFacts.h"

#include <memory>

#include "platform/HSTStringUtils.h"
#include "platform/HXMLWInterface.h"

namespace {

std::string valueOf(const HXMLWElement& element, const char* name)
{
    return HHDFHwDefBomReader::valueOrEmpty(element.getAttribute(name));
}

/// Calls `visit` with each child element of that name, in any case.
template <typename Visit>
void forEach(const HXMLWElement& element, const char* name, Visit visit)
{
    const auto children = element.getChildren();
    for (const HXMLWElement* child : *children) {
        if (HSTStringUtils::iequals(child->getTagName(), name)) {
            visit(*child);
        }
    }
}

PartitionFacts::Partition partitionOf(const HXMLWElement& element)
{
    PartitionFacts::Partition partition = {
        valueOf(element, "Instance_Path"), valueOf(element, "DEFALUT_CONFIG_RM"), {}};
    forEach(element, "File", [&](const HXMLWElement& file) {
        partition.files.push_back({valueOf(file, "RM_NAME"), valueOf(file, "Name")});
    });
    return partition;
}

PartitionFacts::Configuration configurationOf(const HXMLWElement& element)
{
    PartitionFacts::Configuration configuration = {
        valueOf(element, "Name"), HSTStringUtils::iequals(valueOf(element, "Active"), "true"), {}};
    forEach(element, "PartitionInstMap", [&](const HXMLWElement& map) {
        PartitionFacts::Cell cell = {valueOf(map, "Instance_Path"), valueOf(map, "RM_NAME"), {}};
        forEach(map, "File", [&](const HXMLWElement& file) { cell.files.push_back(valueOf(file, "Name")); });
        configuration.cells.push_back(cell);
    });
    forEach(element, "GrayBoxInst", [&](const HXMLWElement& box) {
        configuration.cells.push_back({valueOf(box, "Name"), "", {}});
    });
    return configuration;
}

}  // namespace

PartitionFacts partitionFacts(const Container& container)
{
    HXMLWInterface document;
    document.readFromBuffer(HHDFHwDefUtils::getFileBufferFromHDF(container.bomName(), container.path));
    const HXMLWElement* const root = document.getRootElement();
    PartitionFacts facts;
    if (root == nullptr) {
        return facts;
    }
    forEach(*root, "Instance_Paths", [&](const HXMLWElement& list) {
        forEach(list, "Reconfigurable_Partition",
                [&](const HXMLWElement& element) { facts.partitions.push_back(partitionOf(element)); });
    });
    forEach(*root, "PRConfigurations", [&](const HXMLWElement& list) {
        forEach(list, "PRConfiguration", [&](const HXMLWElement& element) {
            facts.configurations.push_back(configurationOf(element));
        });
    });
    return facts;
}
