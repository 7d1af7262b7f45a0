#include <algorithm>

#include "hwdef/inspect/HHDFInspect.h"
#include "platform/JsonWriter.h"

using platform::JsonWriter;

namespace {

void begin(JsonWriter& json, const char* schema)
{
    json.beginObject();
    json.add("schema", schema);
    json.add("schemaVersion", std::uint64_t{HHDFInspect::JSON_VERSION});
}

std::uint64_t countOf(const std::vector<HHDFFinding>& findings, HHDFFinding::Severity severity)
{
    return static_cast<std::uint64_t>(
        std::count_if(findings.begin(), findings.end(),
                      [severity](const HHDFFinding& finding) { return finding.severity == severity; }));
}

void add(JsonWriter& json, const HHDFFinding& finding)
{
    json.beginObject();
    json.add("id", finding.id);
    json.add("severity", finding.severityName());
    if (!finding.member.empty()) {
        json.add("member", finding.member);
    }
    if (finding.offset != 0) {
        json.add("offset", finding.offset);
    }
    if (finding.line != 0) {
        json.add("line", finding.line);
    }
    json.add("text", finding.text);
    json.add("advice", finding.advice);
    json.end();
}

void add(JsonWriter& json, const HHDFDifference& difference)
{
    json.beginObject();
    json.add("section", difference.section);
    json.add("item", difference.item);
    if (!difference.field.empty()) {
        json.add("field", difference.field);
    }
    json.add("kind", difference.kindName());
    if (difference.kind != HHDFDifference::ADDED) {
        json.add("before", difference.before);
    }
    if (difference.kind != HHDFDifference::REMOVED) {
        json.add("after", difference.after);
    }
    json.end();
}

template <typename Elements>
void addAll(JsonWriter& json, const char* key, const Elements& elements)
{
    json.beginArray(key);
    for (const auto& element : elements) {
        add(json, element);
    }
    json.end();
}

}  // namespace

std::string HHDFInspect::toJson(const std::string& path, Level level,
                                const std::vector<HHDFFinding>& findings)
{
    JsonWriter json;
    begin(json, "hwdef-findings");
    json.add("container", path);
    json.add("level", level == Level::QUICK ? "quick" : "full");
    json.add("errors", countOf(findings, HHDFFinding::ERROR));
    json.add("warnings", countOf(findings, HHDFFinding::WARNING));
    json.add("notices", countOf(findings, HHDFFinding::NOTICE));
    addAll(json, "findings", findings);
    json.end();
    return json.text();
}

std::string HHDFInspect::toJson(const std::string& first, const std::string& second,
                                const std::vector<HHDFDifference>& differences)
{
    JsonWriter json;
    begin(json, "hwdef-differences");
    json.add("first", first);
    json.add("second", second);
    json.add("same", differences.empty());
    addAll(json, "differences", differences);
    json.end();
    return json.text();
}

std::string HHDFInspect::digestsToJson(const std::string& path, const std::string& contentDigest,
                                       const std::string& fileDigest)
{
    JsonWriter json;
    begin(json, "hwdef-digests");
    json.add("container", path);
    json.add("contentSha256", contentDigest);
    json.add("fileSha256", fileDigest);
    json.end();
    return json.text();
}
