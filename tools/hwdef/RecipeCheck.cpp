#include "RecipeCheck.h"

#include <filesystem>
#include <map>
#include <set>

#include "CommandError.h"
#include "Messages.h"
#include "Text.h"

namespace {

[[noreturn]] void refuseTwo(const std::string& name)
{
    throw CommandError("\"" + printable(name) + "\" is the name of two members");
}

/// A name may be told several times, with one path.
class Paths {
public:
    void add(const std::string& name, const std::string& path)
    {
        if (paths_.emplace(name, path).first->second != path) {
            refuseTwo(name);
        }
    }

private:
    std::map<std::string, std::string> paths_;
};

void checkOrder(const Recipe& recipe)
{
    std::set<std::string> names;
    for (const Recipe::Member& member : recipe.members) {
        if (!names.insert(member.name).second) {
            refuseTwo(member.name);
        }
    }
    if (!recipe.members.empty() && !names.contains(recipe.bomName)) {
        throw CommandError("the bill of materials, \"" + printable(recipe.bomName) +
                           "\", is missing among the members");
    }
}

/// Whether the member that a listed file is packed as stands among them: that of a driver may do so without
/// the directory that it is listed with.
bool isAmong(const std::set<std::string>& names, const std::string& name)
{
    const std::string dir = "drivers/";
    return names.contains(name) || (name.starts_with(dir) && names.contains(name.substr(dir.size())));
}

}  // namespace

void checkRecipe(const Recipe& recipe)
{
    if (recipe.bomName != "hwdef.xml" && recipe.bomName != "sysdef.xml") {
        throw CommandError("\"" + printable(recipe.bomName) +
                           "\" can't be a bill of materials; its name is \"hwdef.xml\" or \"sysdef.xml\"");
    }
    Paths paths;
    paths.add(recipe.bomName, "");
    for (const Recipe::File& file : recipe.files) {
        paths.add(file.name, file.path);
    }
    for (const Recipe::Driver& driver : recipe.drivers) {
        for (const Recipe::DriverFile& file : driver.files) {
            paths.add(file.name, file.path);
        }
    }
    for (const Recipe::Member& member : recipe.members) {
        paths.add(member.name, member.path);
    }
    checkOrder(recipe);
}

std::vector<Recipe::Member> partsOf(const Recipe& recipe)
{
    std::vector<Recipe::Member> packed = membersOf(recipe);
    if (recipe.members.empty()) {
        return packed;
    }
    std::vector<Recipe::Member> parts = recipe.members;
    std::set<std::string> names;
    for (const Recipe::Member& part : parts) {
        names.insert(part.name);
    }
    for (const Recipe::Member& member : packed) {
        // Without a path it would be a member of the present container, which has none of that name.
        if (member.path.empty() || isAmong(names, member.name)) {
            continue;
        }
        if (std::filesystem::exists(member.path)) {
            parts.push_back(member);
        } else {
            tell("\"" + printable(member.name) + "\" is listed and not packed: there is no file " +
                 printable(member.path));
        }
    }
    return parts;
}
