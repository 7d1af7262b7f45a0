#include "RecipeFile.h"

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

#include "CommandError.h"
#include "JsonNode.h"
#include "Text.h"
#include "TypedFile.h"
#include "platform/JsonWriter.h"

namespace {

constexpr std::uint64_t recipeVersion = 1;

void addUnlessEmpty(platform::JsonWriter& json, const char* key, const std::string& text)
{
    if (!text.empty()) {
        json.add(key, text);
    }
}

void addTexts(platform::JsonWriter& json, const char* key, const HHDFHwDef::Texts& texts)
{
    if (texts.empty()) {
        return;
    }
    json.beginObject(key);
    for (const auto& [name, value] : texts) {
        json.add(name, value);
    }
    json.end();
}

void writeFiles(platform::JsonWriter& json, const Recipe& recipe)
{
    json.beginArray("files");
    for (const Recipe::File& file : recipe.files) {
        json.beginObject();
        json.add("path", file.path);
        json.add("type", file.type);
        addUnlessEmpty(json, "role", file.role);
        addUnlessEmpty(json, "hierarchy", file.hierarchy);
        addUnlessEmpty(json, "sourceDatabase", file.sourceDatabase);
        addTexts(json, "attributes", file.attributes);
        json.end();
    }
    json.end();
}

/// Members with the paths of their content, under a key of their own or as drivers' files.
template <typename Members>
void writeMembers(platform::JsonWriter& json, const char* key, const Members& members)
{
    json.beginArray(key);
    for (const auto& [name, path] : members) {
        json.beginObject();
        json.add("name", name);
        addUnlessEmpty(json, "path", path);
        json.end();
    }
    json.end();
}

void writeDrivers(platform::JsonWriter& json, const Recipe& recipe)
{
    json.beginArray("drivers");
    for (const Recipe::Driver& driver : recipe.drivers) {
        json.beginObject();
        json.add("name", driver.name);
        writeMembers(json, "files", driver.files);
        json.end();
    }
    json.end();
}

void writePartitions(platform::JsonWriter& json, const PartitionFacts& facts)
{
    json.beginArray("partitions");
    for (const auto& partition : facts.partitions) {
        json.beginObject();
        json.add("path", partition.path);
        json.add("defaultModule", partition.defaultModule);
        json.beginArray("files");
        for (const auto& [module, file] : partition.files) {
            json.beginObject();
            json.add("module", module);
            json.add("file", file);
            json.end();
        }
        json.end();
        json.end();
    }
    json.end();
}

void writeConfigurations(platform::JsonWriter& json, const PartitionFacts& facts)
{
    json.beginArray("configurations");
    for (const auto& configuration : facts.configurations) {
        json.beginObject();
        json.add("name", configuration.name);
        json.add("active", configuration.isActive);
        json.beginArray("cells");
        for (const auto& cell : configuration.cells) {
            json.beginObject();
            json.add("path", cell.path);
            addUnlessEmpty(json, "module", cell.module);
            addUnlessEmpty(json, "file", cell.files.empty() ? "" : cell.files.front());
            json.end();
        }
        json.end();
        json.end();
    }
    json.end();
}

void writeDefinition(platform::JsonWriter& json, const Recipe& recipe)
{
    json.beginObject("properties");
    for (const auto& [key, value] : recipe.properties) {
        json.add(key, value);
    }
    json.end();
    addUnlessEmpty(json, "digest", recipe.digest);
    if (recipe.dies) {
        json.add("stacked", recipe.isStacked);
        json.add("dies", std::int64_t{*recipe.dies});
    }
    addTexts(json, "attributes", recipe.attributes);
    writeFiles(json, recipe);
    writeDrivers(json, recipe);
    writePartitions(json, recipe.partitions);
    writeConfigurations(json, recipe.partitions);
}

/// Reads the parts of a recipe whose paths count from one directory.
class Reader {
public:
    explicit Reader(const std::filesystem::path& dir) : dir_(dir) {}

    Recipe read(const JsonNode& root) const
    {
        root.allow({"recipe", "properties", "digest", "stacked", "dies", "attributes", "files", "drivers",
                    "partitions", "configurations", "bom", "members", "comment", "archiveDigest",
                    "modified"});
        Recipe recipe;
        root.eachText("properties", [&](const auto& key, const auto& value) {
            recipe.properties.emplace_back(key, value);
        });
        recipe.digest = root.text("digest");
        root.eachText("attributes",
                      [&](const auto& key, const auto& value) { recipe.attributes[key] = value; });
        root.each("files", [&](const JsonNode& node) { recipe.files.push_back(file(node)); });
        root.each("drivers", [&](const JsonNode& node) { recipe.drivers.push_back(driver(node)); });
        root.each("partitions",
                  [&](const JsonNode& node) { recipe.partitions.partitions.push_back(partition(node)); });
        root.each("configurations", [&](const JsonNode& node) {
            recipe.partitions.configurations.push_back(configuration(node));
        });
        recipe.isStacked = root.flag("stacked", false);
        readDies(root, recipe);
        readArchive(root, recipe);
        return recipe;
    }

private:
    std::string resolved(const std::string& path) const
    {
        return path.empty() ? path : (dir_ / path).string();
    }

    Recipe::File file(const JsonNode& node) const
    {
        node.allow({"path", "type", "role", "hierarchy", "sourceDatabase", "attributes"});
        Recipe::File file;
        file.path = resolved(node.at("path").text());
        file.name = std::filesystem::path(file.path).filename().string();
        file.type = packedType(node.at("type").text());
        file.role = role(node, file.type);
        file.hierarchy = node.text("hierarchy");
        file.sourceDatabase = node.text("sourceDatabase");
        node.eachText("attributes",
                      [&](const auto& name, const auto& value) { file.attributes[name] = value; });
        return file;
    }

    static std::string role(const JsonNode& node, const std::string& type)
    {
        using Types = HHDFHwDefFileTypes;
        std::string role = node.text("role");
        if (!role.empty() && Types::getHWHBDType(role) == Types::UNKNOWN_BD) {
            std::vector<std::string> roles;
            for (const auto known : {Types::DEFAULT_BD, Types::REFERENCE_BD, Types::SCOPED_BD}) {
                roles.push_back(Types::getHWHBDTypeStr(known));
            }
            node.at("role").refuse("there is no role \"" + printable(role) + "\"" + didYouMean(role, roles));
        }
        if (!role.empty() && type != Types::getHWHFileTypeStr(Types::HW_HANDOFF)) {
            node.at("role").refuse("only a file of the type HW_HANDOFF has a role");
        }
        return role;
    }

    Recipe::Driver driver(const JsonNode& node) const
    {
        node.allow({"name", "files"});
        Recipe::Driver driver = {node.at("name").text(), {}};
        node.each("files", [&](const JsonNode& one) {
            one.allow({"name", "path"});
            driver.files.push_back({one.at("name").text(), resolved(one.text("path"))});
        });
        return driver;
    }

    static PartitionFacts::Partition partition(const JsonNode& node)
    {
        node.allow({"path", "defaultModule", "files"});
        PartitionFacts::Partition partition = {node.at("path").text(), node.text("defaultModule"), {}};
        node.each("files", [&](const JsonNode& one) {
            one.allow({"module", "file"});
            partition.files.push_back({one.at("module").text(), one.text("file")});
        });
        const bool isKnown =
            std::any_of(partition.files.begin(), partition.files.end(),
                        [&](const auto& file) { return file.module == partition.defaultModule; });
        if (partition.files.empty() || (!isKnown && !partition.defaultModule.empty())) {
            node.refuse(partition.files.empty() ? "a partition has at least one of \"files\""
                                                : "\"defaultModule\" is the module of none of \"files\"");
        }
        return partition;
    }

    static PartitionFacts::Configuration configuration(const JsonNode& node)
    {
        node.allow({"name", "active", "cells"});
        PartitionFacts::Configuration configuration = {
            node.at("name").text(), node.flag("active", false), {}};
        node.each("cells", [&](const JsonNode& one) {
            one.allow({"path", "module", "file"});
            PartitionFacts::Cell cell = {one.at("path").text(), one.text("module"), {}};
            if (!cell.module.empty()) {
                cell.files.push_back(one.text("file"));
            }
            configuration.cells.push_back(cell);
        });
        if (configuration.cells.empty()) {
            node.refuse("a configuration has at least one of \"cells\"");
        }
        return configuration;
    }

    static void readDies(const JsonNode& root, Recipe& recipe)
    {
        if (!root.has("dies")) {
            if (root.has("stacked")) {
                root.refuse("\"stacked\" is told together with \"dies\"");
            }
            return;
        }
        const std::int64_t dies = root.at("dies").number();
        if (dies < -1 || dies > std::numeric_limits<int>::max()) {
            root.at("dies").refuse("a number of dies, or -1, is expected");
        }
        recipe.dies = static_cast<int>(dies);
    }

    void readArchive(const JsonNode& root, Recipe& recipe) const
    {
        for (const char* const key : {"properties", "digest", "stacked", "dies", "attributes", "files",
                                      "drivers", "partitions", "configurations"}) {
            if (root.has("bom") && root.has(key)) {
                root.refuse(std::string("\"") + key +
                            "\" has no place beside \"bom\", which tells all of it");
            }
        }
        recipe.bomPath = resolved(root.text("bom"));
        recipe.bomName =
            recipe.bomPath.empty() ? "" : std::filesystem::path(recipe.bomPath).filename().string();
        root.each("members", [&](const JsonNode& node) {
            node.allow({"name", "path"});
            recipe.members.push_back({node.at("name").text(), resolved(node.text("path"))});
        });
        recipe.comment = root.text("comment");
        recipe.hasDigest = root.flag("archiveDigest", true);
        if (root.has("modified")) {
            recipe.modified = root.at("modified").number();
        }
    }

    std::filesystem::path dir_;
};

std::string readFile(const std::string& path)
{
    if (!std::filesystem::exists(path)) {
        throw CommandError(printable(path) + ": there is no such file");
    }
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    if (!file) {
        throw CommandError(printable(path) + ": the recipe can't be read");
    }
    return content.str();
}

}  // namespace

std::string recipeText(const Recipe& recipe)
{
    platform::JsonWriter json;
    json.beginObject();
    json.add("recipe", recipeVersion);
    if (recipe.bomPath.empty()) {
        writeDefinition(json, recipe);
    } else {
        json.add("bom", recipe.bomPath);
    }
    if (!recipe.members.empty()) {
        writeMembers(json, "members", recipe.members);
    }
    addUnlessEmpty(json, "comment", recipe.comment);
    json.add("archiveDigest", recipe.hasDigest);
    if (recipe.modified) {
        json.add("modified", *recipe.modified);
    }
    json.end();
    return json.text() + "\n";
}

Recipe readRecipe(const std::string& path)
{
    const std::string text = readFile(path);
    rapidjson::Document document;
    // Iterative, for nesting of any depth.
    document.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag>(text.data(),
                                                                                           text.size());
    if (document.HasParseError()) {
        throw CommandError(printable(path) + ": byte " + std::to_string(document.GetErrorOffset()) + ": " +
                           rapidjson::GetParseError_En(document.GetParseError()));
    }
    const JsonNode root(document, printable(path));
    if (root.at("recipe").number() != static_cast<std::int64_t>(recipeVersion)) {
        root.at("recipe").refuse("only recipes of version 1 are known");
    }
    Recipe recipe = Reader(std::filesystem::path(path).parent_path()).read(root);
    if (recipe.bomName.empty()) {
        nameBom(recipe);
    }
    return recipe;
}
