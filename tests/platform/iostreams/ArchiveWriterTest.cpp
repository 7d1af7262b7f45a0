#include "platform/iostreams/ArchiveWriter.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::device::detail::zip_exception;
using iostreams::zip::ArchiveReader;
using Writer = iostreams::zip::ArchiveWriter;
using support::FailingSystemCalls;

namespace {

constexpr std::size_t CHUNK = 256 * 1024;

class ArchiveWriter : public testing::Test {
protected:
    /// Adds content by way of a file on disk.
    bool add(Writer& writer, const std::string& name, const std::string& content)
    {
        support::writeFile(dir_ / "source", content);
        return writer.addFile(dir_ / "source", name, reason_);
    }

    bool copy(Writer& writer, const ArchiveReader& from, const std::string& name)
    {
        return writer.addMember(from, *from.find(name), name, reason_);
    }

    support::TempDir dir_;
    const std::string path_ = dir_ / "new.hdf";
    std::string reason_;
};

}  // namespace

TEST_F(ArchiveWriter, writesMembersInTheOrderAdded)
{
    Writer writer(path_);
    EXPECT_TRUE(add(writer, "sysdef.xml", "<a/>"));
    EXPECT_TRUE(add(writer, "b.bit", support::randomBytes(5000, 1)));
    EXPECT_TRUE(add(writer, "a.txt", support::textBytes(5000, 1)));
    writer.commit();
    EXPECT_EQ(support::namesIn(path_), "sysdef.xml b.bit a.txt");
}

TEST_F(ArchiveWriter, writesAnArchiveWithoutMembers)
{
    Writer(path_).commit();
    EXPECT_EQ(support::readFile(path_).size(), 22U);
    EXPECT_EQ(ArchiveReader(path_).entries().size(), 0U);
}

TEST_F(ArchiveWriter, writesManySmallMembersWithFewCalls)
{
    support::writeFile(dir_ / "source", "content");
    FailingSystemCalls calls;
    Writer writer(path_);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_TRUE(writer.addFile(dir_ / "source", "member" + std::to_string(i), reason_));
    }
    writer.commit();
    EXPECT_LE(calls.count(FailingSystemCalls::WRITE), 2U);
    EXPECT_EQ(ArchiveReader(path_).entries().size(), 1000U);
}

TEST_F(ArchiveWriter, givesTheSameBytesForTheSameInput)
{
    std::string bytes[2];
    for (std::string& result : bytes) {
        Writer writer(path_, Writer::Digest::ATTACHED);
        add(writer, "a", support::textBytes(600000, 6));
        add(writer, "b", support::randomBytes(600000, 6));
        writer.commit();
        result = support::readFile(path_);
    }
    EXPECT_TRUE(bytes[0] == bytes[1]);
}

TEST_F(ArchiveWriter, replacesAMemberOfTheSameName)
{
    Writer writer(path_);
    add(writer, "a", "first");
    add(writer, "b", "other");
    add(writer, "a", "second");
    writer.commit();
    EXPECT_EQ(support::namesIn(path_), "b a");
    EXPECT_EQ(support::memberOf(path_, "a"), "second");
}

TEST_F(ArchiveWriter, keepsNothingOfReplacedMembers)
{
    // Each digit stands for a member's name, content and size differ each time.
    const std::vector<std::string> orders = {"00",      "0120",         "0011",
                                             "0123012", "012345354210", "01234567654321"};
    for (const auto digest : {Writer::Digest::NONE, Writer::Digest::ATTACHED}) {
        for (const std::string& order : orders) {
            std::string bytes[2];
            for (const bool withReplaced : {false, true}) {
                Writer writer(path_, digest);
                for (std::size_t i = 0; i < order.size(); ++i) {
                    if (withReplaced || order.find(order[i], i + 1) == std::string::npos) {
                        const auto size = i * 7 % 5 * static_cast<std::size_t>(order[i] - '0') * 20011;
                        add(writer, {order[i]}, support::randomBytes(size, static_cast<unsigned>(i)));
                    }
                }
                writer.commit();
                bytes[withReplaced] = support::readFile(path_);
            }
            EXPECT_TRUE(bytes[0] == bytes[1]) << order;
        }
        EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(path_)),
                  digest == Writer::Digest::ATTACHED ? HUTZip::INTACT : HUTZip::NO_DIGEST);
    }
}

TEST_F(ArchiveWriter, cutsTheLastMemberWhenItIsReplaced)
{
    const std::string large = support::randomBytes(3 * CHUNK, 7);
    std::string bytes[2];
    for (const int replaced : {0, 1}) {
        Writer writer(path_);
        add(writer, "a", "first");
        if (replaced == 1) {
            add(writer, "b", large);
        }
        add(writer, "b", large + "2");
        add(writer, "c", "last");
        if (replaced == 1) {
            add(writer, "c", "last");
        }
        writer.commit();
        bytes[replaced] = support::readFile(path_);
    }
    EXPECT_TRUE(bytes[0] == bytes[1]);
}

TEST_F(ArchiveWriter, knowsWhatWasAdded)
{
    Writer writer(path_);
    add(writer, "a", "first");
    EXPECT_TRUE(writer.contains("a"));
    EXPECT_FALSE(writer.contains("A"));
}

TEST_F(ArchiveWriter, goesOnAfterASourceThatIsMissing)
{
    Writer writer(path_);
    add(writer, "a", "first");
    EXPECT_FALSE(writer.addFile(dir_ / "missing", "a", reason_));
    EXPECT_EQ(reason_, (dir_ / "missing") + ": can't open: No such file or directory");
    EXPECT_FALSE(writer.addFile(dir_.path(), "d", reason_));
    EXPECT_EQ(reason_, dir_.path() + ": can't open as a regular file: Invalid argument");
    writer.commit();
    EXPECT_EQ(support::namesIn(path_), "a");
    EXPECT_EQ(support::memberOf(path_, "a"), "first");
}

TEST_F(ArchiveWriter, doesNotWaitForAFifo)
{
    ASSERT_EQ(::mkfifo((dir_ / "fifo").c_str(), 0600), 0);
    Writer writer(path_);
    EXPECT_FALSE(writer.addFile(dir_ / "fifo", "f", reason_));
    EXPECT_EQ(reason_, (dir_ / "fifo") + ": can't open as a regular file: Invalid argument");
}

TEST_F(ArchiveWriter, refusesNamesThatNoArchiveCanHold)
{
    Writer writer(path_);
    EXPECT_FALSE(add(writer, "", "x"));
    EXPECT_EQ(reason_, "a member must have a name, but it is empty");
    EXPECT_FALSE(add(writer, std::string(65536, 'n'), "x"));
    EXPECT_EQ(reason_,
              "member \"" + std::string(40, 'n') + "...\": its name has 65536 bytes, allowed are 65535");
    EXPECT_TRUE(add(writer, std::string(65535, 'n'), "x"));
    writer.commit();
    EXPECT_EQ(ArchiveReader(path_).entries().front().name.size(), 65535U);
}

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

TEST_F(ArchiveWriter, mayReplaceTheArchiveThatItCopiesFrom)
{
    support::writeArchive(path_, {{"a", "content of a"}, {"b", "content of b"}});
    const ArchiveReader from(path_);
    Writer writer(path_);
    EXPECT_TRUE(copy(writer, from, "b"));
    EXPECT_TRUE(add(writer, "c", "new"));
    EXPECT_TRUE(copy(writer, from, "a"));
    writer.commit();
    EXPECT_EQ(support::readArchive(path_),
              (support::Members{{"b", "content of b"}, {"c", "new"}, {"a", "content of a"}}));
}

TEST_F(ArchiveWriter, keepsWhatStandsInFrontOfMembers)
{
    const std::string program = "#!/bin/sh\n" + support::textBytes(300000, 3);
    support::writeArchive(path_, {{"a", "content of a"}, {"b", "content of b"}});
    for (const bool isCounted : {false, true}) {
        const std::string present = dir_ / "present.zip";
        support::writeFile(present, program + support::readFile(path_));
        if (isCounted) {
            ASSERT_EQ(std::system(("zip -q -A '" + present + "'").c_str()), 0);
        }
        for (int time = 0; time < 2; ++time) {
            const ArchiveReader from(present);
            EXPECT_EQ(from.endRecord().prefixSize, isCounted ? 0 : program.size());
            Writer writer(present, Writer::Digest::ATTACHED);
            writer.keepFront(from);
            EXPECT_TRUE(add(writer, "new", "first"));
            EXPECT_TRUE(copy(writer, from, "b"));
            EXPECT_TRUE(add(writer, "new", std::to_string(time)));
            writer.commit();
            EXPECT_EQ(support::readFile(present).substr(0, program.size()), program);
            const ArchiveReader written(present);  // libzip reads no archives with bytes in front
            EXPECT_EQ(written.endRecord().prefixSize, isCounted ? 0 : program.size());
            ASSERT_EQ(written.entries().size(), 2U);
            EXPECT_EQ(written.read(*written.find("b"), 100), "content of b");
            EXPECT_EQ(written.read(*written.find("new"), 100), std::to_string(time));
            EXPECT_EQ(std::system(("python3 -m zipfile -t '" + present + "' >/dev/null").c_str()), 0);
            EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(present)), HUTZip::INTACT);
        }
    }
}

TEST_F(ArchiveWriter, keepsTheFrontOfAnArchiveWithoutMembers)
{
    support::writeFile(path_, "front");
    const std::string empty = dir_ / "empty.zip";
    Writer(empty).commit();
    support::writeFile(path_, "front" + support::readFile(empty));
    const std::string before = support::readFile(path_);
    const ArchiveReader from(path_);
    Writer writer(path_);
    writer.keepFront(from);
    writer.commit();
    EXPECT_EQ(support::readFile(path_), before);
}

TEST_F(ArchiveWriter, attachesADigestOfAllItsOtherBytes)
{
    Writer writer(path_, Writer::Digest::ATTACHED);
    add(writer, "large", support::textBytes(2000000, 12));
    writer.commit();
    const std::string bytes = support::readFile(path_);
    EXPECT_EQ(bytes.substr(bytes.size() - 77, 13), "hwdef-sha256:");
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(path_)), HUTZip::INTACT);
    EXPECT_EQ(support::namesIn(path_), "large");
}

TEST_F(ArchiveWriter, attachesTheDigestOfWhateverWasAddedAndReplaced)
{
    const std::string compressible = support::textBytes(2 * CHUNK, 12);
    const std::string random = support::randomBytes(2 * CHUNK, 12);
    const std::string from = dir_ / "from.zip";
    support::writeArchive(from, {{"copied", random}, {"small", "1"}});
    const ArchiveReader reader(from);
    Writer writer(path_, Writer::Digest::ATTACHED);
    for (const std::string& content : {std::string("small"), compressible, random}) {
        add(writer, "first", content);
        add(writer, "other", "in between");
        EXPECT_TRUE(copy(writer, reader, "copied"));
        EXPECT_FALSE(writer.addFile(dir_ / "missing", "x", reason_));
        add(writer, "last", content);
        EXPECT_TRUE(copy(writer, reader, "small"));
        add(writer, "last", content + "2");
        add(writer, "last", content);
    }
    writer.setComment(std::string(65535 - 77, 'c'));
    writer.commit();
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(path_)), HUTZip::INTACT);
    EXPECT_EQ(support::memberOf(path_, "last"), random);
}

TEST_F(ArchiveWriter, readsNothingBackForTheDigestOfCopies)
{
    const std::string from = dir_ / "from.zip";
    support::writeArchive(from, {{"a", support::randomBytes(4 * CHUNK, 12)}, {"b", "1"}});
    const ArchiveReader reader(from);
    unsigned reads[2] = {};
    for (const auto digest : {Writer::Digest::NONE, Writer::Digest::ATTACHED}) {
        Writer writer(path_, digest);
        EXPECT_TRUE(copy(writer, reader, "a"));
        EXPECT_TRUE(copy(writer, reader, "b"));
        FailingSystemCalls calls;
        writer.commit();
        reads[digest == Writer::Digest::ATTACHED] = calls.count(FailingSystemCalls::READ);
    }
    EXPECT_EQ(reads[1], reads[0]);
}

TEST_F(ArchiveWriter, readsOnlyTheEndBackForTheDigestBehindALongComment)
{
    Writer writer(path_, Writer::Digest::ATTACHED);
    const std::string from = dir_ / "from.zip";
    support::writeArchive(from, {{"a", support::randomBytes(8 * CHUNK, 12)}});
    EXPECT_TRUE(copy(writer, ArchiveReader(from), "a"));
    writer.setComment(std::string(65535 - 77, 'c'));
    {
        FailingSystemCalls calls;
        writer.commit();
        EXPECT_LE(calls.count(FailingSystemCalls::READ), 2U);  // of 64 KiB each
    }
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(path_)), HUTZip::INTACT);
}

TEST_F(ArchiveWriter, attachesTheDigestBehindASourceThatFailsHalfWay)
{
    support::writeFile(dir_ / "large", support::randomBytes(4 * CHUNK, 8));
    Writer writer(path_, Writer::Digest::ATTACHED);
    add(writer, "a", "first");
    {
        FailingSystemCalls calls;
        calls.fail(FailingSystemCalls::READ, 3, EIO);
        EXPECT_FALSE(writer.addFile(dir_ / "large", "large", reason_));
    }
    add(writer, "b", support::textBytes(2 * CHUNK, 9));
    writer.commit();
    EXPECT_EQ(support::namesIn(path_), "a b");
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(path_)), HUTZip::INTACT);
}

TEST_F(ArchiveWriter, attachesTheDigestBehindACopyWhoseArchiveEndsEarly)
{
    const std::string from = dir_ / "from.zip";
    support::writeArchive(from, {{"large", support::randomBytes(4 * CHUNK, 8)}});
    const ArchiveReader reader(from);
    Writer writer(path_, Writer::Digest::ATTACHED);
    add(writer, "a", "first");
    ASSERT_EQ(::truncate(from.c_str(), 2 * CHUNK), 0);
    EXPECT_FALSE(copy(writer, reader, "large"));
    EXPECT_EQ(reason_, from + ": can't read (the file ends early): Input/output error");
    add(writer, "b", support::randomBytes(2 * CHUNK, 9));
    writer.commit();
    EXPECT_EQ(support::namesIn(path_), "a b");
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(path_)), HUTZip::INTACT);
}

TEST_F(ArchiveWriter, putsACommentInFrontOfTheDigest)
{
    Writer writer(path_, Writer::Digest::ATTACHED);
    writer.setComment("a comment ");
    writer.commit();
    const std::string bytes = support::readFile(path_);
    EXPECT_EQ(bytes.substr(22, 23), "a comment hwdef-sha256:");
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(path_)), HUTZip::INTACT);
}

TEST_F(ArchiveWriter, refusesACommentThatNoArchiveCanHold)
{
    for (const auto digest : {Writer::Digest::NONE, Writer::Digest::ATTACHED}) {
        const std::size_t most = digest == Writer::Digest::ATTACHED ? 65535 - 77 : 65535;
        Writer fits(path_, digest);
        fits.setComment(std::string(most, 'c'));
        fits.commit();
        Writer tooLong(path_, digest);
        tooLong.setComment(std::string(most + 1, 'c'));
        EXPECT_THROW(tooLong.commit(), zip_exception);
        EXPECT_EQ(support::readFile(path_).size(), 22U + 65535U);
    }
}

TEST_F(ArchiveWriter, refusesACommentThatHidesTheEndRecord)
{
    Writer writer(path_, Writer::Digest::ATTACHED);
    writer.setComment("a comment PK\5\6");
    EXPECT_EQ(support::zipFailure(path_, [&] { writer.commit(); }),
              "the comment holds an end record, which would be taken for the archive's own");
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
