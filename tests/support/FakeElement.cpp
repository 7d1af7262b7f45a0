#include "support/FakeElement.h"

#include <utility>

namespace support {

FakeElement::FakeElement(std::string name, Attributes attributes)
    : name_(std::move(name)), attributes_(std::move(attributes))
{
}

FakeElement::~FakeElement() = default;

FakeElement& FakeElement::add(std::string name, Attributes attributes)
{
    children_.push_back(std::make_unique<FakeElement>(std::move(name), std::move(attributes)));
    return *children_.back();
}

const char* FakeElement::getTagName() const
{
    return hasName_ ? name_.c_str() : nullptr;
}

const char* FakeElement::getAttribute(const char* name) const
{
    const auto found = attributes_.find(name);
    return found == attributes_.end() ? nullptr : found->second.c_str();
}

std::shared_ptr<std::vector<HXMLWElement*>> FakeElement::getChildren() const
{
    if (!hasChildren_) {
        return nullptr;
    }
    auto list = std::make_shared<std::vector<HXMLWElement*>>();
    for (const auto& child : children_) {
        list->push_back(child.get());
    }
    return list;
}

}  // namespace support
