#include "Omissions.h"

#include <set>

#include "Properties.h"
#include "Text.h"

namespace {

class OmissionList {
public:
    OmissionList(const Container& container, const HHDFHwDef& merged) : container_(container), merged_(merged)
    {
    }

    void addProperties()
    {
        for (const Property& property : properties()) {
            const std::string value = property.get(*container_.definition);
            const bool isTold = std::string_view(property.key) != "mode" || container_.hasMode();
            if (isTold && !value.empty() && value != property.get(merged_)) {
                add("property", property.key);
            }
        }
        if (container_.definition->isTIER() != merged_.isTIER()) {
            add("property", "stacked");
        }
        if (container_.definition->getSLRNo() != merged_.getSLRNo()) {
            add("property", "dies");
        }
    }

    /// The names of a map that the merged definition's map lacks.
    template <typename Map>
    void addMissing(const char* kind, const Map& map, const Map& merged)
    {
        for (const auto& [name, value] : map) {
            if (!merged.contains(name)) {
                add(kind, name);
            }
        }
    }

    void addModel()
    {
        const HHDFHwDef& definition = *container_.definition;
        addMissing("partition", definition.getPartitionInfo(), merged_.getPartitionInfo());
        addMissing("configuration", definition.getPartitionConfigs(), merged_.getPartitionConfigs());
    }

    void addDriverFiles()
    {
        const auto& merged = merged_.getDriverFilesMap();
        for (const auto& [driver, files] : container_.definition->getDriverFilesMap()) {
            std::set<std::string> names;
            if (const auto found = merged.find(driver); found != merged.end()) {
                for (const HHDFHwDefDriver& file : found->second) {
                    names.insert(file.getRelativeName());
                }
            }
            for (const HHDFHwDefDriver& file : files) {
                if (!names.contains(file.getRelativeName())) {
                    add("driver file", file.getRelativeName());
                }
            }
        }
    }

    void addMembers()
    {
        std::set<std::string> listed = {container_.bomName()};
        for (const HHDFHwDefFile* const file : container_.files()) {
            listed.insert(file->getFileName());
        }
        for (const auto& [driver, files] : container_.definition->getDriverFilesMap()) {
            for (const HHDFHwDefDriver& file : files) {
                const HHDFHwDefArchive::Member* const member = container_.driverMember(file);
                listed.insert(member == nullptr ? "" : member->name);
            }
        }
        for (const HHDFHwDefArchive::Member& member : container_.archive->members()) {
            if (!listed.contains(member.name)) {
                add("member", member.name);
            }
        }
    }

    void addComment()
    {
        if (!container_.archive->comment().empty()) {
            add("comment", container_.archive->comment());
        }
    }

    void addBytes()
    {
        const std::uint64_t inFront = container_.archive->bytesInFront();
        if (inFront > 0) {
            add("bytes", counted(inFront, "byte") + " in front of the archive's members");
        }
        const std::uint64_t behind = container_.archive->bytesBehind();
        if (behind > 0) {
            add("bytes", counted(behind, "byte") + " behind the archive");
        }
    }

    std::vector<Omission> omissions_;

private:
    void add(const char* kind, const std::string& name) { omissions_.push_back({kind, name, &container_}); }

    const Container& container_;
    const HHDFHwDef& merged_;
};

}  // namespace

std::vector<Omission> omissionsOf(const std::vector<Container>& containers, const HHDFHwDef& merged,
                                  const Container* propertySource)
{
    std::vector<Omission> all;
    std::set<std::string> paths;
    for (const Container& container : containers) {
        std::string path;
        container.definition->getContainerFullPath(path);
        if (!paths.insert(path).second) {
            continue;  // one that is named again has told
        }
        OmissionList list(container, merged);
        if (propertySource == nullptr || &container == propertySource) {
            list.addProperties();
        }
        list.addDriverFiles();
        list.addModel();
        list.addMembers();
        list.addComment();
        list.addBytes();
        all.insert(all.end(), list.omissions_.begin(), list.omissions_.end());
    }
    return all;
}
