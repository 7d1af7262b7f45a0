#include "platform/HXMLWInterface.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <optional>
#include <pugixml.hpp>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/XmlText.h"

namespace {

/// As a fragment the parser keeps what stands beside the root element, so that it can be refused,
/// and trimmed, so that its place is that of the first visible character.
constexpr unsigned parseFlags = pugi::parse_default | pugi::parse_fragment | pugi::parse_trim_pcdata;

bool isElement(const pugi::xml_node& node)
{
    return node.type() == pugi::node_element;
}

/// One attribute: where its two texts stand, in bytes behind the start of the element's name. Both
/// lie in the document's text, so that 32 bits do.
struct Attribute {
    std::uint32_t name;
    std::uint32_t value;
};
constexpr std::size_t maxTextBytes = std::numeric_limits<std::uint32_t>::max();

/// One element. The document holds its elements in document order in one array, so that the
/// children of an element begin right behind it; their attributes stand in the same order in
/// another one, so that those of an element end where the next element's begin.
class Element final : public HXMLWElement {
public:
    const char* getTagName() const override { return name; }
    const char* getAttribute(const char* wanted) const override;
    std::shared_ptr<std::vector<HXMLWElement*>> getChildren() const override;
    bool hasChildren() const override { return this + 1 != behind; }

    const char* name = nullptr;
    const Attribute* attributes = nullptr;
    /// The first element that isn't inside this one; until that is known, the one around this one.
    Element* behind = nullptr;
};

const char* Element::getAttribute(const char* wanted) const
{
    const Attribute* const end = (this + 1)->attributes;
    const Attribute* const found = std::find_if(attributes, end, [&](const Attribute& attribute) {
        const char* const own = name + attribute.name;
        return *own == *wanted && std::strcmp(own, wanted) == 0;
    });
    return found == end ? nullptr : name + found->value;
}

std::shared_ptr<std::vector<HXMLWElement*>> Element::getChildren() const
{
    auto list = std::make_shared<std::vector<HXMLWElement*>>();
    // Elements are no constants; it is only the interface that asks a constant one for its children.
    for (Element* child = const_cast<Element*>(this) + 1; child != behind; child = child->behind) {
        list->push_back(child);
    }
    return list;
}

/// All elements of a document: what is kept of pugixml's tree, which takes several times as much
/// memory.
class Elements {
public:
    /// `root` is the root element of a document of at most so many parts; its texts must outlive this
    /// object.
    Elements(pugi::xml_node root, const platform::XmlParts& most);

    HXMLWElement* root() const { return elements_.get(); }
    HXMLWInterface::Size size(std::size_t textBytes) const;

private:
    std::size_t elementCount_ = 0;
    std::vector<Attribute> attributes_;
    std::unique_ptr<Element[]> elements_;
};

/// Calls `visit(attribute)` for each attribute of one element, cheaper than pugixml's iterators do.
template <typename Visit>
void forEachAttribute(const pugi::xml_node& node, Visit visit)
{
    for (pugi::xml_attribute attribute = node.first_attribute(); attribute;
         attribute = attribute.next_attribute()) {
        visit(attribute);
    }
}

/// Calls `visit(element, depth)` for each element in document order, without recursion. The tree doesn't
/// fit the processor's caches when it is large: every walk over it counts.
template <typename Visit>
void forEachElement(pugi::xml_node root, Visit visit)
{
    struct Walker final : pugi::xml_tree_walker {
        explicit Walker(Visit& visitor) : visit_(visitor) {}
        bool for_each(pugi::xml_node& node) override
        {
            if (isElement(node)) {
                visit_(node, static_cast<std::size_t>(depth()) + 1);
            }
            return true;
        }
        Visit& visit_;
    };
    visit(root, std::size_t{0});
    Walker walker(visit);
    root.traverse(walker);
}

/// Both arrays stay where they are while they are filled: a parser that found more than can be there must
/// not write behind them.
void requireRoom(bool isRoom)
{
    if (!isRoom) {
        throw std::length_error("more elements or attributes in a document than its characters allow");
    }
}

// The last one is no element: it ends the attributes of the one in front of it.
Elements::Elements(pugi::xml_node root, const platform::XmlParts& most)
    : elements_(std::make_unique_for_overwrite<Element[]>(most.elements + 1))
{
    attributes_.reserve(most.attributes);
    Element* next = elements_.get();
    Element* innermost = nullptr;
    std::size_t open = 0;
    const auto close = [&](std::size_t depth) {
        for (; open > depth; --open) {
            innermost = std::exchange(innermost->behind, next);
        }
    };
    forEachElement(root, [&](const pugi::xml_node& node, std::size_t depth) {
        requireRoom(next != elements_.get() + most.elements);
        close(depth);
        next->name = node.name();
        next->attributes = attributes_.data() + attributes_.size();
        forEachAttribute(node, [&](pugi::xml_attribute attribute) {
            requireRoom(attributes_.size() != attributes_.capacity());
            attributes_.push_back({static_cast<std::uint32_t>(attribute.name() - next->name),
                                   static_cast<std::uint32_t>(attribute.value() - next->name)});
        });
        next->behind = std::exchange(innermost, next);
        ++next;
        ++open;
    });
    close(0);
    next->attributes = attributes_.data() + attributes_.size();
    elementCount_ = static_cast<std::size_t>(next - elements_.get());
}

HXMLWInterface::Size Elements::size(std::size_t textBytes) const
{
    constexpr std::size_t longBytes = 256;
    std::size_t sum = 0;
    std::size_t longest = 0;
    std::size_t allLong = 0;
    for (std::size_t at = 0; at < elementCount_; ++at) {
        const Element& element = elements_[at];
        for (const Attribute* one = element.attributes; one != elements_[at + 1].attributes; ++one) {
            const std::size_t length = std::strlen(element.name + one->value);
            sum += length;
            longest = std::max(longest, length);
            allLong += length > longBytes ? length : 0;
        }
    }
    return {elementCount_,
            textBytes + elementCount_ * sizeof(Element) + attributes_.size() * sizeof(Attribute), sum,
            longest, allLong};
}

/// Where the lines of a text end, kept apart because parsing in place overwrites the text.
class LineEnds {
public:
    explicit LineEnds(const std::string& text) : ends_(text.size())
    {
        for (auto at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1)) {
            ends_[at] = true;
        }
    }

    HXMLWInterface::Error errorAt(std::size_t offset, std::string text) const
    {
        const auto before = ends_.begin() + static_cast<std::ptrdiff_t>(std::min(offset, ends_.size()));
        const auto line = static_cast<std::size_t>(std::count(ends_.begin(), before, true));
        const auto lineStart =
            std::find(std::make_reverse_iterator(before), std::make_reverse_iterator(ends_.begin()), true)
                .base();
        return {line + 1, static_cast<std::size_t>(before - lineStart) + 1, std::move(text)};
    }

private:
    std::vector<bool> ends_;
};

const char* describe(pugi::xml_parse_status status)
{
    switch (status) {
        case pugi::status_unrecognized_tag:
            return "a name, \"/\", \"!--\", \"![CDATA[\", \"!DOCTYPE\" or \"?\" expected after \"<\"";
        case pugi::status_bad_pi:
            return "processing instruction without \"?>\" at its end";
        case pugi::status_bad_comment:
            return "comment without \"-->\" at its end";
        case pugi::status_bad_cdata:
            return "CDATA section without \"]]>\" at its end";
        case pugi::status_bad_doctype:
            return "document type declaration without its end, or inside an element";
        case pugi::status_bad_start_element:
            return "\">\" or \"/>\" expected at the end of a start tag";
        case pugi::status_bad_attribute:
            return "attribute of the form name=\"value\" expected";
        case pugi::status_bad_end_element:
            return "\">\" expected at the end of an end tag";
        case pugi::status_end_element_mismatch:
            return "end tag of the innermost open element expected";
        case pugi::status_out_of_memory:
            return "not enough memory for the document";
        default:
            return "not well-formed";
    }
}

struct RootDefect {
    std::size_t offset;
    const char* text;
};

/// What keeps a tree from having one root element and no text beside it, if anything.
std::optional<RootDefect> findRootDefect(const pugi::xml_document& tree, std::size_t textSize)
{
    for (const pugi::xml_node& node : tree.children()) {
        const auto offset = static_cast<std::size_t>(node.offset_debug());
        if (!isElement(node)) {
            return RootDefect{offset, "text outside the root element"};
        }
        if (node.previous_sibling()) {
            // An element's offset is that of its name, one behind its tag.
            return RootDefect{offset - 1, "second root element"};
        }
    }
    if (!tree.first_child()) {
        return RootDefect{textSize, "root element expected"};
    }
    return std::nullopt;
}

/// The most memory that reading a text of so many parts takes at any time.
std::uint64_t mostBytesOf(std::string_view text, const platform::XmlParts& parts)
{
    // What the parser takes for an element or a piece of text, and for an attribute.
    constexpr std::uint64_t nodeBytes = 64;
    constexpr std::uint64_t attributeBytes = 40;
    return text.size() + text.size() / 8 + parts.elements * (nodeBytes + sizeof(Element)) +
           parts.attributes * (attributeBytes + sizeof(Attribute)) + parts.texts * nodeBytes;
}

}  // namespace

class HXMLWInterface::Document {
public:
    /// Parses the text; the outcome is told by root() and error().
    void parse(std::string text);

    HXMLWElement* root() const { return elements_ ? elements_->root() : nullptr; }
    std::size_t offsetOf(const HXMLWElement& element) const
    {
        return static_cast<std::size_t>(element.getTagName() - text_.data());
    }
    const Error& error() const { return error_; }
    Size size() const { return elements_ ? elements_->size(text_.size()) : Size(); }

private:
    std::string text_;  // names and values of the elements stand in it
    std::optional<Elements> elements_;
    Error error_;
};

void HXMLWInterface::Document::parse(std::string text)
{
    text_ = std::move(text);
    if (text_.size() > maxTextBytes) {
        error_ = {1, 1, "larger than the " + std::to_string(maxTextBytes) + " bytes allowed"};
        return;
    }
    const LineEnds lines(text_);
    if (const auto defect = platform::findXmlTextDefect(text_)) {
        error_ = lines.errorAt(defect->offset, defect->description);
        return;
    }
    if (const auto defect = platform::findBadReference(text_)) {
        error_ = lines.errorAt(defect->offset, defect->description);
        return;
    }
    platform::XmlParts most = platform::boundXmlParts(text_);
    if (most.attributes * sizeof(Attribute) > text_.size()) {
        most = platform::countXmlParts(text_);  // a text that is full of quotes: don't reserve for each
    }
    pugi::xml_document tree;
    // The parser overwrites the last byte it is given: hand it the terminator.
    const pugi::xml_parse_result result =
        tree.load_buffer_inplace(text_.data(), text_.size() + 1, parseFlags, pugi::encoding_utf8);
    if (!result) {
        error_ = lines.errorAt(static_cast<std::size_t>(result.offset), describe(result.status));
        return;
    }
    if (const auto defect = findRootDefect(tree, text_.size())) {
        error_ = lines.errorAt(defect->offset, defect->text);
        return;
    }
    elements_.emplace(tree.first_child(), most);
}

std::uint64_t HXMLWInterface::mostBytes(std::string_view text, std::uint64_t enough)
{
    const std::uint64_t quick = mostBytesOf(text, platform::boundXmlParts(text));
    return quick <= enough ? quick : mostBytesOf(text, platform::countXmlParts(text));
}

HXMLWInterface::Size HXMLWInterface::size() const
{
    return document_->size();
}

HXMLWInterface::HXMLWInterface() : document_(std::make_unique<Document>()) {}

HXMLWInterface::~HXMLWInterface() = default;

bool HXMLWInterface::readFromBuffer(std::string buffer)
{
    document_ = std::make_unique<Document>();
    document_->parse(std::move(buffer));
    return document_->root() != nullptr;
}

HXMLWElement* HXMLWInterface::getRootElement() const
{
    return document_->root();
}

std::size_t HXMLWInterface::offsetOf(const HXMLWElement& element) const
{
    return document_->offsetOf(element);
}

const HXMLWInterface::Error& HXMLWInterface::error() const
{
    return document_->error();
}
