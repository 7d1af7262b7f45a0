// Opening a container to a filled definition, against libzip with libxml2 filling plain structs.

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <map>
#include <string_view>
#include <tuple>

#include "Workloads.h"
#include "support/Design.h"
#include "support/Libzip.h"

namespace bench {

namespace {

/// What a caller who wants speed would fill from a BOM: no more than opening gives.
struct PlainFile {
    std::string type, name, sourceDb, hierarchy, role, digest;
    std::map<std::string, std::string> attributes;
};

struct PlainDefinition {
    std::map<std::string, std::map<std::string, std::string>> properties;
    std::vector<PlainFile> files;
};

/// Takes elements and attributes in document order.
class Filler {
public:
    explicit Filler(PlainDefinition& definition) : definition_(definition) {}

    void begin(std::string_view element)
    {
        element_ = element;
        if (element == "File") {
            definition_.files.emplace_back();
        }
    }

    void attribute(std::string_view name, std::string_view value)
    {
        if (element_ == "File") {
            if (std::string* field = fieldOf(definition_.files.back(), name)) {
                *field = value;
            }
        } else if (name == "ATTRNAME") {
            attributeName_ = value;
        } else if (name == "ATTRVAL" && element_ == "FILEATTR") {
            definition_.files.back().attributes[attributeName_] = value;
        } else {
            definition_.properties[element_][std::string(name)] = value;
        }
    }

private:
    static std::string* fieldOf(PlainFile& file, std::string_view name)
    {
        return name == "Type"               ? &file.type
               : name == "Name"             ? &file.name
               : name == "src_db"           ? &file.sourceDb
               : name == "DESIGN_HIERARCHY" ? &file.hierarchy
               : name == "BD_TYPE"          ? &file.role
               : name == "DIGEST"           ? &file.digest
                                            : nullptr;
    }

    PlainDefinition& definition_;
    std::string element_;
    std::string attributeName_;
};

std::string_view view(const xmlChar* text)
{
    return reinterpret_cast<const char*>(text);
}

void fillFromTree(Filler& filler, const xmlNode* node)
{
    for (; node != nullptr; node = node->next) {
        if (node->type != XML_ELEMENT_NODE) {
            continue;
        }
        filler.begin(view(node->name));
        for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
            filler.attribute(view(attribute->name),
                             attribute->children == nullptr ? "" : view(attribute->children->content));
        }
        fillFromTree(filler, node->children);
    }
}

void parseTree(const std::string& text, PlainDefinition& definition)
{
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                      XML_PARSE_HUGE | XML_PARSE_COMPACT | XML_PARSE_NOBLANKS | XML_PARSE_NONET),
        &xmlFreeDoc);
    require(document != nullptr, "libxml2 can't read the BOM");
    Filler filler(definition);
    fillFromTree(filler, xmlDocGetRootElement(document.get()));
}

void startElement(void* filler, const xmlChar* name, const xmlChar*, const xmlChar*, int, const xmlChar**,
                  int attributeCount, int, const xmlChar** attributes)
{
    Filler& target = *static_cast<Filler*>(filler);
    target.begin(view(name));
    for (int i = 0; i < attributeCount; ++i, attributes += 5) {  // name, prefix, URI, begin and end
        target.attribute(view(attributes[0]), {reinterpret_cast<const char*>(attributes[3]),
                                               static_cast<std::size_t>(attributes[4] - attributes[3])});
    }
}

void parseEvents(const std::string& text, PlainDefinition& definition)
{
    xmlSAXHandler handler = {};
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = startElement;
    Filler filler(definition);
    require(xmlSAXUserParseMemory(&handler, &filler, text.data(), static_cast<int>(text.size())) == 0,
            "libxml2 can't read the BOM");
}

Task plainTask(std::size_t count, void (*parse)(const std::string&, PlainDefinition&))
{
    const auto definition = std::make_shared<PlainDefinition>();
    Task task;
    task.prepare = [=] { *definition = PlainDefinition(); };
    task.run = [=] {
        const LibzipArchive archive = openLibzip(manyContainer(count));
        parse(readLibzip(archive.get(), "hwdef.xml"), *definition);
    };
    task.check = [=] {
        const Files expected = filesOf(manyDir(), count);
        require(definition->files.size() == count, "libxml2 missed files");
        for (std::size_t i = 0; i < count; ++i) {
            const PlainFile& file = definition->files[i];
            require(file.name == nameOf(expected[i].first), "another file name");
            require(file.attributes.size() == (i % 4 == 0 ? 1u : 0u), "another number of attributes");
            require(!file.sourceDb.empty(), "no source database");
        }
    };
    return task;
}

}  // namespace

Task openTask(std::size_t count)
{
    const auto definition = std::make_shared<std::unique_ptr<HHDFHwDef>>();
    Task task;
    task.prepare = [=] { definition->reset(); };
    task.run = [=] { *definition = HHDFHwDefUtils::getHDF(manyContainer(count)); };
    task.check = [=] {
        require(*definition != nullptr && (*definition)->getPart() == "ice40hx8k-ct256", "no definition");
        const Files expected = filesOf(manyDir(), count);
        std::vector<HHDFHwDefFile*> files;
        require((*definition)->getBomFiles(files) == count, "another number of files");
        for (std::size_t i = 0; i < count; ++i) {
            require(files[i]->getFileName() == nameOf(expected[i].first), "another file name");
            require(files[i]->getFileAttrs().size() == (i % 4 == 0 ? 1u : 0u),
                    "another number of attributes");
        }
    };
    return task;
}

void addOpening()
{
    xmlInitParser();
    for (const auto& [workload, count, runs] :
         {std::tuple("open/small", sizes()[0], 500), std::tuple("open/medium", sizes()[1], 20),
          std::tuple("open/large", sizes()[2], 3)}) {
        compare(workload, "hwdef", runs, [count = count] { return openTask(count); });
        compare(workload, "libzip + libxml2 tree", runs,
                [count = count] { return plainTask(count, parseTree); });
        compare(workload, "libzip + libxml2 events", runs,
                [count = count] { return plainTask(count, parseEvents); });
    }
}

}  // namespace bench
