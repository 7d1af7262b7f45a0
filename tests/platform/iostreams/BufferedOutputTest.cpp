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
    out.removeStretches({{5, 10}});
    out.write("!");
    out.flush();
    EXPECT_EQ(content().substr(0, static_cast<std::size_t>(out.position())), "keep-move!");
}

TEST_F(BufferedOutput, takesAStretchOutOfTheFile)
{
    Output out(file_, 0);
    out.write("keep-drop");
    out.flush();
    out.write(large_);
    out.write("tail");
    out.removeStretches({{5, 9}});
    out.write("!");
    out.flush();
    EXPECT_EQ(content().substr(0, static_cast<std::size_t>(out.position())), "keep-" + large_ + "tail!");
}

TEST_F(BufferedOutput, takesManyStretchesOut)
{
    Output out(file_, 0);
    std::vector<Output::Stretch> stretches;
    std::string kept;
    const auto write = [&](std::size_t size, bool isKept) {
        const std::string bytes = support::randomBytes(size, static_cast<unsigned>(out.position()));
        if (isKept) {
            kept += bytes;
        } else {
            stretches.push_back({out.position(), out.position() + size});
        }
        out.write(bytes);
    };
    for (const std::size_t size : {1U, 7U, 3000U, 131071U, 131072U, 131073U, 400000U, 2U}) {
        write(size, true);
        write(size / 2, false);
        write(1, false);  // right behind the other one
        write(size + 5, true);
        write(2 * size, false);
    }
    out.removeStretches(stretches);
    EXPECT_EQ(out.position(), kept.size());
    out.write("!");
    out.flush();
    EXPECT_TRUE(content().substr(0, static_cast<std::size_t>(out.position())) == kept + "!");
}

TEST_F(BufferedOutput, readsManyStretchesThroughItsBuffer)
{
    Output out(file_, 0);
    std::vector<Output::Stretch> stretches;
    for (unsigned i = 0; i < 10000; ++i) {
        out.write("kept");
        stretches.push_back({out.position(), out.position() + 6});
        out.write("not so");
    }
    support::FailingSystemCalls calls;
    out.removeStretches(stretches);
    EXPECT_EQ(calls.count(support::FailingSystemCalls::READ), 1U);
    EXPECT_EQ(calls.count(support::FailingSystemCalls::WRITE), 1U);
    EXPECT_EQ(out.position(), 40000U);
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

namespace {

/// Bytes are put out in some way; the digest must be that of the file which comes of it.
class DigestOfOutput : public BufferedOutput {
protected:
    DigestOfOutput() { out_.startDigest(); }

    /// Leaves the last bytes to be overwritten, as an archive's own digest is.
    void expectTheFilesDigest()
    {
        out_.write("tail");
        const std::uint64_t covered = out_.position() - 2;
        const std::string digest = out_.digest(covered);
        out_.overwrite(covered, "XY");
        out_.flush();
        file_.truncate(out_.position());
        EXPECT_EQ(digest, platform::ArchiveDigest::ofFile(file_, covered));
        EXPECT_EQ(content().substr(static_cast<std::size_t>(covered)), "XY");
    }

    unsigned reads() const { return calls_.count(support::FailingSystemCalls::READ); }

    support::FailingSystemCalls calls_;
    Output out_{file_, 0};
};

}  // namespace

TEST_F(DigestOfOutput, isHadWithoutReadingTheFile)
{
    out_.write("head");
    out_.write(large_);
    for (int i = 0; i < 30; ++i) {
        out_.write(std::string(10000, 'a'));
    }
    EXPECT_EQ(out_.digest(out_.position()).size(), 64U);
    EXPECT_EQ(reads(), 0U);
}

TEST_F(DigestOfOutput, coversSmallAndLargePieces)
{
    out_.write("head");
    out_.write(large_);
    out_.write(std::string(100000, 'b'));
    expectTheFilesDigest();
}

TEST_F(DigestOfOutput, coversWhatIsCopied)
{
    support::writeFile(dir_ / "from", large_);
    const File from = File::open(dir_ / "from", O_RDONLY);
    out_.write("head");
    out_.copyFrom(from, 200001, 7);
    expectTheFilesDigest();
    EXPECT_EQ(content().substr(4, 200001), large_.substr(7, 200001));
}

TEST_F(DigestOfOutput, tellsWhichSourceEndsEarly)
{
    support::writeFile(dir_ / "from", large_);
    const File from = File::open(dir_ / "from", O_RDONLY);
    try {
        out_.copyFrom(from, large_.size() + 1, 0);
        FAIL() << "copied more than there is";
    } catch (const platform::FileError& error) {
        EXPECT_EQ(error.path(), from.path());
    }
}

TEST_F(DigestOfOutput, takesWhatIsHeldAsItIsInTheEnd)
{
    for (const std::string& body : {std::string("small"), large_}) {
        out_.write("front");
        const std::uint64_t begin = out_.position();
        out_.hold();
        out_.write("head");
        out_.write(body);
        out_.overwrite(begin, "HEAD");
        out_.release();
        out_.write("behind");
    }
    expectTheFilesDigest();
}

TEST_F(DigestOfOutput, readsBackWhatWasHeldAndNothingElse)
{
    for (int i = 0; i < 10; ++i) {
        out_.write(large_);
    }
    out_.write("front");
    out_.hold();
    out_.write("head");
    out_.overwrite(out_.position() - 4, "HEAD");
    out_.release();
    out_.write("behind");
    const std::uint64_t begin = out_.position();
    out_.hold();
    out_.write(std::string(200000, 'h'));
    out_.overwrite(begin, "HEAD");
    out_.release();
    EXPECT_EQ(out_.digest(out_.position()).size(), 64U);
    EXPECT_EQ(reads(), 4U);  // of 64 KiB each
}

TEST_F(DigestOfOutput, isThatOfTheFileWhenAStretchOfTheBufferIsTakenOut)
{
    out_.write("0123456789");
    out_.hold();
    out_.release();
    out_.write("0123456789");
    out_.removeStretches({{3, 5}});
    expectTheFilesDigest();
}

TEST_F(DigestOfOutput, takesUpWhatWasHeldUpToTheEnd)
{
    out_.hold();
    out_.write(large_);
    out_.write("tai");
    out_.overwrite(1, "X");
    out_.release();
    const std::string digest = out_.digest(large_.size() - 1);
    out_.flush();
    EXPECT_EQ(digest, platform::ArchiveDigest::ofFile(file_, large_.size() - 1));
}

TEST_F(DigestOfOutput, isThatOfTheFileWhileSomethingIsHeld)
{
    out_.write("front");
    out_.hold();
    out_.write(large_);
    expectTheFilesDigest();
}

TEST_F(DigestOfOutput, isThatOfTheFileWhenAStretchOfWhatWasHeldIsTakenOut)
{
    out_.hold();
    out_.write(large_);
    out_.release();
    out_.write("more");
    out_.removeStretches({{1000, 5000}});
    expectTheFilesDigest();
}

TEST_F(DigestOfOutput, isThatOfTheFileWhenWhatWasDigestedChanges)
{
    out_.write(large_);
    out_.write("12345678");
    out_.flush();
    out_.overwrite(3, "XYZ");
    expectTheFilesDigest();
}

TEST_F(DigestOfOutput, isThatOfTheFileWhenWhatWasDigestedIsTakenBack)
{
    out_.write(large_);
    out_.rewind(1000);
    out_.write("other");
    expectTheFilesDigest();
}

TEST_F(DigestOfOutput, isThatOfTheFileWhenAStretchIsTakenOut)
{
    out_.write(large_);
    out_.removeStretches({{1000, 5000}});
    expectTheFilesDigest();
}

TEST_F(DigestOfOutput, goesOnWhenAStretchBehindWhatWasDigestedIsTakenOut)
{
    out_.write(large_);
    out_.write("kept, gone, kept");
    out_.removeStretches({{out_.position() - 10, out_.position() - 4}});
    const unsigned before = reads();
    const std::string digest = out_.digest(out_.position());
    EXPECT_EQ(reads(), before + 1);  // of the few bytes that had to leave the buffer
    out_.flush();
    EXPECT_EQ(digest, platform::ArchiveDigest::ofFile(file_, out_.position()));
}

TEST_F(DigestOfOutput, goesOnWhenWhatWasHeldIsTakenBack)
{
    out_.write("front");
    out_.hold();
    out_.write(large_);
    out_.rewind(5);
    out_.write("other");
    expectTheFilesDigest();
}
