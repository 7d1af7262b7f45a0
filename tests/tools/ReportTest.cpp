// The report: the page that it writes, and where.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <boost/algorithm/string/replace.hpp>
#include <cmath>
#include <cstdlib>
#include <map>
#include <sstream>

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
using tools::contains;
using tools::runCommand;

namespace {

/// The page of a report on a container of the directory.
std::string pageOf(const std::string& dir, const std::string& container)
{
    const CommandRun run = runCommand(dir, {"report", container});
    EXPECT_EQ(run.exitCode, 0) << run.error;
    EXPECT_EQ(run.error, "");
    return run.out;
}

/// The number that an attribute of an element is, 0 without it.
double numberIn(const std::string& line, const std::string& attribute)
{
    const std::size_t place = line.find(" " + attribute + "='");
    return place == std::string::npos ? 0 : std::strtod(line.c_str() + place + attribute.size() + 3, nullptr);
}

/// The colours "#rrggbb" that a style sheet names, by their names.
std::map<std::string, std::string> coloursIn(const std::string& css)
{
    std::map<std::string, std::string> colours;
    for (std::size_t at = css.find("--"); at != std::string::npos; at = css.find("--", at + 2)) {
        const std::size_t colon = css.find(": #", at);
        colours[css.substr(at + 2, colon - at - 2)] = css.substr(colon + 3, 6);
    }
    return colours;
}

/// Relative luminance (WCAG 2.1).
double luminance(const std::string& colour)
{
    const auto part = [&](std::size_t place) {
        const double value = static_cast<double>(std::stoi(colour.substr(place, 2), nullptr, 16)) / 255;
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(0) + 0.7152 * part(2) + 0.0722 * part(4);
}

double contrast(const std::string& one, const std::string& other)
{
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

}  // namespace

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
            area += (numberIn(line, "width") + 1) * (numberIn(line, "height") + 1);
            ++boxes;
        }
    }
    EXPECT_EQ(boxes, 7u);
    EXPECT_NEAR(area, 1000 * 420, 4200);
}

TEST(Report, drawsNothingOutsideOfAPicture)
{
    const TempDir dir;
    support::Members members = {{"hwdef.xml", support::bomOfFiles("7", {})},
                                {"large.bit", std::string(100000, 'x')}};
    for (int number = 0; number < 200; ++number) {
        members.emplace_back("m" + std::to_string(number), "");
    }
    support::writeArchive(dir / "tiny.hdf", members);
    std::istringstream lines(support::outline(pageOf(dir.path(), "tiny.hdf")));
    double width = 0;
    double height = 0;
    std::size_t shapes = 0;
    for (std::string line; std::getline(lines, line);) {
        if (contains(line, " viewBox='0 0 ")) {
            char* end = nullptr;
            width = std::strtod(line.c_str() + line.find("'0 0 ") + 5, &end);
            height = std::strtod(end, nullptr);
        } else if (contains(line, "rect ") || contains(line, "svg ")) {
            EXPECT_LE(numberIn(line, "x") + numberIn(line, "width"), width) << line;
            EXPECT_LE(numberIn(line, "y") + numberIn(line, "height"), height) << line;
            ++shapes;
        }
    }
    EXPECT_GT(shapes, 2 * 202U);
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

TEST(Report, suitsNarrowAndWideScreens)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string page = pageOf(dir.path(), "design.hdf");

    EXPECT_TRUE(contains(page, "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>"));
    EXPECT_TRUE(contains(page, ".narrow { display: none; }"));
    EXPECT_TRUE(
        contains(page, "@media (max-width: 40rem) { .wide { display: none; } .narrow { display: block; }"));
}

TEST(Report, canBeReadOnLightAndDarkScreens)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string page = pageOf(dir.path(), "design.hdf");
    const std::size_t light = page.find(":root {");
    const std::size_t dark = page.find("prefers-color-scheme: dark");
    for (const auto& colours : {coloursIn(page.substr(light, dark - light)),
                                coloursIn(page.substr(dark, page.find("body {") - dark))}) {
        for (const char* text : {"text", "soft", "good", "warn", "bad", "info"}) {
            EXPECT_GE(contrast(colours.at(text), colours.at("card")), 4.5) << text;
            EXPECT_GE(contrast(colours.at(text), colours.at("page")), 4.5) << text;
        }
        for (int number = 0; number <= 8; ++number) {
            EXPECT_GE(contrast(colours.at("on"), colours.at("c" + std::to_string(number))), 4.5) << number;
        }
    }
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
    EXPECT_TRUE(contains(json.out, "\"bytes\": " + std::to_string(readFile(dir / "r.html").size()) + ","));
    EXPECT_EQ(runCommand(dir.path(), {"report", "--json", "design.hdf"}).exitCode, 2);
}

TEST(Report, writesToWhatIsNoFileAsItIs)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string page = pageOf(dir.path(), "design.hdf");
    ASSERT_EQ(::mkfifo((dir / "pipe").c_str(), 0600), 0);
    const int pipe = ::open((dir / "pipe").c_str(), O_RDWR | O_NONBLOCK);
    EXPECT_EQ(runCommand(dir.path(), {"report", "design.hdf", "-o", "pipe"}).error, "");
    std::string bytes(page.size() + 1, '\0');
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(::read(pipe, bytes.data(), bytes.size()), 0)));
    ::close(pipe);
    EXPECT_TRUE(bytes == page);
    EXPECT_EQ(dir.list(), "design.hdf in pipe");
}

TEST(Report, replacesTheFileThatALinkLeadsTo)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    writeFile(dir / "old.html", "old");
    ASSERT_EQ(::chmod((dir / "old.html").c_str(), 0640), 0);
    ASSERT_EQ(::symlink("old.html", (dir / "link.html").c_str()), 0);
    EXPECT_EQ(runCommand(dir.path(), {"report", "design.hdf", "-o", "link.html"}).error, "");

    EXPECT_TRUE(readFile(dir / "old.html") == pageOf(dir.path(), "design.hdf"));
    struct stat status {};
    ASSERT_EQ(::stat((dir / "old.html").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
    EXPECT_EQ(dir.list(), "design.hdf in link.html old.html");
}

TEST(Report, saysWhyItCantBeWritten)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const auto errorOf = [&](const std::string& path) {
        return runCommand(dir.path(), {"report", "design.hdf", "-o", path}).error;
    };
    EXPECT_EQ(errorOf("gone/r.html"),
              "hwdef: error: gone/r.html: can't be written: No such file or directory\n");
    EXPECT_EQ(errorOf("in"), "hwdef: error: in: can't be written: Is a directory\n");
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
