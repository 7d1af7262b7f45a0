#include "CommandError.h"
#include "Container.h"
#include "Embedded.h"
#include "Text.h"
#include "Verb.h"

namespace {

class Diff : public Verb {
public:
    Diff()
        : Verb(
              90,
              {"diff",
               "Show what two containers mean differently",
               "Compares properties, resources, attributes, files by type and content, drivers, partitions, "
               "configurations, and software parameters key by key. Order, compression, times and comments "
               "are no differences.\n\n"
               "The exit code is 0 when both are the same, 1 when they differ, and 2 when one can't be read.",
               {{"hwdef diff old.hdf new.hdf", "all differences"},
                {"hwdef diff --json old.hdf new.hdf", "the same for programs"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        arguments.operand("OLD", Kind::CONTAINER, first_, "The first container");
        arguments.operand("NEW", Kind::CONTAINER, second_, "The second container");
    }

    ExitCode run(Output& output) override;

private:
    std::string first_;
    std::string second_;
};

const Registration<Diff> registration;

/// A digest with a size is told by its beginning and the size.
std::string shortened(const std::string& value)
{
    constexpr std::size_t digits = 64;
    constexpr std::size_t shownDigits = 12;
    const bool isContent = value.find(", ") == digits && value.ends_with(" bytes");
    return isContent ? value.substr(0, shownDigits) + "..." + value.substr(digits) : printable(value);
}

std::string valuesOf(const HHDFDifference& one)
{
    switch (one.kind) {
        case HHDFDifference::ADDED:
            return shortened(one.after);
        case HHDFDifference::REMOVED:
            return shortened(one.before);
        default:
            return (one.before.empty() ? "(empty)" : shortened(one.before)) + " -> " +
                   (one.after.empty() ? "(empty)" : shortened(one.after));
    }
}

void show(const std::vector<HHDFDifference>& differences, Output& output)
{
    std::string section;
    for (const HHDFDifference& one : differences) {
        if (one.section != section) {
            section = one.section;
            output.line(output.paint(Style::BOLD, section));
        }
        const bool isAdded = one.kind == HHDFDifference::ADDED;
        const bool isRemoved = one.kind == HHDFDifference::REMOVED;
        const Style style = isAdded ? Style::GREEN : isRemoved ? Style::RED : Style::YELLOW;
        const std::string name =
            printable(one.item) + (one.field.empty() ? "" : " [" + printable(one.field) + "]");
        output.line("  " +
                    output.paint(style, (isAdded     ? "+ "
                                         : isRemoved ? "- "
                                                     : "~ ") +
                                            name) +
                    ": " + valuesOf(one));
    }
    if (differences.empty()) {
        output.line("same content");
    }
}

ExitCode Diff::run(Output& output)
{
    // Opening them tells best what is no container.
    openContainer(first_);
    openContainer(second_);
    std::vector<HHDFDifference> differences;
    if (!HHDFInspect::compare(first_, second_, differences)) {
        throw CommandError(printable(first_) + ": can't be compared with " + printable(second_));
    }
    if (output.isJson()) {
        output.json().addRaw("comparison", embedded(HHDFInspect::toJson(first_, second_, differences), 1));
    } else {
        show(differences, output);
    }
    return differences.empty() ? ExitCode::SOUND : ExitCode::FINDINGS;
}

}  // namespace
