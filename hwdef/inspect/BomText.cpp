#include "hwdef/inspect/BomText.h"

#include <algorithm>
#include <utility>

BomText::BomText(std::string text) : text_(std::move(text))
{
    document_.readFromBuffer(text_);
}

std::uint64_t BomText::lineOf(const HXMLWElement& element)
{
    const std::size_t offset = std::min(document_.offsetOf(element), text_.size());
    if (offset < seen_) {
        seen_ = 0;
        line_ = 1;
    }
    const auto begin = text_.begin();
    line_ += static_cast<std::uint64_t>(std::count(begin + static_cast<std::ptrdiff_t>(seen_),
                                                   begin + static_cast<std::ptrdiff_t>(offset), '\n'));
    seen_ = offset;
    return line_;
}

std::uint64_t BomText::mostBytes(std::string_view text)
{
    return text.size() + HXMLWInterface::mostBytes(text);
}

std::vector<HXMLWElement*> childrenOf(const HXMLWElement& element)
{
    const auto children = element.getChildren();
    return children == nullptr ? std::vector<HXMLWElement*>() : *children;
}
