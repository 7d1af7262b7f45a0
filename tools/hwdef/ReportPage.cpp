#include "ReportPage.h"

#include <algorithm>
#include <map>

#include "FindingText.h"
#include "Html.h"
#include "MemberMap.h"
#include "PartitionFacts.h"
#include "Properties.h"
#include "ReportStyle.h"
#include "Resources.h"
#include "Text.h"
#include "platform/HUTFile.h"

namespace {

/// So many members have an area and a row of their own.
constexpr std::size_t mostMembers = 250;
/// So many partitions, modules, configurations and attributes are shown.
constexpr std::size_t mostBranches = 500;
constexpr std::size_t mostColours = 8;

std::string card(const std::string& title, const std::string& content)
{
    return "<section class=\"card\"><h2>" + html(title) + "</h2>\n" + content + "</section>\n";
}

std::string badge(const std::string& cssClass, const std::string& text)
{
    return "<span class=\"badge " + cssClass + "\">" + html(text) + "</span>";
}

std::string factList(const std::vector<std::pair<std::string, std::string>>& facts)
{
    std::string list = "<dl class=\"facts\">\n";
    const std::size_t shown = std::min(facts.size(), mostBranches);
    for (std::size_t i = 0; i < shown; ++i) {
        list += "<dt>" + html(facts[i].first) + "</dt><dd>" + html(facts[i].second) + "</dd>\n";
    }
    const std::string more = shown < facts.size()
                                 ? "<p class=\"soft\">" + std::to_string(facts.size() - shown) + " more</p>\n"
                                 : "";
    return list + "</dl>\n" + more;
}

std::string tile(const std::string& value, const std::string& name)
{
    return "<div class=\"card tile\"><b>" + html(value) + "</b><span class=\"soft\">" + html(name) +
           "</span></div>\n";
}

// --- What the container is.

std::string headOf(const ReportFacts& facts)
{
    const FindingCounts counts(facts.findings);
    const char* const cssClass = counts.errors > 0 ? "error" : counts.warnings > 0 ? "warning" : "good";
    const std::string verdict = counts.errors > 0 ? "not sound" : "sound";
    return "<header><h1>" + html(HUTFile(facts.path).name()) + "</h1>\n<p>" +
           badge(cssClass, verdict + ", " + counts.text()) + "</p></header>\n";
}

std::string tilesOf(const Container& container)
{
    std::uint64_t size = 0;
    std::uint64_t packed = 0;
    for (const auto& member : container.archive->members()) {
        size += member.sizeBytes;
        packed += member.packedBytes;
    }
    const HHDFHwDef& def = *container.definition;
    return "<div class=\"tiles\">\n" + tile(def.getPart().empty() ? "(none)" : def.getPart(), "part") +
           tile(def.getModeName(), "mode") + tile(std::to_string(container.files().size()), "files") +
           tile(std::to_string(def.getDriverFilesMap().size()), "drivers") +
           tile(std::to_string(def.getPartitionInfo().size()), "partitions") +
           tile(readableSize(size), "content") + tile(readableSize(packed), "packed") + "</div>\n";
}

std::string propertiesOf(const ReportFacts& facts)
{
    std::vector<std::pair<std::string, std::string>> shown;
    for (const Property& property : properties()) {
        const std::string value = property.get(*facts.container.definition);
        if (!value.empty() && *property.title != '\0') {
            shown.emplace_back(property.title, value);
        }
    }
    HHDFHwDef::Texts attributes;
    facts.container.definition->getWDIAttrs(attributes);
    std::string content = factList(shown);
    if (!attributes.empty()) {
        content += "<h3>Attributes</h3>\n" + factList({attributes.begin(), attributes.end()});
    }
    return card("Design", content);
}

std::string resourceBar(const Resource& resource)
{
    const auto percent = resource.percent();
    const double share = std::clamp(percent.value_or(0), 0.0, 100.0);
    const char* const fill = share > 90 ? "fill-bad" : share > 70 ? "fill-warn" : "fill-good";
    std::string text = resource.used + (resource.available.empty() ? "" : " of " + resource.available);
    text += percent ? ", " + percentText(*percent) : "";
    return "<div class=\"bar\"><span>" + html(resource.name) +
           "</span>"
           "<svg viewBox=\"0 0 100 1\" preserveAspectRatio=\"none\" role=\"img\" aria-label=\"" +
           html(text) + "\"><rect class=\"track\" width=\"100\" height=\"1\"></rect><rect class=\"" + fill +
           "\" width=\"" + pixels(share) + "\" height=\"1\"></rect></svg><span>" + html(text) +
           "</span></div>\n";
}

std::string resourcesCard(const HHDFHwDef& definition)
{
    std::string bars;
    for (const Resource& resource : resourcesOf(definition)) {
        bars += resourceBar(resource);
    }
    return bars.empty() ? "" : card("Resources", bars);
}

// --- Members.

/// What each member is, by its name.
std::map<std::string, std::string> typesOf(const Container& container)
{
    std::map<std::string, std::string> types = {{container.bomName(), "bill of materials"}};
    for (const HHDFHwDefFile* file : container.files()) {
        types.emplace(file->getFileName(), typeToken(*file));
    }
    for (const auto& [name, files] : container.definition->getDriverFilesMap()) {
        for (const HHDFHwDefDriver& file : files) {
            const auto* const member = container.driverMember(file);
            if (member != nullptr) {
                types.emplace(member->name, "driver");
            }
        }
    }
    return types;
}

struct MemberType {
    std::string name;
    std::uint64_t sizeBytes = 0;
    std::uint64_t count = 0;
};

class Members {
public:
    explicit Members(const Container& container)
    {
        const auto types = typesOf(container);
        for (const auto& member : container.archive->members()) {
            const auto type = types.find(member.name);
            areas_.push_back(
                {member.name, type == types.end() ? "not listed" : type->second, member.sizeBytes, 0});
        }
        collectTypes();
        std::stable_sort(areas_.begin(), areas_.end(), [](const MemberArea& left, const MemberArea& right) {
            return left.sizeBytes > right.sizeBytes;
        });
        gatherRest();
    }

    std::string card() const
    {
        if (areas_.empty()) {
            return "";
        }
        return ::card("Members by size", memberMap(areas_, 1000, 420, "map wide") +
                                             memberMap(areas_, 360, 480, "map narrow") + legend() + table());
    }

private:
    void collectTypes()
    {
        std::map<std::string, MemberType> types;
        for (const MemberArea& area : areas_) {
            MemberType& type = types[area.type];
            type.name = area.type;
            type.sizeBytes += area.sizeBytes;
            ++type.count;
        }
        for (auto& [name, type] : types) {
            types_.push_back(type);
        }
        std::stable_sort(types_.begin(), types_.end(), [](const MemberType& left, const MemberType& right) {
            return left.sizeBytes > right.sizeBytes;
        });
        for (MemberArea& area : areas_) {
            area.colour = colourOf(area.type);
        }
    }

    std::size_t colourOf(const std::string& type) const
    {
        const auto found = std::find_if(types_.begin(), types_.end(),
                                        [&type](const MemberType& one) { return one.name == type; });
        return std::min(mostColours, static_cast<std::size_t>(found - types_.begin()));
    }

    /// Very many members would make a page that nobody reads.
    void gatherRest()
    {
        if (areas_.size() <= mostMembers) {
            return;
        }
        MemberArea rest = {counted(areas_.size() - mostMembers, "smaller member"), "of several types", 0,
                           mostColours};
        for (std::size_t i = mostMembers; i < areas_.size(); ++i) {
            rest.sizeBytes += areas_[i].sizeBytes;
        }
        areas_.resize(mostMembers);
        const auto place = std::find_if(areas_.begin(), areas_.end(), [&rest](const MemberArea& area) {
            return area.sizeBytes < rest.sizeBytes;
        });
        areas_.insert(place, rest);
    }

    std::string legend() const
    {
        std::string list = "<ul class=\"legend\">\n";
        for (const MemberType& type : types_) {
            list += "<li><svg viewBox=\"0 0 1 1\" aria-hidden=\"true\"><rect class=\"c" +
                    std::to_string(colourOf(type.name)) + "\" width=\"1\" height=\"1\"></rect></svg>" +
                    html(type.name) + " <span class=\"soft\">" + std::to_string(type.count) + ", " +
                    readableSize(type.sizeBytes) + "</span></li>\n";
        }
        return list + "</ul>\n";
    }

    std::string table() const
    {
        std::string rows;
        for (const MemberArea& area : areas_) {
            rows += "<tr><td>" + html(area.name) + "</td><td>" + html(area.type) +
                    "</td><td class=\"number\">" + readableSize(area.sizeBytes) + "</td></tr>\n";
        }
        return "<details><summary>All as a table</summary><div "
               "class=\"scroll\"><table><thead><tr><th>Member</th>"
               "<th>Type</th><th class=\"number\">Size</th></tr></thead><tbody>\n" +
               rows + "</tbody></table></div></details>\n";
    }

    std::vector<MemberArea> areas_;
    std::vector<MemberType> types_;
};

// --- Partitions.

/// The items of a list of branches, cut off where there are too many.
class Branches {
public:
    void add(const std::string& item)
    {
        if (++count_ <= mostBranches) {
            items_ += "<li>" + item + "</li>\n";
        }
    }
    std::string list(const std::string& cssClass = "") const
    {
        const std::string more =
            count_ > mostBranches
                ? "<li class=\"soft\">" + std::to_string(count_ - mostBranches) + " more</li>\n"
                : "";
        return count_ == 0 ? ""
                           : "<ul" + (cssClass.empty() ? "" : " class=\"" + cssClass + "\"") + ">\n" +
                                 items_ + more + "</ul>\n";
    }

private:
    std::string items_;
    std::size_t count_ = 0;
};

std::string partitionTree(const std::vector<PartitionFacts::Partition>& partitions)
{
    Branches tree;
    for (const auto& partition : partitions) {
        std::map<std::string, std::string> modules;
        for (const auto& [module, file] : partition.files) {
            std::string& files = modules[module];
            files += (files.empty() ? "" : ", ") + html(file);
        }
        Branches branches;
        for (const auto& [module, files] : modules) {
            const std::string mark = module == partition.defaultModule ? " " + badge("good", "default") : "";
            branches.add(html(module) + mark +
                         (files.empty() ? "" : " <span class=\"soft\">" + files + "</span>"));
        }
        tree.add("<b>" + html(partition.path) + "</b>\n" + branches.list());
    }
    return tree.list("tree");
}

std::string configurationTree(const std::vector<PartitionFacts::Configuration>& configurations)
{
    Branches tree;
    for (const auto& configuration : configurations) {
        Branches cells;
        for (const auto& cell : configuration.cells) {
            cells.add(html(cell.path) + ": " +
                      (cell.module.empty() ? "<span class=\"soft\">gray box</span>" : html(cell.module)));
        }
        tree.add("<b>" + html(configuration.name) + "</b>" +
                 (configuration.isActive ? " " + badge("good", "active") : "") + "\n" + cells.list());
    }
    return tree.list("tree");
}

std::string partitionsCard(const Container& container)
{
    const PartitionFacts facts = partitionFacts(container);
    const std::string partitions = partitionTree(facts.partitions);
    const std::string configurations = configurationTree(facts.configurations);
    if (partitions.empty() && configurations.empty()) {
        return "";
    }
    return card("Reconfigurable partitions",
                partitions + (configurations.empty() ? "" : "<h3>Configurations</h3>\n" + configurations));
}

// --- Findings.

std::string findingsCard(const ReportFacts& facts)
{
    std::string content;
    for (const HHDFFinding& finding : facts.findings) {
        const std::string place = placeOf(finding);
        content += "<div class=\"finding\"><p>" + badge(finding.severityName(), finding.severityName()) +
                   " <span class=\"mono\">" + html(finding.id) + "</span> " +
                   (place.empty() ? "" : "<span class=\"soft\">" + html(place) + "</span>") + "</p>\n<p>" +
                   html(textOf(finding, facts.path)) + "</p>\n<p class=\"soft\">" + html(finding.advice) +
                   "</p></div>\n";
    }
    return card("Findings", content.empty() ? "<p>" + badge("good", "none") + "</p>\n" : content);
}

std::string digestsCard(const ReportFacts& facts)
{
    const auto row = [](const char* name, const std::string& digest) {
        return digest.empty()
                   ? ""
                   : "<dt>" + std::string(name) + "</dt><dd class=\"mono\">" + html(digest) + "</dd>\n";
    };
    return card("Digests (SHA-256)", "<dl class=\"facts\">\n" + row("Content", facts.contentDigest) +
                                         row("File", facts.fileDigest) + "</dl>\n");
}

std::string bodyOf(const ReportFacts& facts)
{
    std::string body = headOf(facts);
    if (facts.container.definition == nullptr) {
        body += card("Content", "<p>" + html(facts.refusal) + "</p>\n");
    } else {
        body += tilesOf(facts.container) + propertiesOf(facts) + resourcesCard(*facts.container.definition) +
                Members(facts.container).card() + partitionsCard(facts.container);
    }
    return body + findingsCard(facts) + digestsCard(facts);
}

}  // namespace

std::string reportPage(const ReportFacts& facts)
{
    // The policy keeps any browser from asking a network, whatever stands in the page. All elements are
    // closed, so that XML parsers read it as well.
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\"/>\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
           "'unsafe-inline'\"/>\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
           "<meta name=\"color-scheme\" content=\"light dark\"/>\n<title>" +
           html(HUTFile(facts.path).name()) + "</title>\n<style>" + reportStyle +
           "</style>\n</head>\n<body>\n<main>\n" + bodyOf(facts) + "</main>\n</body>\n</html>\n";
}
