#include <algorithm>
#include <filesystem>
#include <set>

#include "CommandError.h"
#include "Messages.h"
#include "RecipeFile.h"
#include "Text.h"
#include "TypedFile.h"
#include "Verb.h"

namespace fs = std::filesystem;

namespace {

class Build : public Verb {
public:
    Build()
        : Verb(
              120,
              {"build",
               "Build a container",
               "Builds a container from files with their types, or from a recipe that explode has written. A "
               "container at the output path is replaced when the new one is whole.\n\n"
               "Properties are set by key=value: part, arch, device, package, speed, board, mode, version, "
               "tool, top, used.lut, available.lut (and ff, bram, dsp), and attribute.NAME for a free "
               "attribute "
               "of the design.",
               {{"hwdef build -o design.hdf top.hwh:HW_HANDOFF top.bit:BIT -s part=ice40hx8k-ct256",
                 "a container of two files"},
                {"hwdef build -o design.hdf top.bit:BIT --driver gpio=src/gpio_v1_0",
                 "a container with a driver's source tree"},
                {"hwdef build -o design.hdf exploded/recipe.json", "the container that was exploded"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        arguments.operands("PATH:TYPE", Kind::TYPED_FILE, inputs_, "A file and its type, or one recipe",
                           true);
        arguments.option("-o,--output", "OUT", Kind::FILE, output_, "The container to write");
        arguments.options("-s,--set", "KEY=VALUE", Kind::TEXT, assignments_, "Set a property or attribute");
        arguments.options("-f,--file-attribute", "NAME:KEY=VALUE", Kind::TEXT, fileAttributes_,
                          "Set an attribute of a file, by its name");
        arguments.options("-d,--driver", "NAME=DIR", Kind::DIRECTORY, drivers_,
                          "Add a driver of all files below a directory");
        arguments.flag("--no-digest", hasNoDigest_, "Record no digest of the archive");
    }

    ExitCode run(Output& output) override;

private:
    bool isFromRecipe() const { return inputs_.size() == 1 && isRecipe(inputs_.front()); }
    static bool isRecipe(const std::string& input);
    Recipe recipe() const;
    void checkMaySet(const Recipe& recipe) const;
    void setFileAttributes(Recipe& recipe) const;
    void checkOutput(const Recipe& recipe) const;

    std::vector<std::string> inputs_;
    std::string output_;
    std::vector<std::string> assignments_;
    std::vector<std::string> fileAttributes_;
    std::vector<std::string> drivers_;
    bool hasNoDigest_ = false;
};

const Registration<Build> registration;

/// The files below a directory, as members below "drivers".
Recipe::Driver driverOf(const std::string& text)
{
    const auto [name, value] = parseAssignment(text, "NAME=DIR");
    const fs::path dir(value);
    if (!fs::is_directory(dir)) {
        throw CommandError(printable(value) + ": a driver is a directory of files, and this is none");
    }
    const std::string top = fs::canonical(dir).filename().string();
    Recipe::Driver driver = {name, {}};
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(dir)) {
        if (entry.is_regular_file()) {
            driver.files.push_back(
                {"drivers/" + top + "/" + entry.path().lexically_relative(dir).generic_string(),
                 entry.path()});
        }
    }
    std::sort(driver.files.begin(), driver.files.end(),
              [](const auto& left, const auto& right) { return left.name < right.name; });
    return driver;
}

void checkNames(const std::vector<Recipe::File>& files)
{
    std::set<std::string> names;
    for (const Recipe::File& file : files) {
        if (!names.insert(file.name).second) {
            throw CommandError("\"" + printable(file.name) + "\" is the name of two members");
        }
    }
}

/// Tells of drivers without a description, as the library does when it packs.
void warnOfDrivers(const Recipe& recipe)
{
    for (const Recipe::Driver& driver : recipe.drivers) {
        if (std::none_of(driver.files.begin(), driver.files.end(),
                         [](const auto& file) { return file.name.ends_with(".mdd"); })) {
            ComMsgMgr::sendMsg("hdf", "@64-24@%s", 1, ComMsgMgr::WARNING, driver.name.c_str());
        }
    }
}

/// A recipe has no type behind its name, which a file to pack can't do without.
bool Build::isRecipe(const std::string& input)
{
    return input.ends_with(".json");
}

void Build::checkMaySet(const Recipe& recipe) const
{
    if (!recipe.bomPath.empty() && !(assignments_.empty() && drivers_.empty() && fileAttributes_.empty())) {
        throw CommandError("the recipe takes its bill of materials as it is; nothing can be set in it");
    }
}

void Build::setFileAttributes(Recipe& recipe) const
{
    for (const std::string& text : fileAttributes_) {
        const std::size_t colon = text.find(':');
        const std::string name = text.substr(0, colon);
        std::vector<std::string> names;
        bool isFound = false;
        for (Recipe::File& file : recipe.files) {
            names.push_back(file.name);
            if (file.name == name && colon != std::string::npos) {
                const auto [key, value] = parseAssignment(text.substr(colon + 1));
                file.attributes[key] = value;
                isFound = true;
            }
        }
        if (!isFound) {
            throw CommandError("\"" + printable(text) + "\" names no file of the container" +
                               didYouMean(name, names));
        }
    }
}

Recipe Build::recipe() const
{
    Recipe recipe;
    if (isFromRecipe()) {
        recipe = readRecipe(inputs_.front());
        checkMaySet(recipe);
    } else {
        for (const std::string& input : inputs_) {
            recipe.files.push_back(parseTypedFile(input));
        }
        checkNames(recipe.files);
        nameBom(recipe);
    }
    for (const std::string& text : drivers_) {
        recipe.drivers.push_back(driverOf(text));
    }
    for (const std::string& text : assignments_) {
        setIn(recipe, parseAssignment(text));
    }
    setFileAttributes(recipe);
    recipe.hasDigest = recipe.hasDigest && !hasNoDigest_;
    return recipe;
}

/// What is packed must not be replaced by the container.
void Build::checkOutput(const Recipe& recipe) const
{
    const auto check = [this](const std::string& input) {
        std::error_code error;
        if (fs::equivalent(input, output_, error)) {
            throw CommandError(printable(output_) + ": is one of the files to pack");
        }
    };
    if (isFromRecipe()) {
        check(inputs_.front());
    }
    check(recipe.bomPath);
    for (const Recipe::Member& member : membersOf(recipe)) {
        check(member.path);
    }
    for (const Recipe::Member& member : recipe.members) {
        check(member.path);
    }
}

ExitCode Build::run(Output& output)
{
    if (output_.empty()) {
        throw CommandError("build: the container to write is missing: -o OUT");
    }
    const Recipe recipe = this->recipe();
    checkOutput(recipe);
    warnOfDrivers(recipe);
    cook(recipe, output_, nullptr);
    const HHDFHwDefArchive written(output_);
    const std::uint64_t size = fs::file_size(output_);
    if (output.isJson()) {
        output.json().add("file", output_);
        output.json().add("members", std::uint64_t{written.members().size()});
        output.json().add("sizeBytes", size);
    }
    output.line(printable(output_) + ": " + counted(written.members().size(), "member") + ", " +
                readableSize(size));
    return ExitCode::SOUND;
}

}  // namespace
