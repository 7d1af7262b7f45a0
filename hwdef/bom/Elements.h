#pragma once

#include <string>

#include "hwdef/bom/HHDFHwDefBomReader.h"
#include "platform/HSTStringUtils.h"
#include "platform/HXMLWElement.h"

/// How the reader's parts look at the elements of the document. A missing element reads as one
/// without name, attributes and children.
namespace bom {

/// The attribute's value; the empty text when it is missing.
inline std::string attributeOf(const HXMLWElement* element, const char* name)
{
    return element ? HHDFHwDefBomReader::valueOrEmpty(element->getAttribute(name)) : std::string();
}

/// Whether the element's name is `name`, in any case.
inline bool isNamed(const HXMLWElement* element, const char* name)
{
    return element && HSTStringUtils::iequals(HHDFHwDefBomReader::valueOrEmpty(element->getTagName()), name);
}

/// Calls `read` with every child element in document order; a list that can't be had counts as empty.
template <typename Read>
void forEachChild(const HXMLWElement* element, Read read)
{
    if (!element) {
        return;
    }
    const auto children = element->getChildren();
    if (!children) {
        return;
    }
    for (HXMLWElement* child : *children) {
        read(child);
    }
}

}  // namespace bom
