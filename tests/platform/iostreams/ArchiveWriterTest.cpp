#include "platform/iostreams/ArchiveWriter.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>

#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
#include "platform/iostreams/ArchiveWriterFixture.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/ZipBuilder.h"

using iostreams::zip::ArchiveReader;
using Writer = iostreams::zip::ArchiveWriter;
using support::FailingSystemCalls;

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

TEST_F(ArchiveWriter, refusesWhatWouldBeTakenForALocator)
{
    const std::string locator = "PK\x06\x07" + std::string(16, 'l');
    support::ZipBuilder zip;
    zip.addStored("a", "content of a").comment = locator;
    zip.addStored("b", "content of b");
    zip.prefix = locator;
    zip.write(path_);
    const std::string before = support::readFile(path_);
    const std::vector<std::pair<std::string, bool>> orders = {{"ab", true}, {"ba", false}, {"", false}};
    for (const auto& [order, isWritten] : orders) {
        support::writeFile(path_, before);
        const ArchiveReader from(path_);
        Writer writer(path_);
        writer.keepFront(from);
        for (const char name : order) {
            EXPECT_TRUE(writer.addMember(from, *from.find({&name, 1}), {name}, reason_,
                                         iostreams::zip::Origin::KEPT));
        }
        if (isWritten) {
            writer.commit();
        } else {
            EXPECT_EQ(support::zipFailure(path_, [&] { writer.commit(); }),
                      "what stands in front of the end record would be taken for the locator of another one");
        }
        EXPECT_EQ(support::readFile(path_), before);
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
