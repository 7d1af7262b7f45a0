#include "Meetings.h"

#include <algorithm>
#include <map>
#include <set>

#include "MemberComparison.h"

namespace {

using Member = HHDFHwDefArchive::Member;

/// What one container brings under a name: of a file the member, null when it is missing; of others a text
/// that stands for the content.
struct Brought {
    const Container* container;
    const Member* member;
    std::string value;
};
using BroughtByName = std::map<std::string, std::vector<Brought>>;

bool isOfOneValue(const std::vector<Brought>& all)
{
    return std::all_of(all.begin(), all.end(),
                       [&](const Brought& one) { return one.value == all.front().value; });
}

/// Whether files of one name are the same as far as there is nothing to compare: their members are all
/// there or all missing.
bool isOfOnePresence(const std::vector<Brought>& all)
{
    return std::all_of(all.begin(), all.end(), [&](const Brought& one) {
        return (one.member == nullptr) == (all.front().member == nullptr);
    });
}

void addMeetings(const char* kind, const BroughtByName& brought, std::vector<Meeting>& meetings)
{
    for (const auto& [name, all] : brought) {
        if (all.size() < 2) {
            continue;
        }
        meetings.push_back(
            {kind, name, all.back().container->path, isOfOneValue(all) && isOfOnePresence(all)});
    }
}

std::string pathOf(const HHDFHwDef& definition)
{
    std::string path;
    definition.getContainerFullPath(path);
    return path;
}

/// Tells from which containers the bytes of files that met are: of the entries of one name the last one
/// counts whose member is there, and those of drivers come behind the others.
void nameSources(const std::vector<Container>& containers, const HHDFHwDef& merged,
                 std::vector<Meeting>& meetings)
{
    std::map<std::string, const Container*> byPath;
    std::map<std::string, const Container*> byDriver;
    for (const Container& container : containers) {
        byPath.emplace(pathOf(*container.definition), &container);
        for (const auto& [driver, files] : container.definition->getDriverFilesMap()) {
            byDriver[driver] = &container;
        }
    }
    std::map<std::string, const Container*> sources;
    std::vector<HHDFHwDefFile*> files;
    merged.getBomFiles(files);
    for (const HHDFHwDefFile* const file : files) {
        const auto container = byPath.find(file->getHwDefFilePath());
        if (container != byPath.end() && container->second->archive->find(file->getFileName()) != nullptr) {
            sources[file->getFileName()] = container->second;
        }
    }
    for (const auto& [driver, records] : merged.getDriverFilesMap()) {
        for (const HHDFHwDefDriver& record : records) {
            if (byDriver[driver]->driverMember(record) != nullptr) {
                sources[record.getRelativeName()] = byDriver[driver];
            }
        }
    }
    for (Meeting& meeting : meetings) {
        if (const auto source = sources.find(meeting.name); source != sources.end()) {
            meeting.from = source->second->path;
        }
    }
}

/// Compares the contents of files that meet, of which the meetings begin with those.
void compareFiles(const BroughtByName& files, std::vector<Meeting>& meetings)
{
    std::vector<MemberPair> pairs;
    std::vector<Meeting*> places;  // of the pairs
    std::size_t index = 0;
    for (const auto& [name, all] : files) {
        if (all.size() < 2) {
            continue;
        }
        Meeting& meeting = meetings[index++];
        const Brought& first = all.front();
        for (std::size_t i = 1; i < all.size() && meeting.isSame && first.member != nullptr; ++i) {
            pairs.push_back({{first.container, first.member}, {all[i].container, all[i].member}});
            places.push_back(&meeting);
        }
    }
    compareBytes(pairs);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        places[i]->isSame = places[i]->isSame && pairs[i].isSame;
    }
}

void bring(BroughtByName& brought, const std::string& name, const Brought& one)
{
    auto& all = brought[name];
    if (all.empty() || all.back().container != one.container) {
        all.push_back(one);
    }
}

/// What containers bring, by what it is.
struct AllBrought {
    BroughtByName files;
    BroughtByName fileTypes;
    BroughtByName fileAttributes;
    BroughtByName drivers;
    BroughtByName attributes;
};

void bringFiles(const Container& container, AllBrought& all)
{
    for (const HHDFHwDefFile* file : container.files()) {
        const std::string name = file->getFileName();
        bring(all.files, name, {&container, container.archive->find(name), ""});
        bring(all.fileTypes, name, {&container, nullptr, typeToken(*file)});
        if (file->hasFileAttrs()) {
            for (const auto& [key, value] : file->getFileAttrs()) {
                std::string attribute = name;
                attribute.append(": ").append(key);
                bring(all.fileAttributes, attribute, {&container, nullptr, value});
            }
        }
    }
}

void bringDrivers(const Container& container, AllBrought& all)
{
    for (const auto& [name, list] : container.definition->getDriverFilesMap()) {
        std::string names;
        for (const HHDFHwDefDriver& file : list) {
            names += file.getRelativeName() + '\n';
            bring(all.files, file.getRelativeName(), {&container, container.driverMember(file), ""});
        }
        bring(all.drivers, name, {&container, nullptr, names});
    }
}

AllBrought broughtBy(const std::vector<Container>& containers)
{
    AllBrought all;
    std::set<std::string> paths;
    for (const Container& container : containers) {
        // One that is named again brings no more entries.
        if (paths.insert(pathOf(*container.definition)).second) {
            bringFiles(container, all);
        }
        bringDrivers(container, all);
        HHDFHwDef::Texts attributes;
        container.definition->getWDIAttrs(attributes);
        for (const auto& [name, value] : attributes) {
            bring(all.attributes, name, {&container, nullptr, value});
        }
    }
    return all;
}

}  // namespace

std::vector<Meeting> meetingsOf(const std::vector<Container>& containers, const HHDFHwDef& merged)
{
    const AllBrought all = broughtBy(containers);
    std::vector<Meeting> meetings;
    addMeetings("file", all.files, meetings);
    compareFiles(all.files, meetings);
    nameSources(containers, merged, meetings);
    addMeetings("file type", all.fileTypes, meetings);
    std::erase_if(meetings, [](const Meeting& one) {
        return one.isSame && std::string_view(one.kind) == "file type";  // nothing to tell
    });
    addMeetings("file attribute", all.fileAttributes, meetings);
    addMeetings("driver", all.drivers, meetings);
    addMeetings("attribute", all.attributes, meetings);
    return meetings;
}
