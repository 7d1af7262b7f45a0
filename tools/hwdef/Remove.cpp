#include <algorithm>
#include <set>

#include "CommandError.h"
#include "Edit.h"
#include "Text.h"
#include "Verb.h"

namespace {

class Remove : public ContainerVerb {
public:
    Remove()
        : ContainerVerb(160,
                        {"remove",
                         "Remove members",
                         "Removes members, and what the bill of materials lists under their names, from a "
                         "container; all "
                         "other members keep their bytes.",
                         {{"hwdef remove design.hdf debug.ltx", "removes one member"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        ContainerVerb::define(arguments);
        arguments.operands("MEMBER", Kind::MEMBER, names_, "The name of a member or of a listed file", true);
        defineLeave(arguments, leave_);
    }

    ExitCode run(Output& output) override;

private:
    void change(Recipe& recipe) const;

    std::vector<std::string> names_;
    EditLeave leave_;
};

const Registration<Remove> registration;

/// How many files of drivers had the name.
std::size_t removeDriverFile(Recipe& recipe, const std::string& name)
{
    std::size_t count = 0;
    for (Recipe::Driver& driver : recipe.drivers) {
        count += std::erase_if(driver.files, [&](const auto& one) { return one.name == name; });
    }
    return count;
}

bool hasMember(const Recipe& recipe, const std::string& name)
{
    return std::any_of(recipe.members.begin(), recipe.members.end(),
                       [&](const auto& one) { return one.name == name; });
}

/// Everything of a recipe that has the name; whether there was something.
bool removeFrom(Recipe& recipe, const std::string& name)
{
    const auto isNamed = [&](const auto& one) { return one.name == name; };
    const std::size_t memberCount = std::erase_if(recipe.members, isNamed);
    std::size_t count = memberCount + std::erase_if(recipe.files, isNamed);
    std::size_t driverCount = removeDriverFile(recipe, name);
    // A driver's file may be packed without the directory that it is listed with.
    const std::string dir = "drivers/";
    if (memberCount != 0 && driverCount == 0 && !hasMember(recipe, dir + name)) {
        driverCount += removeDriverFile(recipe, dir + name);
    } else if (memberCount == 0 && driverCount != 0 && name.starts_with(dir)) {
        const std::string packed = name.substr(dir.size());
        std::erase_if(recipe.members, [&](const auto& one) { return one.name == packed; });
    }
    std::erase_if(recipe.drivers, [](const Recipe::Driver& driver) { return driver.files.empty(); });
    return count + driverCount != 0;
}

void Remove::change(Recipe& recipe) const
{
    for (const std::string& name : names_) {
        if (name == recipe.bomName) {
            throw CommandError("\"" + name + "\" is the bill of materials, and no container is without one");
        }
        std::vector<std::string> names;
        for (const Recipe::Member& member : recipe.members.empty() ? membersOf(recipe) : recipe.members) {
            names.push_back(member.name);
        }
        if (!removeFrom(recipe, name)) {
            throw CommandError(printable(containerPath()) + ": there is no member \"" + printable(name) +
                               "\"" + didYouMean(name, names));
        }
    }
    recipe.digest.clear();  // of the members as they were
}

ExitCode Remove::run(Output& output)
{
    std::set<std::string> seen;
    std::erase_if(names_, [&](const std::string& name) { return !seen.insert(name).second; });
    editContainer(containerPath(), leave_, [this](Recipe& recipe) { change(recipe); });
    if (output.isJson()) {
        output.json().add("file", containerPath());
        output.json().beginArray("removed");
        for (const std::string& name : names_) {
            output.json().addElement(name);
        }
        output.json().end();
    }
    for (const std::string& name : names_) {
        output.line(printable(containerPath()) + ": removed " + printable(name));
    }
    return ExitCode::SOUND;
}

}  // namespace
