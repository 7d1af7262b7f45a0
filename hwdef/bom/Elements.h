#pragma once

#include <string>
#include <string_view>

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

/// The same without a copy; lives as long as the element.
inline std::string_view textOf(const HXMLWElement* element, const char* name)
{
    const char* const text = element ? element->getAttribute(name) : nullptr;
    return text ? std::string_view(text) : std::string_view();
}

/// Whether the element's name is `name`, in any case.
inline bool isNamed(const HXMLWElement* element, const char* name)
{
    const char* const ownName = element ? element->getTagName() : nullptr;
    return element && HSTStringUtils::iequals(ownName ? ownName : "", name);
}

/// Calls `read` with every child element in document order; a list that can't be had counts as empty.
template <typename Read>
void forEachChild(const HXMLWElement* element, Read read)
{
    if (!element || !element->hasChildren()) {
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
