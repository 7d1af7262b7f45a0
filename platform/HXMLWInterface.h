#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Export.h"
#include "platform/HXMLWElement.h"

/// A parsed XML document.
///
/// Entities beyond the five predefined ones and character references are not expanded, and nothing
/// outside the buffer is ever read. Comments, processing instructions and character content are
/// skipped. Nesting of any depth is parsed without recursion.
class HWDEF_API HXMLWInterface {
public:
    /// Where and why a document didn't parse: at or right behind what was found, for a document that
    /// ends too early at its last byte.
    struct Error {
        std::size_t line = 0;    ///< from 1; 0 when nothing failed
        std::size_t column = 0;  ///< in bytes, from 1
        std::string text;        ///< what was found or expected there; empty when nothing failed
    };

    /// What a parsed document holds; all zeros without one.
    struct Size {
        std::uint64_t elements = 0;           ///< the root included
        std::uint64_t bytes = 0;              ///< of memory that the document takes, its text included
        std::uint64_t valueBytes = 0;         ///< of all attributes' values
        std::uint64_t longestValueBytes = 0;  ///< of one attribute
        std::uint64_t longValuesBytes = 0;    ///< of all attributes' values that are longer than 256 bytes
    };

    /// The most memory that reading this text takes at any time, judged by its characters alone: never
    /// less, and little more for a document whose texts hold none of "<", "=" and ">". A figure of at most
    /// `enough` is found faster and may be higher. Linear.
    static std::uint64_t mostBytes(std::string_view text, std::uint64_t enough = 0);

    /// Without a document.
    HXMLWInterface();
    ~HXMLWInterface();
    HXMLWInterface(const HXMLWInterface&) = delete;
    HXMLWInterface& operator=(const HXMLWInterface&) = delete;

    /// Parses a document held in memory, in place of any earlier one; the elements of the earlier
    /// one are gone. The text is UTF-8, whatever its declaration says, and below 4 GiB. True when it is well
    /// formed (XML 1.0) and has one root element; error() tells otherwise. Repeated attributes, "<" in a
    /// value and "&" that begins no reference are let pass. Pass the text by moving it in to save a copy.
    bool readFromBuffer(std::string buffer);

    /// The root element, owned by this object; null when nothing was parsed.
    HXMLWElement* getRootElement() const;

    /// Where the name of one of this document's elements begins in the text that was parsed, in bytes.
    std::size_t offsetOf(const HXMLWElement& element) const;

    /// What the last readFromBuffer stumbled over.
    const Error& error() const;

    /// Linear in the attributes.
    Size size() const;

private:
    class HWDEF_LOCAL Document;
    std::unique_ptr<Document> document_;
};
