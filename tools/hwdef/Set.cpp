#include "Edit.h"
#include "Text.h"
#include "Verb.h"

namespace {

class Set : public ContainerVerb {
public:
    Set()
        : ContainerVerb(
              140,
              {"set",
               "Set properties and attributes",
               "Sets properties of the design in a container; all members keep their bytes. Properties are "
               "part, arch, device, package, speed, board, mode, version, tool, top, used.lut, available.lut "
               "(and ff, bram, dsp), and attribute.NAME for a free attribute, which is taken away when its "
               "value is empty.",
               {{"hwdef set design.hdf board=evb-1 speed=-2", "sets two properties"},
                {"hwdef set design.hdf attribute.flow=", "takes the attribute flow away"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        ContainerVerb::define(arguments);
        arguments.operands("KEY=VALUE", Kind::PROPERTY, assignments_, "What to set", true);
        defineLeave(arguments, leave_);
    }

    ExitCode run(Output& output) override;

private:
    std::vector<std::string> assignments_;
    EditLeave leave_;
};

const Registration<Set> registration;

ExitCode Set::run(Output& output)
{
    std::vector<Assignment> assignments;
    for (const std::string& text : assignments_) {
        const Assignment assignment = parseAssignment(text);
        // Of a key that is given twice the last value counts.
        std::erase_if(assignments, [&](const Assignment& one) { return one.first == assignment.first; });
        assignments.push_back(assignment);
    }
    editContainer(containerPath(), leave_, [&](Recipe& recipe) {
        for (const Assignment& assignment : assignments) {
            setIn(recipe, assignment);
        }
    });
    if (output.isJson()) {
        output.json().add("file", containerPath());
        output.json().beginObject("set");
        for (const auto& [key, value] : assignments) {
            output.json().add(key, value);
        }
        output.json().end();
    }
    for (const auto& [key, value] : assignments) {
        output.line(printable(containerPath()) + ": " + printable(key) + " is now \"" + printable(value) +
                    "\"");
    }
    return ExitCode::SOUND;
}

}  // namespace
