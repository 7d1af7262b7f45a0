#include <gtest/gtest.h>

#include "hwdef/inspect/HHDFInspect.h"

TEST(InspectionJson, tellsFindings)
{
    HHDFFinding finding;
    finding.id = "archive.crc";
    finding.severity = HHDFFinding::ERROR;
    finding.member = "a\"b";
    finding.offset = 7;
    finding.line = 0;
    finding.text = "text";
    finding.advice = "advice";

    EXPECT_EQ(HHDFInspect::toJson("x.hdf", HHDFInspect::Level::QUICK, {finding}),
              R"({
    "schema": "hwdef-findings",
    "schemaVersion": 1,
    "container": "x.hdf",
    "level": "quick",
    "errors": 1,
    "warnings": 0,
    "notices": 0,
    "findings": [
        {
            "id": "archive.crc",
            "severity": "error",
            "member": "a\"b",
            "offset": 7,
            "text": "text",
            "advice": "advice"
        }
    ]
})");
}

TEST(InspectionJson, tellsDifferences)
{
    const std::vector<HHDFDifference> differences = {
        {"file", "a.bit", "type", HHDFDifference::CHANGED, "BIT", "PDI"},
        {"attribute", "k", "", HHDFDifference::ADDED, "", "v"}};

    EXPECT_EQ(HHDFInspect::toJson("a.hdf", "b.hdf", differences),
              R"({
    "schema": "hwdef-differences",
    "schemaVersion": 1,
    "first": "a.hdf",
    "second": "b.hdf",
    "same": false,
    "differences": [
        {
            "section": "file",
            "item": "a.bit",
            "field": "type",
            "kind": "changed",
            "before": "BIT",
            "after": "PDI"
        },
        {
            "section": "attribute",
            "item": "k",
            "kind": "added",
            "after": "v"
        }
    ]
})");
}

TEST(InspectionJson, tellsDigests)
{
    EXPECT_EQ(HHDFInspect::digestsToJson("a.hdf", "12", "34"), R"({
    "schema": "hwdef-digests",
    "schemaVersion": 1,
    "container": "a.hdf",
    "contentSha256": "12",
    "fileSha256": "34"
})");
}
