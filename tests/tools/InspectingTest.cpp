// The verbs that judge and compare containers: what they say, and what they end with.
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/Container.h"
#include "support/TempDir.h"
#include "tools/Command.h"
#include "tools/Designs.h"

using support::readFile;
using support::TempDir;
using support::writeFile;
using tools::CommandRun;
using tools::contains;
using tools::runCommand;

namespace {

rapidjson::Document parsed(const std::string& json)
{
    rapidjson::Document document;
    document.Parse(json.c_str());
    EXPECT_FALSE(document.HasParseError()) << json;
    return document;
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
