// Completion of command lines and manual pages.
#include <gtest/gtest.h>

#include <cstdlib>

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

/// What bash offers for a line.
std::string offered(const TempDir& dir, const std::string& line)
{
    support::writeFile(
        dir / "offer.bash",
        "compopt() { :; }\n. " HWDEF_COMPLETIONS "/hwdef.bash\ncd " + dir.path() +
            "\nCOMP_LINE=$1 COMP_POINT=${#1}\n_hwdef\nprintf '%s\\n' \"${COMPREPLY[*]}\" >offer\n");
    const std::string path = HWDEF_COMMAND;
    const std::string command =
        "PATH=" + path.substr(0, path.rfind('/')) + ":$PATH bash " + (dir / "offer.bash") + " '" + line + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
    return support::readFile(dir / "offer");
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
