#include "CommandError.h"
#include "Container.h"
#include "Edit.h"
#include "Meetings.h"
#include "Messages.h"
#include "Omissions.h"
#include "RepeatedFiles.h"
#include "Text.h"
#include "Verb.h"

namespace {

class Merge : public Verb {
public:
    Merge()
        : Verb(
              170,
              {"merge",
               "Merge containers",
               "Folds containers into a new one: properties from the first that names a part; files, drivers "
               "and attributes from all. Where names meet, the later container counts. The report tells what "
               "came from where, what met, and what isn't merged: partitions, configurations, the top "
               "module, "
               "resources used, members that aren't listed, and comments. Files of one name and different "
               "bytes end a --dry-run with exit code 1; --strict then writes nothing and ends with it too.",
               {{"hwdef merge base.hdf overlay.hdf -o all.hdf", "merges two containers"},
                {"hwdef merge base.hdf overlay.hdf -o all.hdf --dry-run", "only tells what would meet"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        arguments.operands("FILE", Kind::CONTAINER, files_, "The containers, in order", true);
        arguments.option("-o,--output", "OUT", Kind::FILE, output_, "The container to write");
        arguments.flag("-n,--dry-run", isDryRun_, "Write nothing");
        arguments.flag("--strict", isStrict_, "Refuse files of one name with different bytes");
        arguments.flag("--force", isForced_, "Merge an archive whose digest is wrong");
    }

    ExitCode run(Output& output) override;

private:
    std::unique_ptr<HHDFHwDef> merged(const std::vector<Container>& containers) const;

    std::vector<std::string> files_;
    std::string output_;
    bool isDryRun_ = false;
    bool isStrict_ = false;
    bool isForced_ = false;
};

const Registration<Merge> registration;

/// The container that the properties come from; null when none gives its properties.
const Container* propertySource(const std::vector<Container>& containers)
{
    for (const Container& container : containers) {
        if (containers.size() == 1 || !container.definition->getPart().empty()) {
            return &container;
        }
    }
    return nullptr;
}

/// The merged definition, which isn't written yet.
std::unique_ptr<HHDFHwDef> Merge::merged(const std::vector<Container>& containers) const
{
    std::vector<HHDFHwDef*> definitions;
    definitions.reserve(containers.size());
    for (const Container& container : containers) {
        definitions.push_back(container.definition.get());
    }
    auto definition = HHDFHwDefUtils::getMrgdHDF(definitions, output_.empty() ? "merged.hdf" : output_);
    if (definition == nullptr) {
        throw CommandError("\"" + printable(output_) + "\" can't be the path of a container");
    }
    if (const Container* const source = propertySource(containers); source != nullptr && !source->hasMode()) {
        definition->setModeType(
            HHDFHwDefFileTypes::PRE_SYNTHESIS);  // it names the document as without a mode
        definition->setModeType(HHDFHwDefFileTypes::MODE_UNSET);
    }
    return definition;
}

/// The library leaves a member out that it can't take over; here that is an error, before anything is
/// written.
void checkReadable(const std::vector<Container>& containers)
{
    HHDFHwDefArchive::Content content;
    const auto check = [&](const Container& container, const HHDFHwDefArchive::Member* member) {
        if (member != nullptr) {
            content.open(*container.archive, member->name);
        }
    };
    for (const Container& container : containers) {
        for (const HHDFHwDefFile* const file : container.files()) {
            check(container, container.archive->find(file->getFileName()));
        }
        for (const auto& [driver, files] : container.definition->getDriverFilesMap()) {
            for (const HHDFHwDefDriver& file : files) {
                check(container, container.driverMember(file));
            }
        }
    }
}

void write(HHDFHwDef& merged, const std::string& path)
{
    HeldMessages messages;
    const bool isWritten = merged.write(true);
    messages.drop(" takes the place of the one from ");  // the report tells what met
    messages.tellAll();
    if (!isWritten) {
        throw CommandError(printable(path) + ": the merged container can't be written");
    }
}

/// The library leaves out what it can't add, and says so; here that is an error.
void checkWritten(const std::vector<Container>& containers, const std::string& path)
{
    const HHDFHwDefArchive written(path);
    for (const Container& container : containers) {
        for (const HHDFHwDefFile* file : container.files()) {
            const std::string name = file->getFileName();
            if (container.archive->find(name) != nullptr && written.find(name) == nullptr) {
                throw CommandError(printable(path) + ": member \"" + printable(name) +
                                   "\" could not be taken over");
            }
        }
    }
}

void showContainers(const std::vector<Container>& containers, Output& output)
{
    const Container* const source = propertySource(containers);
    output.line("properties from " +
                (source == nullptr ? "none, as no container names a part" : printable(source->path)));
    Table table("lrr");
    for (const Container& container : containers) {
        table.row({printable(container.path), counted(container.files().size(), "file"),
                   counted(container.definition->getDriverFilesMap().size(), "driver")});
    }
    output.lines(table.lines());
}

void showMeetings(const std::vector<Meeting>& meetings, Output& output)
{
    Table table("llll");
    for (const Meeting& meeting : meetings) {
        table.row(
            {meeting.kind, printable(meeting.name),
             meeting.isSame ? output.paint(Style::DIM, "the same") : output.paint(Style::YELLOW, "different"),
             "from " + printable(meeting.from)});
    }
    output.lines(table.lines(2));
}

void showOmissions(const std::vector<Omission>& omissions, Output& output)
{
    Table table("llll");
    for (const Omission& omission : omissions) {
        table.row({omission.kind, printable(omission.name), output.paint(Style::YELLOW, "left out"),
                   "of " + printable(omission.container->path)});
    }
    output.lines(table.lines(2));
}

void writeReport(const std::vector<Container>& containers, const std::vector<Meeting>& meetings,
                 const std::vector<Omission>& omissions, platform::JsonWriter& json)
{
    const Container* const source = propertySource(containers);
    json.add("propertiesFrom", source == nullptr ? "" : source->path);
    json.beginArray("inputs");
    for (const Container& container : containers) {
        json.beginObject();
        json.add("file", container.path);
        json.add("files", std::uint64_t{container.files().size()});
        json.add("drivers", std::uint64_t{container.definition->getDriverFilesMap().size()});
        json.end();
    }
    json.end();
    json.beginArray("meetings");
    for (const Meeting& meeting : meetings) {
        json.beginObject();
        json.add("kind", meeting.kind);
        json.add("name", meeting.name);
        json.add("same", meeting.isSame);
        json.add("from", meeting.from);
        json.end();
    }
    json.end();
    json.beginArray("omissions");
    for (const Omission& omission : omissions) {
        json.beginObject();
        json.add("kind", omission.kind);
        json.add("name", omission.name);
        json.add("file", omission.container->path);
        json.end();
    }
    json.end();
}

bool haveConflict(const std::vector<Meeting>& meetings)
{
    for (const Meeting& meeting : meetings) {
        if (!meeting.isSame && std::string_view(meeting.kind) == "file") {
            return true;
        }
    }
    return false;
}

ExitCode Merge::run(Output& output)
{
    if (output_.empty() && !isDryRun_) {
        throw CommandError("merge: the container to write is missing: -o OUT");
    }
    std::vector<Container> containers;
    for (const std::string& file : files_) {
        containers.push_back(openContainer(file));
        takeApartRepeated(containers.back());
        if (!isForced_) {
            checkDigest(containers.back(), "--force merges it all the same");
        }
    }
    checkReadable(containers);
    const auto definition = merged(containers);
    const auto omissions = omissionsOf(containers, *definition, propertySource(containers));
    const auto meetings = meetingsOf(containers, *definition);
    const bool isRefused = isStrict_ && haveConflict(meetings);
    const bool isWritten = !isDryRun_ && !isRefused;
    if (isWritten) {
        write(*definition, output_);
        checkWritten(containers, output_);
    }
    if (output.isJson()) {
        output.json().add("output", output_);
        output.json().add("written", isWritten);
        writeReport(containers, meetings, omissions, output.json());
    } else {
        showContainers(containers, output);
        showMeetings(meetings, output);
        showOmissions(omissions, output);
        output.line(isWritten ? "written to " + printable(output_) : "nothing was written");
    }
    if (isRefused) {
        tell("files of one name carry different bytes, which --strict refuses");
    }
    return isRefused || (isDryRun_ && haveConflict(meetings)) ? ExitCode::FINDINGS : ExitCode::SOUND;
}

}  // namespace
