#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/HXMLWElement.h"

namespace support {

/// An element built by hand, for what no XML document can say.
class FakeElement : public HXMLWElement {
public:
    using Attributes = std::map<std::string, std::string>;

    explicit FakeElement(std::string name, Attributes attributes = {});
    ~FakeElement() override;

    /// Appends a child; the reference lives as long as this element.
    FakeElement& add(std::string name, Attributes attributes = {});
    /// From now on there is no child list at all.
    void loseChildren() { hasChildren_ = false; }
    /// From now on the name is a null pointer.
    void loseName() { hasName_ = false; }

    const char* getTagName() const override;
    const char* getAttribute(const char* name) const override;
    std::shared_ptr<std::vector<HXMLWElement*>> getChildren() const override;

private:
    std::string name_;
    Attributes attributes_;
    std::vector<std::unique_ptr<FakeElement>> children_;
    bool hasChildren_ = true;
    bool hasName_ = true;
};

}  // namespace support
