#include "Recipe.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "CommandError.h"
#include "RecipeCheck.h"
#include "RepeatedFiles.h"
#include "Text.h"
#include "platform/HPAParamMgr.h"

namespace {

using Types = HHDFHwDefFileTypes;

constexpr const char* diesParameter = "project.generateAiePrimitive";

std::vector<Assignment> propertiesOf(const Container& container)
{
    std::vector<Assignment> assignments;
    for (const Property& property : properties()) {
        const std::string value = property.get(*container.definition);
        if (!value.empty() && (container.hasMode() || std::string_view(property.key) != "mode")) {
            assignments.emplace_back(property.key, value);
        }
    }
    return assignments;
}

Recipe::File fileOf(const HHDFHwDefFile& entry)
{
    const bool hasRole = entry.getBDFileType() != Types::UNKNOWN_BD;
    return {entry.getFileName(),
            "",
            typeToken(entry),
            hasRole ? Types::getHWHBDTypeStr(entry.getBDFileType()) : "",
            entry.getHierPath(),
            entry.getHwSrcDB(),
            entry.hasFileAttrs() ? entry.getFileAttrs() : HHDFHwDef::Texts()};
}

std::vector<Recipe::Driver> driversOf(const HHDFHwDef& definition)
{
    std::vector<Recipe::Driver> drivers;
    for (const auto& [name, files] : definition.getDriverFilesMap()) {
        Recipe::Driver driver = {name, {}};
        for (const HHDFHwDefDriver& file : files) {
            driver.files.push_back({file.getRelativeName(), ""});
        }
        drivers.push_back(driver);
    }
    return drivers;
}

bool isLikePacked(const Recipe& recipe, const std::vector<Recipe::Member>& members)
{
    const auto packed = membersOf(recipe);
    return std::equal(packed.begin(), packed.end(), members.begin(), members.end(),
                      [](const auto& left, const auto& right) { return left.name == right.name; });
}

/// What the archive itself tells.
void takeArchive(const HHDFHwDefArchive& archive, Recipe& recipe)
{
    std::vector<Recipe::Member> members;
    bool isOfOneTime = true;
    for (const auto& member : archive.members()) {
        members.push_back({member.name, ""});
        isOfOneTime = isOfOneTime && member.modified == archive.members().front().modified;
    }
    if (isOfOneTime) {
        recipe.modified = archive.members().front().modified;
    }
    if (!isLikePacked(recipe, members)) {
        recipe.members = std::move(members);
    }
    recipe.comment = archive.comment();
    recipe.hasDigest = archive.hasDigest();
}

void addFiles(const Recipe& recipe, const std::string& container, HHDFHwDef& definition)
{
    for (const Recipe::File& file : recipe.files) {
        // Only the file's name reaches the BOM; of a member that stays, there is no path to tell.
        definition.addFileToBom(file.path.empty() ? container + "/" + file.name : file.path,
                                typeOf(file.type), file.hierarchy, Types::getHWHBDType(file.role));
    }
    std::vector<HHDFHwDefFile*> entries;
    definition.getBomFiles(entries);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        entries[i]->setHwSrcDB(recipe.files[i].sourceDatabase);
        for (const auto& [name, value] : recipe.files[i].attributes) {
            entries[i]->addFileAttr(name, value);
        }
    }
}

void addDrivers(const Recipe& recipe, HHDFHwDef& definition)
{
    for (const Recipe::Driver& driver : recipe.drivers) {
        std::vector<HHDFHwDefDriver> files;
        for (const Recipe::DriverFile& file : driver.files) {
            files.emplace_back(file.path, file.name, "");
        }
        definition.addDrivers(driver.name, std::move(files));
    }
}

void addPartitions(const PartitionFacts& facts, HHDFHwDef& definition)
{
    for (const auto& partition : facts.partitions) {
        std::string path = partition.path;
        for (auto [module, file] : partition.files) {
            definition.addPartitionInfo(path, module, file, module == partition.defaultModule);
        }
    }
    for (const auto& configuration : facts.configurations) {
        for (const auto& cell : configuration.cells) {
            definition.addPartitionCell(configuration.name, cell.path, cell.module,
                                        cell.files.empty() ? "" : cell.files.front(), configuration.isActive);
        }
    }
}

std::string contentOf(const std::string& path)
{
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

/// Writes the BOM that a recipe makes into the directory; its path.
std::string stageBom(const Recipe& recipe, const std::string& path, const std::string& dir)
{
    const auto definition = definitionOf(recipe, path);
    std::string name = dir + "/" + recipe.bomName;  // not const, so that it is moved out
    HPAParamMgr& parameters = *HPAParamMgr::getParamMgr();
    if (recipe.dies) {
        parameters.setValue(diesParameter, "true");
    }
    const bool isWritten = HHDFHwDefBomWriter().write(definition.get(), name);
    parameters.removeValue(diesParameter);
    if (!isWritten) {
        throw CommandError(printable(path) + ": the bill of materials can't be written");
    }
    return name;
}

}  // namespace

std::vector<Recipe::Member> membersOf(const Recipe& recipe)
{
    std::vector<Recipe::Member> members;
    std::map<std::string, std::size_t> places;
    const auto add = [&](const std::string& name, const std::string& path) {
        const auto [place, isNew] = places.emplace(name, members.size());
        if (isNew) {
            members.push_back({name, path});
        } else {
            members[place->second].path = path;
        }
    };
    add(recipe.bomName, "");
    for (const Recipe::File& file : recipe.files) {
        add(file.name, file.path);
    }
    for (const Recipe::Driver& driver : recipe.drivers) {
        for (const Recipe::DriverFile& file : driver.files) {
            add(file.name, file.path);
        }
    }
    return members;
}

Recipe recipeOf(const Container& container)
{
    const HHDFHwDef& definition = *container.definition;
    Recipe recipe;
    recipe.bomName = container.bomName();
    recipe.properties = propertiesOf(container);
    recipe.digest = definition.getDigest();
    for (const HHDFHwDefFile* file : container.files()) {
        recipe.files.push_back(fileOf(*file));
    }
    auto file = recipe.files.begin();
    for (ListedFile& listed : listedFiles(container)) {
        file->attributes = std::move(listed.attributes);
        file->sourceDatabase = std::move(listed.sourceDatabase);
        ++file;
    }
    recipe.drivers = driversOf(definition);
    definition.getWDIAttrs(recipe.attributes);
    recipe.partitions = partitionFacts(container);
    recipe.isStacked = definition.isTIER();
    if (definition.isTIER() || definition.getSLRNo() != -1) {
        recipe.dies = definition.getSLRNo();
    }
    takeArchive(*container.archive, recipe);
    return recipe;
}

std::unique_ptr<HHDFHwDef> definitionOf(const Recipe& recipe, const std::string& path)
{
    auto definition = HHDFHwDefUtils::createHDF(path);
    if (definition == nullptr) {
        throw CommandError("\"" + printable(path) + "\" can't be the path of a container");
    }
    for (const Assignment& property : recipe.properties) {
        assign(*definition, property);
    }
    std::string digest = recipe.digest;
    definition->setDigest(digest);
    definition->setTIER(recipe.isStacked);
    definition->setSLRNo(recipe.dies.value_or(-1));
    addFiles(recipe, path, *definition);
    addDrivers(recipe, *definition);
    for (const auto& [name, value] : recipe.attributes) {
        definition->addWDIAttr(name, value);
    }
    addPartitions(recipe.partitions, *definition);
    return definition;
}

void setIn(Recipe& recipe, const Assignment& assignment)
{
    HHDFHwDef judge("judge");
    assign(judge, assignment);
    HHDFHwDef::Texts attributes;
    judge.getWDIAttrs(attributes);
    for (const auto& [name, value] : attributes) {
        recipe.attributes[name] = value;
        std::erase_if(recipe.attributes, [](const auto& one) { return one.second.empty(); });
        return;
    }
    std::erase_if(recipe.properties, [&](const Assignment& one) { return one.first == assignment.first; });
    recipe.properties.push_back(assignment);
    if (assignment.first == "mode") {
        nameBom(recipe);
    }
}

void nameBom(Recipe& recipe)
{
    const std::string earlier = recipe.bomName;
    const auto mode = definitionOf(recipe, "recipe")->getModeType();
    recipe.bomName = mode == Types::POST_SYNTHESIS ? "sysdef.xml" : "hwdef.xml";
    for (Recipe::Member& member : recipe.members) {
        if (member.name == earlier) {
            member.name = recipe.bomName;
        }
    }
}

std::string bomOf(const Recipe& recipe, const std::string& path)
{
    const HHDFCTmpDirObject scratch("hwdef");
    return contentOf(recipe.bomPath.empty() ? stageBom(recipe, path, scratch.getDir()) : recipe.bomPath);
}

bool tellsAll(const Recipe& recipe, const Container& container)
{
    return bomOf(recipe, container.path) ==
           HHDFHwDefUtils::getFileBufferFromHDF(container.bomName(), container.path);
}

void cook(const Recipe& recipe, const std::string& path, const HHDFHwDefArchive* present)
{
    checkRecipe(recipe);
    if (recipe.modified) {
        // The library reads it when it writes its first member; the process writes one container only.
        ::setenv("SOURCE_DATE_EPOCH", std::to_string(*recipe.modified).c_str(), 1);
    }
    const HHDFCTmpDirObject scratch("hwdef");
    const std::string bom =
        recipe.bomPath.empty() ? stageBom(recipe, path, scratch.getDir()) : recipe.bomPath;
    std::vector<HHDFHwDefArchive::Part> parts;
    for (const auto& [name, file] : partsOf(recipe)) {
        parts.push_back({name, name == recipe.bomName ? bom : file});
    }
    HHDFHwDefArchive::write(path, parts, present, recipe.comment, recipe.hasDigest);
}
