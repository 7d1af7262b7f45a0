#include <gtest/gtest.h>

#include <boost/iostreams/filtering_stream.hpp>
#include <stdexcept>

#include "platform/iostreams/Append.h"
#include "platform/iostreams/zip.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"

using iostreams::device::file_sink;
using iostreams::device::detail::zip_exception;
using support::FailingSystemCalls;
using support::Members;

namespace {

class FileSink : public testing::Test {
protected:
    void write(file_sink& sink, const std::string& content)
    {
        EXPECT_EQ(sink.write(content.data(), static_cast<std::streamsize>(content.size())),
                  static_cast<std::streamsize>(content.size()));
    }

    support::TempDir dir_;
    const std::string path_ = dir_ / "a.hdf";
    const std::string large_ = support::textBytes(600000, 1);
};

}  // namespace

TEST_F(FileSink, makesTheMemberWhenItsStreamGoesAway)
{
    {
        boost::iostreams::filtering_ostream stream;
        stream.push(file_sink("a", path_));
        stream << "content " << 42;
    }
    EXPECT_EQ(support::readArchive(path_), (Members{{"a", "content 42"}}));
}

TEST_F(FileSink, addsToAnArchiveAndReplacesItsMember)
{
    support::writeArchive(path_, {{"a", "content of a"}, {"b", "content of b"}});
    file_sink sink("a", path_, std::ios_base::out | std::ios_base::binary);
    EXPECT_TRUE(sink.is_open());
    write(sink, "new content");
    EXPECT_EQ(support::memberOf(path_, "a"), "content of a");
    sink.close();
    EXPECT_FALSE(sink.is_open());
    EXPECT_EQ(support::readArchive(path_), (Members{{"b", "content of b"}, {"a", "new content"}}));
}

TEST_F(FileSink, makesAnEmptyMember)
{
    file_sink("empty", path_).close();
    EXPECT_EQ(support::readArchive(path_), (Members{{"empty", ""}}));
}

TEST_F(FileSink, changesNothingWhenItIsDroppedUnclosed)
{
    {
        file_sink sink("a", path_);
        write(sink, large_);
    }
    EXPECT_EQ(dir_.list(), "");
}

TEST_F(FileSink, sharesTheMemberAmongItsCopies)
{
    file_sink first("a", path_);
    file_sink second = first;
    write(first, "one ");
    write(second, "two");
    second.close();
    EXPECT_FALSE(first.is_open());
    first.close();
    EXPECT_EQ(support::readArchive(path_), (Members{{"a", "one two"}}));
}

TEST_F(FileSink, givesTheBytesThatAddingAFileGives)
{
    for (const std::string& content : {std::string("small"), large_, support::randomBytes(256 * 1024, 1),
                                       support::randomBytes(1000000, 1)}) {
        support::writeFile(dir_ / "source", content);
        std::string reason;
        ASSERT_TRUE(iostreams::zip::appendFile(dir_ / "source", "m", dir_ / "file.hdf", reason));
        file_sink sink("m", dir_ / "sink.hdf");
        for (std::size_t at = 0; at < content.size(); at += 100000) {
            write(sink, content.substr(at, 100000));
        }
        sink.close();
        EXPECT_TRUE(support::readFile(dir_ / "sink.hdf") == support::readFile(dir_ / "file.hdf"));
        EXPECT_EQ(dir_.list(), "file.hdf sink.hdf source");
        ::remove((dir_ / "file.hdf").c_str());
        ::remove((dir_ / "sink.hdf").c_str());
    }
}

TEST_F(FileSink, leavesNothingToSeeWhileItIsWrittenTo)
{
    file_sink sink("a", path_);
    write(sink, large_);
    write(sink, large_);
    EXPECT_EQ(dir_.list(), "");
    sink.close();
    EXPECT_TRUE(support::memberOf(path_, "a") == large_ + large_);
    EXPECT_EQ(dir_.list(), "a.hdf");
}

TEST_F(FileSink, usesANamedFileWhereNamelessOnesDoNotExist)
{
    FailingSystemCalls calls;
    file_sink sink("a", path_);
    calls.fail(FailingSystemCalls::OPEN, 1, EOPNOTSUPP);
    write(sink, large_);
    sink.close();
    EXPECT_EQ(dir_.list(), "a.hdf");
    EXPECT_TRUE(support::memberOf(path_, "a") == large_);
}

TEST_F(FileSink, changesNothingWhenAnExceptionTakesItsStreamAway)
{
    support::writeArchive(path_, {{"a", "content of a"}});
    try {
        boost::iostreams::filtering_ostream stream;
        stream.push(file_sink("a", path_));
        stream << "half of it";
        throw std::runtime_error("the other half can't be read");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(support::readArchive(path_), (Members{{"a", "content of a"}}));
}

TEST_F(FileSink, refusesAnArchiveThatCanNotBeRead)
{
    support::writeFile(path_, "not an archive");
    EXPECT_THROW(file_sink("a", path_), zip_exception);
    EXPECT_EQ(support::readFile(path_), "not an archive");
}

TEST_F(FileSink, isNotOpenForANameThatNoArchiveCanHold)
{
    file_sink nameless("", path_);
    EXPECT_FALSE(nameless.is_open());
    EXPECT_THROW(nameless.write("x", 1), zip_exception);
    nameless.close();
    EXPECT_FALSE(file_sink(std::string(65536, 'n'), path_).is_open());
    EXPECT_TRUE(file_sink(std::string(65535, 'n'), path_).is_open());
    EXPECT_EQ(dir_.list(), "");
}

TEST_F(FileSink, takesNothingOnceItIsClosed)
{
    file_sink sink("a", path_);
    write(sink, "content");
    sink.close();
    EXPECT_THROW(sink.write("more", 4), zip_exception);
    EXPECT_EQ(support::readArchive(path_), (Members{{"a", "content"}}));
}

TEST_F(FileSink, makesNoMemberOfWhatItCouldNotKeep)
{
    file_sink sink("a", path_);
    FailingSystemCalls calls;
    calls.fail(FailingSystemCalls::WRITE, 2, ENOSPC);
    write(sink, large_);
    EXPECT_THROW(sink.write(large_.data(), static_cast<std::streamsize>(large_.size())), zip_exception);
    EXPECT_FALSE(sink.is_open());
    sink.close();
    EXPECT_EQ(dir_.list(), "");
}

TEST_F(FileSink, reportsAnArchiveThatCanNotBeWritten)
{
    file_sink sink("a", dir_ / "none/a.hdf");
    write(sink, "content");
    EXPECT_THROW(sink.close(), zip_exception);
}
