#include <set>

#include "Container.h"
#include "Text.h"
#include "Verb.h"

namespace {

using Member = HHDFHwDefArchive::Member;

/// One line of the list.
struct Row {
    std::string name;
    std::string type;
    const Member* member;        ///< null when the archive has none
    const HHDFHwDefFile* entry;  ///< null when it isn't a file of the BOM
};

class List : public ContainerVerb {
public:
    List()
        : ContainerVerb(
              20,
              {"list",
               "List the files of a container",
               "Lists what a container's bill of materials names, in its order: files with type, size and "
               "name, then the files of drivers.",
               {{"hwdef list design.hdf", "every file with its type and size"},
                {"hwdef list --type BIT --long design.hdf", "the bitstreams, with all that is known of them"},
                {"hwdef list --json design.hdf", "the same for programs"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        ContainerVerb::define(arguments);
        arguments.option("-t,--type", "TYPE", Kind::TYPE, type_, "Only files of this type");
        arguments.flag("-l,--long", isLong_,
                       "Packed sizes, checksums, roles, hierarchy and attributes as well");
        arguments.flag("-a,--all", isAll_,
                       "The bill of materials, and members that it doesn't list, as well");
    }

    ExitCode run(Output& output) override;

private:
    std::vector<Row> rowsOf(const Container& container) const;
    void show(const std::vector<Row>& rows, Output& output) const;

    std::string type_;
    bool isLong_ = false;
    bool isAll_ = false;
};

const Registration<List> registration;

std::vector<Row> allRows(const Container& container)
{
    std::vector<Row> rows;
    for (const HHDFHwDefFile* file : container.files()) {
        rows.push_back(
            {file->getFileName(), typeToken(*file), container.archive->find(file->getFileName()), file});
    }
    const std::string driverType = HHDFHwDefFileTypes::getHWHFileTypeStr(HHDFHwDefFileTypes::DRIVER_SRC);
    for (const auto& [name, files] : container.definition->getDriverFilesMap()) {
        for (const HHDFHwDefDriver& file : files) {
            const Member* const member = container.driverMember(file);
            rows.push_back(
                {member == nullptr ? file.getRelativeName() : member->name, driverType, member, nullptr});
        }
    }
    return rows;
}

/// Adds the members that no row stands for.
void addOthers(const Container& container, std::vector<Row>& rows)
{
    std::set<const Member*> listed;
    for (const Row& row : rows) {
        listed.insert(row.member);
    }
    for (const Member& member : container.archive->members()) {
        if (!listed.contains(&member)) {
            rows.push_back(
                {member.name, member.name == container.bomName() ? "(BOM)" : "(unlisted)", &member, nullptr});
        }
    }
}

std::string crcText(const Member& member)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (int shift = 28; shift >= 0; shift -= 4) {
        text += digits[(member.crc >> shift) & 0xfU];
    }
    return text;
}

std::string roleOf(const Row& row)
{
    const bool hasRole = row.entry != nullptr && row.entry->getBDFileType() != HHDFHwDefFileTypes::UNKNOWN_BD;
    return hasRole ? HHDFHwDefFileTypes::getHWHBDTypeStr(row.entry->getBDFileType()) : "";
}

void writeEntry(platform::JsonWriter& json, const HHDFHwDefFile& entry)
{
    json.add("hierarchy", entry.getHierPath());
    json.add("sourceDatabase", entry.getHwSrcDB());
    json.beginObject("attributes");
    for (const auto& [name, value] : entry.getFileAttrs()) {
        json.add(name, value);
    }
    json.end();
}

void write(platform::JsonWriter& json, const Row& row)
{
    json.beginObject();
    json.add("name", row.name);
    json.add("type", row.type);
    json.add("present", row.member != nullptr);
    if (row.member != nullptr) {
        json.add("sizeBytes", row.member->sizeBytes);
        json.add("packedBytes", row.member->packedBytes);
        json.add("crc32", crcText(*row.member));
    }
    if (row.entry != nullptr) {
        json.add("role", roleOf(row));
        writeEntry(json, *row.entry);
    }
    json.end();
}

/// What only a long list tells of an entry.
std::string details(const Row& row)
{
    std::string text = roleOf(row);
    if (row.entry == nullptr) {
        return text;
    }
    if (!row.entry->hierPath().empty()) {
        text += " at " + printable(row.entry->hierPath());
    }
    for (const auto& [name, value] : row.entry->getFileAttrs()) {
        text += (text.empty() ? "" : " ") + printable(name) + "=" + printable(value);
    }
    return text;
}

std::vector<Row> List::rowsOf(const Container& container) const
{
    std::vector<Row> rows = allRows(container);
    if (isAll_) {
        addOthers(container, rows);
    }
    if (!type_.empty()) {
        const std::string token = HHDFHwDefFileTypes::getHWHFileTypeStr(typeOf(type_));
        std::erase_if(rows, [&](const Row& row) { return row.type != token; });
    }
    return rows;
}

void List::show(const std::vector<Row>& rows, Output& output) const
{
    Table table(isLong_ ? "lrrlll" : "lrl");
    std::uint64_t total = 0;
    for (const Row& row : rows) {
        const std::string type = output.paint(Style::CYAN, row.type);
        const std::string name = printable(row.name);
        if (row.member == nullptr) {
            const std::string missing = output.paint(Style::RED, "missing");
            table.row(isLong_ ? std::vector{type, missing, std::string(), std::string(), name, details(row)}
                              : std::vector{type, missing, name});
            continue;
        }
        total += row.member->sizeBytes;
        const std::string size = readableSize(row.member->sizeBytes);
        table.row(isLong_ ? std::vector{type, size, readableSize(row.member->packedBytes),
                                        crcText(*row.member), name, details(row)}
                          : std::vector{type, size, name});
    }
    output.lines(table.lines());
    output.line(output.paint(Style::DIM, counted(rows.size(), "file") + ", " + readableSize(total)));
}

ExitCode List::run(Output& output)
{
    if (!type_.empty()) {
        typeOf(type_);  // a misspelt type is told before anything else
    }
    const Container container = openContainer(containerPath());
    const std::vector<Row> rows = rowsOf(container);
    if (!output.isJson()) {
        show(rows, output);
        return ExitCode::SOUND;
    }
    output.json().add("file", containerPath());
    output.json().beginArray("files");
    for (const Row& row : rows) {
        write(output.json(), row);
    }
    output.json().end();
    return ExitCode::SOUND;
}

}  // namespace
