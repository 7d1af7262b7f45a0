#pragma once

#include <memory>
#include <vector>

#include "platform/Export.h"

/// One element of a parsed XML document, seen through three operations.
///
/// Callers may derive their own elements from it. Names and values live as long as the element.
class HWDEF_API HXMLWElement {
public:
    HXMLWElement() = default;
    HXMLWElement(const HXMLWElement&) = delete;
    HXMLWElement& operator=(const HXMLWElement&) = delete;

    /// The element's name.
    virtual const char* getTagName() const = 0;
    /// The value of the attribute of that exact name, the first of repeated ones; null when the
    /// element has none.
    virtual const char* getAttribute(const char* name) const = 0;
    /// The child elements in document order; empty when there are none, a null pointer when the
    /// list can't be had. The elements belong to the document and live as long as it, the same ones
    /// at every call; the list is the caller's to share and must be held while it is walked. Linear in
    /// the children.
    virtual std::shared_ptr<std::vector<HXMLWElement*>> getChildren() const = 0;

    /// False only when getChildren() would give an empty list; for walks over very many elements.
    virtual bool hasChildren() const { return true; }

    virtual ~HXMLWElement();
};
