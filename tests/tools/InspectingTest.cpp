// The verbs that judge, compare and picture containers: what they say, and what they end with.
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <boost/algorithm/string/replace.hpp>
#include <cstdlib>
#include <sstream>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/BomDocument.h"
#include "support/Container.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"
#include "tools/Command.h"
#include "tools/Designs.h"

using support::readFile;
using support::TempDir;
using support::writeFile;
using tools::CommandRun;
using tools::runCommand;

namespace {

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

rapidjson::Document parsed(const std::string& json)
{
    rapidjson::Document document;
    document.Parse(json.c_str());
    EXPECT_FALSE(document.HasParseError()) << json;
    return document;
}

/// The page of a report on a container of the directory.
std::string pageOf(const std::string& dir, const std::string& container)
{
    const CommandRun run = runCommand(dir, {"report", container});
    EXPECT_EQ(run.exitCode, 0) << run.error;
    EXPECT_EQ(run.error, "");
    return run.out;
}

}  // namespace

TEST(Verify, callsAContainerSound)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const CommandRun run = runCommand(dir.path(), {"verify", "design.hdf"});

    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "design.hdf: sound, no findings\n");
    EXPECT_EQ(run.error, "");
}

TEST(Verify, tellsEachFindingWithPlaceAndAdvice)
{
    const TempDir dir;
    tools::writeDamaged(dir.path());
    const CommandRun run = runCommand(dir.path(), {"verify", "damaged.hdf"});

    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out.substr(0, run.out.find("  notice")),
              "damaged.hdf: not sound, 1 error, 1 notice\n"
              "  error archive.crc  a.bit, byte " +
                  std::to_string(readFile(dir / "damaged.hdf").find("PK\x03\x04", 4)) +
                  "\n"
                  "      CRC-32 is 75328c4f, directory says 00000001\n"
                  "      Copy or download the file again; compare its size with the original's.\n");
    EXPECT_EQ(runCommand(dir.path(), {"verify", "--level", "quick", "damaged.hdf"}).exitCode, 0);
}

TEST(Verify, countsWarningsOnlyWhenPedantic)
{
    const TempDir dir;
    tools::writeOther(dir.path());
    const CommandRun run = runCommand(dir.path(), {"verify", "other.hdf"});

    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(
        contains(run.out, "other.hdf: sound, 1 warning, 1 notice\n  warning bom.member-unlisted  notes.txt"))
        << run.out;
    EXPECT_EQ(runCommand(dir.path(), {"verify", "--pedantic", "other.hdf"}).exitCode, 1);
}

TEST(Verify, saysWhatAFileIsThatIsNoContainer)
{
    const TempDir dir;
    writeFile(dir / "a.txt", "some text");
    const CommandRun run = runCommand(dir.path(), {"verify", "a.txt"});

    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(contains(run.out, "error archive.not-archive\n      this is a text file: ")) << run.out;
}

TEST(Verify, looksAtAllFilesAndEndsWithTheWorst)
{
    const TempDir dir;
    tools::writeDamaged(dir.path());
    const CommandRun run = runCommand(dir.path(), {"verify", "missing.hdf", "damaged.hdf"});

    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(contains(run.error, "missing.hdf")) << run.error;
    EXPECT_TRUE(contains(run.out, "damaged.hdf: not sound")) << run.out;
}

TEST(Verify, tellsTheSameAsJson)
{
    const TempDir dir;
    tools::writeDamaged(dir.path());
    tools::writeDesign(dir.path());
    const CommandRun run = runCommand(dir.path(), {"verify", "--json", "damaged.hdf", "design.hdf"});
    const rapidjson::Document json = parsed(run.out);

    EXPECT_EQ(run.exitCode, 1);
    EXPECT_FALSE(json["sound"].GetBool());
    ASSERT_EQ(json["containers"].Size(), 2u);
    EXPECT_STREQ(json["containers"][0]["findings"][0]["id"].GetString(), "archive.crc");
    EXPECT_EQ(json["containers"][1]["findings"].Size(), 0u);
}

TEST(Diff, findsNoDifferenceBetweenACopyAndItsOriginal)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    writeFile(dir / "copy.hdf", readFile(dir / "design.hdf"));
    const CommandRun run = runCommand(dir.path(), {"diff", "design.hdf", "copy.hdf"});

    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "same content\n");
}

TEST(Diff, tellsDifferencesBySection)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    writeFile(dir / "new.hdf", readFile(dir / "design.hdf"));
    writeFile(dir / "top.bit", "new");
    writeFile(dir / "params.json", "{\"refName\": \"ps_0\", \"clock\": \"24000000\"}");
    runCommand(dir.path(), {"set", "new.hdf", "part=part-2", "attribute.flow="});
    for (const char* file : {"top.bit", "params.json"}) {
        HHDFHwDefUtils::writeFileToHDF(dir / file, file, dir / "new.hdf");
    }
    const CommandRun run = runCommand(dir.path(), {"diff", "design.hdf", "new.hdf"});

    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(contains(run.out, "property\n  ~ part: part-1 -> part-2\n")) << run.out;
    EXPECT_TRUE(contains(run.out, "file\n  ~ params.json [content]: ")) << run.out;
    EXPECT_TRUE(contains(run.out, "  ~ top.bit [content]: ")) << run.out;
    EXPECT_TRUE(contains(run.out, "..., 3 bytes\n")) << run.out;
    EXPECT_TRUE(contains(run.out, "parameter\n  ~ params.json [clock]: 12000000 -> 24000000\n")) << run.out;
}

TEST(Diff, tellsTheSameAsJson)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    tools::writeOther(dir.path());
    const CommandRun run = runCommand(dir.path(), {"diff", "--json", "design.hdf", "other.hdf"});
    const rapidjson::Document json = parsed(run.out);

    EXPECT_EQ(run.exitCode, 1);
    EXPECT_FALSE(json["comparison"]["same"].GetBool());
    EXPECT_STREQ(json["comparison"]["differences"][0]["section"].GetString(), "attribute");
}

TEST(Diff, refusesWhatItCantRead)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    tools::writeDamaged(dir.path());
    for (const char* other : {"missing.hdf", "damaged.hdf"}) {
        const CommandRun run = runCommand(dir.path(), {"diff", "--json", "design.hdf", other});
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(contains(run.error, other)) << run.error;
    }
}

TEST(Digest, identifiesTheContent)
{
    const TempDir dir;
    tools::writeOther(dir.path());
    tools::writeDesign(dir.path());
    const std::string before = runCommand(dir.path(), {"digest", "other.hdf"}).out;
    // Adding a member that is there already changes the file, not what it holds.
    writeFile(dir / "notes.txt", "not listed");
    ASSERT_TRUE(HHDFHwDefUtils::writeFileToHDF(dir / "notes.txt", "notes.txt", dir / "other.hdf"));
    const CommandRun run = runCommand(dir.path(), {"digest", "other.hdf"});

    EXPECT_EQ(run.exitCode, 0);
    ASSERT_EQ(run.out.size(), 8u + 64 + 1 + 5 + 64 + 1);
    EXPECT_EQ(run.out.substr(0, 73), before.substr(0, 73));
    EXPECT_NE(run.out, before);
    EXPECT_NE(runCommand(dir.path(), {"digest", "design.hdf"}).out.substr(0, 73), before.substr(0, 73));
    const rapidjson::Document json = parsed(runCommand(dir.path(), {"digest", "--json", "other.hdf"}).out);
    EXPECT_EQ("content " + std::string(json["digests"]["contentSha256"].GetString()), run.out.substr(0, 72));
}

TEST(Digest, refusesWhatItCantRead)
{
    const TempDir dir;
    tools::writeDamaged(dir.path());
    const CommandRun run = runCommand(dir.path(), {"digest", "damaged.hdf"});

    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.out, "");
}

TEST(Report, showsResourcesMembersAndFindings)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string page = support::outline(pageOf(dir.path(), "design.hdf"));

    EXPECT_TRUE(contains(page, "aria-label='25 of 100, 25.0 %'")) << page;
    EXPECT_TRUE(contains(page, "rect class='fill-good' width='25.0' height='1'")) << page;
    EXPECT_TRUE(contains(page, "rect class='fill-warn' width='80.0' height='1'")) << page;
    EXPECT_TRUE(contains(page, "svg class='map wide' viewBox='0 0 1000.0 420.0'")) << page;
    EXPECT_TRUE(contains(page, "svg class='map narrow' viewBox='0 0 360.0 480.0'")) << page;
}

TEST(Report, givesEachMemberAnAreaByItsSize)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    std::istringstream lines(support::outline(pageOf(dir.path(), "design.hdf")));
    std::size_t boxes = 0;
    double area = 0;
    bool isMap = false;
    for (std::string line; std::getline(lines, line);) {
        if (contains(line, "svg class='")) {
            isMap = contains(line, "map wide");
        } else if (isMap && contains(line, "rect class='c")) {
            const auto number = [&line](const std::string& name) {
                return std::strtod(line.c_str() + line.find(" " + name + "='") + name.size() + 3, nullptr);
            };
            EXPECT_LE(number("x") + number("width"), 1000.1) << line;
            EXPECT_LE(number("y") + number("height"), 420.1) << line;
            area += (number("width") + 1) * (number("height") + 1);
            ++boxes;
        }
    }
    EXPECT_EQ(boxes, 7u);
    EXPECT_NEAR(area, 1000 * 420, 4200);
}

TEST(Report, showsPartitionsAsATree)
{
    const TempDir dir;
    tools::writePartial(dir.path());
    const std::string page = pageOf(dir.path(), "partial.hdf");

    EXPECT_TRUE(contains(page, "<b>top/filter</b>\n<ul>\n<li>fir <span class=\"badge good\">default</span>"))
        << page;
    EXPECT_TRUE(contains(page, "<b>both</b> <span class=\"badge good\">active</span>")) << page;
    EXPECT_TRUE(contains(page, "top/link: <span class=\"soft\">gray box</span>")) << page;
}

TEST(Report, asksForNothingBesideIt)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string page = pageOf(dir.path(), "design.hdf");

    for (const char* reference : {"http:", "https:", "src=", "href", "url(", "@import", "<script", "<link"}) {
        EXPECT_FALSE(contains(page, reference)) << reference;
    }
    EXPECT_TRUE(contains(page, "content=\"default-src 'none'; style-src 'unsafe-inline'\""));
    EXPECT_TRUE(contains(page, "prefers-color-scheme: dark"));
}

TEST(Report, escapesWhateverAContainerHolds)
{
    const TempDir dir;
    const std::string bom = "&lt;script src=&quot;http://x/&quot;>&apos;&lt;/script>";
    std::string elements =
        "<SYSTEMINFO PART='T' LUT='T'/><HIERARCHY Name='T'/><File Type='T' Name='T'/>"
        "<Instance_Paths><Reconfigurable_Partition Instance_Path='T' DEFALUT_CONFIG_RM='T'>"
        "<File RM_NAME='T' Name='T'/></Reconfigurable_Partition></Instance_Paths>"
        "<WDIATTRS><WDIATTR ATTRNAME='T' ATTRVAL='T'/></WDIATTRS>";
    boost::algorithm::replace_all(elements, "'T'", "'" + bom + "'");
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", support::bomDocument("Version='1' Minor='7'", elements));
    zip.addStored("<script>\x1b\xff&\"'.bit", "x");
    zip.write(dir / "evil.hdf");
    const std::string page = pageOf(dir.path(), "evil.hdf");

    EXPECT_FALSE(contains(page, "<script"));
    EXPECT_FALSE(contains(page, "\x1b"));
    EXPECT_TRUE(contains(page, "&lt;script&gt;\\x1b\\xff&amp;&quot;&#39;.bit")) << page;
    EXPECT_FALSE(contains(support::outline(page), "script src='"));  // texts stayed texts
}

TEST(Report, showsWhatIsWrongWithAContainerThatCantBeOpened)
{
    const TempDir dir;
    writeFile(dir / "a.hdf", "some text");
    const std::string page = pageOf(dir.path(), "a.hdf");

    support::outline(page);
    EXPECT_TRUE(contains(page, "archive.not-archive")) << page;
    EXPECT_TRUE(contains(page, "not a hardware definition container")) << page;
}

TEST(Report, gathersVeryManyMembers)
{
    const TempDir dir;
    support::Members members = {{"hwdef.xml", support::bomOfFiles("7", {})}};
    for (int number = 0; number < 400; ++number) {
        members.emplace_back("m" + std::to_string(number),
                             std::string(static_cast<std::size_t>(number), 'x'));
    }
    support::writeArchive(dir / "many.hdf", members);
    const std::string page = pageOf(dir.path(), "many.hdf");

    support::outline(page);
    EXPECT_TRUE(contains(page, "<td>151 smaller members</td><td>of several types</td>"));
}

TEST(Report, writesAFileAndTellsOfIt)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const CommandRun run = runCommand(dir.path(), {"report", "design.hdf", "-o", "r.html"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(run.out.starts_with("r.html: ")) << run.out;
    EXPECT_EQ(readFile(dir / "r.html"), pageOf(dir.path(), "design.hdf"));

    const CommandRun json = runCommand(dir.path(), {"report", "--json", "design.hdf", "-o", "r.html"});
    EXPECT_EQ(parsed(json.out)["bytes"].GetUint64(), readFile(dir / "r.html").size());
    EXPECT_EQ(runCommand(dir.path(), {"report", "--json", "design.hdf"}).exitCode, 2);
}

TEST(Report, replacesNoContainerAndLeavesNoPart)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string before = readFile(dir / "design.hdf");

    EXPECT_EQ(runCommand(dir.path(), {"report", "design.hdf", "-o", "design.hdf"}).exitCode, 2);
    EXPECT_TRUE(readFile(dir / "design.hdf") == before);
    EXPECT_EQ(runCommand(dir.path(), {"report", "design.hdf", "-o", "in"}).exitCode, 2);
    EXPECT_EQ(dir.list(), "design.hdf in");
    EXPECT_EQ(runCommand(dir.path(), {"report", "missing.hdf"}).exitCode, 2);
}
