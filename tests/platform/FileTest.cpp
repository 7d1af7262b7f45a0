#include "platform/File.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <string>
#include <utility>

#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"

using platform::File;
using platform::FileError;
using support::FailingSystemCalls;

namespace {

/// The errno and text of the FileError that `work` throws.
std::pair<int, std::string> errorOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const FileError& error) {
        return {error.error(), error.what()};
    }
    return {0, "nothing was thrown"};
}

File create(const std::string& path)
{
    return File::open(path, O_RDWR | O_CREAT | O_TRUNC);
}

}  // namespace

TEST(File, namesThePathTheOperationAndTheReason)
{
    const support::TempDir dir;
    const auto [error, text] = errorOf([&] { File::open(dir / "missing", O_RDONLY); });
    EXPECT_EQ(error, ENOENT);
    EXPECT_EQ(text, (dir / "missing") + ": can't open: No such file or directory");
}

TEST(File, saysTheNumberOfAnErrorWithoutAText)
{
    EXPECT_STREQ(FileError("/d", "open", 12345).what(), "/d: can't open: error 12345");
}

TEST(File, isNotInheritedByOtherPrograms)
{
    const support::TempDir dir;
    const File file = create(dir / "file");
    EXPECT_EQ(::fcntl(file.descriptor(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(File, opensNothingByAPathWithANul)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "");
    EXPECT_EQ(errorOf([&] { File::open((dir / "file") + std::string("\0x", 2), O_RDONLY); }).first, EINVAL);
}

TEST(File, opensAsARegularFileNothingElse)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "abc");
    ASSERT_EQ(::mkfifo((dir / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(File::openRegular(dir / "file", O_RDONLY).size(), 3u);
    EXPECT_EQ(errorOf([&] { File::openRegular(dir / "fifo", O_RDONLY); }).first, EINVAL);
    EXPECT_EQ(errorOf([&] { File::openRegular(dir.path(), O_RDONLY); }).first, EINVAL);
    EXPECT_EQ(errorOf([&] { File::openRegular("/dev/null", O_RDONLY); }).first, EINVAL);
}

TEST(File, ownsItsDescriptor)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    {
        File first = create(dir / "first");
        File second = create(dir / "second");
        const int kept = first.descriptor();
        second = std::move(first);
        EXPECT_EQ(second.descriptor(), kept);
        EXPECT_EQ(second.path(), dir / "first");
        const File third(std::move(second));
        EXPECT_FALSE(second.isOpen());  // NOLINT(bugprone-use-after-move): what is left behind
        EXPECT_EQ(third.descriptor(), kept);
    }
    EXPECT_EQ(calls.openDescriptors(), 0);
    EXPECT_EQ(calls.count(FailingSystemCalls::CLOSE), 2u);
}

TEST(File, readsUpToTheEnd)
{
    const support::TempDir dir;
    support::writeFile(dir / "file", "0123456789");
    const File file = File::open(dir / "file", O_RDONLY);
    char buffer[20] = {};
    EXPECT_EQ(file.readAt(buffer, 4, 3), 4u);
    EXPECT_EQ(std::string(buffer, 4), "3456");
    EXPECT_EQ(file.readAt(buffer, 20, 8), 2u);
    EXPECT_EQ(file.readAt(buffer, 20, 10), 0u);
    EXPECT_EQ(file.read(buffer, 4), 4u);
    EXPECT_EQ(file.read(buffer, 20), 6u);
    EXPECT_EQ(std::string(buffer, 6), "456789");
}

TEST(File, writesAtAnOffsetAndOn)
{
    const support::TempDir dir;
    const File file = create(dir / "file");
    file.write("0123", 4);
    file.writeAt("ab", 2, 1);
    file.write("45", 2);
    EXPECT_EQ(support::readFile(dir / "file"), "0ab345");
}

TEST(File, continuesShortAndInterruptedCalls)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    calls.shortenAll(FailingSystemCalls::READ | FailingSystemCalls::WRITE | FailingSystemCalls::COPY, 3);
    calls.interruptAll(FailingSystemCalls::ANY & ~(FailingSystemCalls::STATUS | FailingSystemCalls::MODE));
    File file = create(dir / "file");
    file.write("0123456789", 10);
    file.writeAt("abcdefg", 7, 10);
    File copy = create(dir / "copy");
    file.copyTo(copy, 17, 0, 0);
    copy.truncate(16);
    char buffer[20] = {};
    EXPECT_EQ(copy.readAt(buffer, 20, 0), 16u);
    EXPECT_EQ(std::string(buffer, 16), "0123456789abcdef");
    EXPECT_EQ(copy.read(buffer, 16), 16u);
    file.close();
    copy.close();
    EXPECT_EQ(calls.openDescriptors(), 0);
}

TEST(File, throwsWhatTheSystemRefuses)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    const File file = create(dir / "file");
    char byte = 'x';
    calls.failAll(FailingSystemCalls::ANY, EIO);
    EXPECT_EQ(errorOf([&] { file.read(&byte, 1); }).second,
              (dir / "file") + ": can't read: Input/output error");
    EXPECT_EQ(errorOf([&] { file.readAt(&byte, 1, 0); }).first, EIO);
    EXPECT_EQ(errorOf([&] { file.write(&byte, 1); }).second,
              (dir / "file") + ": can't write: Input/output error");
    EXPECT_EQ(errorOf([&] { file.writeAt(&byte, 1, 0); }).first, EIO);
    EXPECT_EQ(errorOf([&] { file.truncate(0); }).first, EIO);
    EXPECT_EQ(errorOf([&] { file.setMode(0600); }).first, EIO);
    EXPECT_EQ(errorOf([&] { file.size(); }).first, EIO);
    EXPECT_EQ(errorOf([&] { file.mode(); }).first, EIO);
    EXPECT_EQ(errorOf([&] { File::openRegular(dir / "file", O_RDONLY); }).first, EIO);
}

TEST(File, takesAWriteThatMakesNoProgressForAFullDisk)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    calls.shortenAll(FailingSystemCalls::WRITE, 0);
    const File file = create(dir / "file");
    EXPECT_EQ(errorOf([&] { file.write("x", 1); }).first, ENOSPC);
    EXPECT_EQ(errorOf([&] { file.writeAt("x", 1, 0); }).first, ENOSPC);
}

TEST(File, copiesPartOfAFileInsideTheSystem)
{
    const support::TempDir dir;
    support::writeFile(dir / "from", "0123456789");
    FailingSystemCalls calls;
    const File from = File::open(dir / "from", O_RDONLY);
    const File to = create(dir / "to");
    to.write("abcdefghij", 10);
    from.copyTo(to, 3, 5, 2);
    EXPECT_EQ(support::readFile(dir / "to"), "ab567fghij");
    EXPECT_GE(calls.count(FailingSystemCalls::COPY), 1u);
}

TEST(File, copiesThroughMemoryWhereTheSystemCanNot)
{
    const support::TempDir dir;
    const std::string content = support::randomBytes(300000, 1);
    support::writeFile(dir / "from", content);
    FailingSystemCalls calls;
    calls.fail(FailingSystemCalls::COPY, 1, EXDEV);
    const File from = File::open(dir / "from", O_RDONLY);
    const File to = create(dir / "to");
    from.copyTo(to, content.size() - 7, 7, 0);
    EXPECT_EQ(support::readFile(dir / "to"), content.substr(7));
    EXPECT_EQ(calls.count(FailingSystemCalls::COPY), 1u);
}

TEST(File, reportsACopyThatTheSystemRefuses)
{
    const support::TempDir dir;
    support::writeFile(dir / "from", "0123456789");
    FailingSystemCalls calls;
    calls.fail(FailingSystemCalls::COPY, 1, ENOSPC);
    const File from = File::open(dir / "from", O_RDONLY);
    const File to = create(dir / "to");
    EXPECT_EQ(errorOf([&] { from.copyTo(to, 10, 0, 0); }).second,
              (dir / "to") + ": can't copy from " + (dir / "from") + ": No space left on device");
}

TEST(File, reportsACopyWhoseSourceEndsEarly)
{
    const support::TempDir dir;
    support::writeFile(dir / "from", "0123456789");
    const File from = File::open(dir / "from", O_RDONLY);
    const File to = create(dir / "to");
    EXPECT_EQ(errorOf([&] { from.copyTo(to, 11, 0, 0); }).second,
              (dir / "from") + ": can't read (the file ends early): Input/output error");
}

TEST(File, answersAndSetsSizeAndPermissions)
{
    const support::TempDir dir;
    const File file = create(dir / "file");
    file.truncate(12);
    file.setMode(0640);
    EXPECT_EQ(file.size(), 12u);
    EXPECT_EQ(file.mode(), 0640u);
}

TEST(File, reportsALateErrorOfClosing)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    calls.fail(FailingSystemCalls::CLOSE, 1, EDQUOT);
    File file = create(dir / "file");
    EXPECT_EQ(errorOf([&] { file.close(); }).first, EDQUOT);
    EXPECT_FALSE(file.isOpen());
    file.close();
    EXPECT_EQ(calls.count(FailingSystemCalls::CLOSE), 1u);
}

TEST(File, takesAnInterruptedCloseForDone)
{
    const support::TempDir dir;
    FailingSystemCalls calls;
    calls.fail(FailingSystemCalls::CLOSE, 1, EINTR);
    File file = create(dir / "file");
    file.close();
    EXPECT_EQ(calls.count(FailingSystemCalls::CLOSE), 1u);
}
