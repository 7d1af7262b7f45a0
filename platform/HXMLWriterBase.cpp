#include "platform/HXMLWriterBase.h"

#include <pugixml.hpp>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/HEXAll.h"
#include "platform/ReplacementFile.h"
#include "platform/XmlText.h"

namespace {

std::string quoted(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

/// Takes the bytes of a tree to a file.
class FileWriter final : public pugi::xml_writer {
public:
    explicit FileWriter(const platform::File& file) : file_(file) {}

    void write(const void* data, std::size_t size) override { file_.write(data, size); }

private:
    const platform::File& file_;
};

}  // namespace

/// The whole document as a tree, which closing turns into a file.
class HXMLWriterBase::Document {
public:
    explicit Document(const std::string& path) : path_(path), file_(path) {}

    void queue(const std::string& name, const std::string& value) { queue_.emplace_back(name, value); }
    void start(const std::string& name) { open_ = append(name); }
    void empty(const std::string& name) { append(name); }
    void end(const std::string& name);
    void close();

private:
    [[noreturn]] void fail(const std::string& reason) const { throw HEXAll(path_ + ": " + reason); }
    /// Passes on what the tree gave back; an empty node, an empty attribute or false from it means
    /// that memory ran out.
    template <typename Result>
    Result kept(Result result) const
    {
        if (!result) {
            fail("not enough memory for the document");
        }
        return result;
    }
    void checkAttribute(const std::string& element, const std::string& name, const std::string& value) const;
    pugi::xml_node append(const std::string& name);

    std::string path_;
    platform::ReplacementFile file_;
    pugi::xml_document tree_;
    pugi::xml_node open_ = tree_;  // the innermost open element, the tree itself outside the root
    std::vector<std::pair<std::string, std::string>> queue_;
    bool closed_ = false;
};

void HXMLWriterBase::Document::checkAttribute(const std::string& element, const std::string& name,
                                              const std::string& value) const
{
    if (!platform::isXmlName(name)) {
        fail("element " + quoted(element) + ": " + quoted(name) + " is no XML name for an attribute");
    }
    if (const auto defect = platform::findXmlTextDefect(value)) {
        fail("element " + quoted(element) + ", attribute " + quoted(name) + ", byte " +
             std::to_string(defect->offset + 1) + ": " + defect->description);
    }
}

pugi::xml_node HXMLWriterBase::Document::append(const std::string& name)
{
    if (!platform::isXmlName(name)) {
        fail(quoted(name) + " is no XML name for an element");
    }
    if (open_ == tree_ && tree_.first_child()) {
        fail("element " + quoted(name) + " stands behind the end of the root element");
    }
    for (const auto& [attribute, value] : queue_) {
        checkAttribute(name, attribute, value);
    }
    pugi::xml_node element = kept(open_.append_child(name.c_str()));
    for (const auto& [attribute, value] : queue_) {
        kept(kept(element.append_attribute(attribute.c_str())).set_value(value.c_str()));
    }
    queue_.clear();
    return element;
}

void HXMLWriterBase::Document::end(const std::string& name)
{
    if (open_ == tree_ || name != open_.name()) {
        fail("end tag " + quoted(name) + " found, " +
             (open_ == tree_ ? "no element is open"
                             : "the innermost open element is " + quoted(open_.name())));
    }
    if (!open_.first_child()) {
        // Content, if only empty, keeps a start and an end tag from being joined into one.
        kept(open_.append_child(pugi::node_pcdata));
    }
    open_ = open_.parent();
}

void HXMLWriterBase::Document::close()
{
    if (closed_) {
        fail("the document is closed already");
    }
    if (open_ != tree_) {
        fail("the document ends before the element " + quoted(open_.name()));
    }
    if (!tree_.first_child()) {
        fail("the document ends before its root element");
    }
    if (!queue_.empty()) {
        fail("the document ends before the tag of the attribute " + quoted(queue_.front().first));
    }
    pugi::xml_node declaration = kept(tree_.prepend_child(pugi::node_declaration));
    kept(kept(declaration.append_attribute("version")).set_value("1.0"));
    kept(kept(declaration.append_attribute("encoding")).set_value("UTF-8"));
    closed_ = true;
    FileWriter writer(file_.file());
    tree_.save(writer, "  ", pugi::format_default, pugi::encoding_utf8);
    file_.commit();
}

HXMLWriterBase::HXMLWriterBase(const std::string& path) : document_(std::make_unique<Document>(path)) {}

HXMLWriterBase::~HXMLWriterBase() = default;

void HXMLWriterBase::addAttr(const std::string& name, const std::string& value)
{
    document_->queue(name, value);
}

void HXMLWriterBase::wrStartTag(const std::string& name)
{
    document_->start(name);
}

void HXMLWriterBase::wrEmptyTag(const std::string& name)
{
    document_->empty(name);
}

void HXMLWriterBase::wrEndTag(const std::string& name)
{
    document_->end(name);
}

void HXMLWriterBase::closeDoc()
{
    document_->close();
}
