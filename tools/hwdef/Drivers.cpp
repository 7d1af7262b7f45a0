#include "Container.h"
#include "Messages.h"
#include "Text.h"
#include "Verb.h"

namespace {

class Drivers : public ContainerVerb {
public:
    Drivers()
        : ContainerVerb(
              50, {"drivers",
                   "List or extract the drivers",
                   "Lists the drivers of a container with their files; with a directory, writes these files "
                   "below it.",
                   {{"hwdef drivers design.hdf", "every driver with its files"},
                    {"hwdef drivers design.hdf -C sources", "writes them below sources/drivers"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        ContainerVerb::define(arguments);
        arguments.option("-C,--directory", "DIR", Kind::DIRECTORY, dir_,
                         "Write the files below this directory");
    }

    ExitCode run(Output& output) override;

private:
    bool extract(const Container& container) const;

    std::string dir_;
};

const Registration<Drivers> registration;

std::string sizeText(const Container& container, const HHDFHwDefDriver& file, const Output& output)
{
    const auto* const member = container.driverMember(file);
    return member == nullptr ? output.paint(Style::RED, "missing") : readableSize(member->sizeBytes);
}

void show(const Container& container, Output& output)
{
    for (const auto& [name, files] : container.definition->getDriverFilesMap()) {
        output.line(output.paint(Style::BOLD, printable(name)));
        Table table("rl");
        for (const HHDFHwDefDriver& file : files) {
            table.row({sizeText(container, file, output), printable(file.getRelativeName())});
        }
        output.lines(table.lines(2));
    }
}

void write(const Container& container, platform::JsonWriter& json)
{
    json.beginArray("drivers");
    for (const auto& [name, files] : container.definition->getDriverFilesMap()) {
        json.beginObject();
        json.add("name", name);
        json.beginArray("files");
        for (const HHDFHwDefDriver& file : files) {
            const auto* const member = container.driverMember(file);
            json.beginObject();
            json.add("name", file.getRelativeName());
            json.add("present", member != nullptr);
            if (member != nullptr) {
                json.add("sizeBytes", member->sizeBytes);
            }
            json.end();
        }
        json.end();
        json.end();
    }
    json.end();
}

/// Whether all files that the archive has could be written.
bool Drivers::extract(const Container& container) const
{
    // The library tells what it can't write, and its result doesn't.
    HeldMessages messages;
    const bool isDone = container.definition->unzipDrivers(dir_) && messages.all().empty();
    messages.tellAll();
    return isDone;
}

ExitCode Drivers::run(Output& output)
{
    const Container container = openContainer(containerPath());
    if (!dir_.empty()) {
        checkDirectory(dir_);
    }
    const bool isDone = dir_.empty() || extract(container);
    if (output.isJson()) {
        output.json().add("file", containerPath());
        if (!dir_.empty()) {
            output.json().add("directory", dir_);
        }
        write(container, output.json());
    }
    show(container, output);
    return isDone ? ExitCode::SOUND : ExitCode::ERROR;
}

}  // namespace
