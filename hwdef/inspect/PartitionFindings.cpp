#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "hwdef/bom/BomNames.h"
#include "hwdef/bom/Elements.h"
#include "hwdef/inspect/BomFindings.h"
#include "platform/HSTStringUtils.h"
#include "platform/HUTFile.h"

namespace attribute = bom::attribute;
namespace element = bom::element;
using bom::isNamed;
using bom::textOf;

namespace {

/// One look through the partitions and configurations of a document. Texts are the document's own.
class PartitionCheck {
public:
    PartitionCheck(BomText& document, const std::string& bom, const BomListing& listing,
                   FindingList& findings)
        : document_(document), bom_(bom), listing_(listing), findings_(findings)
    {
    }

    void run()
    {
        // A configuration may stand in front of the partitions that it refers to.
        forEach(element::INSTANCE_PATHS, element::RECONFIGURABLE_PARTITION,
                [this](const HXMLWElement& partition) { collect(partition); });
        forEach(element::INSTANCE_PATHS, element::RECONFIGURABLE_PARTITION,
                [this](const HXMLWElement& partition) { checkPartition(partition); });
        forEach(element::PR_CONFIGURATIONS, element::PR_CONFIGURATION,
                [this](const HXMLWElement& configuration) { checkConfiguration(configuration); });
    }

private:
    struct Partition {
        std::uint64_t line = 0;
        std::set<std::string_view> modules;
    };

    void forEach(const char* list, const char* name,
                 const std::function<void(const HXMLWElement&)>& visit) const
    {
        for (const HXMLWElement* child : childrenOf(*document_.root())) {
            if (!isNamed(child, list)) {
                continue;
            }
            for (const HXMLWElement* one : childrenOf(*child)) {
                if (isNamed(one, name)) {
                    visit(*one);
                }
            }
        }
    }

    void add(const HXMLWElement& element, const char* id, const std::string& text)
    {
        findings_.addInLine(document_.lineOf(element), id, bom_, text);
    }

    void collect(const HXMLWElement& element)
    {
        const std::string_view path = textOf(&element, attribute::INSTANCE_PATH);
        Partition& partition = partitions_[path];
        if (partition.line != 0) {
            add(element, "partition.twice",
                "the partition " + shown(path) + " stands here and in line " +
                    std::to_string(partition.line));
        } else {
            partition.line = document_.lineOf(element);
        }
        for (const HXMLWElement* file : childrenOf(element)) {
            partition.modules.insert(textOf(file, attribute::RM_NAME));
        }
    }

    void checkPartition(const HXMLWElement& element)
    {
        const std::string_view path = textOf(&element, attribute::INSTANCE_PATH);
        const std::string_view chosen = textOf(&element, attribute::DEFAULT_CONFIG_RM);
        const auto& modules = partitions_[path].modules;
        const bool isKnown = std::any_of(modules.begin(), modules.end(), [&](std::string_view module) {
            return HSTStringUtils::iequals(module, chosen);
        });
        if (!chosen.empty() && !isKnown) {
            add(element, "partition.unknown-module",
                "the default module " + shown(chosen) + " is none of the partition " + shown(path));
        }
        checkFiles(element);
    }

    void checkConfiguration(const HXMLWElement& configuration)
    {
        if (HSTStringUtils::iequals(textOf(&configuration, attribute::ACTIVE), bom::value::YES)) {
            if (!active_.empty() && active_ != textOf(&configuration, attribute::NAME)) {
                add(configuration, "partition.several-active",
                    "the configuration " + shown(textOf(&configuration, attribute::NAME)) +
                        " is active, and " + shown(active_) + " is as well");
            }
            active_ = textOf(&configuration, attribute::NAME);
        }
        for (const HXMLWElement* cell : childrenOf(configuration)) {
            if (isNamed(cell, element::PARTITION_INST_MAP)) {
                checkCell(*cell);
            } else if (isNamed(cell, element::GRAY_BOX_INST)) {
                checkPath(*cell, textOf(cell, attribute::NAME));
            }
        }
    }

    void checkCell(const HXMLWElement& cell)
    {
        const std::string_view path = textOf(&cell, attribute::INSTANCE_PATH);
        const std::string_view module = textOf(&cell, attribute::RM_NAME);
        if (checkPath(cell, path) && !module.empty() && !partitions_[path].modules.contains(module)) {
            add(cell, "partition.unknown-module",
                "the module " + shown(module) + " is none of the partition " + shown(path));
        }
        checkFiles(cell);
    }

    bool checkPath(const HXMLWElement& cell, std::string_view path)
    {
        if (partitions_.contains(path)) {
            return true;
        }
        add(cell, "partition.unknown", "there is no partition " + shown(path));
        return false;
    }

    void checkFiles(const HXMLWElement& element)
    {
        // What is written for a file whose name was not read.
        constexpr std::string_view placeholder = "bitFile";
        for (const HXMLWElement* file : childrenOf(element)) {
            const std::string name(textOf(file, attribute::NAME));
            if (!name.empty() && name != placeholder &&
                !listing_.names.contains(std::string(HUTFile(name).name()))) {
                add(*file, "partition.unlisted-file", shown(name) + " is named here, but no entry lists it");
            }
        }
    }

    BomText& document_;
    const std::string& bom_;
    const BomListing& listing_;
    FindingList& findings_;
    std::map<std::string_view, Partition> partitions_;
    std::string_view active_;
};

}  // namespace

void findPartitionFaults(BomText& document, const std::string& bom, const BomListing& listing,
                         FindingList& findings)
{
    PartitionCheck(document, bom, listing, findings).run();
}
