// Containers on paths, and members under names, that are long or of uncommon characters.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/BomDocument.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"

using support::Members;
using support::Messages;
using support::TempDir;
using Utils = HHDFHwDefUtils;

namespace {

constexpr std::size_t longestPath = PATH_MAX - 1;  // the limit counts the null character behind it

/// A path of that many characters below `dir` for a file "d.hdf", whose directories exist as far as the
/// system has room for them.
std::string pathOfLength(const TempDir& dir, std::size_t length)
{
    std::string path = dir.path();
    const std::string name = "/d.hdf";
    while (path.size() + name.size() < length) {
        std::size_t more = length - path.size() - name.size() - 1;
        if (more > 200) {
            more = more > 210 ? 200 : 100;  // leaves room for one more directory
        }
        path += "/" + std::string(more, 'd');
    }
    return path + name;
}

/// Makes the directories of the path from one to the next, as a path that is too long needs it.
void makeDirectoriesOf(const std::string& path)
{
    const std::filesystem::path here = std::filesystem::current_path();
    std::filesystem::current_path("/");
    const std::filesystem::path parent = std::filesystem::path(path).parent_path().relative_path();
    for (const std::filesystem::path& component : parent) {
        static_cast<void>(::mkdir(component.c_str(), 0755));
        ASSERT_EQ(::chdir(component.c_str()), 0);
    }
    std::filesystem::current_path(here);
}

/// Creates, opens, adds to, reads and rewrites a container at the path.
void goThroughALife(const std::string& path, const TempDir& dir)
{
    support::writeFile(dir / "in/a.bit", "content of a");
    support::writeFile(dir / "in/x.mdd", "driver");
    const auto created = Utils::createHDF(path);
    ASSERT_NE(created, nullptr);
    created->setMajorVersion(1);
    created->setMinorVersion(3);
    created->addFileToBom(dir / "in/a.bit", HHDFHwDefFileTypes::BIT);
    created->addDriverFileToBom("ip", dir / "in", "x.mdd", "");
    ASSERT_TRUE(created->write(true));

    const auto def = Utils::getHDF(path, true);
    ASSERT_NE(def, nullptr);
    EXPECT_EQ(support::entriesOf(*def).find(path.substr(0, path.rfind('.')) + "/a.bit"), 0U);
    EXPECT_TRUE(Utils::writeFileToHDF(dir / "in/a.bit", "b", path));
    EXPECT_EQ(Utils::getFileBufferFromHDF("b", path), "content of a");
    EXPECT_TRUE(def->unzipDrivers(dir / "out"));
    EXPECT_EQ(support::readFile(dir / "out/drivers/x.mdd"), "driver");
    EXPECT_TRUE(def->write(true));
    EXPECT_EQ(Utils::getFileBufferFromHDF("a.bit", path), "content of a");
}

}  // namespace

TEST(Places, mayHaveAnyCharactersInTheirPaths)
{
    for (const char* name : {"with a space", "with\na newline", "gr\xc3\xbc\xc3\x9f\xe4\xbd\xa0",
                             "quote \" ' & < > %s", "-", "*?[]{}$~", " "}) {
        SCOPED_TRACE(name);
        const TempDir dir;
        const Messages messages;
        const std::string path = dir / (std::string(name) + "/" + name + ".hdf");
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        goThroughALife(path, dir);
        EXPECT_EQ(messages.joined(), "");
        EXPECT_EQ(support::readArchive(path).size(), 3U);
    }
}

TEST(Places, thatNoXmlDocumentCanNameAreRefusedByPackagingAlone)
{
    const TempDir dir;
    support::writeFile(dir / "a", "content");
    const std::string path = dir / "not UTF-8 \xff.hdf";
    const auto def = Utils::createHDF(path);
    def->addFileToBom(dir / "a", HHDFHwDefFileTypes::BIT);
    const Messages messages;
    EXPECT_FALSE(def->write(true));
    EXPECT_NE(messages.joined().find("0xFF begins no valid UTF-8 sequence"), std::string::npos);
    EXPECT_FALSE(support::exists(path));

    support::writeArchive(dir / "d.hdf", {{"hwdef.xml", support::bomOfFiles("0", {"a"})}, {"a", "x"}});
    ASSERT_EQ(::rename((dir / "d.hdf").c_str(), path.c_str()), 0);
    EXPECT_NE(Utils::getHDF(path), nullptr);
    EXPECT_TRUE(Utils::writeFileToHDF(dir / "a", "a", path));
    EXPECT_EQ(Utils::getFileBufferFromHDF("a", path), "content");
}

TEST(Places, mayBeUnderAnExportDirectoryOfAnyCharacters)
{
    const TempDir dir;
    support::writeArchive(dir / "d.hdf", {{"hwdef.xml", support::bomOfFiles("0", {"a"})}, {"a", "x"}});
    const auto def = Utils::getHDF(dir / "d.hdf");
    const std::string out = dir / "out of\nthe \xc3\xbc";
    std::filesystem::create_directories(out);
    EXPECT_TRUE(def->write(out));
    EXPECT_EQ(support::readFile(out + "/a"), "x");
}

TEST(Places, areReadAtTheLongestPathThereIs)
{
    const TempDir dir;
    const std::string path = pathOfLength(dir, longestPath);
    ASSERT_EQ(path.size(), 4095U);
    ASSERT_NO_FATAL_FAILURE(makeDirectoriesOf(path));
    support::writeArchive(dir / "d.hdf", {{"hwdef.xml", support::bomOfFiles("0", {"a"})}, {"a", "x"}});
    ASSERT_EQ(::rename((dir / "d.hdf").c_str(), path.c_str()), 0);

    const Messages messages;
    EXPECT_NE(Utils::getHDF(path), nullptr);
    EXPECT_EQ(Utils::getFileBufferFromHDF("a", path), "x");
    support::writeFile(dir / "b", "content of b");
    EXPECT_TRUE(Utils::writeFileToHDF(dir / "b", "b", path));
    EXPECT_EQ(Utils::getFileBufferFromHDF("b", path), "content of b");
    EXPECT_EQ(messages.joined(), "");
}

TEST(Places, areWrittenWhereThereIsRoomForATemporaryName)
{
    const TempDir dir;
    const std::string path = pathOfLength(dir, longestPath - 40);
    ASSERT_NO_FATAL_FAILURE(makeDirectoriesOf(path));
    goThroughALife(path, dir);
}

TEST(Places, withoutRoomForATemporaryNameAreRefusedWithTheirReason)
{
    const TempDir dir;
    const std::string path = pathOfLength(dir, longestPath);
    ASSERT_NO_FATAL_FAILURE(makeDirectoriesOf(path));
    const Messages messages;
    EXPECT_FALSE(Utils::writeHDF(path, {}, true, {}, {}));
    EXPECT_NE(messages.joined().find("File name too long"), std::string::npos) << messages.joined();
    EXPECT_FALSE(support::exists(path));
}

TEST(Places, beyondTheLongestPathAreRefusedWithAMessage)
{
    for (const std::size_t length : {longestPath + 1, longestPath + 2, longestPath + 5000}) {
        SCOPED_TRACE(length);
        const TempDir dir;
        support::writeFile(dir / "a", "x");
        const std::string path = pathOfLength(dir, length);
        ASSERT_EQ(path.size(), length);
        Messages messages;
        EXPECT_EQ(Utils::getHDF(path), nullptr);
        EXPECT_EQ(messages.joined(), "hdf @64-5@%s 20000000 [" + path + "]\n");
        messages.clear();
        EXPECT_FALSE(Utils::writeHDF(path, {}, true, {}, {}));
        EXPECT_NE(messages.joined(), "");
        messages.clear();
        EXPECT_FALSE(Utils::writeFileToHDF(dir / "a", "a", path));
        EXPECT_EQ(Utils::getFileBufferFromHDF("a", path), "");
        EXPECT_NE(messages.joined(), "");
        EXPECT_FALSE(Utils::writeFileFromHDF(dir / "b", "a", path));
    }
}

TEST(Places, inAnArchiveMayHaveNamesOf65535Bytes)
{
    const TempDir dir;
    const std::string name = std::string(32767, 'n') + "/" + std::string(32767, 'm');
    ASSERT_EQ(name.size(), 65535U);
    support::writeFile(dir / "a", "content");
    ASSERT_TRUE(Utils::writeFileToHDF(dir / "a", name, dir / "d.hdf"));
    ASSERT_TRUE(Utils::writeFileToHDF(dir / "a", "short", dir / "d.hdf"));
    EXPECT_EQ(support::readArchive(dir / "d.hdf"), (Members{{name, "content"}, {"short", "content"}}));
    EXPECT_EQ(Utils::getFileBufferFromHDF(name, dir / "d.hdf"), "content");
    EXPECT_TRUE(Utils::writeFileFromHDF(dir / "out", name, dir / "d.hdf"));
    EXPECT_EQ(support::readFile(dir / "out"), "content");
    EXPECT_TRUE(Utils::writeFileFromHDFToHDF(name, dir / "d.hdf", name, dir / "e.hdf"));
    EXPECT_EQ(support::namesIn(dir / "e.hdf"), name);
}

TEST(Places, inAnArchiveHaveNoLongerNames)
{
    const TempDir dir;
    support::writeFile(dir / "a", "content");
    EXPECT_FALSE(Utils::writeFileToHDF(dir / "a", std::string(65536, 'n'), dir / "d.hdf"));
    EXPECT_FALSE(support::exists(dir / "d.hdf"));
}

TEST(Places, ofMembersThatNoFileSystemHasAreToldOf)
{
    const TempDir dir;
    const std::string name(65535, 'n');
    support::writeArchive(dir / "d.hdf",
                          {{"hwdef.xml", support::bomOfFiles("0", {name})}, {name, "content"}});
    const auto def = Utils::getHDF(dir / "d.hdf");
    ASSERT_NE(def, nullptr);
    EXPECT_NE(support::entriesOf(*def).find(name), std::string::npos);
    std::filesystem::create_directories(dir / "out");
    const Messages messages;
    EXPECT_TRUE(def->write(dir / "out"));
    EXPECT_NE(messages.joined().find("File name too long"), std::string::npos);
    EXPECT_TRUE(def->write(true));
    EXPECT_EQ(support::memberOf(dir / "d.hdf", name), "content");
}
