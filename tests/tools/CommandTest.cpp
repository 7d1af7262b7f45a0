#include "tools/Command.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "support/Container.h"
#include "support/MeasuredChild.h"
#include "support/TempDir.h"
#include "tools/Designs.h"

using support::TempDir;
using tools::CommandRun;
using tools::contains;
using tools::runCommand;
using tools::runOnTerminal;

namespace {

std::string errorOf(const std::string& dir, const std::vector<std::string>& words)
{
    const CommandRun run = runCommand(dir, words);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.out, "");
    return run.error;
}

/// What the command says of a file that holds these bytes.
std::string kindOf(const std::string& bytes)
{
    const TempDir dir;
    support::writeFile(dir / "x", bytes);
    return errorOf(dir.path(), {"list", "x"});
}

std::string isKind(const std::string& kind)
{
    return "hwdef: error: x: this is " + kind + ", not a hardware definition container\n";
}

}  // namespace

TEST(Command, helpsWithVerbsAndExamples)
{
    const TempDir dir;
    const CommandRun run = runCommand(dir.path(), {"--help"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.error, "");
    EXPECT_TRUE(contains(run.out, "\n  list        List the files of a container\n"));
    EXPECT_TRUE(contains(run.out, "Examples:\n  hwdef info design.hdf\n"));
    EXPECT_FALSE(contains(run.out, "_complete"));
    EXPECT_EQ(runCommand(dir.path(), {"help"}).out, run.out);
    EXPECT_EQ(runCommand(dir.path(), {"help", "cat"}).out, runCommand(dir.path(), {"cat", "--help"}).out);
}

TEST(Command, tellsItsVersion)
{
    EXPECT_EQ(runCommand("/", {"--version"}).out, "hwdef 1.0.0\n");
}

TEST(Command, suggestsTheNearestVerb)
{
    EXPECT_EQ(errorOf("/", {"lsit"}),
              "hwdef: error: there is no verb \"lsit\"; did you mean \"list\"?\nTry \"hwdef --help\".\n");
    EXPECT_EQ(errorOf("/", {"help", "exctract"}),
              "hwdef: error: there is no verb \"exctract\"; did you mean \"extract\"?\n");
    EXPECT_EQ(errorOf("/", {"quux"}), "hwdef: error: there is no verb \"quux\"\nTry \"hwdef --help\".\n");
    EXPECT_EQ(errorOf("/", {}), "hwdef: error: a verb is missing\nTry \"hwdef --help\".\n");
}

TEST(Command, suggestsTheNearestOption)
{
    EXPECT_EQ(errorOf("/", {"list", "--tpye", "BIT", "x"}),
              "hwdef: error: list: there is no option \"--tpye\"; did you mean \"--type\"?\n"
              "Try \"hwdef list --help\".\n");
    EXPECT_EQ(errorOf("/", {"list", "--color=alwyas", "x"}),
              "hwdef: error: list: --color can't be \"alwyas\", only auto, always, never; did you mean "
              "\"always\"?\nTry \"hwdef list --help\".\n");
}

TEST(Command, refusesOptionsWithoutTheirValueOrWithTwo)
{
    EXPECT_EQ(errorOf("/", {"list", "x", "-t"}),
              "hwdef: error: list: --type needs a value\nTry \"hwdef list --help\".\n");
    EXPECT_EQ(errorOf("/", {"list", "x", "-t", "BIT", "--type=BIT"}),
              "hwdef: error: list: --type may be given only once\nTry \"hwdef list --help\".\n");
}

TEST(Command, refusesOperandsThatAreMissingOrTooMany)
{
    EXPECT_EQ(errorOf("/", {"list"}), "hwdef: error: list: FILE is required\nTry \"hwdef list --help\".\n");
    EXPECT_EQ(errorOf("/", {"list", "a", "b"}),
              "hwdef: error: list: \"b\" is one argument too many\nTry \"hwdef list --help\".\n");
}

TEST(Command, suggestsTheNearestFileType)
{
    EXPECT_EQ(errorOf("/", {"list", "-t", "PS_CONFI", "x"}),
              "hwdef: error: there is no file type \"PS_CONFI\"; did you mean \"PS_CONFIG\"?\n");
}

TEST(Command, suggestsTheNearestFile)
{
    const TempDir dir;
    support::writeFile(dir / "design.hdf", "");
    EXPECT_EQ(errorOf(dir.path(), {"list", "desing.hdf"}),
              "hwdef: error: desing.hdf: there is no such file; did you mean \"design.hdf\"?\n");
}

TEST(Command, saysWhatAFileIsInPlaceOfAContainer)
{
    EXPECT_EQ(kindOf(""), isKind("an empty file"));
    EXPECT_EQ(kindOf("\x7f"
                     "ELF\x02\x01"),
              isKind("an ELF file"));
    EXPECT_EQ(kindOf("\x1f\x8b\x08"), isKind("a gzip file"));
    EXPECT_EQ(kindOf("<?xml version=\"1.0\"?><a/>"), isKind("an XML document"));
    EXPECT_EQ(kindOf("{\"a\": 1}"), isKind("a JSON document"));
    EXPECT_EQ(kindOf("#!/bin/sh\n"), isKind("a script"));
    EXPECT_EQ(kindOf("some text\n"), isKind("a text file"));
    EXPECT_EQ(kindOf(std::string(257, '\0') + "ustar"), isKind("a tar archive"));
    EXPECT_EQ(kindOf(std::string("\x01\0\x02", 3)),
              "hwdef: error: x: the file begins with unknown bytes, not a hardware definition container\n");
    EXPECT_EQ(errorOf("/", {"list", "tmp"}),
              "hwdef: error: tmp: this is a directory, not a hardware definition container\n");
    EXPECT_EQ(errorOf("/", {"list", "/dev/null"}),
              "hwdef: error: /dev/null: this is a device, not a hardware definition container\n");
}

TEST(Command, saysWhatStandsInPlaceOfAFileWhateverTheVerb)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    for (const char* verb : {"info", "verify", "report", "digest"}) {
        EXPECT_EQ(runCommand(dir.path(), {verb, "in"}).error,
                  "hwdef: error: in: this is a directory, not a hardware definition container\n");
        EXPECT_EQ(runCommand(dir.path(), {verb, "desing.hdf"}).error,
                  "hwdef: error: desing.hdf: there is no such file; did you mean \"design.hdf\"?\n");
        EXPECT_EQ(runCommand(dir.path(), {verb, ""}).error, "hwdef: error: \"\": there is no such file\n");
    }
    for (const char* verb : {"extract", "drivers"}) {
        EXPECT_EQ(errorOf(dir.path(), {verb, "design.hdf", "-C", "in/params.json"}),
                  "hwdef: error: in/params.json: this is a JSON document, not a directory\n");
    }
}

TEST(Command, takesNoEmptyPathForADirectory)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string text = "hwdef: error: \"\": this can't be the path of a directory\n";
    EXPECT_EQ(errorOf(dir.path(), {"extract", "design.hdf", "-C", ""}), text);
    EXPECT_EQ(errorOf(dir.path(), {"explode", "design.hdf", ""}), text);
}

TEST(Command, saysWhenAnArchiveLacksItsBom)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string bytes = support::readFile(dir / "design.hdf");
    support::writeFile(dir / "cut.hdf", bytes.substr(0, bytes.size() / 2));
    EXPECT_EQ(errorOf(dir.path(), {"list", "cut.hdf"}),
              "hwdef: error: cut.hdf: this is a zip archive without a bill of materials that can be read "
              "(\"hwdef.xml\" or \"sysdef.xml\" on its top level), not a hardware definition container, or a "
              "damaged one: \"hwdef verify\" tells more\n");
}

TEST(Command, takesOptionsInFrontOfTheVerb)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    EXPECT_EQ(runCommand(dir.path(), {"--json", "list", "design.hdf"}).out,
              runCommand(dir.path(), {"list", "design.hdf", "--json"}).out);
    EXPECT_EQ(runCommand(dir.path(), {"--color", "always", "list", "design.hdf"}).out,
              runCommand(dir.path(), {"list", "design.hdf", "--color", "always"}).out);
    EXPECT_EQ(errorOf("/", {"--color"}),
              "hwdef: error: a verb is missing behind \"--color\"\nTry \"hwdef --help\".\n");
}

TEST(Command, showsNoControlCharacterOfAName)
{
    EXPECT_EQ(errorOf("/", {"list", "\x1b[31mred"}), "hwdef: error: \\x1b[31mred: there is no such file\n");
}

TEST(Command, usesColoursOnATerminalOnly)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string red = "\x1b[";
    EXPECT_TRUE(contains(runOnTerminal(dir.path(), {"list", "design.hdf"}).out, red));
    EXPECT_FALSE(contains(runCommand(dir.path(), {"list", "design.hdf"}).out, red));
    EXPECT_TRUE(contains(runCommand(dir.path(), {"list", "--color", "always", "design.hdf"}).out, red));
    EXPECT_FALSE(contains(runOnTerminal(dir.path(), {"list", "--color=never", "design.hdf"}).out, red));
    EXPECT_FALSE(contains(runOnTerminal(dir.path(), {"list", "design.hdf"}, {"NO_COLOR=1"}).out, red));
    EXPECT_FALSE(contains(runOnTerminal(dir.path(), {"list", "design.hdf"}, {"TERM=dumb"}).out, red));
    EXPECT_FALSE(contains(runOnTerminal(dir.path(), {"list", "design.hdf", "--json"}).out, red));
}

TEST(Command, failsWhenStandardOutputCantBeWrittenTo)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    const std::string script =
        "cd " + dir.path() + " && " HWDEF_COMMAND " list design.hdf >/dev/full 2>error; echo $?";
    EXPECT_EQ(std::system(("test \"$(" + script + ")\" = 2").c_str()), 0);
    EXPECT_EQ(support::readFile(dir / "error"),
              "hwdef: error: standard output can't be written to: No space left on device\n");
}

namespace {

/// What processes took that have ended.
double childrenSeconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// A directory with a file that takes a while to pack.
class LongWork {
public:
    LongWork()
    {
        support::writeFile(dir_ / "old.bit", "old");
        runCommand(dir_.path(), {"build", "-o", "out.hdf", "old.bit:BIT"});
        old_ = support::readFile(dir_ / "out.hdf");
        // Where nothing is stored there is nothing to read; it is packed all the same.
        support::writeFile(dir_ / "long.bit", "");
        EXPECT_EQ(::truncate((dir_ / "long.bit").c_str(), off_t{1} << 30), 0);
    }

    const TempDir& dir() const { return dir_; }
    const std::string& old() const { return old_; }

private:
    TempDir dir_;
    std::string old_;
};

/// Writes DIR/many.hdf: so many members that to look at each takes its time.
void writeMany(const TempDir& dir)
{
    support::Members members = {{"hwdef.xml", support::bomOfFiles("0", {})}};
    for (int number = 0; number < 100000; ++number) {
        members.emplace_back("m" + std::to_string(number), std::string(100, 'x'));
    }
    support::writeArchive(dir / "many.hdf", members);
}

constexpr std::size_t longBytes = 1U << 20;

/// Writes DIR/long.hdf: a member that no pipe and no terminal holds as a whole.
void writeLong(const TempDir& dir)
{
    support::writeArchive(dir / "long.hdf", {{"hwdef.xml", support::bomOfFiles("0", {"long.bit"})},
                                             {"long.bit", std::string(longBytes, 'x')}});
}

/// The lines of progress that a terminal has shown.
std::vector<std::string> progressIn(const std::string& shown)
{
    const std::string begin = "\r\x1b[K";
    std::vector<std::string> lines;
    for (std::size_t at = shown.find(begin); at != std::string::npos;) {
        const std::size_t next = shown.find(begin, at + begin.size());
        const std::string line = shown.substr(at + begin.size(), next - at - begin.size());
        if (contains(line, " left")) {
            lines.push_back(line);
        }
        at = next;
    }
    return lines;
}

/// Lets a process run for a moment and stops it: however fast the machine, its work takes seconds.
void runForAMoment(int process)
{
    ::kill(process, SIGCONT);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ::kill(process, SIGSTOP);
}

/// Runs the command slowly on a terminal and interrupts it once what it shows is as awaited.
CommandRun interrupted(const TempDir& dir, const std::vector<std::string>& words,
                       const std::function<bool(const std::string& soFar)>& isAwaited,
                       const std::vector<std::string>& environment = {})
{
    bool isInterrupted = false;
    return runOnTerminal(dir.path(), words, environment, [&](const std::string& soFar, int process) {
        if (isInterrupted) {
            return;
        }
        if (isAwaited(soFar)) {
            isInterrupted = true;
            ::kill(process, SIGINT);
            ::kill(process, SIGCONT);
        } else {
            runForAMoment(process);
        }
    });
}

}  // namespace

TEST(Command, refusesABomOfAnotherVersion)
{
    const TempDir dir;
    const std::string file = "<File Type='BIT' Name='a.bit'/>";
    for (const char* const name : {"a.hdf", "b.hdf"}) {
        support::writeArchive(dir / name, {{"hwdef.xml", support::bomDocument("Version='2' Minor='0'", file)},
                                           {"a.bit", name}});
    }
    support::writeArchive(dir / "none.hdf", {{"hwdef.xml", support::bomDocument("Minor='0'", file)}});
    const std::string text =
        "hwdef: error: a.hdf: its bill of materials has version 2, which this hwdef doesn't know\n";
    for (const std::vector<std::string>& words : {std::vector<std::string>{"info", "a.hdf"},
                                                  {"diff", "a.hdf", "b.hdf"},
                                                  {"digest", "a.hdf"},
                                                  {"set", "a.hdf", "part=x", "--rewrite-bom"}}) {
        const CommandRun run = runCommand(dir.path(), words);
        EXPECT_EQ(run.exitCode, 2) << words.front();
        EXPECT_EQ(run.error, text) << words.front();
    }
    EXPECT_EQ(runCommand(dir.path(), {"info", "none.hdf"}).error,
              "hwdef: error: none.hdf: its bill of materials has no version\n");
}

TEST(Command, showsProgressOnATerminalAndEndsWithoutATrace)
{
    const LongWork work;
    const CommandRun run = interrupted(work.dir(), {"build", "-o", "out.hdf", "long.bit:BIT"},
                                       [](const std::string& soFar) { return !progressIn(soFar).empty(); });
    EXPECT_EQ(run.exitCode, 128 + SIGINT);
    EXPECT_TRUE(contains(run.out, " of 1.00 GiB  "));
    EXPECT_TRUE(contains(run.out, "/s  "));
    EXPECT_TRUE(contains(run.out, "long.bit"));
    EXPECT_TRUE(contains(run.out, "out.hdf: cancelled after "));
    EXPECT_EQ(support::readFile(work.dir() / "out.hdf"), work.old());
    EXPECT_EQ(work.dir().list(), "long.bit old.bit out.hdf");
}

TEST(Command, showsProgressOfAllThatIsExtracted)
{
    const TempDir dir;
    writeMany(dir);
    const CommandRun run =
        interrupted(dir, {"extract", "many.hdf", "-C", "out"},
                    [](const std::string& soFar) { return progressIn(soFar).size() >= 3; });
    EXPECT_EQ(run.exitCode, 128 + SIGINT);
    long last = 0;
    for (const std::string& line : progressIn(run.out)) {
        const long percent = std::strtol(line.c_str(), nullptr, 10);
        EXPECT_GE(percent, last) << line;
        EXPECT_TRUE(contains(line, " of 9.54 MiB  ")) << line;
        last = percent;
    }
    EXPECT_LT(last, 100);
}

TEST(Command, showsProgressOfComparingWhatMeets)
{
    const LongWork work;
    for (const char* name : {"a.hdf", "b.hdf"}) {
        ASSERT_TRUE(HHDFHwDefUtils::writeHDF(
            work.dir() / name, {{work.dir() / "long.bit", HHDFHwDefFileTypes::BIT}}, true, {}, {}));
    }
    const CommandRun run = interrupted(work.dir(), {"merge", "a.hdf", "b.hdf", "--dry-run"},
                                       [](const std::string& soFar) { return !progressIn(soFar).empty(); });
    EXPECT_EQ(run.exitCode, 128 + SIGINT);
    EXPECT_TRUE(contains(run.out, " of 1.00 GiB  ")) << run.out;
    EXPECT_TRUE(contains(run.out, "long.bit")) << run.out;
    EXPECT_TRUE(contains(run.out, " comparing: cancelled after ")) << run.out;
}

TEST(Command, tellsOnceAndOnALineOfItsOwnThatItWasInterrupted)
{
    const TempDir dir;
    writeMany(dir);
    std::vector<std::string> words(100, "many.hdf");
    words.front() = "verify";
    const CommandRun run =
        interrupted(dir, words, [](const std::string& soFar) { return !progressIn(soFar).empty(); });
    EXPECT_EQ(run.exitCode, 128 + SIGINT);
    const std::size_t place = run.out.find("\r\x1b[Khwdef: ");
    ASSERT_NE(place, std::string::npos) << run.out;
    EXPECT_TRUE(contains(run.out.substr(place), "many.hdf: cancelled after ")) << run.out;
    EXPECT_EQ(run.out.find("cancelled"), run.out.rfind("cancelled")) << run.out;
}

TEST(Command, leavesNothingWhenNobodyReadsOn)
{
    const TempDir dir;
    const TempDir scratch;
    writeLong(dir);
    const std::string script = "cd " + dir.path() + " && { TMPDIR=" + scratch.path() +
                               " " HWDEF_COMMAND
                               " cat long.hdf long.bit 2>error; echo $? >code; } | head -c 1";
    EXPECT_EQ(std::system((script + " >/dev/null").c_str()), 0);
    EXPECT_EQ(support::readFile(dir / "code"), std::to_string(128 + SIGPIPE) + "\n");
    EXPECT_EQ(support::readFile(dir / "error"), "");
    EXPECT_EQ(scratch.list(), "");
}

TEST(Command, endsCatByASignalWithoutATrace)
{
    const TempDir dir;
    const TempDir scratch;
    writeLong(dir);
    const CommandRun run =
        interrupted(dir, {"cat", "long.hdf", "long.bit"},
                    [](const std::string& soFar) { return !soFar.empty(); }, {"TMPDIR=" + scratch.path()});
    EXPECT_EQ(run.exitCode, 128 + SIGINT);
    EXPECT_LT(run.out.size(), longBytes);
    EXPECT_FALSE(contains(run.out, "hwdef"));
    EXPECT_EQ(scratch.list(), "");
}

TEST(Command, showsNoProgressOfShortWork)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    EXPECT_EQ(runOnTerminal(dir.path(), {"extract", "design.hdf", "-C", "out"}).out,
              "7 files, 5.93 KiB, written to out\r\n");
}

TEST(Command, startsWithinTenMilliseconds)
{
    if (support::isSanitized()) {
        GTEST_SKIP() << "a sanitizer has to start as well";
    }
    const TempDir dir;
    tools::writeDesign(dir.path());
    // Processor time, which other work on the machine doesn't add to.
    const auto median = [&](const std::string& command) {
        std::vector<double> times(21);
        for (double& time : times) {
            const double before = childrenSeconds();
            EXPECT_EQ(std::system(("cd " + dir.path() + " && exec " + command + " >/dev/null").c_str()), 0);
            time = childrenSeconds() - before;
        }
        std::nth_element(times.begin(), times.begin() + 10, times.end());
        return times[10];
    };
    EXPECT_LT(median(HWDEF_COMMAND " list design.hdf") - median("/bin/true"), 0.010);
}
