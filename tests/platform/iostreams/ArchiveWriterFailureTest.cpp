#include <gtest/gtest.h>

#include "platform/iostreams/ArchiveWriterFixture.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"

using iostreams::device::detail::zip_exception;
using iostreams::zip::ArchiveReader;
using Writer = iostreams::zip::ArchiveWriter;
using support::FailingSystemCalls;

TEST_F(ArchiveWriter, takesBackAMemberWhoseSourceFailsHalfWay)
{
    support::writeFile(dir_ / "large", support::randomBytes(4 * CHUNK, 8));
    Writer writer(path_);
    add(writer, "a", "first");
    {
        FailingSystemCalls calls;
        calls.fail(FailingSystemCalls::READ, 3, EIO);
        EXPECT_FALSE(writer.addFile(dir_ / "large", "a", reason_));
        EXPECT_EQ(reason_, (dir_ / "large") + ": can't read: Input/output error");
    }
    add(writer, "b", "last");
    writer.commit();
    EXPECT_EQ(support::namesIn(path_), "a b");
    EXPECT_LT(support::readFile(path_).size(), 1000U);
}

TEST_F(ArchiveWriter, leavesTheOldFileUntilCommit)
{
    support::writeFile(path_, "old");
    Writer writer(path_);
    add(writer, "a", "first");
    EXPECT_EQ(support::readFile(path_), "old");
    writer.commit();
    EXPECT_EQ(support::namesIn(path_), "a");
}

TEST_F(ArchiveWriter, leavesNoTraceWithoutCommit)
{
    {
        Writer writer(path_);
        add(writer, "a", support::randomBytes(3 * CHUNK, 10));
    }
    EXPECT_EQ(dir_.list(), "source");
}

TEST_F(ArchiveWriter, saysWhichArchiveCanNotBeMade)
{
    try {
        Writer writer(dir_ / "none/new.hdf");
        FAIL() << "made an archive in a directory that doesn't exist";
    } catch (const zip_exception& error) {
        EXPECT_EQ(std::string(error.what()).find(dir_ / "none/new.hdf: "), 0U) << error.what();
    }
}

TEST_F(ArchiveWriter, keepsTheOldArchiveWhenAnyCallFails)
{
    support::writeArchive(path_, {{"old", "old content"}});
    support::writeFile(dir_ / "source", support::randomBytes(3 * CHUNK, 13));
    const std::string before = support::readFile(path_);
    const auto write = [&] {
        Writer writer(path_, Writer::Digest::ATTACHED);
        writer.addFile(dir_ / "source", "m", reason_);
        writer.commit();
    };
    FailingSystemCalls counted;
    counted.fail(FailingSystemCalls::RENAME, 1, EIO);
    EXPECT_THROW(write(), zip_exception);
    const unsigned all = counted.count(FailingSystemCalls::CHANGES);
    ASSERT_GE(all, 5U);
    for (unsigned nth = 1; nth < all - 1; ++nth) {
        FailingSystemCalls calls;
        calls.fail(FailingSystemCalls::CHANGES, nth, ENOSPC);
        EXPECT_THROW(write(), zip_exception) << nth;
        EXPECT_TRUE(support::readFile(path_) == before) << nth;
        EXPECT_EQ(dir_.list(), "new.hdf source") << nth;
    }
}

TEST_F(ArchiveWriter, keepsTheOldArchiveWhenAnyCallFailsWhileMembersMoveUp)
{
    support::writeArchive(path_, {{"old", "old content"}});
    support::writeFile(path_, "front" + support::readFile(path_));
    support::writeFile(dir_ / "source", support::randomBytes(3 * CHUNK, 13));
    const std::string before = support::readFile(path_);
    const auto write = [&] {
        const ArchiveReader present(path_);
        Writer writer(path_, Writer::Digest::ATTACHED);
        writer.keepFront(present);
        bool added = true;
        for (const char* const name : {"a", "b", "a", "c", "b"}) {
            added = added && writer.addFile(dir_ / "source", name, reason_);
        }
        if (added) {
            writer.commit();
        }
        return added;
    };
    FailingSystemCalls counted;
    EXPECT_TRUE(write());
    const unsigned reads = counted.count(FailingSystemCalls::READ);
    const std::string after = support::readFile(path_);
    unsigned failures = 0;
    for (unsigned nth = 1; nth <= reads; ++nth) {
        support::writeFile(path_, before);
        FailingSystemCalls calls;
        calls.fail(FailingSystemCalls::READ, nth, EIO);
        bool isWritten = false;
        try {
            isWritten = write();
        } catch (const zip_exception&) {
        }
        failures += isWritten ? 0 : 1;
        EXPECT_TRUE(support::readFile(path_) == (isWritten ? after : before)) << nth;
        EXPECT_EQ(dir_.list(), "new.hdf source") << nth;
    }
    EXPECT_EQ(failures, reads);
}

TEST_F(ArchiveWriter, showsTheOldOrTheNewArchiveWhereverItDies)
{
    support::writeFile(dir_ / "source", support::randomBytes(3 * CHUNK, 14));
    int shown[2] = {0, 0};
    for (unsigned nth = 1;; ++nth) {
        support::writeArchive(path_, {{"old", "old content"}});
        FailingSystemCalls calls;
        calls.dieAt(FailingSystemCalls::CHANGES, nth, 1000);
        try {
            Writer writer(path_, Writer::Digest::ATTACHED);
            writer.addFile(dir_ / "source", "m", reason_);
            writer.commit();
        } catch (const zip_exception&) {
        }
        const bool died = calls.died();
        calls.restart();
        const std::string names = support::namesIn(path_);
        EXPECT_TRUE(names == "old" || names == "m") << nth << ": " << names;
        ++shown[names == "m"];
        if (!died) {
            EXPECT_EQ(names, "m");
            break;
        }
    }
    EXPECT_GE(shown[0], 5);
}
