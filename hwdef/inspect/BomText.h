#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/HXMLWInterface.h"

/// A BOM document with its text, which tells where each element stands.
class BomText {
public:
    explicit BomText(std::string text);

    /// Null when it doesn't parse; error() then says why.
    const HXMLWElement* root() const { return document_.getRootElement(); }
    HXMLWInterface::Size size() const { return document_.size(); }
    const HXMLWInterface::Error& error() const { return document_.error(); }
    /// The line of an element's name, from 1. Constant cost a line for elements in document order.
    std::uint64_t lineOf(const HXMLWElement& element);

    /// The most memory that a document of this text takes here.
    static std::uint64_t mostBytes(std::string_view text);

private:
    const std::string text_;
    HXMLWInterface document_;
    std::size_t seen_ = 0;  // bytes whose lines were counted
    std::uint64_t line_ = 1;
};

/// Child elements; none for a list that can't be had.
std::vector<HXMLWElement*> childrenOf(const HXMLWElement& element);
