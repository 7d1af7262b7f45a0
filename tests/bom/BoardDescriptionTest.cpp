// The description of a board as the reader takes it.

#include <gtest/gtest.h>

#include "hwdef/bom/HHDFHwDefBomReader.h"
#include "support/BomDocument.h"

using support::definition;
using support::FakeElement;

using Jumpers = std::vector<std::pair<std::string, bool>>;

namespace {

/// All board files, one a line: "board: path, relative name, container path".
std::string boardsOf(const HHDFHwDef& def)
{
    std::string lines;
    for (const auto& [name, files] : def.getBoardFilesMap()) {
        for (const HHDFHwDefBoard& file : files) {
            lines += name + ": " + file.getFilePath() + ", " + file.getRelativeName() + ", " +
                     file.getHwDefFilePath() + "\n";
        }
    }
    return lines;
}

}  // namespace

TEST(BoardDescription, isReadWhole)
{
    const auto def = definition();
    FakeElement board("BOARD", {{"Type", "INTEGRATED"}});
    board.add("BaseBoard", {{"Name", "zc"}}).add("File", {{"PATH", "zc/board.xml"}});
    board.add("daughterboard", {{"Name", "fmc"}, {"Connector", "J5"}}).add("File", {{"PATH", "fmc.xml"}});
    board.add("jumpers").add("JUMPER", {{"Name", "J1"}, {"Value", "1"}});
    board.add("OTHER", {{"Name", "x"}}).add("File", {{"PATH", "x"}});

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateBoardInfo(&board));
    EXPECT_TRUE(def->isIntegratedBoard());
    EXPECT_EQ(def->getBoardTopDir(), "/data/design/board");
    EXPECT_EQ(def->getBaseBoard(), "zc");
    EXPECT_EQ(def->getBoardConnections(), (HHDFHwDef::Texts{{"J5", "fmc"}}));
    EXPECT_EQ(def->getJumpers(), (Jumpers{{"J1", true}}));
    EXPECT_EQ(boardsOf(*def),
              "fmc: /data/design/board/fmc.xml, fmc.xml, /data/design.hdf\n"
              "zc: /data/design/board/zc/board.xml, zc/board.xml, /data/design.hdf\n");
}

TEST(BoardDescription, isNotIntegratedForAnyOtherType)
{
    const auto def = definition();
    for (const char* type : {"", "integrated ", "Separate"}) {
        def->setIntegratedBoard(true);
        FakeElement board("BOARD", {{"Type", type}});
        EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateBoardInfo(&board));
        EXPECT_FALSE(def->isIntegratedBoard()) << type;
    }
}

TEST(BoardDescription, isNotReachedFromABom)
{
    const auto def = definition();
    const auto root = support::project();
    root->add("BOARD", {{"Type", "Integrated"}}).add("BASEBOARD", {{"Name", "zc"}});
    root->add("BASEBOARD", {{"Name", "zc"}});

    EXPECT_TRUE(support::readBom(*def, *root));
    EXPECT_FALSE(def->isIntegratedBoard());
    EXPECT_EQ(def->getBaseBoard(), "");
}

TEST(BoardDescription, dropsEmptyPiecesOfAPath)
{
    const auto def = definition();
    FakeElement board("BASEBOARD", {{"Name", "zc"}});
    board.add("File", {{"PATH", "//a///b.xml/"}});
    board.add("anything", {{"PATH", "b.xml"}});
    board.add("File", {{"PATH", "b.xml"}});
    board.add("File", {{"PATH", "/"}});
    board.add("File");
    std::string dir = "/boards";
    std::string type = "Integrated";

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateBaseBoardInfo(&board, dir, type));
    EXPECT_EQ(boardsOf(*def),
              "zc: /boards/a/b.xml, a/b.xml, /data/design.hdf\n"
              "zc: /boards/b.xml, b.xml, /data/design.hdf\n"
              "zc: /boards/b.xml, b.xml, /data/design.hdf\n");
    EXPECT_EQ(dir + " " + type, "/boards Integrated");
}

TEST(BoardDescription, connectsDaughterBoardsToTheirConnectors)
{
    const auto def = definition();
    def->setBaseBoard("zc");
    HHDFHwDefBomReader reader(def.get(), nullptr);
    std::string dir = "/boards";
    std::string type;
    for (const auto& [connector, name] :
         {std::pair{"J5", "first"}, {"J5", "second"}, {"J6", "third"}, {"", "loose"}}) {
        FakeElement board("DAUGHTERBOARD", {{"Name", name}, {"Connector", connector}});
        board.add("File", {{"PATH", "f"}});
        EXPECT_TRUE(reader.populateDaughterBoardInfo(&board, dir, type));
    }
    EXPECT_EQ(def->getBoardConnections(), (HHDFHwDef::Texts{{"J5", "first"}, {"J6", "third"}}));
    EXPECT_EQ(boardsOf(*def),
              "first: /boards/f, f, /data/design.hdf\n"
              "loose: /boards/f, f, /data/design.hdf\n"
              "second: /boards/f, f, /data/design.hdf\n"
              "third: /boards/f, f, /data/design.hdf\n");
    EXPECT_EQ(def->getBaseBoard(), "zc");
}

TEST(BoardDescription, setsAJumperForExactlyOne)
{
    const auto def = definition();
    FakeElement jumpers("JUMPERS");
    for (const char* value : {"1", "01", "true", "", "1 "}) {
        jumpers.add("anything", {{"Name", "J"}, {"Value", value}});
    }
    jumpers.add("JUMPER");

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateJumpers(&jumpers));
    EXPECT_EQ(def->getJumpers(),
              (Jumpers{{"J", true}, {"J", false}, {"J", false}, {"J", false}, {"J", false}, {"", false}}));
}

TEST(BoardDescription, countsChildListsThatCannotBeHadAsEmpty)
{
    const auto def = definition();
    FakeElement board("BOARD");
    board.add("BASEBOARD", {{"Name", "zc"}}).loseChildren();
    board.add("JUMPERS").loseChildren();
    FakeElement childless("BOARD");
    childless.loseChildren();

    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateBoardInfo(&childless));
    EXPECT_TRUE(HHDFHwDefBomReader(def.get(), nullptr).populateBoardInfo(&board));
    EXPECT_EQ(def->getBaseBoard(), "zc");
    EXPECT_EQ(boardsOf(*def), "");
}
