// What a BOM of long texts is said to take, held against what it takes.

#include "hwdef/container/BomSize.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <ostream>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/ComMsgMgr.h"
#include "support/Container.h"
#include "support/MeasuredChild.h"
#include "support/TempDir.h"

using support::bomDocument;
using support::TempDir;

namespace {

constexpr std::uint64_t gibibyte = std::uint64_t{1} << 30U;
constexpr std::size_t wholeBytes = 30'000'000;

/// A BOM of one unit repeated, in which each "#" is a long text.
struct LongTexts {
    const char* name;
    const char* front;
    const char* unit;
    const char* back;
    std::size_t textBytes = 4000;
};

void PrintTo(const LongTexts& texts, std::ostream* out)
{
    *out << texts.name;
}

constexpr LongTexts everywhere[] = {
    {"fileNames", "", "<File Name='#'/>", ""},
    {"sources", "", "<File Name='a' src_db='#'/>", ""},
    {"digests", "", "<File Name='#' DIGEST='#'/>", ""},
    {"hierarchies", "", "<File Name='a' DESIGN_HIERARCHY='#'/>", ""},
    {"fileAttributes", "", "<File Name='a'><a ATTRNAME='#' ATTRVAL='#'/></File>", ""},
    {"driverNames", "<DRIVERS>", "<D IP_VLNV='#'><F PATH='a'/></D>", "</DRIVERS>"},
    {"driverFiles", "<DRIVERS><D IP_VLNV='a'>", "<F PATH='#'/>", "</D></DRIVERS>"},
    {"designAttributes", "<WDIATTRS>", "<a ATTRNAME='#' ATTRVAL='#'/>", "</WDIATTRS>"},
    {"partitions", "<Instance_Paths>",
     "<Reconfigurable_Partition Instance_Path='#'><a RM_NAME='#'/></Reconfigurable_Partition>",
     "</Instance_Paths>"},
    {"configurations", "<PRConfigurations>",
     "<PRConfiguration Name='#'><PartitionInstMap RM_NAME='#' Instance_Path='#'/></PRConfiguration>",
     "</PRConfigurations>"},
    {"oneFileName", "", "<File Name='#'/>", "", wholeBytes},
    {"oneDriverFile", "<DRIVERS><D IP_VLNV='a'>", "<F PATH='#'/>", "</D></DRIVERS>", wholeBytes},
    {"oneDriverSource", "", "<File Type='DRIVER_SRC' Name='#'/>", "", wholeBytes},
    {"oneDesignAttribute", "<WDIATTRS>", "<a ATTRNAME='#'/>", "</WDIATTRS>", wholeBytes},
    {"onePartition", "<Instance_Paths>",
     "<Reconfigurable_Partition Instance_Path='#'><a/></Reconfigurable_Partition>", "</Instance_Paths>",
     wholeBytes},
};

/// So many of its units that they have `wholeBytes`; all texts differ.
std::string elementsOf(const LongTexts& form)
{
    std::string elements = form.front;
    for (int number = 0; elements.size() < wholeBytes; ++number) {
        std::string unit = form.unit;
        for (auto at = unit.find('#'); at != std::string::npos; at = unit.find('#')) {
            const std::string digits = std::to_string(number);
            unit.replace(at, 1, digits + std::string(form.textBytes - digits.size(), 'x'));
        }
        elements += unit;
    }
    return elements + form.back;
}

/// The most memory that opening takes, by what is told beforehand.
std::uint64_t told(const std::string& document, const std::string& container, bool checkIntegrity)
{
    HXMLWInterface parsed;
    parsed.readFromBuffer(document);
    const BomSize size(parsed, container);
    const std::uint64_t most = std::max(HXMLWInterface::mostBytes(document), size.mostBytes());
    return checkIntegrity ? std::max(most, size.mostBytesForDigests()) : most;
}

/// In a child, because only a process has a peak.
std::uint64_t peakOfOpening(const TempDir& dir, const std::string& container, bool checkIntegrity)
{
    ::malloc_trim(0);  // what this process has freed but not given back would count
    const support::Measured measured = support::measureInChild(dir.path(), 2 * gibibyte, [&] {
        ComMsgMgr::setHandler([](const ComMsg&) {});
        return HHDFHwDefUtils::getHDF(container, checkIntegrity) != nullptr ? 0 : 1;
    });
    EXPECT_EQ(measured.exitCode, 0);
    return measured.peakBytes;
}

class BomSizeOf : public testing::TestWithParam<LongTexts> {};

}  // namespace

TEST_P(BomSizeOf, longTextsIsNotLessThanTheyTake)
{
    if (support::isSanitized()) {
        GTEST_SKIP() << "memory can't be measured under a sanitizer";
    }
    const TempDir dir;
    const std::string rootAttributes = "Version='1' Minor='2' DIGEST=''";
    support::writeArchive(dir / "empty.hdf", {{"hwdef.xml", bomDocument(rootAttributes, "")}});
    for (const bool checkIntegrity : {false, true}) {
        std::uint64_t most = 0;
        {
            const std::string document = bomDocument(rootAttributes, elementsOf(GetParam()));
            most = told(document, dir / "long.hdf", checkIntegrity);
            support::writeArchive(dir / "long.hdf", {{"hwdef.xml", document}});
        }
        const std::uint64_t others = peakOfOpening(dir, dir / "empty.hdf", checkIntegrity);
        const std::uint64_t peak = peakOfOpening(dir, dir / "long.hdf", checkIntegrity);
        EXPECT_GT(peak, others + wholeBytes);  // the texts were read
        EXPECT_LE(peak, others + most) << (checkIntegrity ? "checked" : "not checked");
    }
}

INSTANTIATE_TEST_SUITE_P(All, BomSizeOf, testing::ValuesIn(everywhere),
                         [](const auto& info) { return std::string(info.param.name); });
