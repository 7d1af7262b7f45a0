// Completion of command lines and manual pages.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <sstream>

#include "support/Container.h"
#include "support/TempDir.h"
#include "tools/Command.h"
#include "tools/Designs.h"

using support::TempDir;
using tools::runCommand;

namespace {

/// What the last word of a line may become, separated by blanks.
std::string completed(const std::string& dir, std::vector<std::string> words)
{
    words.insert(words.begin(), {"_complete", "--"});
    std::string text = runCommand(dir, words).out;
    for (char& letter : text) {
        letter = letter == '\n' ? ' ' : letter;
    }
    return text;
}

/// Runs a line in the directory, where the command is found by its name; its exit code.
int runInShell(const TempDir& dir, const std::string& line)
{
    const std::string path = HWDEF_COMMAND;
    const std::string script =
        "cd " + dir.path() + " && PATH=" + path.substr(0, path.rfind('/')) + ":$PATH && " + line;
    const int status = std::system(script.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// What bash offers for a line, with a variable in its environment.
std::string offered(const TempDir& dir, const std::string& line, const std::string& variable = "LC_ALL=C")
{
    support::writeFile(dir / "offer.bash",
                       "compopt() { :; }\n. " HWDEF_COMPLETIONS
                       "/hwdef.bash\n"
                       "COMP_LINE=$1 COMP_POINT=${#1}\n_hwdef\nprintf '%s\\n' \"${COMPREPLY[*]}\" >offer\n");
    EXPECT_EQ(runInShell(dir, variable + " bash offer.bash '" + line + "'"), 0);
    return support::readFile(dir / "offer");
}

/// What zsh offers for the words of a line, or what it is asked to offer; the functions that only its line
/// editor has are stood in for.
std::string offeredByZsh(const TempDir& dir, const std::string& words)
{
    support::writeFile(dir / "offer", "");
    support::writeFile(
        dir / "offer.zsh",
        "compadd() { while [[ $1 != -- ]]; do shift; done; shift; print -r -- \"$*\" >>offer }\n"
        "compset() { : }\n"
        "_files() { print -r -- files \"$@\" >>offer }\n"
        "words=(" +
            words + ")\nCURRENT=${#words}\n. " HWDEF_COMPLETIONS "/_hwdef\n");
    EXPECT_EQ(runInShell(dir, "zsh -f offer.zsh"), 0);
    return support::readFile(dir / "offer");
}

/// The command lines that a help text gives as examples.
std::vector<std::string> examplesIn(const std::string& help)
{
    const std::size_t begin = help.find("Examples:");
    std::istringstream lines(begin == std::string::npos ? "" : help.substr(begin));
    std::vector<std::string> examples;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("  hwdef ")) {
            examples.push_back(line.substr(2));
        }
    }
    return examples;
}

/// Writes what the examples name.
void writeForExamples(const TempDir& dir)
{
    tools::writeDesign(dir.path());
    tools::writePartial(dir.path());
    const auto copy = [&](const std::string& from, const std::string& to) {
        support::writeFile(dir / to, support::readFile(dir / from));
    };
    EXPECT_EQ(runCommand(dir.path(), {"set", "design.hdf", "mode=pre"}).error, "");
    EXPECT_EQ(runCommand(dir.path(), {"explode", "design.hdf", "exploded"}).error, "");
    copy("design.hdf", "old.hdf");
    copy("design.hdf", "base.hdf");
    copy("partial.hdf", "new.hdf");
    copy("partial.hdf", "overlay.hdf");
    copy("in/top.hwh", "top.hwh");
    copy("in/top.bit", "top.bit");
    copy("in/top.bit", "debug.ltx");
    copy("in/gpio_v1/data/gpio.mdd", "src/gpio_v1_0/data/gpio.mdd");
}

}  // namespace

TEST(Complete, offersVerbsOptionsAndTypes)
{
    EXPECT_EQ(completed("/", {"ex"}), "extract explode ");
    EXPECT_EQ(completed("/", {"list", "--ty"}), "--type ");
    EXPECT_EQ(completed("/", {"list", "--type", "HW"}), "HW_HANDOFF HW_SVD ");
    EXPECT_EQ(completed("/", {"list", "--type=HW"}), "--type=HW_HANDOFF --type=HW_SVD ");
    EXPECT_EQ(completed("/", {"list", "--color", "a"}), "auto always ");
    EXPECT_EQ(completed("/", {"build", "a.bit:BI"}), "a.bit:BIT ");
    EXPECT_EQ(completed("/", {"set", "a.hdf", "pa"}), "part= package= ");
    EXPECT_EQ(completed("/", {"list", ""}), "<file> ");
    EXPECT_EQ(completed("/", {"build", "--output=a"}), "<file> ");
    EXPECT_EQ(completed("/", {"extract", "a.hdf", "-C", ""}), "<directory> ");
    EXPECT_EQ(completed("/", {"nope", ""}), "");
    EXPECT_EQ(completed("/", {"--color", "never", "exp"}), "explode ");
    EXPECT_EQ(completed("/", {"--json", "list", "--ty"}), "--type ");
}

TEST(Complete, offersMembersOfTheContainer)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    EXPECT_EQ(completed(dir.path(), {"cat", "design.hdf", "top"}), "top.hwh top.bit ");
    EXPECT_EQ(completed(dir.path(), {"remove", "-q", "design.hdf", "top.hwh", "p"}),
              "ps_init.c params.json ");
    EXPECT_EQ(completed(dir.path(), {"cat", "gone.hdf", "top"}), "");
}

TEST(Complete, servesBash)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    EXPECT_EQ(offered(dir, "hwdef expl"), "explode\n");
    EXPECT_EQ(offered(dir, "hwdef cat design.hdf top"), "top.hwh top.bit\n");
    EXPECT_EQ(offered(dir, "hwdef build in/top.bit:BI"), "BIT\n");
    EXPECT_EQ(offered(dir, "hwdef info des"), "design.hdf\n");
    EXPECT_EQ(offered(dir, "hwdef build --output=des"), "design.hdf\n");
    EXPECT_EQ(offered(dir, "hwdef list --type=HW_S"), "HW_SVD\n");
}

TEST(Complete, quotesForBashWhatAContainerNames)
{
    const TempDir dir;
    support::writeArchive(dir / "sp ace.hdf", {{"hwdef.xml", support::bomOfFiles("0", {"my file.bit"})},
                                               {"my file.bit", "bits"},
                                               {"my=$(touch${IFS}pwned)=", "evil"},
                                               {"readme$(touch${IFS}pwned)", "evil"}});
    EXPECT_EQ(offered(dir, "hwdef cat sp\\ ace.hdf re"), "readme\\$\\(touch\\$\\{IFS\\}pwned\\)\n");
    EXPECT_EQ(offered(dir, "hwdef cat sp\\ ace.hdf my\\ "), "my\\ file.bit\n");
    EXPECT_EQ(offered(dir, "hwdef cat sp\\ ace.hdf my="), "\\$\\(touch\\$\\{IFS\\}pwned\\)=\n");
    EXPECT_EQ(offered(dir, "hwdef build a\\ b.bit:BI"), "BIT\n");
    EXPECT_EQ(offered(dir, "hwdef cat \"sp ace.hdf\" hw"), "hwdef.xml\n");
    EXPECT_EQ(offered(dir, "hwdef cat sp\" \"ace.hdf \"my f"), "my file.bit\n");
    // Inside of quotes bash puts in what it is given, and takes nothing away in front of a colon or sign.
    EXPECT_EQ(offered(dir, "hwdef cat \"sp ace.hdf\" \"my="), "my=\\$(touch\\${IFS}pwned)=\n");
}

TEST(Complete, findsContainersOfBashInTheHomeDirectory)
{
    const TempDir dir;
    tools::writeDesign(dir.path());
    EXPECT_EQ(offered(dir, "hwdef cat ~/design.hdf top", "HOME=" + dir.path()), "top.hwh top.bit\n");
}

TEST(Complete, servesZsh)
{
    const TempDir dir;
    if (runInShell(dir, "command -v zsh >/dev/null") != 0) {
        GTEST_SKIP() << "there is no zsh";
    }
    tools::writeDesign(dir.path());
    EXPECT_EQ(offeredByZsh(dir, "hwdef expl"), "explode\n");
    EXPECT_EQ(offeredByZsh(dir, "hwdef cat design.hdf top"), "top.hwh top.bit\n");
    EXPECT_EQ(offeredByZsh(dir, "hwdef set design.hdf pa"), "part=\npackage=\n");
    EXPECT_EQ(offeredByZsh(dir, "hwdef info ''"), "files \n");
    EXPECT_EQ(offeredByZsh(dir, "hwdef build --output=des"), "files \n");
    EXPECT_EQ(offeredByZsh(dir, "hwdef extract design.hdf -C ''"), "files -/\n");
}

TEST(Help, givesExamplesThatWork)
{
    const TempDir dir;
    writeForExamples(dir);
    std::istringstream verbs(runCommand("/", {"_complete", ""}).out + "--help\n");
    std::size_t count = 0;
    for (std::string verb; std::getline(verbs, verb);) {
        const std::string help = verb == "--help" ? "" : verb;
        if (verb == "--version" || (verb == "--help" && count == 0)) {
            continue;
        }
        for (const std::string& example : examplesIn(runCommand("/", {"help", help}).out)) {
            EXPECT_LE(runInShell(dir, "{ " + example + "; } >stdout.txt 2>stderr.txt"), 1) << example;
            EXPECT_EQ(support::readFile(dir / "stderr.txt"), "") << example;
            ++count;
        }
    }
    EXPECT_GT(count, 30U);
}

TEST(Manual, hasAPageForEachVerb)
{
    const std::string overview = support::readFile(HWDEF_MANUAL "/hwdef.1");
    EXPECT_NE(overview.find("\n\\fBextract\\fR\nWrite members as files"), std::string::npos);
    EXPECT_NE(overview.find(".SH \"EXIT STATUS\"\n.TP\n0\nDone"), std::string::npos);
    const std::string list = support::readFile(HWDEF_MANUAL "/hwdef-list.1");
    EXPECT_EQ(list.find(".TH HWDEF\\-LIST 1 "), 0U);
    EXPECT_NE(list.find("\n.TP\n\\fB\\-t, \\-\\-type\\fR \\fITYPE\\fR\nOnly files of this type\n"),
              std::string::npos);
    EXPECT_NE(list.find(".SH EXAMPLES\n.TP\n\\fBhwdef list design.hdf\\fR\n"), std::string::npos);
}
