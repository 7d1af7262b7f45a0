// Names that lead out of the directory a caller named, in each place where a name of an archive or a BOM
// decides what is written, read or removed.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <boost/filesystem.hpp>
#include <sstream>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

namespace fs = boost::filesystem;
using support::bomDocument;
using support::Messages;
using support::TempDir;
using support::ZipBuilder;

namespace {

/// A directory "in" that may be written to and read from, and beside it what must stay as it is:
/// "secret" and "outside/secret". In "in" stand links to what is outside.
class Sandbox {
public:
    explicit Sandbox(const std::string& target = "in") : in_(dir_ / target)
    {
        support::writeFile(dir_ / "secret", "secret");
        support::writeFile(dir_ / "outside/secret", "secret");
        support::writeFile(in_ + "/plain/there", "there");
        fs::create_symlink(dir_ / "outside", in_ + "/dirlink");
        fs::create_symlink(dir_ / "secret", in_ + "/filelink");
        fs::create_symlink("../outside/new", in_ + "/dangling");
        fs::create_symlink("circle", in_ + "/circle");
        fs::create_directories(in_ + "/drivers");
        fs::create_symlink(dir_ / "outside", in_ + "/drivers/dirlink");
        fs::create_symlink(dir_ / "secret", in_ + "/drivers/filelink");
    }

    const std::string& in() const { return in_; }
    std::string operator/(const std::string& name) const { return dir_ / name; }

    /// Everything beside "in" and the container, with content.
    std::string outside() const
    {
        std::string all;
        for (fs::recursive_directory_iterator at(dir_.path()), end; at != end; ++at) {
            const std::string path = at->path().string();
            if (path == in_ || path == dir_ / "design.hdf") {
                at.disable_recursion_pending();
            } else {
                all += path.substr(dir_.path().size()) +
                       (fs::is_regular_file(at->status()) ? ":" + support::readFile(path) : "") + "\n";
            }
        }
        return all;
    }

private:
    const TempDir dir_;
    const std::string in_;
};

const std::string untouched = "/outside\n/outside/secret:secret\n/secret:secret\n";

std::string sorted(const std::string& lines)
{
    std::vector<std::string> all;
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);) {
        all.push_back(line + "\n");
    }
    std::sort(all.begin(), all.end());
    std::string joined;
    for (const std::string& line : all) {
        joined += line;
    }
    return joined;
}

/// Names that an archive can hold and that no directory is to be left by.
const std::vector<std::string> badNames = {
    "../new",
    "../secret",
    "..",
    ".",
    "./",
    "/",
    "//",
    "a/../../new",
    "a/b/../../../new",
    "plain/../../secret",
    "./../secret",
    "a//../..//secret",
    "dirlink/secret",
    "dirlink/new",
    "dirlink/../secret",
    "dirlink",
    "filelink",
    "dangling",
    "circle/new",
    "drivers/dirlink/secret",
    "drivers/filelink",
    "drivers/../../secret",
    "drivers/../dirlink/secret",
    std::string("nul\0/../../secret", 17),
    std::string("../secret\0.txt", 14),
    std::string("\0", 1),
};

/// Names that look like other systems' ways out, which are plain names here.
const std::vector<std::string> oddNames = {
    "..\\secret", "C:\\secret", "C:/secret", "..\\..\\secret", "...",           "..secret",
    "a/..b/c",    "~",          "~/secret",  "$HOME/secret",   "%2e%2e/secret", "\xc0\xae\xc0\xae/secret",
    "a\nb",       "-rf",        "*",
};

/// An archive of a BOM and of members with all these names, each with the content "evil".
void writeEvil(const std::string& path, const std::string& bom, const std::vector<std::string>& names)
{
    ZipBuilder zip;
    zip.addStored("hwdef.xml", bom);
    for (const std::string& name : names) {
        zip.addStored(name, "evil");
    }
    zip.write(path);
}

std::vector<std::string> allNames(const Sandbox& box)
{
    std::vector<std::string> names = badNames;
    names.insert(names.end(), oddNames.begin(), oddNames.end());
    names.push_back(box / "secret");
    names.push_back("/" + box / "outside/new");
    return names;
}

/// Those of them that a BOM can carry; with others nothing is written at all.
std::vector<std::string> namesForBoms(const Sandbox& box)
{
    std::vector<std::string> names = allNames(box);
    std::erase_if(names, [](const std::string& name) {
        return name.find_first_of(std::string("\0\xc0", 2)) != std::string::npos;
    });
    return names;
}

const std::string emptyBom = bomDocument("Version=\"1\" Minor=\"0\"", "");

}  // namespace

TEST(Escape, isNotMadeByExportingFiles)
{
    const Sandbox box;
    const std::vector<std::string> names = namesForBoms(box);
    writeEvil(box / "design.hdf", emptyBom, names);
    const Messages messages;
    const auto def = HHDFHwDefUtils::getHDF(box / "design.hdf");
    ASSERT_NE(def, nullptr);
    for (const std::string& name : names) {
        def->addFileToBom(box / "unpacked" + "/" + name, HHDFHwDefFileTypes::BIT, box / "design.hdf");
    }

    EXPECT_TRUE(def->write(box.in()));
    EXPECT_EQ(sorted(box.outside()), untouched);
}

TEST(Escape, isNotMadeByExportingDrivers)
{
    const Sandbox box;
    const std::vector<std::string> names = namesForBoms(box);
    writeEvil(box / "design.hdf", emptyBom, names);
    const Messages messages;
    const auto def = HHDFHwDefUtils::getHDF(box / "design.hdf");
    ASSERT_NE(def, nullptr);
    for (const std::string& name : names) {
        def->addDriverFileToBom("x", box / "unpacked", name, box / "design.hdf");
    }

    EXPECT_TRUE(def->write(box.in()));
    EXPECT_EQ(sorted(box.outside()), untouched);
    for (const std::string odd : {"..\\secret", "C:\\secret", "C:/secret", "%2e%2e/secret"}) {
        EXPECT_EQ(support::readFile(box.in() + "/" + odd), "evil") << odd;
    }
}

TEST(Escape, isNotMadeByUnzippingDrivers)
{
    const Sandbox box;
    std::vector<std::string> members = allNames(box);
    for (const std::string& name : allNames(box)) {
        members.push_back("drivers/" + name);
    }
    writeEvil(box / "design.hdf", emptyBom, members);
    const Messages messages;
    const auto def = HHDFHwDefUtils::getHDF(box / "design.hdf");
    ASSERT_NE(def, nullptr);
    for (const std::string& name : members) {
        def->addDriverFileToBom("x", box / "unpacked", name, "");
    }

    EXPECT_TRUE(def->unzipDrivers(box.in()));
    EXPECT_EQ(sorted(box.outside()), untouched);
    EXPECT_EQ(support::readFile(box.in() + "/drivers/C:/secret"), "evil");
    for (const std::string& name : members) {
        if (name.starts_with("drivers/") && (name + "/").find("/../") != std::string::npos) {
            EXPECT_NE(messages.joined().find("\"" + name + "\" is not extracted: "), std::string::npos)
                << name;
        }
    }
}

TEST(Escape, isNotMadeByANameInTheBom)
{
    const Sandbox box;
    std::string elements;
    std::string driverFiles;
    for (const std::string& name : namesForBoms(box)) {
        elements += "<File Type=\"BIT\" Name=\"" + name + "\"/>";
        driverFiles += "<FILE PATH=\"" + name + "\"/>";
    }
    elements += "<DRIVERS><DRIVER IP_VLNV=\"x\">" + driverFiles + "</DRIVER></DRIVERS>\n";
    writeEvil(box / "design.hdf", bomDocument("Version=\"1\" Minor=\"2\" DIGEST=\"1\"", elements),
              allNames(box));
    const Messages messages;

    EXPECT_EQ(HHDFHwDefUtils::getHDF(box / "design.hdf", true), nullptr);
    const auto def = HHDFHwDefUtils::getHDF(box / "design.hdf");
    ASSERT_NE(def, nullptr);
    EXPECT_TRUE(def->write(box.in()));
    EXPECT_TRUE(def->unzipDrivers(box.in()));
    EXPECT_EQ(sorted(box.outside()), untouched);
}

TEST(Escape, isRefusedToDriverSourcesByAMessage)
{
    const Sandbox box("design");
    for (const std::string name : {"..", "../outside", "dirlink", "dirlink/secret", "filelink",
                                   "a/../../outside", "plain/../..", "./../outside", "drivers/dirlink"}) {
        writeEvil(
            box / "design.hdf",
            bomDocument("Version=\"1\" Minor=\"0\"", "<File Type=\"DRIVER_SRC\" Name=\"" + name + "\"/>\n"),
            {});
        const Messages messages;
        const auto def = HHDFHwDefUtils::getHDF(box / "design.hdf");
        ASSERT_NE(def, nullptr);
        HHDFHwDef::Texts files;

        EXPECT_EQ(def->getDriverFiles(files), 0U) << name;
        EXPECT_EQ(messages.joined(), "text: " + box / "design.hdf" + ": driver source \"" + name +
                                         "\" leads out of \"" + box.in() +
                                         "\", expected one inside; not read\n");
    }
}

TEST(Escape, isNotMadeByLinksBelowADriverSource)
{
    const Sandbox box("design");
    support::writeFile(box.in() + "/src/a.c", "a");
    fs::create_symlink(box / "secret", box.in() + "/src/b.c");
    fs::create_symlink(box / "outside", box.in() + "/src/c");
    fs::create_symlink("..", box.in() + "/src/up");
    writeEvil(box / "design.hdf",
              bomDocument("Version=\"1\" Minor=\"0\"", "<File Type=\"DRIVER_SRC\" Name=\"src\"/>\n"), {});
    const Messages messages;
    const auto def = HHDFHwDefUtils::getHDF(box / "design.hdf");
    ASSERT_NE(def, nullptr);
    HHDFHwDef::Texts files;

    EXPECT_EQ(def->getDriverFiles(files), 1U);
    EXPECT_EQ(files, (HHDFHwDef::Texts{{"a.c", box.in() + "/src/a.c"}}));
    EXPECT_NE(messages.joined().find("b.c\" leads out of"), std::string::npos) << messages.joined();
}

TEST(Escape, isNotMadeByMembersThatSayTheyAreLinks)
{
    const Sandbox box;
    ZipBuilder zip;
    zip.addStored("hwdef.xml", bomDocument("Version=\"1\" Minor=\"0\"",
                                           "<File Type=\"BIT\" Name=\"link\"/><DRIVERS><DRIVER "
                                           "IP_VLNV=\"x\"><F PATH=\"drivers/link\"/><F "
                                           "PATH=\"drivers/link/new\"/></DRIVER></DRIVERS>\n"));
    for (const char* name : {"link", "drivers/link", "drivers/link/new"}) {
        zip.addStored(name, box / "outside");
    }
    std::string bytes = zip.build();
    // Each directory record says: made on Unix, a link.
    for (std::size_t at = bytes.find("PK\x01\x02"); at != std::string::npos;
         at = bytes.find("PK\x01\x02", at + 1)) {
        bytes.replace(at + 4, 2, support::little(0x0314, 2))
            .replace(at + 38, 4, support::little(0xa1ff0000, 4));
    }
    support::writeFile(box / "design.hdf", bytes);
    const Messages messages;
    const auto def = HHDFHwDefUtils::getHDF(box / "design.hdf");
    ASSERT_NE(def, nullptr);

    EXPECT_TRUE(def->write(box.in()));
    EXPECT_TRUE(def->unzipDrivers(box.in()));
    EXPECT_TRUE(HHDFHwDefUtils::writeFileFromHDFToDir("link", box / "design.hdf", "copied", box.in()));
    EXPECT_EQ(sorted(box.outside()), untouched);
    for (const char* name : {"/link", "/drivers/link", "/copied"}) {
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(box.in() + name))) << name;
        EXPECT_EQ(support::readFile(box.in() + name), box / "outside") << name;
    }
}

TEST(Escape, isNotMadeByReadingAMemberOfAnyName)
{
    const Sandbox box;
    writeEvil(box / "design.hdf", emptyBom, {});
    const Messages messages;
    // What isn't a member is not looked for on disk.
    for (const std::string& name : allNames(box)) {
        EXPECT_EQ(HHDFHwDefUtils::getFileBufferFromHDF(name, box / "design.hdf"), "") << name;
        EXPECT_FALSE(HHDFHwDefUtils::writeFileFromHDF(box.in() + "/copy", name, box / "design.hdf")) << name;
    }
    EXPECT_FALSE(support::exists(box.in() + "/copy"));
    EXPECT_EQ(sorted(box.outside()), untouched);
}

TEST(Escape, isNotMadeByPackagingAndMerging)
{
    const Sandbox box;
    const std::vector<std::string> names = namesForBoms(box);
    writeEvil(box / "design.hdf", emptyBom, names);
    const Messages messages;
    {
        const auto def = HHDFHwDefUtils::getHDF(box / "design.hdf");
        ASSERT_NE(def, nullptr);
        for (const std::string& name : names) {
            def->addFileToBom("/nowhere/" + name, HHDFHwDefFileTypes::BIT, box / "design.hdf");
            def->addDriverFileToBom("x", "/nowhere", name, box / "design.hdf");
        }
        const auto merged = HHDFHwDefUtils::getMrgdHDF({def.get(), def.get()}, box.in() + "/merged.hdf");
        ASSERT_NE(merged, nullptr);
        EXPECT_TRUE(merged->write(true));
        EXPECT_TRUE(def->write(true));
        EXPECT_TRUE(def->write(box.in() + "/exported.dsa"));
    }
    EXPECT_EQ(sorted(box.outside()), untouched);
}
