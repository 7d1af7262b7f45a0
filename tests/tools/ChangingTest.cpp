// The verbs that make and change containers: what they write, and what they end with.
#include <gtest/gtest.h>

#include <cstdlib>

#include "hwdef/hwdef.h"
#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
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
using tools::expectDone;
using tools::expectError;
using tools::runCommand;

namespace {

/// Expects that what explode writes of a container builds to the same bytes.
void expectSameAgain(const TempDir& dir, const std::string& file)
{
    expectDone(runCommand(dir.path(), {"explode", file, "parts"}));
    expectDone(runCommand(dir.path(), {"build", "-o", "again.hdf", "parts/recipe.json"}));
    EXPECT_EQ(readFile(dir / "again.hdf"), readFile(dir / file));
}

/// The members but the BOM with their bytes as they are compressed.
std::string packedMembers(const std::string& path)
{
    const HHDFHwDefArchive archive(path);
    std::string text;
    for (const auto& member : archive.members()) {
        if (!member.name.ends_with("def.xml")) {
            text += member.name + " " + std::to_string(member.packedBytes) + " " +
                    std::to_string(member.crc) + "\n";
        }
    }
    return text;
}

}  // namespace

TEST(Build, packsFilesWithTypesPropertiesAndAttributes)
{
    const TempDir dir;
    writeFile(dir / "top.hwh", "handoff");
    writeFile(dir / "top.bit", "bits");

    const CommandRun run = runCommand(
        dir.path(), {"build", "-o", "out.hdf", "top.hwh:HW_HANDOFF", "top.bit:bit", "-s", "part=p-1", "-s",
                     "mode=post", "-s", "attribute.flow=fast", "-f", "top.bit:compressed=true"});

    expectDone(run);
    EXPECT_TRUE(run.out.starts_with("out.hdf: 3 members, ")) << run.out;
    EXPECT_EQ(support::namesIn(dir / "out.hdf"), "sysdef.xml top.hwh top.bit");
    const auto def = HHDFHwDefUtils::getHDF(dir / "out.hdf");
    ASSERT_NE(def, nullptr);
    EXPECT_EQ(def->getPart(), "p-1");
    EXPECT_EQ(def->getBomFileType("top.bit"), "BIT");
    std::string name = "top.bit";
    EXPECT_EQ(def->getBomFile(name)->getFileAttrs(), (HHDFHwDef::Texts{{"compressed", "true"}}));
    HHDFHwDef::Texts attributes;
    def->getWDIAttrs(attributes);
    EXPECT_EQ(attributes, (HHDFHwDef::Texts{{"flow", "fast"}}));
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(dir / "out.hdf")), HUTZip::INTACT);
}

TEST(Build, packsTheSameBytesAsTheLibrary)
{
    const TempDir dir;
    writeFile(dir / "top.bit", support::textBytes(5000, 1));
    const auto def = HHDFHwDefUtils::createHDF(dir / "out.hdf");
    def->addFileToBom(dir / "top.bit", HHDFHwDefFileTypes::BIT);
    def->write(true);
    const std::string bytes = readFile(dir / "out.hdf");
    expectDone(runCommand(dir.path(), {"build", "-o", "out.hdf", "top.bit:BIT"}));
    EXPECT_EQ(readFile(dir / "out.hdf"), bytes);
}

TEST(Build, addsADriverOfADirectory)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    expectDone(runCommand(dir.path(),
                          {"build", "-o", "out.hdf", "in/top.bit:BIT", "-d", "vendor:ip:gpio=in/gpio_v1"}));
    EXPECT_EQ(support::namesIn(dir / "out.hdf"),
              "hwdef.xml top.bit drivers/gpio_v1/data/gpio.mdd drivers/gpio_v1/src/gpio.c");
    const auto def = HHDFHwDefUtils::getHDF(dir / "out.hdf");
    EXPECT_EQ(def->getDriverFilesMap().at("vendor:ip:gpio").size(), 2U);
}

TEST(Build, losesNoFileOfTwoDriversWithOneDirectoryName)
{
    const TempDir dir;
    writeFile(dir / "top.bit", "bits");
    for (const char* const parent : {"d1", "d2"}) {
        writeFile(dir / parent + "/gpio/gpio.mdd", parent);
    }
    expectError(runCommand(dir.path(), {"build", "-o", "design.hdf", "top.bit:BIT", "--driver", "one=d1/gpio",
                                        "--driver", "two=d2/gpio"}),
                "\"drivers/gpio/gpio.mdd\" is the name of two members");
    EXPECT_EQ(dir.list(), "d1 d2 top.bit");
    expectDone(runCommand(dir.path(), {"build", "-o", "design.hdf", "top.bit:BIT", "--driver", "one=d1/gpio",
                                       "--driver", "two=d1/gpio"}));
}

TEST(Build, warnsOfADriverWithoutDescription)
{
    const TempDir dir;
    writeFile(dir / "top.bit", "bits");
    writeFile(dir / "gpio/gpio.c", "source");
    const CommandRun run =
        runCommand(dir.path(), {"build", "-o", "out.hdf", "top.bit:BIT", "-d", "gpio=gpio"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.error,
              "hwdef: warning: the driver \"gpio\" has no file with the extension \".mdd\"; at least one is "
              "expected "
              "[@64-24@]\n");
    EXPECT_EQ(
        runCommand(dir.path(), {"build", "-q", "-o", "out.hdf", "top.bit:BIT", "-d", "gpio=gpio"}).error, "");
}

TEST(Build, keepsTheOldContainerWhenItFails)
{
    const TempDir dir;
    writeFile(dir / "top.bit", "bits");
    writeFile(dir / "out.hdf", "old");
    const auto build = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"build", "-o", "out.hdf"});
        return runCommand(dir.path(), words);
    };
    expectError(build({"gone.bit:BIT"}), "gone.bit: there is no such file");
    expectError(build({".:BIT"}), ".: this is a directory, not a file to pack");
    expectError(build({"top.bit"}), "\"top.bit\" has no type; a file is given as PATH:TYPE");
    expectError(build({"top.bit:"}), "\"top.bit:\" has no type; a file is given as PATH:TYPE");
    expectError(build({":BIT"}), "\":BIT\" has no path; a file is given as PATH:TYPE");
    expectError(build({"top.bit:BIT", "-d", "x"}), "\"x\" is not of the form NAME=DIR");
    EXPECT_TRUE(contains(build({"top.bit:NOTHING_LIKE_IT"}).error, "; the types are HW_HANDOFF, "));
    expectError(build({"top.bit:BITS"}), "there is no file type \"BITS\"; did you mean \"BIT\"?");
    expectError(build({"top.bit:BIT", "./top.bit:BIT"}), "\"top.bit\" is the name of two members");
    expectError(build({"top.bit:BIT", "-s", "part"}), "\"part\" is not of the form key=value");
    expectError(build({"top.bit:BIT", "-s", "mode=mid"}),
                "mode can't be \"mid\"; it is Pre-Synthesis (pre), Post-Synthesis (post) or nothing");
    expectError(build({"top.bit:BIT", "-f", "top.bti:a=b"}),
                "\"top.bti:a=b\" names no file of the container; did you mean \"top.bit\"?");
    expectError(runCommand(dir.path(), {"build", "top.bit:BIT"}),
                "build: the container to write is missing: -o OUT");
    EXPECT_EQ(readFile(dir / "out.hdf"), "old");
    EXPECT_EQ(dir.list(), "out.hdf top.bit");
}

TEST(Build, leavesWhatItPacksAlone)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    expectDone(runCommand(dir.path(), {"explode", "design.hdf", "parts"}));
    const auto expectKept = [&](const std::string& path, std::vector<std::string> inputs) {
        const std::string before = readFile(dir / path);
        inputs.insert(inputs.begin(), {"build", "-o", path});
        expectError(runCommand(dir.path(), inputs), path + ": is one of the files to pack");
        EXPECT_EQ(readFile(dir / path), before);
    };
    expectKept("in/top.bit", {"in/../in/top.bit:BIT"});
    expectKept("in/gpio_v1/src/gpio.c", {"in/top.bit:BIT", "--driver", "gpio=in/gpio_v1"});
    expectKept("parts/recipe.json", {"parts/recipe.json"});
    expectKept("parts/top.bit", {"parts/recipe.json"});
    expectKept("parts/drivers/gpio_v1/src/gpio.c", {"parts/recipe.json"});
}

TEST(Build, saysWhereARecipeIsWrong)
{
    const TempDir dir;
    const auto build = [&](const std::string& recipe) {
        writeFile(dir / "r.json", recipe);
        return runCommand(dir.path(), {"build", "-o", "out.hdf", "r.json"});
    };
    expectError(build("{\"recipe\": 1,"), "r.json: byte 13: Missing a name for object member.");
    expectError(build("{}"), "r.json: \"recipe\" is missing");
    expectError(build("{\"recipe\": 2}"), "r.json: \"recipe\": only recipes of version 1 are known");
    expectError(build("{\"recipe\": 1, \"files\": [{\"path\": \"x\"}]}"),
                "r.json: \"files\"[0]: \"type\" is missing");
    expectError(build("{\"recipe\": 1, \"file\": []}"),
                "r.json: there is no key \"file\"; did you mean \"files\"?");
    expectError(build("{\"recipe\": 1, \"files\": [{\"path\": \"x\", \"type\": \"BIT\", \"rol\": \"\"}]}"),
                "r.json: \"files\"[0]: there is no key \"rol\"; did you mean \"role\"?");
    const std::string file = "{\"path\": \"x\", \"type\": \"HW_HANDOFF\"";
    expectError(
        build("{\"recipe\": 1, \"files\": [" + file + ", \"role\": \"DEFAULT_BDX\"}]}"),
        "r.json: \"files\"[0]: \"role\": there is no role \"DEFAULT_BDX\"; did you mean \"DEFAULT_BD\"?");
    expectError(build("{\"recipe\": 1, \"files\": [], \"files\": []}"),
                "r.json: the key \"files\" stands here twice");
    expectError(build("{\"recipe\": 1, \"partitions\": [{\"path\": \"t\"}]}"),
                "r.json: \"partitions\"[0]: a partition has at least one of \"files\"");
    expectError(build("{\"recipe\": 1, \"partitions\": [{\"path\": \"t\", \"defaultModule\": \"x\", "
                      "\"files\": [{\"module\": \"y\"}]}]}"),
                "r.json: \"partitions\"[0]: \"defaultModule\" is the module of none of \"files\"");
    expectError(build("{\"recipe\": 1, \"configurations\": [{\"name\": \"c\"}]}"),
                "r.json: \"configurations\"[0]: a configuration has at least one of \"cells\"");
    expectError(build("{\"recipe\": 1, \"stacked\": true}"),
                "r.json: \"stacked\" is told together with \"dies\"");
    expectError(build("{\"recipe\": 1, \"bom\": \"hwdef.xml\", \"files\": []}"),
                "r.json: \"files\" has no place beside \"bom\", which tells all of it");
    expectError(build("{\"recipe\": 1, \"bom\": \"a.bit\"}"),
                "\"a.bit\" can't be a bill of materials; its name is \"hwdef.xml\" or \"sysdef.xml\"");
    expectError(build("{\"recipe\": 1, \"members\": [{\"name\": \"r.json\", \"path\": \"r.json\"}]}"),
                "the bill of materials, \"hwdef.xml\", is missing among the members");
    expectError(runCommand(dir.path(), {"build", "-o", "o.hdf", "gone/recipe.json"}),
                "gone/recipe.json: there is no such file");
    expectError(build("{\"recipe\": 1, \"properties\": {\"part\": 1}}"),
                "r.json: \"properties\": \"part\": a text is expected");
    EXPECT_EQ(dir.list(), "r.json");
}

TEST(Build, packsWhatARecipesOrderForgets)
{
    const TempDir dir;
    writeFile(dir / "a.bit", "a");
    writeFile(dir / "gpio/g.mdd", "driver");
    const std::string order =
        "\"members\": [{\"name\": \"a.bit\", \"path\": \"a.bit\"}, {\"name\": \"hwdef.xml\"}]";
    const std::string files =
        "\"files\": [{\"path\": \"a.bit\", \"type\": \"BIT\"}, {\"path\": \"gone\", \"type\": \"BIT\"}]";
    writeFile(dir / "r.json", "{\"recipe\": 1, " + files + ", " + order + "}");
    const CommandRun run =
        runCommand(dir.path(), {"build", "-o", "a.hdf", "r.json", "--driver", "gpio=gpio"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.error, "hwdef: \"gone\" is listed and not packed: there is no file gone\n");
    EXPECT_EQ(support::namesIn(dir / "a.hdf"), "a.bit hwdef.xml drivers/gpio/g.mdd");
    writeFile(dir / "r.json",
              "{\"recipe\": 1, \"files\": [{\"path\": \"gpio/a.bit\", \"type\": \"BIT\"}], " + order + "}");
    expectError(runCommand(dir.path(), {"build", "-o", "a.hdf", "r.json"}),
                "\"a.bit\" is the name of two members");
}

TEST(Build, makesNoEntryOfDriverSources)
{
    const TempDir dir;
    writeFile(dir / "a.bit", "a");
    const std::string text = "no file has the type DRIVER_SRC: drivers are added by \"hwdef build --driver\"";
    expectError(runCommand(dir.path(), {"build", "-o", "a.hdf", "a.bit:DRIVER_SRC"}), text);
    writeFile(dir / "r.json",
              "{\"recipe\": 1, \"files\": [{\"path\": \"a.bit\", \"type\": \"DRIVER_SRC\"}]}");
    expectError(runCommand(dir.path(), {"build", "-o", "a.hdf", "r.json"}), text);
    writeFile(dir / "sysdef.xml", "a");
    expectError(runCommand(dir.path(), {"build", "-o", "a.hdf", "sysdef.xml:BIT"}),
                "\"sysdef.xml\" is the name of a bill of materials");
}

TEST(Explode, givesAListWithOneNameTwiceAgain)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    writeFile(dir / "copy.hdf", readFile(dir / "design.hdf"));
    EXPECT_EQ(runCommand(dir.path(), {"merge", "design.hdf", "copy.hdf", "-o", "all.hdf"}).exitCode, 0);
    EXPECT_EQ(runCommand(dir.path(), {"explode", "all.hdf", "parts"}).exitCode, 0);
    expectDone(runCommand(dir.path(), {"build", "-o", "again.hdf", "parts/recipe.json"}));
    EXPECT_EQ(support::readArchive(dir / "again.hdf"), support::readArchive(dir / "all.hdf"));
}

TEST(Explode, givesTheSameBytesAgain)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    expectSameAgain(dir, "design.hdf");
    EXPECT_EQ(readFile(dir / "parts/top.bit"), readFile(dir / "in/top.bit"));
    EXPECT_FALSE(support::exists(dir / "parts/sysdef.xml"));
    EXPECT_TRUE(contains(readFile(dir / "parts/recipe.json"), "\"part\": \"part-1\""));
}

TEST(Explode, givesTheSameBytesOfPartitionsAgain)
{
    const TempDir dir;
    tools::writePartial(dir.path());
    expectSameAgain(dir, "partial.hdf");
    EXPECT_FALSE(support::exists(dir / "parts/hwdef.xml"));
}

TEST(Explode, givesTheSameBytesOfAnotherTimeOrderAndNoDigestAgain)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const HHDFHwDefArchive present(dir / "design.hdf");
    ::setenv("SOURCE_DATE_EPOCH", "1700000000", 1);  // of this test's process only, and of the command
    expectDone(runCommand(dir.path(), {"build", "-o", "timed.hdf", "in/top.bit:BIT"}));
    ::unsetenv("SOURCE_DATE_EPOCH");
    EXPECT_EQ(HHDFHwDefArchive(dir / "timed.hdf").members().front().modified, 1700000000);
    expectSameAgain(dir, "timed.hdf");

    const TempDir other;
    std::vector<HHDFHwDefArchive::Part> parts;
    for (const auto& member : present.members()) {
        parts.insert(parts.begin(), {member.name, ""});
    }
    HHDFHwDefArchive::write(other / "turned.hdf", parts, &present, "a comment", false);
    expectSameAgain(other, "turned.hdf");
}

TEST(Explode, givesTheSameBytesOfAMergeAgain)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    writeFile(dir / "new/top.bit", support::randomBytes(300000, 4));
    writeFile(dir / "new/more.bit", "more");
    expectDone(runCommand(dir.path(), {"build", "-o", "overlay.hdf", "new/more.bit:BIT", "new/top.bit:BIT"}));
    expectDone(runCommand(dir.path(), {"merge", "-q", "design.hdf", "overlay.hdf", "-o", "all.hdf"}));
    expectSameAgain(dir, "all.hdf");
}

TEST(Explode, takesMembersApartWhoseNamesAreDirectoriesOfOthers)
{
    const TempDir dir;
    writeFile(dir / "drivers", "no directory");
    writeFile(dir / "tree/gpio/g.mdd", "driver");
    expectDone(runCommand(dir.path(), {"build", "-o", "a.hdf", "drivers:BIT", "--driver", "gpio=tree/gpio"}));
    expectSameAgain(dir, "a.hdf");
    EXPECT_EQ(readFile(dir / "parts/_/0/drivers"), "no directory");
}

TEST(Explode, takesListedFilesApartThatAreMissing)
{
    const TempDir dir;
    writeFile(dir / "drivers", "no directory");
    writeFile(dir / "tree/gpio/g.mdd", "driver");
    expectDone(runCommand(dir.path(), {"build", "-o", "a.hdf", "drivers:BIT", "--driver", "gpio=tree/gpio"}));
    auto members = support::readArchive(dir / "a.hdf");
    std::erase_if(members, [](const auto& one) { return one.first == "drivers"; });
    members.emplace_back("recipe.json/x", "below the recipe's name");
    support::writeArchive(dir / "b.hdf", members);
    EXPECT_EQ(runCommand(dir.path(), {"explode", "-q", "b.hdf", "parts"}).exitCode, 0);
    EXPECT_EQ(runCommand(dir.path(), {"build", "-q", "-o", "again.hdf", "parts/recipe.json"}).exitCode, 0);
    EXPECT_EQ(support::readArchive(dir / "again.hdf"), members);
}

TEST(Explode, refusesACommentThatNoRecipeCanHold)
{
    const TempDir dir;
    writeFile(dir / "a.bit", "a");
    expectDone(runCommand(dir.path(), {"build", "-o", "a.hdf", "a.bit:BIT", "--no-digest"}));
    const HHDFHwDefArchive present(dir / "a.hdf");
    HHDFHwDefArchive::write(dir / "a.hdf", {{"hwdef.xml", ""}, {"a.bit", ""}}, &present, "caf\xe9", false);
    expectError(runCommand(dir.path(), {"explode", "a.hdf", "parts"}),
                "a.hdf: the archive's comment isn't UTF-8, and no recipe can hold it");
}

TEST(Explode, keepsABomOfOtherHands)
{
    const TempDir dir;
    tools::writeOther(dir.path());
    const CommandRun run = runCommand(dir.path(), {"explode", "other.hdf", "parts"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(contains(readFile(dir / "parts/hwdef.xml"), "<!-- by hand -->"));
    expectDone(runCommand(dir.path(), {"build", "-o", "again.hdf", "parts/recipe.json"}));
    EXPECT_EQ(support::readArchive(dir / "again.hdf"), support::readArchive(dir / "other.hdf"));
    expectError(runCommand(dir.path(), {"build", "-o", "again.hdf", "parts/recipe.json", "-s", "part=x"}),
                "the recipe takes its bill of materials as it is; nothing can be set in it");
}

TEST(Explode, takesAnArchiveWithDirectoriesApart)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"hwdef.xml", support::bomOfFiles("0", {"b.bit"})},
                                          {"deep/", ""},
                                          {"deep/notes.txt", "notes"},
                                          {"b.bit", "bits"}});
    EXPECT_EQ(runCommand(dir.path(), {"explode", "a.hdf", "parts"}).exitCode, 0);
    expectDone(runCommand(dir.path(), {"build", "-o", "again.hdf", "parts/recipe.json"}));
    EXPECT_EQ(support::namesIn(dir / "again.hdf"), "hwdef.xml deep/notes.txt b.bit");
}

TEST(Explode, saysWhenTheBytesDiffer)
{
    const TempDir dir;
    writeFile(dir / "top.bit", std::string(5000, 'x'));
    expectDone(runCommand(dir.path(), {"build", "-o", "a.hdf", "top.bit:BIT"}));
    support::writeArchive(dir / "stored.hdf", support::readArchive(dir / "a.hdf"));
    const CommandRun run = runCommand(dir.path(), {"explode", "stored.hdf", "parts"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.error,
              "hwdef: the recipe gives a container of the same files, but of other bytes: stored.hdf was "
              "packed in another way\n");
    EXPECT_EQ(runCommand(dir.path(), {"explode", "-q", "stored.hdf", "quiet"}).error, "");
}

TEST(Explode, givesWayToAMemberOfTheRecipesName)
{
    const TempDir dir;
    writeFile(dir / "recipe.json", "not the recipe");
    expectDone(runCommand(dir.path(), {"build", "-o", "a.hdf", "recipe.json:UNKNOWN"}));
    expectSameAgain(dir, "a.hdf");
    EXPECT_EQ(readFile(dir / "parts/_/recipe.json"), "not the recipe");
}

TEST(Explode, losesNoMemberAroundTheRecipesName)
{
    const TempDir dir;
    writeFile(dir / "recipe.json", "not the recipe");
    expectDone(runCommand(dir.path(), {"build", "-o", "a.hdf", "recipe.json:UNKNOWN"}));
    const HHDFHwDefArchive present(dir / "a.hdf");
    HHDFHwDefArchive::write(
        dir / "b.hdf",
        {{"hwdef.xml", ""}, {"recipe.json", ""}, {"_/recipe.json", dir / "a.hdf"}, {"__", dir / "a.hdf"}},
        &present, "", true);
    expectSameAgain(dir, "b.hdf");
    EXPECT_EQ(readFile(dir / "parts/___/recipe.json"), "not the recipe");
}

TEST(Explode, refusesNamesThatNoRecipeCanHold)
{
    const TempDir dir;
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", support::bomOfFiles("0", {"b.bit"}));
    zip.addStored("b.bit", "");
    zip.addStored("\xff", "");
    zip.write(dir / "a.hdf");
    expectError(runCommand(dir.path(), {"explode", "a.hdf", "parts"}),
                "a.hdf: the name of member \"\\xff\" isn't UTF-8, and no recipe can hold it");
    EXPECT_FALSE(support::exists(dir / "parts"));
}

TEST(Explode, leavesADirectoryAloneThatIsNotEmpty)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    writeFile(dir / "parts/mine", "mine");
    expectError(runCommand(dir.path(), {"explode", "design.hdf", "parts"}),
                "parts: the directory isn't empty; --force writes into it all the same");
    expectError(runCommand(dir.path(), {"explode", "design.hdf", "parts/mine"}),
                "parts/mine: this is a text file, not a directory");
    expectDone(runCommand(dir.path(), {"explode", "design.hdf", "parts", "--force"}));
    EXPECT_EQ(readFile(dir / "parts/mine"), "mine");
}

TEST(Set, changesPropertiesAndKeepsMembers)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string members = packedMembers(dir / "design.hdf");
    const CommandRun run = runCommand(dir.path(), {"set", "design.hdf", "board=b-1",
                                                   "attribute.flow=", "attribute.owner=me", "used.lut=30"});
    expectDone(run);
    EXPECT_TRUE(run.out.starts_with("design.hdf: board is now \"b-1\"\n"));
    EXPECT_EQ(packedMembers(dir / "design.hdf"), members);
    const auto def = HHDFHwDefUtils::getHDF(dir / "design.hdf", true);
    ASSERT_NE(def, nullptr);
    EXPECT_EQ(def->getBoard(), "b-1");
    EXPECT_EQ(def->getPart(), "part-1");
    EXPECT_EQ(def->getUsedResourceInfo().lut, "30");
    HHDFHwDef::Texts attributes;
    def->getWDIAttrs(attributes);
    EXPECT_EQ(attributes, (HHDFHwDef::Texts{{"owner", "me"}}));
}

TEST(Set, givesTheOldBytesWhenItIsUndone)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string before = readFile(dir / "design.hdf");
    expectDone(runCommand(dir.path(), {"set", "design.hdf", "part=part-2"}));
    EXPECT_NE(readFile(dir / "design.hdf"), before);
    expectDone(runCommand(dir.path(), {"set", "design.hdf", "part=part-1"}));
    EXPECT_EQ(readFile(dir / "design.hdf"), before);
}

TEST(Set, keepsTheBytesInFrontOfAnArchive)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string archive = readFile(dir / "design.hdf");
    writeFile(dir / "front.hdf", "#!/bin/sh\n" + archive);
    expectError(
        runCommand(dir.path(), {"set", "front.hdf", "part=other"}),
        "front.hdf: the archive was changed after it was written: its digest is wrong; --force edits it all "
        "the same, and records a new digest");
    expectDone(runCommand(dir.path(), {"set", "--force", "front.hdf", "part=other"}));
    expectDone(runCommand(dir.path(), {"set", "design.hdf", "part=other"}));
    const std::string changed = readFile(dir / "design.hdf");
    EXPECT_NE(changed, archive);
    // They differ by the digest of more bytes at the end.
    EXPECT_EQ(readFile(dir / "front.hdf").substr(0, changed.size() - 54),
              "#!/bin/sh\n" + changed.substr(0, changed.size() - 64));
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(dir / "front.hdf")), HUTZip::INTACT);
}

TEST(Set, tellsOfBytesBehindAnArchive)
{
    const TempDir dir;
    writeFile(dir / "a.bit", "a");
    expectDone(runCommand(dir.path(), {"build", "-o", "a.hdf", "a.bit:BIT", "--no-digest"}));
    writeFile(dir / "a.hdf", readFile(dir / "a.hdf") + "tail\n");
    const CommandRun run = runCommand(dir.path(), {"set", "a.hdf", "board=b"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.error, "hwdef: a.hdf: 5 bytes behind the archive are not kept\n");
}

TEST(Set, keepsTheAttributesOfEntriesThatShareAName)
{
    const TempDir dir;
    writeFile(dir / "f.bit", "one");
    expectDone(
        runCommand(dir.path(), {"build", "-o", "1.hdf", "f.bit:BIT", "-f", "f.bit:k=1", "-f", "f.bit:a=A"}));
    expectDone(
        runCommand(dir.path(), {"build", "-o", "2.hdf", "f.bit:PDI", "-f", "f.bit:k=2", "-f", "f.bit:b=B"}));
    expectDone(runCommand(dir.path(), {"merge", "-q", "1.hdf", "2.hdf", "-o", "all.hdf"}));
    const std::string merged = readFile(dir / "all.hdf");
    expectSameAgain(dir, "all.hdf");
    EXPECT_TRUE(contains(readFile(dir / "parts/recipe.json"), "\"k\": \"2\""));
    expectDone(runCommand(dir.path(), {"set", "all.hdf", "board=b"}));
    EXPECT_NE(readFile(dir / "all.hdf"), merged);
    expectDone(runCommand(dir.path(), {"set", "all.hdf", "board="}));
    EXPECT_EQ(readFile(dir / "all.hdf"), merged);
}

TEST(Set, renamesTheBomWithTheMode)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    expectDone(runCommand(dir.path(), {"set", "design.hdf", "mode=pre"}));
    EXPECT_TRUE(support::namesIn(dir / "design.hdf").starts_with("hwdef.xml top.hwh"));
    EXPECT_FALSE(contains(support::namesIn(dir / "design.hdf"), "sysdef.xml"));
}

TEST(Set, refusesWhatItDoesNotKnow)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string before = readFile(dir / "design.hdf");
    const CommandRun run = runCommand(dir.path(), {"set", "design.hdf", "prat=x"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(
        contains(run.error, "there is no property \"prat\"; did you mean \"part\"?\nProperties are part, "));
    EXPECT_FALSE(contains(runCommand(dir.path(), {"set", "design.hdf", "attribute.=x"}).error, "mean"));
    expectError(runCommand(dir.path(), {"set", "design.hdf", "version=2.0"}),
                "version can't be \"2.0\"; it is 1 and a minor version, as 1.7");
    EXPECT_EQ(readFile(dir / "design.hdf"), before);
}

TEST(Set, losesNothingOfABomOfOtherHandsWithoutLeave)
{
    const TempDir dir;
    tools::writeOther(dir.path());
    const std::string before = readFile(dir / "other.hdf");
    expectError(runCommand(dir.path(), {"set", "other.hdf", "part=x"}),
                "other.hdf: \"hwdef.xml\" is of other hands, and may say what an edit would lose; "
                "--rewrite-bom writes "
                "it anew with all that hwdef knows of it");
    EXPECT_EQ(readFile(dir / "other.hdf"), before);
    expectDone(runCommand(dir.path(), {"set", "other.hdf", "part=x", "--rewrite-bom"}));
    EXPECT_EQ(support::namesIn(dir / "other.hdf"), "a.bit hwdef.xml notes.txt");
    EXPECT_EQ(HHDFHwDefUtils::getHDF(dir / "other.hdf")->getPart(), "x");
}

TEST(Set, refusesToHideThatAnArchiveWasChanged)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    support::patchFile(dir / "design.hdf", "<EDKSYSTEM/>", "<edksystem/>");
    const CommandRun run = runCommand(dir.path(), {"set", "design.hdf", "part=x"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(contains(run.error, "the archive was changed after it was written: its digest is wrong"));
    expectDone(runCommand(dir.path(), {"set", "design.hdf", "part=x", "--force"}));
}

TEST(Add, addsAFileAndKeepsTheOthers)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string before = packedMembers(dir / "design.hdf");
    writeFile(dir / "debug.ltx", "probes");
    const CommandRun run = runCommand(dir.path(), {"add", "design.hdf", "debug.ltx:LTX"});
    expectDone(run);
    EXPECT_EQ(run.out, "design.hdf: added debug.ltx as LTX\n");
    EXPECT_EQ(support::memberOf(dir / "design.hdf", "debug.ltx"), "probes");
    EXPECT_EQ(HHDFHwDefUtils::getHDF(dir / "design.hdf", true)->getBomFileType("debug.ltx"), "LTX");

    expectDone(runCommand(dir.path(), {"remove", "design.hdf", "debug.ltx"}));
    EXPECT_EQ(packedMembers(dir / "design.hdf"), before);
}

TEST(Add, replacesOnlyWhenAskedTo)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    writeFile(dir / "top.bit", "new bits");
    expectError(runCommand(dir.path(), {"add", "design.hdf", "top.bit:BIT"}),
                "design.hdf: there is a member \"top.bit\" already; --replace replaces it");
    expectDone(runCommand(dir.path(), {"add", "design.hdf", "top.bit:PARTIAL_BIT", "--replace"}));
    EXPECT_EQ(support::memberOf(dir / "design.hdf", "top.bit"), "new bits");
    const auto def = HHDFHwDefUtils::getHDF(dir / "design.hdf", true);
    std::vector<std::string> names;
    EXPECT_EQ(def->getBomFiles(names), 4U);
    EXPECT_EQ(def->getBomFileType("top.bit"), "PARTIAL_BIT");
}

TEST(Add, refusesTheNameOfABom)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    writeFile(dir / "hwdef.xml", "<Project/>");
    expectError(runCommand(dir.path(), {"add", "design.hdf", "hwdef.xml:UNKNOWN"}),
                "\"hwdef.xml\" is the name of a bill of materials");
}

TEST(Add, refusesTwoFilesOfOneName)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    writeFile(dir / "1/z.bit", "1");
    writeFile(dir / "2/z.bit", "2");
    const std::string before = readFile(dir / "design.hdf");
    expectError(runCommand(dir.path(), {"add", "design.hdf", "1/z.bit:BIT", "2/z.bit:BIT"}),
                "\"z.bit\" is the name of two members");
    EXPECT_EQ(readFile(dir / "design.hdf"), before);
}

TEST(Set, takesTheLastOfTwoValuesAndNoOthersName)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf",
                          {{"hwdef.xml", support::bomOfFiles("0", {})}, {"sysdef.xml", "other"}});
    const CommandRun run =
        runCommand(dir.path(), {"set", "a.hdf", "board=q", "board=r", "--rewrite-bom", "--json"});
    EXPECT_FALSE(contains(run.out, "\"q\"")) << run.out;
    EXPECT_TRUE(contains(run.out, "\"board\": \"r\"")) << run.out;
    expectError(runCommand(dir.path(), {"set", "a.hdf", "mode=post"}),
                "\"sysdef.xml\" is the name of two members");
}

TEST(Remove, removesMembersAndTheirEntries)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    expectDone(runCommand(dir.path(), {"remove", "design.hdf", "top.hwh", "drivers/gpio_v1/data/gpio.mdd",
                                       "drivers/gpio_v1/src/gpio.c"}));
    EXPECT_EQ(support::namesIn(dir / "design.hdf"), "sysdef.xml top.bit ps_init.c params.json");
    const auto def = HHDFHwDefUtils::getHDF(dir / "design.hdf", true);
    EXPECT_FALSE(def->isBomFileExistsWithName("top.hwh"));
    EXPECT_TRUE(def->getDriverFilesMap().empty());
}

TEST(Remove, takesANameTwice)
{
    const TempDir dir;
    writeFile(dir / "a.bit", "a");
    expectDone(runCommand(dir.path(), {"build", "-o", "a.hdf", "a.bit:BIT"}));
    expectDone(runCommand(dir.path(), {"remove", "a.hdf", "a.bit", "a.bit"}));
    EXPECT_EQ(support::namesIn(dir / "a.hdf"), "hwdef.xml");
}

TEST(Remove, removesTheMemberThatADriversFileStandsFor)
{
    const TempDir dir;
    writeFile(dir / "gpio/x.mdd", "driver");
    writeFile(dir / "gpio/y.c", "code");
    const auto def = HHDFHwDefUtils::createHDF(dir / "a.hdf");
    // The library packs them without the directory that the bill of materials has in front.
    def->addDrivers("gpio", {{dir / "gpio/x.mdd", "gpio/x.mdd", ""}, {dir / "gpio/y.c", "gpio/y.c", ""}});
    ASSERT_TRUE(def->write(true));
    ASSERT_TRUE(contains(support::namesIn(dir / "a.hdf"), "gpio/x.mdd gpio/y.c"));
    expectDone(runCommand(dir.path(), {"remove", "a.hdf", "drivers/gpio/y.c"}));
    EXPECT_FALSE(contains(support::namesIn(dir / "a.hdf"), "gpio/y.c"));
    EXPECT_TRUE(contains(support::namesIn(dir / "a.hdf"), "gpio/x.mdd"));
    expectDone(runCommand(dir.path(), {"remove", "a.hdf", "gpio/x.mdd"}));
    EXPECT_TRUE(HHDFHwDefUtils::getHDF(dir / "a.hdf")->getDriverFilesMap().empty());
}

TEST(Remove, refusesWhatIsNotThereAndTheBom)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string before = readFile(dir / "design.hdf");
    expectError(runCommand(dir.path(), {"remove", "design.hdf", "top.bti"}),
                "design.hdf: there is no member \"top.bti\"; did you mean \"top.bit\"?");
    expectError(runCommand(dir.path(), {"remove", "design.hdf", "top.bit", "sysdef.xml"}),
                "\"sysdef.xml\" is the bill of materials, and no container is without one");
    EXPECT_EQ(readFile(dir / "design.hdf"), before);
}
