#include "platform/HUTFileWriteStream.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"

using support::FailingSystemCalls;

TEST(HUTFileWriteStream, writesWhatItIsGiven)
{
    const support::TempDir dir;
    {
        HUTFileWriteStream stream(dir / "file");
        EXPECT_TRUE(stream.is_open());
        stream << "text " << 42 << '\n';
        EXPECT_TRUE(stream.good());
    }
    EXPECT_EQ(support::readFile(dir / "file"), "text 42\n");
}

TEST(HUTFileWriteStream, writesMoreThanItsBufferHolds)
{
    const support::TempDir dir;
    const std::string content = support::randomBytes(100000, 1);
    {
        HUTFileWriteStream stream(dir / "file");
        for (const char byte : content) {
            stream.put(byte);
        }
        stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    }
    EXPECT_EQ(support::readFile(dir / "file"), content + content);
}

TEST(HUTFileWriteStream, replacesAnExistingFile)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "old and longer");
    HUTFileWriteStream(dir / "file") << "new";
    EXPECT_EQ(support::readFile(dir / "file"), "new");
}

TEST(HUTFileWriteStream, continuesAnExistingFileInModeApp)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "old ");
    HUTFileWriteStream(dir / "file", std::ios_base::out | std::ios_base::app) << "new";
    EXPECT_EQ(support::readFile(dir / "file"), "old new");
}

TEST(HUTFileWriteStream, flushesOnRequest)
{
    const support::TempDir dir;
    HUTFileWriteStream stream(dir / "file");
    stream << "text" << std::flush;
    EXPECT_EQ(support::readFile(dir / "file"), "text");
}

TEST(HUTFileWriteStream, failsWhenTheFileCanNotBeOpened)
{
    const support::TempDir dir;
    HUTFileWriteStream stream(dir / "missing/file");
    EXPECT_FALSE(stream.is_open());
    EXPECT_TRUE(stream.fail());
    EXPECT_FALSE(stream.bad());
    stream.clear();
    stream << "text";
    EXPECT_TRUE(stream.bad());
}

TEST(HUTFileWriteStream, closesOnce)
{
    const support::TempDir dir;
    HUTFileWriteStream stream(dir / "file");
    stream << "text";
    stream.close();
    EXPECT_TRUE(stream.good());
    EXPECT_FALSE(stream.is_open());
    EXPECT_EQ(support::readFile(dir / "file"), "text");
    stream.close();
    EXPECT_TRUE(stream.fail());
}

TEST(HUTFileWriteStream, goesBadWhenAWriteFails)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    HUTFileWriteStream stream(dir / "file");
    calls.fail(FailingSystemCalls::WRITE, 1, ENOSPC);
    stream << "lost" << std::flush;
    EXPECT_TRUE(stream.bad());
    stream.clear();
    stream << "kept";
    stream.close();
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(support::readFile(dir / "file"), "kept");
}

TEST(HUTFileWriteStream, goesBadWhenAFullBufferCanNotBeWritten)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    calls.failAll(FailingSystemCalls::WRITE, ENOSPC);
    HUTFileWriteStream stream(dir / "file");
    stream << support::textBytes(100000, 1);
    EXPECT_TRUE(stream.bad());
}

TEST(HUTFileWriteStream, failsAtCloseWhenTheRestCanNotBeWritten)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    HUTFileWriteStream stream(dir / "file");
    calls.fail(FailingSystemCalls::WRITE, 1, ENOSPC);
    stream << "lost";
    EXPECT_TRUE(stream.good());
    stream.close();
    EXPECT_TRUE(stream.fail());
    EXPECT_EQ(calls.openDescriptors(), 0);
}

TEST(HUTFileWriteStream, failsAtCloseWhenTheSystemReportsALateError)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    calls.fail(FailingSystemCalls::CLOSE, 1, EDQUOT);
    HUTFileWriteStream stream(dir / "file");
    stream.close();
    EXPECT_TRUE(stream.fail());
}

TEST(HUTFileWriteStream, leavesNoDescriptorBehind)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    HUTFileWriteStream(dir / "file") << "text";
    EXPECT_EQ(calls.count(FailingSystemCalls::CREATE), 1u);
    EXPECT_EQ(calls.openDescriptors(), 0);
}
