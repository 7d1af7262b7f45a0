#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
#include "platform/iostreams/ArchiveWriterFixture.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/ZipBuilder.h"

using iostreams::device::detail::zip_exception;
using iostreams::zip::ArchiveReader;
using Writer = iostreams::zip::ArchiveWriter;
using support::FailingSystemCalls;

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
