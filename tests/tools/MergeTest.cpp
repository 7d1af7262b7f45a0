// The verb that merges containers: what it tells, writes and refuses.
#include <gtest/gtest.h>

#include <filesystem>

#include "hwdef/hwdef.h"
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

/// DIR/design.hdf, and DIR/overlay.hdf with another top.bit and the same top.hwh.
void writeMeeting(const TempDir& dir)
{
    tools::writeDesign(dir.path());
    writeFile(dir / "new/top.bit", "new bits");
    expectDone(runCommand(dir.path(), {"build", "-o", "overlay.hdf", "new/top.bit:BIT",
                                       "in/top.hwh:HW_HANDOFF", "-s", "attribute.flow=slow"}));
}

constexpr const char* meetingReport =
    "properties from design.hdf\n"
    "design.hdf   4 files   1 driver\n"
    "overlay.hdf  2 files  0 drivers\n"
    "  file       top.bit  different  from overlay.hdf\n"
    "  file       top.hwh  the same   from overlay.hdf\n"
    "  attribute  flow     different  from overlay.hdf\n"
    "  property  top       left out  of design.hdf\n"
    "  property  used.lut  left out  of design.hdf\n"
    "  property  used.ff   left out  of design.hdf\n";

}  // namespace

TEST(Merge, tellsWhatCameFromWhereAndWhatMet)
{
    const TempDir dir;
    writeMeeting(dir);
    const CommandRun run = runCommand(dir.path(), {"merge", "design.hdf", "overlay.hdf", "-o", "all.hdf"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, std::string(meetingReport) + "written to all.hdf\n");
    EXPECT_EQ(support::memberOf(dir / "all.hdf", "top.bit"), "new bits");
    EXPECT_EQ(HHDFHwDefUtils::getHDF(dir / "all.hdf", true)->getPart(), "part-1");
}

TEST(Merge, tellsWhatIsNotMerged)
{
    const TempDir dir;
    tools::writePartial(dir.path());
    writeMeeting(dir);
    const HHDFHwDefArchive present(dir / "partial.hdf");
    std::vector<HHDFHwDefArchive::Part> parts = {{"notes.txt", dir / "in/top.bit"}};
    for (const auto& member : present.members()) {
        parts.push_back({member.name, ""});
    }
    HHDFHwDefArchive::write(dir / "more.hdf", parts, &present, "a comment", false);
    const CommandRun run = runCommand(dir.path(), {"merge", "design.hdf", "more.hdf", "-n"});
    EXPECT_TRUE(contains(run.out,
                         "  property       top         left out  of design.hdf\n"
                         "  property       used.lut    left out  of design.hdf\n"))
        << run.out;
    EXPECT_TRUE(contains(run.out, "  partition ")) << run.out;
    EXPECT_TRUE(contains(run.out, "  configuration ")) << run.out;
    EXPECT_TRUE(contains(run.out,
                         "  member         notes.txt   left out  of more.hdf\n"
                         "  comment        a comment   left out  of more.hdf\n"))
        << run.out;
}

TEST(Merge, writesNothingWhenAMemberCantBeTakenOver)
{
    const TempDir dir;
    writeMeeting(dir);
    for (const std::string name : {"top.bit", "drivers/gpio_v1/src/gpio.c"}) {
        support::ZipBuilder zip;
        for (const auto& [member, content] : support::readArchive(dir / "design.hdf")) {
            support::ZipMember& added = zip.addStored(member, content);
            added.local.method = added.listed.method = member == name ? 14 : 0;
        }
        zip.write(dir / "packed.hdf");
        writeFile(dir / "all.hdf", "old");
        const CommandRun run =
            runCommand(dir.path(), {"merge", "overlay.hdf", "packed.hdf", "-o", "all.hdf"});
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_TRUE(contains(run.error, "member \"" + name + "\"")) << run.error;
        EXPECT_EQ(readFile(dir / "all.hdf"), "old");
    }
}

TEST(Merge, tellsOfDriverFilesThatAreNotMerged)
{
    const TempDir dir;
    for (const char* const file : {"1/gpio/g.mdd", "1/gpio/src/g.c", "2/gpio/g.mdd"}) {
        writeFile(dir / file, "driver");
    }
    writeFile(dir / "a.bit", "a");
    for (const std::string number : {"1", "2"}) {
        expectDone(runCommand(dir.path(), {"build", "-o", number + ".hdf", "a.bit:BIT", "-s", "part=p",
                                           "--driver", "gpio=" + number + "/gpio"}));
    }
    EXPECT_TRUE(contains(runCommand(dir.path(), {"merge", "1.hdf", "2.hdf", "-n"}).out,
                         "  driver file  drivers/gpio/src/g.c  left out  of 1.hdf\n"));
}

TEST(Merge, tellsWhereTheBytesReallyAreFrom)
{
    const TempDir dir;
    writeFile(dir / "1/f.bit", "one");
    writeFile(dir / "2/f.bit", "two");
    for (const std::string number : {"1", "2"}) {
        expectDone(runCommand(dir.path(), {"build", "-o", number + ".hdf", number + "/f.bit:BIT", "-s",
                                           "part=p", "--no-digest"}));
    }
    const std::string different = "  file  f.bit  different  from ";
    const CommandRun again = runCommand(dir.path(), {"merge", "1.hdf", "2.hdf", "1.hdf", "-o", "all.hdf"});
    EXPECT_TRUE(contains(again.out, different + "2.hdf\n")) << again.out;
    EXPECT_EQ(support::memberOf(dir / "all.hdf", "f.bit"), "two");

    const support::Members bomOnly = {{"hwdef.xml", support::memberOf(dir / "2.hdf", "hwdef.xml")}};
    support::writeArchive(dir / "2.hdf", bomOnly);
    const CommandRun missing = runCommand(dir.path(), {"merge", "1.hdf", "2.hdf", "-o", "all.hdf"});
    EXPECT_TRUE(contains(missing.out, different + "1.hdf\n")) << missing.out;
    EXPECT_EQ(support::memberOf(dir / "all.hdf", "f.bit"), "one");
}

TEST(Merge, tellsWhereADriversFileIsFrom)
{
    const TempDir dir;
    for (const std::string number : {"1", "2"}) {
        writeFile(dir / (number + "/gpio/g.mdd"), "of " + number);
        writeFile(dir / (number + ".bit"), "bits");
        expectDone(runCommand(dir.path(), {"build", "-o", number + ".hdf", number + ".bit:BIT", "-s",
                                           "part=p", "--driver", "gpio=" + number + "/gpio"}));
    }
    const CommandRun run = runCommand(dir.path(), {"merge", "1.hdf", "2.hdf", "1.hdf", "-o", "all.hdf"});
    EXPECT_TRUE(contains(run.out, "  file    drivers/gpio/g.mdd  different  from 1.hdf\n")) << run.out;
    EXPECT_EQ(support::memberOf(dir / "all.hdf", "drivers/gpio/g.mdd"), "of 1");
}

TEST(Merge, tellsWhichAttributesAndTypesOfFilesMet)
{
    const TempDir dir;
    writeFile(dir / "f.bit", "one");
    expectDone(runCommand(dir.path(), {"build", "-o", "1.hdf", "f.bit:BIT", "-f", "f.bit:k=1", "-f",
                                       "f.bit:s=0", "-f", "f.bit:a=A"}));
    expectDone(runCommand(dir.path(), {"build", "-o", "2.hdf", "f.bit:PDI", "-f", "f.bit:k=2", "-f",
                                       "f.bit:s=0", "-f", "f.bit:b=B"}));
    const CommandRun run = runCommand(dir.path(), {"merge", "1.hdf", "2.hdf", "-o", "all.hdf"});
    EXPECT_EQ(run.out,
              "properties from none, as no container names a part\n"
              "1.hdf  1 file  0 drivers\n"
              "2.hdf  1 file  0 drivers\n"
              "  file            f.bit     the same   from 2.hdf\n"
              "  file type       f.bit     different  from 2.hdf\n"
              "  file attribute  f.bit: k  different  from 2.hdf\n"
              "  file attribute  f.bit: s  the same   from 2.hdf\n"
              "written to all.hdf\n");
}

TEST(Merge, leavesAttributesOfAMergedContainerWithTheirEntries)
{
    const TempDir dir;
    for (const std::string number : {"1", "2", "3"}) {
        const std::string file = number == "3" ? "h.bit" : "f.bit";
        writeFile(dir / (number + "/" + file), number);
        expectDone(runCommand(dir.path(), {"build", "-o", number + ".hdf", number + "/" + file + ":BIT", "-f",
                                           file + ":k=" + number}));
    }
    expectDone(runCommand(dir.path(), {"merge", "-q", "1.hdf", "2.hdf", "-o", "12.hdf"}));
    expectDone(runCommand(dir.path(), {"merge", "-q", "12.hdf", "3.hdf", "-o", "123.hdf"}));
    const std::string bom = support::memberOf(dir / "123.hdf", "hwdef.xml");
    std::size_t place = 0;
    for (const char* const value : {"1", "2", "3"}) {
        place = bom.find("<File ", place);
        ASSERT_NE(place, std::string::npos);
        const std::string element = bom.substr(place, bom.find("</File>", place) - place);
        EXPECT_TRUE(contains(element, std::string("ATTRVAL=\"") + value + "\"")) << element;
        ++place;
    }
}

TEST(Merge, makesNoModeUp)
{
    const TempDir dir;
    writeFile(dir / "f.bit", "bits");
    expectDone(runCommand(dir.path(), {"build", "-o", "a.hdf", "f.bit:BIT", "-s", "part=p"}));
    writeFile(dir / "g.bit", "bits");
    expectDone(
        runCommand(dir.path(), {"build", "-o", "b.hdf", "g.bit:BIT", "-s", "part=p", "-s", "mode=post"}));
    for (const std::vector<std::string>& files : {std::vector<std::string>{"a.hdf"}, {"a.hdf", "b.hdf"}}) {
        std::vector<std::string> arguments = {"merge", "-q", "-o", "all.hdf"};
        arguments.insert(arguments.end(), files.begin(), files.end());
        expectDone(runCommand(dir.path(), arguments));
        EXPECT_TRUE(contains(support::memberOf(dir / "all.hdf", "hwdef.xml"), "<MODE Name=\"\" />"));
        expectDone(runCommand(dir.path(), {"set", "all.hdf", "board=b"}));
    }
    expectDone(runCommand(dir.path(), {"merge", "-q", "-o", "all.hdf", "b.hdf", "a.hdf"}));
    EXPECT_TRUE(
        contains(support::memberOf(dir / "all.hdf", "sysdef.xml"), "<MODE Name=\"Post-Synthesis\" />"));
}

TEST(Merge, tellsOnceWhatAContainerThatIsNamedTwiceLeavesOut)
{
    const TempDir dir;
    writeFile(dir / "a.bit", "a");
    expectDone(runCommand(dir.path(), {"build", "-o", "a.hdf", "a.bit:BIT", "-s", "board=b"}));
    expectDone(runCommand(dir.path(), {"build", "-o", "b.hdf", "a.bit:BIT"}));
    const std::string out = runCommand(dir.path(), {"merge", "a.hdf", "b.hdf", "a.hdf", "-n"}).out;
    const std::size_t first = out.find("left out");
    EXPECT_NE(first, std::string::npos) << out;
    EXPECT_EQ(out.find("left out", first + 1), std::string::npos) << out;
}

TEST(Merge, tellsOfBytesThatBelongToNoMember)
{
    const TempDir dir;
    writeFile(dir / "a.bit", "a");
    expectDone(runCommand(dir.path(), {"build", "-o", "a.hdf", "a.bit:BIT", "--no-digest"}));
    writeFile(dir / "b.hdf", "front" + readFile(dir / "a.hdf"));
    writeFile(dir / "c.hdf", readFile(dir / "a.hdf") + "!");
    const CommandRun run = runCommand(dir.path(), {"merge", "a.hdf", "b.hdf", "c.hdf", "-n"});
    EXPECT_TRUE(contains(run.out,
                         "  bytes  5 bytes in front of the archive's members  left out  of b.hdf\n"
                         "  bytes  1 byte behind the archive                  left out  of c.hdf\n"))
        << run.out;
}

TEST(Merge, tellsThatNoContainerGivesProperties)
{
    const TempDir dir;
    writeFile(dir / "a.bit", "a");
    expectDone(runCommand(dir.path(), {"build", "-o", "a.hdf", "a.bit:BIT", "-s", "board=b"}));
    expectDone(runCommand(dir.path(), {"build", "-o", "b.hdf", "a.bit:BIT"}));
    EXPECT_TRUE(runCommand(dir.path(), {"merge", "a.hdf", "b.hdf", "-n"})
                    .out.starts_with("properties from none, as no container names a part\n"));
    const std::string json = runCommand(dir.path(), {"merge", "a.hdf", "b.hdf", "-n", "--json"}).out;
    EXPECT_TRUE(contains(json, "\"propertiesFrom\": \"\""));
    EXPECT_TRUE(contains(json, "\"name\": \"board\"")) << json;
    EXPECT_FALSE(contains(json, "\"name\": \"mode\"")) << json;  // none had one
    EXPECT_TRUE(runCommand(dir.path(), {"merge", "a.hdf", "-n"}).out.starts_with("properties from a.hdf\n"));
}

TEST(Merge, tellsThatDiesAreNotMerged)
{
    const TempDir dir;
    writeFile(dir / "r.json",
              "{\"recipe\": 1, \"properties\": {\"part\": \"p\"}, \"stacked\": true, \"dies\": 3}");
    expectDone(runCommand(dir.path(), {"build", "-o", "a.hdf", "r.json"}));
    EXPECT_TRUE(
        contains(runCommand(dir.path(), {"merge", "a.hdf", "-n"}).out,
                 "  property  stacked  left out  of a.hdf\n  property  dies     left out  of a.hdf\n"));
}

TEST(Merge, mayReplaceOneOfItsContainers)
{
    const TempDir dir;
    writeMeeting(dir);
    for (const char* const out : {"all.hdf", "overlay.hdf"}) {
        expectDone(runCommand(dir.path(), {"merge", "design.hdf", "overlay.hdf", "-o", out}));
    }
    EXPECT_EQ(support::readArchive(dir / "overlay.hdf"), support::readArchive(dir / "all.hdf"));
}

TEST(Merge, writesNothingWhenItRunsDry)
{
    const TempDir dir;
    writeMeeting(dir);
    const CommandRun run = runCommand(dir.path(), {"merge", "design.hdf", "overlay.hdf", "--dry-run"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, std::string(meetingReport) + "nothing was written\n");
    EXPECT_EQ(runCommand(dir.path(), {"merge", "design.hdf", "design.hdf", "-n"}).exitCode, 0);
}

TEST(Merge, refusesDifferentBytesWhenItIsStrict)
{
    const TempDir dir;
    writeMeeting(dir);
    writeFile(dir / "all.hdf", "old");
    const CommandRun run =
        runCommand(dir.path(), {"merge", "design.hdf", "overlay.hdf", "-o", "all.hdf", "--strict"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.error, "hwdef: files of one name carry different bytes, which --strict refuses\n");
    EXPECT_EQ(readFile(dir / "all.hdf"), "old");
    expectError(runCommand(dir.path(), {"merge", "design.hdf"}),
                "merge: the container to write is missing: -o OUT");
    expectError(runCommand(dir.path(), {"merge", "design.hdf", "gone.hdf", "-o", "all.hdf"}),
                "gone.hdf: there is no such file");
}

TEST(Merge, findsDifferentFilesOfADriver)
{
    const TempDir dir;
    // The library packs them without the directory that the bill of materials has in front.
    for (const std::string name : {"a", "b"}) {
        writeFile(dir / name + "/gpio/x.mdd", "driver " + name);
        const auto def = HHDFHwDefUtils::createHDF(dir / name + ".hdf");
        def->addDrivers("gpio", {{dir / name + "/gpio/x.mdd", "gpio/x.mdd", ""}});
        ASSERT_TRUE(def->write(true));
    }
    ASSERT_EQ(support::memberOf(dir / "b.hdf", "gpio/x.mdd"), "driver b");
    const CommandRun run = runCommand(dir.path(), {"merge", "a.hdf", "b.hdf", "--strict", "-n"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(contains(run.out, "  file    drivers/gpio/x.mdd  different  from b.hdf\n")) << run.out;
}

TEST(Merge, comparesTheBytesOfFilesWithTheSameChecksum)
{
    const TempDir dir;
    const std::string many(300000, 'x');
    // Two words of one length and one CRC-32, also behind the same other bytes.
    const std::string word = "plumless";
    const std::string otherWord = "buckeroo";
    const auto write = [&](const std::string& path, const std::string& name, const std::string& bytes) {
        // Not all of these names can be those of files in one directory.
        support::Members members = {
            {"hwdef.xml",
             support::bomDocument(
                 "Version='1' Minor='0'",
                 "<File Type='BIT' Name='big'/><File Type='BIT' Name='other'/>"
                 "<DRIVERS><DRIVER IP_VLNV='gpio'><File PATH='drivers/a'/><File PATH='drivers/a/b'/>"
                 "<File PATH='drivers/./c'/><File PATH='drivers/c'/></DRIVER></DRIVERS>")}};
        for (const char* const same : {"drivers/a", "drivers/a/b", "drivers/./c", "drivers/c"}) {
            members.emplace_back(same, word);
        }
        members.emplace_back("big", many + word);
        members.emplace_back("other", word);
        for (auto& [member, content] : members) {
            content = member == name ? bytes : content;
        }
        support::writeArchive(path, members);
    };
    write(dir / "1.hdf", "", "");
    write(dir / "2.hdf", "", "");
    write(dir / "3.hdf", "other", otherWord);
    write(dir / "4.hdf", "big", many + otherWord);
    write(dir / "5.hdf", "drivers/a/b", otherWord);
    write(dir / "6.hdf", "drivers/./c", otherWord);
    const auto expectCode = [&](const std::vector<std::string>& files, int code) {
        std::vector<std::string> words = {"merge", "-n"};
        words.insert(words.end(), files.begin(), files.end());
        EXPECT_EQ(runCommand(dir.path(), words).exitCode, code) << files.back();
    };
    expectCode({"1.hdf", "2.hdf"}, 0);
    expectCode({"1.hdf", "2.hdf", "3.hdf"}, 1);
    expectCode({"1.hdf", "4.hdf", "2.hdf"}, 1);
    expectCode({"5.hdf", "1.hdf"}, 1);
    expectCode({"6.hdf", "1.hdf"}, 1);
}

TEST(Merge, refusesToHideThatAnArchiveWasChanged)
{
    const TempDir dir;
    writeMeeting(dir);
    std::string bytes = readFile(dir / "overlay.hdf");  // it ends in the digest
    bytes.back() = bytes.back() == '0' ? '1' : '0';
    writeFile(dir / "overlay.hdf", bytes);
    const std::vector<std::string> words = {"merge", "design.hdf", "overlay.hdf", "-o", "all.hdf"};
    expectError(
        runCommand(dir.path(), words),
        "overlay.hdf: the archive was changed after it was written: its digest is wrong; --force merges "
        "it all the same");
    EXPECT_FALSE(std::filesystem::exists(dir / "all.hdf"));
    std::vector<std::string> forced = words;
    forced.push_back("--force");
    EXPECT_EQ(runCommand(dir.path(), forced).exitCode, 0);
}
