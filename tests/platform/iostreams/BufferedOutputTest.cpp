#include "platform/iostreams/BufferedOutput.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"

using Output = iostreams::zip::BufferedOutput;
using platform::File;

namespace {

class BufferedOutput : public testing::Test {
protected:
    std::string content() { return support::readFile(dir_ / "out"); }

    support::TempDir dir_;
    File file_ = File::open(dir_ / "out", O_RDWR | O_CREAT);
    const std::string large_ = support::randomBytes(300000, 1);
};

}  // namespace

TEST_F(BufferedOutput, gathersSmallPiecesInOneCall)
{
    support::FailingSystemCalls calls;
    Output out(file_, 0);
    for (int i = 0; i < 1000; ++i) {
        out.write("0123456789");
    }
    out.flush();
    EXPECT_EQ(calls.count(support::FailingSystemCalls::WRITE), 1U);
    EXPECT_EQ(content().size(), 10000U);
}

TEST_F(BufferedOutput, keepsTheOrderOfSmallAndLargePieces)
{
    Output out(file_, 3);
    out.write("head");
    out.write(large_);
    out.write("tail");
    EXPECT_EQ(out.position(), 3 + 4 + large_.size() + 4);
    out.flush();
    EXPECT_EQ(content(), std::string(3, '\0') + "head" + large_ + "tail");
}

TEST_F(BufferedOutput, overwritesWhatIsInTheFileAndWhatIsNot)
{
    Output out(file_, 0);
    out.write("aaaa");
    out.flush();
    out.write("bbbb");
    out.overwrite(2, "XXYY");
    out.flush();
    EXPECT_EQ(content(), "aaXXYYbb");
}

TEST_F(BufferedOutput, rewindsIntoTheBufferAndIntoTheFile)
{
    Output out(file_, 0);
    out.write("abcdef");
    out.rewind(4);
    out.write("X");
    out.flush();
    EXPECT_EQ(content(), "abcdX");
    out.write("more");
    out.rewind(1);
    out.write("YZ");
    out.flush();
    EXPECT_EQ(out.position(), 3U);
    EXPECT_EQ(content().substr(0, 3), "aYZ");
}

TEST_F(BufferedOutput, takesAStretchOutOfTheBuffer)
{
    Output out(file_, 0);
    out.write("keep-drop-move");
    out.removeStretch(5, 10);
    out.write("!");
    out.flush();
    EXPECT_EQ(content(), "keep-move!");
}

TEST_F(BufferedOutput, takesAStretchOutOfTheFile)
{
    Output out(file_, 0);
    out.write("keep-drop");
    out.flush();
    out.write(large_);
    out.write("tail");
    out.removeStretch(5, 9);
    out.write("!");
    out.flush();
    EXPECT_EQ(content().substr(0, static_cast<std::size_t>(out.position())), "keep-" + large_ + "tail!");
}

TEST_F(BufferedOutput, neverWritesBeyondItsLimit)
{
    support::writeFile(dir_ / "from", "0123456789");
    const File from = File::open(dir_ / "from", O_RDONLY);
    Output out(file_, 0, 8);
    out.write("12345");
    EXPECT_THROW(out.copyFrom(from, 4, 0), platform::FileError);
    EXPECT_EQ(content(), "12345");
    out.write("6789");
    EXPECT_THROW(out.flush(), platform::FileError);
    EXPECT_EQ(content(), "12345");
}
