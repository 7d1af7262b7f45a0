#include <fnmatch.h>

#include <filesystem>
#include <set>

#include "Container.h"
#include "Messages.h"
#include "Text.h"
#include "Verb.h"

namespace {

using Member = HHDFHwDefArchive::Member;

class Extract : public ContainerVerb {
public:
    Extract()
        : ContainerVerb(
              40,
              {"extract",
               "Write members as files",
               "Writes members as files below a directory, all of them or those named. A name with *, ? or "
               "[ stands for every member that it matches. A member whose name leads out of the directory is "
               "refused; the others are written all the same.",
               {{"hwdef extract design.hdf -C out", "every member, as a file below out"},
                {"hwdef extract design.hdf '*.bit'", "the bitstreams, into this directory"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        ContainerVerb::define(arguments);
        arguments.operands("MEMBER", Kind::MEMBER, names_,
                           "Names or patterns of members; all when there are none", false);
        arguments.option("-C,--directory", "DIR", Kind::DIRECTORY, dir_,
                         "The directory, made when it isn't there; this one when not given");
    }

    ExitCode run(Output& output) override;

private:
    std::vector<const Member*> chosen(const Container& container) const;

    std::vector<std::string> names_;
    std::string dir_ = ".";
};

const Registration<Extract> registration;

bool matches(const std::string& pattern, const std::string& name)
{
    return pattern == name || fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
}

std::vector<const Member*> Extract::chosen(const Container& container) const
{
    std::vector<const Member*> members;
    std::vector<bool> isUsed(names_.size());
    for (const Member& member : container.archive->members()) {
        bool isChosen = names_.empty();
        for (std::size_t i = 0; i < names_.size(); ++i) {
            if (matches(names_[i], member.name)) {
                isChosen = isUsed[i] = true;
            }
        }
        if (isChosen && !isDirectory(member.name)) {
            members.push_back(&member);
        }
    }
    for (std::size_t i = 0; i < names_.size(); ++i) {
        if (!isUsed[i]) {
            container.member(names_[i]);  // throws, with the nearest name
        }
    }
    return members;
}

void write(platform::JsonWriter& json, const Member& member, const std::string& dir)
{
    json.beginObject();
    json.add("member", member.name);
    json.add("path", (std::filesystem::path(dir) / member.name).string());
    json.add("sizeBytes", member.sizeBytes);
    json.end();
}

/// Extracts the members, tells of those that can't be, and leaves them out.
void extract(const Container& container, const std::string& dir, std::vector<const Member*>& members)
{
    std::vector<std::string> names;
    names.reserve(members.size());
    for (const Member* member : members) {
        names.push_back(member->name);
    }
    const auto failures = container.archive->extractAll(names, dir);
    std::set<std::string_view> failed;
    for (const auto& [name, reason] : failures) {
        tellError(printable(reason));
        failed.insert(name);
    }
    std::erase_if(members, [&](const Member* member) { return failed.contains(member->name); });
}

ExitCode Extract::run(Output& output)
{
    const Container container = openContainer(containerPath());
    checkDirectory(dir_);
    auto members = chosen(container);
    const std::size_t wanted = members.size();
    extract(container, dir_, members);
    if (output.isJson()) {
        output.json().add("file", containerPath());
        output.json().add("directory", dir_);
        output.json().beginArray("files");
        for (const Member* member : members) {
            write(output.json(), *member, dir_);
        }
        output.json().end();
    }
    std::uint64_t total = 0;
    for (const Member* member : members) {
        total += member->sizeBytes;
    }
    output.line(counted(members.size(), "file") + ", " + readableSize(total) + ", written to " +
                printable(dir_));
    return members.size() == wanted ? ExitCode::SOUND : ExitCode::ERROR;
}

}  // namespace
