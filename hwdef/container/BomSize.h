#pragma once

#include <cstdint>
#include <string>

#include "platform/HXMLWInterface.h"

/// What a definition that is read from a BOM document takes, told from the document beforehand, so that
/// a small container can't unfold into a huge definition.
class BomSize {
public:
    /// `container` is the path that the definition is opened by.
    BomSize(const HXMLWInterface& document, const std::string& container);

    /// Most memory in bytes while the document is read, and most while digests are computed, when it is
    /// gone again.
    std::uint64_t mostBytes() const { return documentBytes_ + transientBytes_ + definitionBytes_; }
    std::uint64_t mostBytesForDigests() const { return definitionBytes_ + digestBytes_; }

private:
    void count(const HXMLWElement& root);
    void countFile(const HXMLWElement& file);

    std::uint64_t pathBytes_;  // of the container's path, which most entries repeat
    std::uint64_t documentBytes_ = 0;
    std::uint64_t transientBytes_ = 0;  // copies on their way
    std::uint64_t definitionBytes_ = 0;
    std::uint64_t digestBytes_ = 0;
};
