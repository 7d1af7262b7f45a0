// Small containers whose BOM unfolds to as much as it can: opening takes less than 512 MiB and ten
// seconds, whether it succeeds or not.

#include <gtest/gtest.h>

#include <boost/filesystem/operations.hpp>
#include <cstdio>
#include <memory>
#include <ostream>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/Container.h"
#include "support/MeasuredChild.h"
#include "support/Messages.h"
#include "support/TempDir.h"

using support::Measured;
using support::TempDir;

namespace {

constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20U;
/// Resident memory is what counts; the address space has room for what is reserved and not touched.
constexpr std::uint64_t mostAddressBytes = 640 * mebibyte;
constexpr std::uint64_t mostBytes = 512 * mebibyte;
constexpr double mostSeconds = 10;

/// A BOM document: something, one unit repeated (each "#" stands for the number of the repetition),
/// something.
struct Bomb {
    const char* name;
    const char* front;
    const char* unit;
    const char* back;
    std::size_t count;
    bool opens;
};

void PrintTo(const Bomb& bomb, std::ostream* out)
{
    *out << bomb.name;
}

constexpr const char* root = "<Project Version='1' Minor='2' DIGEST=''>";
constexpr const char* noRoot = "</Project>";
constexpr const char* driver = "<Project Version='1' Minor='2'><DRIVERS><DRIVER IP_VLNV='x'>";
constexpr const char* noDriver = "</DRIVER></DRIVERS></Project>";
constexpr const char* configurations = "<Project Version='1' Minor='2'><PRConfigurations>";

// Where two rows have one form, the smaller one is about the largest that opens.
constexpr Bomb bombs[] = {
    {"emptyElements", root, "<a/>", noRoot, 60'000'000, false},
    {"fewerEmptyElements", root, "<a/>", noRoot, 4'300'000, true},
    {"sixtyMegabytesOfEmptyFiles", root, "<File/>", noRoot, 60'000'000 / 7, false},
    {"fewerEmptyFiles", root, "<File/>", noRoot, 900'000, true},
    {"aMillionFiles", root, "<File Name='#'/>", noRoot, 1'000'000, false},
    {"threeQuartersOfAMillionFiles", root, "<File Name='#'/>", noRoot, 750'000, true},
    {"filesWithEverything", root,
     "<File Type='HW_HANDOFF' Name='#' DESIGN_HIERARCHY='a' src_db='#' DIGEST='#'><a ATTRNAME='#'/></File>",
     noRoot, 330'000, true},
    {"driverSources", root, "<File Type='DRIVER_SRC' Name='#'/>", noRoot, 300'000, true},
    {"driverSourcesOfOneName", root, "<File Type='DRIVER_SRC' Name='.'/>", noRoot, 300'000, true},
    {"manyDriverSources", root, "<File Type='DRIVER_SRC' Name='#'/>", noRoot, 1'000'000, false},
    {"driverFiles", driver, "<F PATH='#'/>", noDriver, 550'000, true},
    {"manyDriverFiles", driver, "<F PATH='#'/>", noDriver, 2'000'000, false},
    {"drivers", "<Project Version='1' Minor='2'><DRIVERS>", "<D IP_VLNV='#'><F PATH='#'/></D>",
     "</DRIVERS></Project>", 400'000, true},
    {"designAttributes", "<Project Version='1' Minor='2'><WDIATTRS>", "<a ATTRNAME='#'/>",
     "</WDIATTRS></Project>", 1'100'000, true},
    {"fileAttributes", "<Project Version='1' Minor='2'><File Name='a'>", "<a ATTRNAME='#'/>",
     "</File></Project>", 1'100'000, true},
    {"modules", "<Project Version='1' Minor='2'><Instance_Paths><Reconfigurable_Partition Instance_Path='a'>",
     "<a RM_NAME='#'/>", "</Reconfigurable_Partition></Instance_Paths></Project>", 1'000'000, true},
    {"partitions", "<Project Version='1' Minor='2'><Instance_Paths>",
     "<Reconfigurable_Partition Instance_Path='#'><a/></Reconfigurable_Partition>",
     "</Instance_Paths></Project>", 500'000, true},
    {"configurations", configurations,
     "<PRConfiguration Name='#'><PartitionInstMap RM_NAME='1'/></PRConfiguration>",
     "</PRConfigurations></Project>", 500'000, true},
    {"cells", "<Project Version='1' Minor='2'><PRConfigurations><PRConfiguration Name='a'>",
     "<PartitionInstMap RM_NAME='1' Instance_Path='#'/>", "</PRConfiguration></PRConfigurations></Project>",
     1'000'000, true},
    {"grayBoxes", "<Project Version='1' Minor='2'><PRConfigurations><PRConfiguration Name='a'>",
     "<GrayBoxInst Name='#'/>", "</PRConfiguration></PRConfigurations></Project>", 1'000'000, true},
    {"attributesOfOneElement", "<Project Version='1' Minor='2'><x ", " b=''", "/></Project>", 12'000'000,
     false},
    {"fewerAttributesOfOneElement", "<Project Version='1' Minor='2'><x ", " b=''", "/></Project>", 9'000'000,
     true},
    {"elementsWithAttributes", "<Project Version='1' Minor='2'>", "<x b=''/>", noRoot, 3'000'000, true},
    {"piecesOfText", root, "x<!---->", noRoot, 7'000'000, false},
    {"fewerPiecesOfText", root, "x<!---->", noRoot, 3'500'000, true},
    {"sections", root, "<![CDATA[x]]>", noRoot, 8'000'000, false},
    {"elementsWithText", root, "<a>x</a>", noRoot, 2'800'000, true},
    {"aMillionNestedElements", root, "<a b='#'>", nullptr, 1'000'000, true},
    {"manyNestedElements", root, "<a>", nullptr, 10'000'000, false},
    {"moreNestedElements", root, "<a>", nullptr, 4'000'000, true},
    {"unfinishedElements", root, "<a>x", "", 8'000'000, false},
    {"processingInstructions", root, "<?x?>", noRoot, 10'000'000, true},
    {"anAttributeOfFiftyMegabytes", "<Project Version='1' Minor='2' X='", "x", "'/>", 50'000'000, true},
    {"anAttributeOfAQuarterOfAGigabyte", "<Project Version='1' Minor='2' X='", "x", "'/>", 250'000'000,
     false},
    {"aNameOfFiftyMegabytes", "<Project Version='1' Minor='2'><File Name='", "x", "'/></Project>", 50'000'000,
     true},
    {"aNameOfAHundredMegabytes", "<Project Version='1' Minor='2'><File Name='", "x", "'/></Project>",
     100'000'000, false},
    {"aPathOfFiftyMegabytes", "<Project Version='1' Minor='2'><DRIVERS><a><a PATH='", "/x",
     "'/></a></DRIVERS></Project>", 25'000'000, true},
    {"aDriverSourceOfFiftyMegabytes", "<Project Version='1' Minor='2'><File Type='DRIVER_SRC' Name='", "x/",
     "'/></Project>", 25'000'000, true},
    {"aValueOfFiftyMegabytes", "<Project Version='1' Minor='2'><File Name='a'><a ATTRVAL='", "x",
     "'/></File></Project>", 50'000'000, true},
    {"anElementsNameOfFiftyMegabytes", "<Project Version='1' Minor='2'><", "x", "/></Project>", 50'000'000,
     true},
    {"blanks", root, "            \n", noRoot, 5'000'000, true},
};

void appendUnit(std::string& text, const std::string& unit, std::size_t number)
{
    for (const char c : unit) {
        if (c == '#') {
            text += std::to_string(number);
        } else {
            text += c;
        }
    }
}

/// Under a sanitizer, where memory can't be measured and time runs differently, a twentieth will do: the
/// question left is whether anything is done wrong.
std::size_t countOf(const Bomb& bomb)
{
    return support::isSanitized() ? bomb.count / 20 : bomb.count;
}

void writeBomb(const Bomb& bomb, const std::string& path)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
    ASSERT_NE(file, nullptr);
    const std::size_t count = countOf(bomb);
    std::string text = bomb.front;
    const auto flush = [&](std::size_t most) {
        if (text.size() > most) {
            ASSERT_EQ(std::fwrite(text.data(), 1, text.size(), file.get()), text.size());
            text.clear();
        }
    };
    for (std::size_t number = 0; number < count; ++number) {
        appendUnit(text, bomb.unit, number);
        flush(1U << 20U);
    }
    for (std::size_t number = 0; bomb.back == nullptr && number < count; ++number) {
        text += "</a>";
        flush(1U << 20U);
    }
    text += bomb.back == nullptr ? noRoot : bomb.back;
    flush(0);
}

/// A container of the BOM alone.
void writeContainer(const Bomb& bomb, const TempDir& dir)
{
    writeBomb(bomb, dir / "hwdef.xml");
    ASSERT_TRUE(HHDFHwDefUtils::writeFileToHDF(dir / "hwdef.xml", "hwdef.xml", dir / "design.hdf"));
}

class BomBomb : public testing::TestWithParam<Bomb> {};

}  // namespace

TEST_P(BomBomb, isOpenedOrRefusedWithinItsLimits)
{
    const TempDir dir;
    ASSERT_NO_FATAL_FAILURE(writeContainer(GetParam(), dir));

    const Measured measured = support::measureInChild(dir.path(), mostAddressBytes, [&] {
        // What a message holds is the listener's memory, not the opening's.
        ComMsgMgr::setHandler([](const ComMsg&) {});
        return HHDFHwDefUtils::getHDF(dir / "design.hdf", true) != nullptr ? 7 : 1;
    });
    RecordProperty("peakMiB", static_cast<int>(measured.peakBytes / mebibyte));
    RecordProperty("cpuMs", static_cast<int>(measured.cpuSeconds * 1000));
    EXPECT_TRUE(measured.exitCode == 7 || measured.exitCode == 1) << "signal " << measured.signal;
    if (!support::isSanitized()) {
        EXPECT_EQ(measured.exitCode == 7, GetParam().opens);
        EXPECT_LT(measured.peakBytes, mostBytes);
        EXPECT_LT(measured.cpuSeconds, mostSeconds);
    }
}

TEST(LongNames, looksALongNameUpOnceAndNotForEachChild)
{
    const std::string name(4'000'000, 'x');
    const Bomb longNames[] = {
        {"driver", "<DRIVERS><a IP_VLNV='", "<a PATH='#'/>", "</a></DRIVERS>", 100'000, true},
        {"partition", "<Instance_Paths><Reconfigurable_Partition Instance_Path='", "<a RM_NAME='#'/>",
         "</Reconfigurable_Partition></Instance_Paths>", 100'000, true},
        {"configuration", "<PRConfigurations><PRConfiguration Name='",
         "<PartitionInstMap RM_NAME='1' Instance_Path='#'/>", "</PRConfiguration></PRConfigurations>",
         100'000, true},
    };
    for (const Bomb& bomb : longNames) {
        std::string text = "<Project Version='1' Minor='7'>" + (bomb.front + name) + "'>";
        for (std::size_t number = 0; number < countOf(bomb); ++number) {
            appendUnit(text, bomb.unit, number);
        }
        text += bomb.back + std::string(noRoot);
        const TempDir dir;
        support::writeArchive(dir / "design.hdf", {{"hwdef.xml", text}});
        const Measured measured = support::measureInChild(dir.path(), mostAddressBytes, [&] {
            return HHDFHwDefUtils::getHDF(dir / "design.hdf") != nullptr ? 7 : 1;
        });
        EXPECT_EQ(measured.exitCode, 7) << bomb.name;
        EXPECT_LT(measured.cpuSeconds, mostSeconds) << bomb.name;
    }
}

TEST(LongNames, areNotUnpacked)
{
    const TempDir dir;
    const Bomb bomb = {"path",     "<Project Version='1' Minor='2'><DRIVERS><a><a PATH='drivers",
                       "/x",       "'/></a></DRIVERS></Project>",
                       25'000'000, true};
    ASSERT_NO_FATAL_FAILURE(writeContainer(bomb, dir));
    boost::filesystem::create_directory(dir / "out");
    const Measured measured = support::measureInChild(dir.path(), mostAddressBytes, [&] {
        int refusals = 0;
        ComMsgMgr::setHandler([&](const ComMsg& message) {
            refusals += message.text.ends_with("bytes, allowed are 65535") ? 1 : 0;
            refusals += message.text.ends_with("the container has no such member") ? 1 : 0;
        });
        const auto def = HHDFHwDefUtils::getHDF(dir / "design.hdf");
        const bool done = def != nullptr && def->unzipDrivers(dir / "out") && def->write(dir / "out");
        return done && refusals == 2 ? 7 : 1;
    });
    EXPECT_EQ(measured.exitCode, 7) << "signal " << measured.signal;
    if (!support::isSanitized()) {
        EXPECT_LT(measured.peakBytes, mostBytes);
        EXPECT_LT(measured.cpuSeconds, mostSeconds);
    }
}

TEST(LongNames, areNotResolvedWhereNothingIs)
{
    std::string unit = "<File Type='DRIVER_SRC' Name='";
    for (int component = 0; component < 1'900; ++component) {
        unit += "./";
    }
    unit += "#'/>";
    const TempDir dir;
    ASSERT_NO_FATAL_FAILURE(writeContainer(
        {"sources", "<Project Version='1' Minor='0'>", unit.c_str(), noRoot, 24'000, true}, dir));
    const Measured measured = support::measureInChild(dir.path(), mostAddressBytes, [&] {
        ComMsgMgr::setHandler([](const ComMsg&) {});
        return HHDFHwDefUtils::getHDF(dir / "design.hdf") != nullptr ? 7 : 1;
    });
    EXPECT_EQ(measured.exitCode, 7) << "signal " << measured.signal;
    if (!support::isSanitized()) {
        EXPECT_LT(measured.peakBytes, mostBytes);
        EXPECT_LT(measured.cpuSeconds, mostSeconds / 2);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, BomBomb, testing::ValuesIn(bombs),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(DriverSources, areNotResolvedWithoutEnd)
{
    // Each part of such a name is a place of its own, in a container that was unpacked.
    std::string unit = "<File Type='DRIVER_SRC' Name='";
    for (int part = 0; part < 750; ++part) {
        unit += "d/../";
    }
    unit += "d'/>";
    const TempDir dir;
    boost::filesystem::create_directories(dir / "design/d");
    ASSERT_NO_FATAL_FAILURE(
        writeContainer({"dots", "<Project Version='1' Minor='0'>", unit.c_str(), noRoot, 24'000, true}, dir));
    const Measured measured = support::measureInChild(dir.path(), mostAddressBytes, [&] {
        int refusals = 0;
        ComMsgMgr::setHandler([&](const ComMsg& message) {
            refusals += message.text.ends_with(
                "d\" comes after paths of 1000000 parts in all, the most that are resolved; not read");
        });
        return HHDFHwDefUtils::getHDF(dir / "design.hdf") != nullptr && refusals > 0 ? 7 : 1;
    });
    EXPECT_EQ(measured.exitCode, 7) << "signal " << measured.signal;
    if (!support::isSanitized()) {
        EXPECT_LT(measured.cpuSeconds, mostSeconds);
    }
}

TEST(DriverSources, areWalkedOnceWhereThatFails)
{
    const TempDir dir;
    boost::filesystem::create_directories(dir / "design");
    support::writeFile(dir / "design/a", "");  // no directory
    ASSERT_NO_FATAL_FAILURE(writeContainer({"failing", "<Project Version='1' Minor='0'>",
                                            "<File Type='DRIVER_SRC' Name='a'/>", noRoot, 300'000, true},
                                           dir));
    const Measured measured = support::measureInChild(dir.path(), mostAddressBytes, [&] {
        std::size_t failures = 0;
        ComMsgMgr::setHandler([&](const ComMsg& message) {
            failures += message.text.find("Not a directory") != std::string::npos ? 1 : 0;
        });
        // As many as are listed, and the one that tells of the missing driver.
        return HHDFHwDefUtils::getHDF(dir / "design.hdf") != nullptr && failures > 1000 ? 7 : 1;
    });
    EXPECT_EQ(measured.exitCode, 7) << "signal " << measured.signal;
    if (!support::isSanitized()) {
        EXPECT_LT(measured.cpuSeconds, mostSeconds / 2);
    }
}
