#include <algorithm>
#include <cmath>
#include <map>

#include "Container.h"
#include "PartitionFacts.h"
#include "Properties.h"
#include "Resources.h"
#include "Text.h"
#include "Verb.h"
#include "platform/HUTFile.h"
#include "platform/HUTZip.h"

namespace {

class Info : public ContainerVerb {
public:
    Info()
        : ContainerVerb(
              10,
              {"info",
               "Show what a container is",
               "Shows device, mode, versions, resources, files by type, partitions, and whether the archive "
               "is as it was written.",
               {{"hwdef info design.hdf", "all of this for people"},
                {"hwdef info --json design.hdf", "the same for programs"}}})
    {
    }

    ExitCode run(Output& output) override;
};

const Registration<Info> registration;

std::map<std::string, std::uint64_t> countsByType(const Container& container)
{
    std::map<std::string, std::uint64_t> counts;
    for (const HHDFHwDefFile* file : container.files()) {
        ++counts[typeToken(*file)];
    }
    return counts;
}

std::uint64_t driverFileCount(const HHDFHwDef& definition)
{
    std::uint64_t count = 0;
    for (const auto& [name, files] : definition.getDriverFilesMap()) {
        count += files.size();
    }
    return count;
}

HHDFHwDef::Texts attributesOf(const HHDFHwDef& definition)
{
    HHDFHwDef::Texts attributes;
    definition.getWDIAttrs(attributes);
    return attributes;
}

/// The word for programs, and what people read.
struct Integrity {
    const char* word;
    const char* text;
    Style style;
};

Integrity integrityOf(const Container& container)
{
    switch (HUTZip::checkIntegrity(HUTFile(container.path))) {
        case HUTZip::INTACT:
            return {"intact", "intact: the archive has the digest that it records", Style::GREEN};
        case HUTZip::NO_DIGEST:
            return {"unrecorded", "the archive records no digest", Style::YELLOW};
        case HUTZip::WRONG_DIGEST:
            return {"wrong", "the archive was changed after it was written: its digest is wrong", Style::RED};
        default:
            return {"unreadable", "the archive can't be read to its end", Style::RED};
    }
}

Style styleOf(double percent)
{
    return percent > 90 ? Style::RED : percent > 70 ? Style::YELLOW : Style::GREEN;
}

std::string bar(double percent, const Output& output)
{
    constexpr std::size_t width = 30;
    const double share = std::clamp(percent / 100, 0.0, 1.0);
    auto filled = static_cast<std::size_t>(std::lround(share * width));
    filled = std::max<std::size_t>(filled, percent > 0 ? 1 : 0);
    return "[" + output.paint(styleOf(percent), std::string(filled, '#')) +
           output.paint(Style::DIM, std::string(width - filled, '.')) + "]";
}

void showResources(const HHDFHwDef& definition, Output& output)
{
    const auto resources = resourcesOf(definition);
    if (resources.empty()) {
        return;
    }
    output.line(output.paint(Style::BOLD, "Resources"));
    Table table("lrlrr");
    for (const Resource& one : resources) {
        const auto percent = one.percent();
        table.row({one.name, printable(one.used),
                   one.available.empty() ? "" : "of " + printable(one.available),
                   percent ? bar(*percent, output) : "", percent ? percentText(*percent) : ""});
    }
    output.lines(table.lines(2));
}

void showFiles(const Container& container, Output& output)
{
    std::uint64_t size = 0;
    std::uint64_t packed = 0;
    for (const auto& member : container.archive->members()) {
        size += member.sizeBytes;
        packed += member.packedBytes;
    }
    output.line(output.paint(Style::BOLD, counted(container.files().size(), "file")) + ", " +
                counted(container.archive->members().size(), "member") + " of " + readableSize(size) +
                ", packed " + readableSize(packed));
    Table table("rl");
    for (const auto& [type, count] : countsByType(container)) {
        table.row({std::to_string(count), output.paint(Style::CYAN, type)});
    }
    output.lines(table.lines(2));
    const auto drivers = container.definition->getDriverFilesMap();
    if (!drivers.empty()) {
        output.line(output.paint(Style::BOLD, counted(drivers.size(), "driver")) + " of " +
                    counted(driverFileCount(*container.definition), "file"));
    }
}

void showPartitions(const Container& container, Output& output)
{
    const PartitionFacts facts = partitionFacts(container);
    if (facts.partitions.empty() && facts.configurations.empty()) {
        return;
    }
    output.line(output.paint(Style::BOLD, counted(facts.partitions.size(), "partition")) + ", " +
                counted(facts.configurations.size(), "configuration"));
    for (const auto& partition : facts.partitions) {
        output.line("  " + printable(partition.path) + ", default " + printable(partition.defaultModule));
    }
}

void showAttributes(const HHDFHwDef& definition, Output& output)
{
    const auto attributes = attributesOf(definition);
    if (attributes.empty()) {
        return;
    }
    output.line(output.paint(Style::BOLD, "Attributes"));
    Table table("ll");
    for (const auto& [name, value] : attributes) {
        table.row({printable(name), printable(value)});
    }
    output.lines(table.lines(2));
}

void show(const Container& container, Output& output)
{
    output.line(output.paint(Style::BOLD, printable(container.path)));
    Table table("ll");
    for (const Property& property : properties()) {
        const std::string value = property.get(*container.definition);
        // The counts of resources have bars of their own.
        if (!value.empty() && *property.title != '\0') {
            table.row({property.title, printable(value)});
        }
    }
    const Integrity integrity = integrityOf(container);
    table.row({"Integrity", output.paint(integrity.style, integrity.text)});
    output.lines(table.lines(2));
    showResources(*container.definition, output);
    showFiles(container, output);
    showPartitions(container, output);
    showAttributes(*container.definition, output);
}

void writeResources(const HHDFHwDef& definition, platform::JsonWriter& json)
{
    json.beginArray("resources");
    for (const Resource& one : resourcesOf(definition)) {
        json.beginObject();
        json.add("name", one.name);
        json.add("used", one.used);
        json.add("available", one.available);
        if (const auto percent = one.percent()) {
            json.add("percent", *percent);
        }
        json.end();
    }
    json.end();
}

void write(const Container& container, platform::JsonWriter& json)
{
    const HHDFHwDef& definition = *container.definition;
    json.add("file", container.path);
    json.add("bom", container.bomName());
    json.beginObject("properties");
    for (const Property& property : properties()) {
        json.add(property.key, property.get(definition));
    }
    json.end();
    json.add("integrity", integrityOf(container).word);
    writeResources(definition, json);
    json.beginObject("filesByType");
    for (const auto& [type, count] : countsByType(container)) {
        json.add(type, count);
    }
    json.end();
    const PartitionFacts facts = partitionFacts(container);
    json.add("members", std::uint64_t{container.archive->members().size()});
    json.add("drivers", std::uint64_t{definition.getDriverFilesMap().size()});
    json.add("driverFiles", driverFileCount(definition));
    json.add("partitions", std::uint64_t{facts.partitions.size()});
    json.add("configurations", std::uint64_t{facts.configurations.size()});
    json.beginObject("attributes");
    for (const auto& [name, value] : attributesOf(definition)) {
        json.add(name, value);
    }
    json.end();
}

ExitCode Info::run(Output& output)
{
    const Container container = openContainer(containerPath());
    if (output.isJson()) {
        write(container, output.json());
    } else {
        show(container, output);
    }
    return ExitCode::SOUND;
}

}  // namespace
