#include "FindingText.h"

#include <algorithm>

#include "Container.h"
#include "Text.h"

namespace {

std::size_t countOf(const std::vector<HHDFFinding>& findings, HHDFFinding::Severity severity)
{
    return static_cast<std::size_t>(
        std::count_if(findings.begin(), findings.end(),
                      [severity](const HHDFFinding& finding) { return finding.severity == severity; }));
}

}  // namespace

FindingCounts::FindingCounts(const std::vector<HHDFFinding>& findings)
    : errors(countOf(findings, HHDFFinding::ERROR)),
      warnings(countOf(findings, HHDFFinding::WARNING)),
      notices(countOf(findings, HHDFFinding::NOTICE))
{
}

std::string FindingCounts::text() const
{
    std::string all;
    const auto add = [&all](std::size_t count, const char* noun) {
        if (count > 0) {
            all += (all.empty() ? "" : ", ") + counted(count, noun);
        }
    };
    add(errors, "error");
    add(warnings, "warning");
    add(notices, "notice");
    return all.empty() ? "no findings" : all;
}

std::string placeOf(const HHDFFinding& finding)
{
    std::string place = printable(finding.member);
    if (finding.line != 0) {
        place += (place.empty() ? "line " : ":") + std::to_string(finding.line);
    } else if (finding.offset != 0) {
        place += (place.empty() ? "byte " : ", byte ") + std::to_string(finding.offset);
    }
    return place;
}

std::string textOf(const HHDFFinding& finding, const std::string& path)
{
    const std::string kind = finding.id == "archive.not-archive" ? kindOf(path) : "";
    return (kind.empty() ? "" : "this is " + kind + ": ") + printable(finding.text);
}
