#include <map>

#include "Container.h"
#include "PartitionFacts.h"
#include "Text.h"
#include "Tree.h"
#include "Verb.h"

namespace {

class Partitions : public ContainerVerb {
public:
    Partitions()
        : ContainerVerb(
              60, {"partitions",
                   "Show reconfigurable partitions",
                   "Shows the reconfigurable partitions with the modules that can fill them, and the "
                   "configurations with the module that each chooses for a cell. The default module and the "
                   "active configurations are marked.",
                   {{"hwdef partitions design.hdf", "both as trees"}}})
    {
    }

    ExitCode run(Output& output) override;
};

const Registration<Partitions> registration;

/// The files of each module, in byte order of the modules.
std::map<std::string, std::vector<std::string>> modulesOf(const PartitionFacts::Partition& partition)
{
    std::map<std::string, std::vector<std::string>> modules;
    for (const auto& [module, file] : partition.files) {
        modules[module].push_back(file);
    }
    return modules;
}

std::string joined(const std::vector<std::string>& texts)
{
    std::string all;
    for (const std::string& text : texts) {
        all += (all.empty() ? "" : ", ") + printable(text);
    }
    return all;
}

Tree treeOf(const PartitionFacts::Partition& partition, const Output& output)
{
    Tree tree = {output.paint(Style::BOLD, printable(partition.path)), {}};
    for (const auto& [module, files] : modulesOf(partition)) {
        const std::string mark =
            module == partition.defaultModule ? output.paint(Style::GREEN, " (default)") : "";
        tree.children.push_back({printable(module) + mark + ": " + joined(files), {}});
    }
    return tree;
}

Tree treeOf(const PartitionFacts::Configuration& configuration, const Output& output)
{
    const std::string mark = configuration.isActive ? output.paint(Style::GREEN, " (active)") : "";
    Tree tree = {output.paint(Style::BOLD, printable(configuration.name)) + mark, {}};
    for (const auto& cell : configuration.cells) {
        const std::string chosen =
            cell.module.empty() ? output.paint(Style::DIM, "gray box") : printable(cell.module);
        tree.children.push_back({printable(cell.path) + ": " + chosen, {}});
    }
    return tree;
}

void write(platform::JsonWriter& json, const PartitionFacts::Partition& partition)
{
    json.beginObject();
    json.add("path", partition.path);
    json.add("defaultModule", partition.defaultModule);
    json.beginArray("modules");
    for (const auto& [module, files] : modulesOf(partition)) {
        json.beginObject();
        json.add("name", module);
        json.beginArray("files");
        for (const std::string& file : files) {
            json.addElement(file);
        }
        json.end();
        json.end();
    }
    json.end();
    json.end();
}

void write(platform::JsonWriter& json, const PartitionFacts::Configuration& configuration)
{
    json.beginObject();
    json.add("name", configuration.name);
    json.add("active", configuration.isActive);
    json.beginArray("cells");
    for (const auto& cell : configuration.cells) {
        json.beginObject();
        json.add("path", cell.path);
        if (cell.module.empty()) {
            json.addNull("module");
        } else {
            json.add("module", cell.module);
        }
        json.end();
    }
    json.end();
    json.end();
}

ExitCode Partitions::run(Output& output)
{
    const PartitionFacts facts = partitionFacts(openContainer(containerPath()));
    if (output.isJson()) {
        output.json().add("file", containerPath());
        output.json().beginArray("partitions");
        for (const auto& partition : facts.partitions) {
            write(output.json(), partition);
        }
        output.json().end();
        output.json().beginArray("configurations");
        for (const auto& configuration : facts.configurations) {
            write(output.json(), configuration);
        }
        output.json().end();
        return ExitCode::SOUND;
    }
    Tree partitions = {counted(facts.partitions.size(), "partition"), {}};
    for (const auto& partition : facts.partitions) {
        partitions.children.push_back(treeOf(partition, output));
    }
    Tree configurations = {counted(facts.configurations.size(), "configuration"), {}};
    for (const auto& configuration : facts.configurations) {
        configurations.children.push_back(treeOf(configuration, output));
    }
    output.lines(partitions.lines());
    output.lines(configurations.lines());
    return ExitCode::SOUND;
}

}  // namespace
