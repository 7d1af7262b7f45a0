#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The first place of a text that XML 1.0 (section 2.2) can't carry.
struct XmlTextDefect {
    std::size_t offset = 0;   ///< in bytes, from 0
    std::string description;  ///< what stands there, a clause for people
};

/// The first defect of the text: a character that XML has no way to write, or a byte that isn't
/// valid UTF-8; nothing for a text that XML can carry. Linear.
std::optional<XmlTextDefect> findXmlTextDefect(std::string_view text);

/// The first character reference of a document (section 4.1) to what is no character of XML, like
/// "&#0;"; nothing when there is none. Comments, CDATA sections and processing instructions hold no
/// references. Linear.
std::optional<XmlTextDefect> findBadReference(std::string_view document);

/// True when the text can be the name of an element or an attribute (section 2.3); letters beyond
/// ASCII are all taken for name characters.
bool isXmlName(std::string_view text);

/// How many parts a document can have at most.
struct XmlParts {
    std::size_t elements = 0;
    std::size_t attributes = 0;
    std::size_t texts = 0;  ///< pieces of character data that aren't blank, CDATA sections included
};

/// Counts what begins as a part does, wherever it stands: never too few, but those in comments and in
/// values too. Linear.
XmlParts countXmlParts(std::string_view document);

/// The same much faster and less sharp: the elements of that count, half of all quotes for the
/// attributes, and what can end in front of a text for the texts.
XmlParts boundXmlParts(std::string_view document);

}  // namespace platform
