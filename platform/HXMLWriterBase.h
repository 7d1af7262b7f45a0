#pragma once

#include <memory>
#include <string>

#include "platform/Export.h"

/// Writes one XML document to a file, tag by tag.
///
/// Attribute values come back from HXMLWInterface byte for byte, newlines, tabs, quotes and
/// non-ASCII letters included. Every failure throws HEXAll: a file that can't be opened or written,
/// a text that XML 1.0 (section 2.2) can't carry (control characters, invalid UTF-8; the text names
/// element, attribute and byte position, from 1), names that are no XML names, and tags that do not
/// nest. The document is held in memory until closeDoc(); every step is linear.
class HWDEF_API HXMLWriterBase {
public:
    /// Opens the document beside the path; what stands at the path is replaced by closeDoc() and
    /// stays until then.
    explicit HXMLWriterBase(const std::string& path);
    /// Releases the file; a document that wasn't closed is dropped.
    ~HXMLWriterBase();
    HXMLWriterBase(const HXMLWriterBase&) = delete;
    HXMLWriterBase& operator=(const HXMLWriterBase&) = delete;

    /// Queues an attribute for the next tag; attributes appear in the order queued. Its texts are
    /// checked when that tag is written.
    void addAttr(const std::string& name, const std::string& value);
    /// Writes a start tag with the queued attributes and clears the queue.
    void wrStartTag(const std::string& name);
    /// Writes an empty-element tag with the queued attributes and clears the queue.
    void wrEmptyTag(const std::string& name);
    /// Writes the end tag of the innermost open element, which must be `name`.
    void wrEndTag(const std::string& name);
    /// Finishes the document: every element must be closed, and all bytes reach the file, which then
    /// takes its place at the path. UTF-8, one element a line, indented by two spaces.
    void closeDoc();

private:
    class HWDEF_LOCAL Document;
    std::unique_ptr<Document> document_;
};
