#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "CommandError.h"
#include "Messages.h"
#include "RecipeFile.h"
#include "Text.h"
#include "Verb.h"
#include "WholeFile.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* recipeName = "recipe.json";
constexpr const char* recipeDir = "recipe.json/";

/// Where the files of members go, and of what is listed without a member: to the paths of their names, but
/// for those whose path is that of the recipe, below it, or of a directory above another file. These go to
/// directories of their own, below one whose name no other path begins with.
class Places {
public:
    explicit Places(const Container& container)
    {
        std::set<std::string> paths;
        for (const auto& member : container.archive->members()) {
            paths.insert(member.name);
        }
        for (const HHDFHwDefFile* const file : container.files()) {
            paths.insert(file->getFileName());
        }
        const auto isBelow = [&](const std::string& dir) {
            const auto next = paths.lower_bound(dir + "/");
            return next != paths.end() && next->starts_with(dir + "/");
        };
        std::string aside = "_";
        while (paths.contains(aside) || isBelow(aside)) {
            aside += '_';
        }
        for (const std::string& path : paths) {
            if (path == recipeName) {
                dirs_[path] = aside;
            } else if (!isDirectory(path) && (isBelow(path) || path.starts_with(recipeDir))) {
                dirs_[path] = aside + "/" + std::to_string(dirs_.size());
            }
        }
    }

    /// The directory below the chosen one for a member whose file isn't at the path of its name; else empty.
    std::string dirOf(const std::string& member) const
    {
        const auto found = dirs_.find(member);
        return found == dirs_.end() ? "" : found->second;
    }
    std::string pathOf(const std::string& member) const
    {
        const std::string dir = dirOf(member);
        return dir.empty() ? member : dir + "/" + member;
    }

private:
    std::map<std::string, std::string> dirs_;
};

class Explode : public ContainerVerb {
public:
    Explode()
        : ContainerVerb(
              130,
              {"explode",
               "Take a container apart",
               "Writes every member as a file below a directory, and a readable recipe, recipe.json, of what "
               "the bill of materials says. \"hwdef build -o OUT DIR/recipe.json\" gives the container back, "
               "byte for byte when it was packed by hwdef or its library; explode tries this out and says so "
               "when the bytes differ. A bill of materials of other hands that the recipe can't tell in full "
               "is "
               "kept as a file and taken as it is.",
               {{"hwdef explode design.hdf parts", "members and recipe below parts"},
                {"hwdef build -o again.hdf parts/recipe.json", "the container again"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        ContainerVerb::define(arguments);
        arguments.operand("DIR", Kind::DIRECTORY, dir_, "The directory, which must be empty when it exists");
        arguments.flag("--force", isForced_, "Write into a directory that isn't empty");
    }

    ExitCode run(Output& output) override;

private:
    void checkDirectory() const;
    Recipe recipe(const Container& container, const Places& places) const;
    void extract(const Container& container, const Recipe& recipe, const Places& places) const;
    bool givesSameBytes() const;

    std::string dir_;
    bool isForced_ = false;
};

const Registration<Explode> registration;

/// Gives every member its path, where its file goes below the directory.
void setPaths(Recipe& recipe, const Places& places)
{
    for (Recipe::File& file : recipe.files) {
        file.path = places.pathOf(file.name);
    }
    for (Recipe::Driver& driver : recipe.drivers) {
        for (Recipe::DriverFile& file : driver.files) {
            file.path = places.pathOf(file.name);
        }
    }
    for (Recipe::Member& member : recipe.members) {
        member.path = member.name == recipe.bomName ? "" : places.pathOf(member.name);
    }
}

/// A recipe is JSON, whose texts are UTF-8.
void checkTexts(const Container& container)
{
    for (const HHDFHwDefArchive::Member& member : container.archive->members()) {
        if (!isUtf8(member.name)) {
            throw CommandError(printable(container.path) + ": the name of member \"" +
                               printable(member.name) + "\" isn't UTF-8, and no recipe can hold it");
        }
    }
    if (!isUtf8(container.archive->comment())) {
        throw CommandError(printable(container.path) +
                           ": the archive's comment isn't UTF-8, and no recipe can hold it");
    }
}

bool isSame(const std::string& left, const std::string& right)
{
    std::ifstream first(left, std::ios::binary);
    std::ifstream second(right, std::ios::binary);
    return fs::file_size(left) == fs::file_size(right) &&
           std::equal(std::istreambuf_iterator<char>(first), {}, std::istreambuf_iterator<char>(second));
}

void Explode::checkDirectory() const
{
    ::checkDirectory(dir_);
    if (!isForced_ && fs::exists(dir_) && !fs::is_empty(dir_)) {
        throw CommandError(printable(dir_) +
                           ": the directory isn't empty; --force writes into it all the same");
    }
}

Recipe Explode::recipe(const Container& container, const Places& places) const
{
    Recipe recipe = recipeOf(container);
    const std::string bom = HHDFHwDefUtils::getFileBufferFromHDF(recipe.bomName, container.path);
    // A file of the document's own name would be packed in its place.
    const bool listsItself =
        std::any_of(recipe.files.begin(), recipe.files.end(),
                    [&](const Recipe::File& file) { return file.name == recipe.bomName; });
    if (listsItself || !isUtf8(bom) || !tellsAll(recipe, container)) {
        Recipe verbatim;
        verbatim.bomPath = verbatim.bomName = recipe.bomName;
        for (const auto& member : container.archive->members()) {
            verbatim.members.push_back({member.name, ""});
        }
        verbatim.comment = recipe.comment;
        verbatim.hasDigest = recipe.hasDigest;
        verbatim.modified = recipe.modified;
        recipe = std::move(verbatim);
    }
    std::erase_if(recipe.members, [](const Recipe::Member& member) { return isDirectory(member.name); });
    setPaths(recipe, places);
    return recipe;
}

void Explode::extract(const Container& container, const Recipe& recipe, const Places& places) const
{
    std::vector<std::string> names;
    for (const auto& member : container.archive->members()) {
        if (const std::string dir = places.dirOf(member.name); !dir.empty()) {
            container.archive->extract(member.name, dir_ + "/" + dir);
        } else if (!isDirectory(member.name) && (member.name != recipe.bomName || !recipe.bomPath.empty())) {
            names.push_back(member.name);
        }
    }
    const auto failures = container.archive->extractAll(names, dir_);
    if (!failures.empty()) {
        throw CommandError(printable(failures.front().reason));
    }
}

bool Explode::givesSameBytes() const
{
    const HHDFCTmpDirObject scratch("hwdef");
    const std::string again = scratch.getDir() + "/" + fs::path(containerPath()).filename().string();
    cook(readRecipe(dir_ + "/" + recipeName), again, nullptr);
    return isSame(containerPath(), again);
}

ExitCode Explode::run(Output& output)
{
    const Container container = openContainer(containerPath());
    checkTexts(container);
    checkDirectory();
    const Places places(container);
    const Recipe recipe = this->recipe(container, places);
    fs::create_directories(dir_);
    extract(container, recipe, places);
    const std::string path = dir_ + "/" + recipeName;
    writeWhole(path, recipeText(recipe));
    const bool isSameAgain = givesSameBytes();
    if (!isSameAgain) {
        tell("the recipe gives a container of the same files, but of other bytes: " +
             printable(containerPath()) + " was packed in another way");
    }
    if (output.isJson()) {
        output.json().add("file", containerPath());
        output.json().add("directory", dir_);
        output.json().add("recipe", path);
        output.json().add("members", std::uint64_t{container.archive->members().size()});
        output.json().add("bomKept", !recipe.bomPath.empty());
        output.json().add("sameBytes", isSameAgain);
    }
    output.line(printable(path) + ": recipe of " + counted(container.archive->members().size(), "member"));
    return ExitCode::SOUND;
}

}  // namespace
