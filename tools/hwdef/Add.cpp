#include <algorithm>
#include <set>

#include "CommandError.h"
#include "Edit.h"
#include "Text.h"
#include "TypedFile.h"
#include "Verb.h"

namespace {

class Add : public ContainerVerb {
public:
    Add()
        : ContainerVerb(150,
                        {"add",
                         "Add files",
                         "Adds files with their types to a container; all other members keep their bytes.",
                         {{"hwdef add design.hdf debug.ltx:LTX", "adds a file of the type LTX"},
                          {"hwdef add design.hdf top.bit:BIT --replace",
                           "puts new bytes in the place of the old ones"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        ContainerVerb::define(arguments);
        arguments.operands("PATH:TYPE", Kind::TYPED_FILE, inputs_, "A file and its type", true);
        arguments.flag("-r,--replace", isReplacing_, "Replace members that have the name already");
        defineLeave(arguments, leave_);
    }

    ExitCode run(Output& output) override;

private:
    void change(Recipe& recipe) const;

    std::vector<std::string> inputs_;
    std::vector<Recipe::File> files_;
    bool isReplacing_ = false;
    EditLeave leave_;
};

const Registration<Add> registration;

/// Puts a file in the place of all entries of its name, or at the list's end.
void addTo(std::vector<Recipe::File>& list, const Recipe::File& file)
{
    bool isThere = false;
    for (Recipe::File& other : list) {
        if (other.name == file.name) {
            other.path = file.path;
            other.type = file.type;
            isThere = true;
        }
    }
    if (!isThere) {
        list.push_back(file);
    }
}

/// Puts a member's file in its place, where the archive's order is told.
void addTo(std::vector<Recipe::Member>& members, const Recipe::File& file)
{
    if (members.empty()) {
        return;
    }
    const auto present = std::find_if(members.begin(), members.end(),
                                      [&](const Recipe::Member& member) { return member.name == file.name; });
    if (present == members.end()) {
        members.push_back({file.name, file.path});
    } else {
        present->path = file.path;
    }
}

void Add::change(Recipe& recipe) const
{
    const auto present = recipe.members.empty() ? membersOf(recipe) : recipe.members;
    for (const Recipe::File& file : files_) {
        const bool isThere = std::any_of(present.begin(), present.end(), [&](const Recipe::Member& member) {
            return member.name == file.name;
        });
        if (isThere && !isReplacing_) {
            throw CommandError(printable(containerPath()) + ": there is a member \"" + printable(file.name) +
                               "\" already; --replace replaces it");
        }
        addTo(recipe.files, file);
        addTo(recipe.members, file);
    }
    recipe.digest.clear();  // of the members as they were
}

ExitCode Add::run(Output& output)
{
    std::set<std::string> names;
    for (const std::string& input : inputs_) {
        files_.push_back(parseTypedFile(input));
        const std::string& name = files_.back().name;
        if (!names.insert(name).second) {
            throw CommandError("\"" + printable(name) + "\" is the name of two members");
        }
    }
    editContainer(containerPath(), leave_, [this](Recipe& recipe) { change(recipe); });
    if (output.isJson()) {
        output.json().add("file", containerPath());
        output.json().beginArray("added");
        for (const Recipe::File& file : files_) {
            output.json().beginObject();
            output.json().add("name", file.name);
            output.json().add("type", file.type);
            output.json().end();
        }
        output.json().end();
    }
    for (const Recipe::File& file : files_) {
        output.line(printable(containerPath()) + ": added " + printable(file.name) + " as " + file.type);
    }
    return ExitCode::SOUND;
}

}  // namespace
