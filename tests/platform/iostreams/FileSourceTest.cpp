#include <gtest/gtest.h>

#include <boost/iostreams/filtering_stream.hpp>
#include <iterator>

#include "platform/iostreams/zip.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::device::file_source;
using iostreams::device::detail::zip_exception;
using support::ZipBuilder;

namespace {

/// An archive with the members "text" and "damaged", whose last byte is wrong.
class FileSource : public testing::Test {
protected:
    FileSource()
    {
        ZipBuilder zip;
        zip.addDeflated("text", text_);
        zip.addStored("damaged", text_).data.back() ^= '\1';
        zip.addStored("encrypted", "x").setFlag(1);
        zip.addStored("empty", "");
        zip.write(path_);
    }

    const std::string text_ = support::textBytes(100000, 1);
    support::TempDir dir_;
    const std::string path_ = dir_ / "z.zip";
};

}  // namespace

TEST_F(FileSource, readsAMemberThroughAFilteringStream)
{
    file_source source("text", path_);
    ASSERT_TRUE(source.is_open());
    boost::iostreams::filtering_istream stream;
    stream.push(source);
    const std::string content{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_TRUE(content == text_);
}

TEST_F(FileSource, isNotOpenWithoutTheMemberOrTheArchive)
{
    EXPECT_FALSE(file_source("missing", path_).is_open());
    EXPECT_FALSE(file_source("", path_).is_open());
    EXPECT_FALSE(file_source("text", dir_ / "missing.zip").is_open());
    EXPECT_FALSE(file_source("text", path_ + "/below").is_open());
    EXPECT_FALSE(file_source("text", "").is_open());
    char byte = 0;
    EXPECT_EQ(file_source("missing", path_).read(&byte, 1), -1);
}

TEST_F(FileSource, throwsForWhatIsNoArchive)
{
    support::writeFile(dir_ / "text.zip", "no archive");
    EXPECT_THROW(file_source("text", dir_ / "text.zip"), zip_exception);
    EXPECT_THROW(file_source("text", dir_.path()), zip_exception);
    EXPECT_THROW(file_source("text", "/dev/null"), zip_exception);
}

TEST_F(FileSource, throwsForMembersThatCantBeRead)
{
    EXPECT_EQ(support::zipFailure(path_, [&] { file_source("encrypted", path_); }),
              "member \"encrypted\": is encrypted, which isn't supported");
}

TEST_F(FileSource, readsTheSameInEveryMode)
{
    for (const std::ios::openmode mode :
         {std::ios::in, std::ios::in | std::ios::binary, std::ios::openmode()}) {
        file_source source("text", path_, mode);
        std::string content(text_.size() + 1, '\0');
        EXPECT_EQ(source.read(content.data(), static_cast<std::streamsize>(content.size())),
                  static_cast<std::streamsize>(text_.size()));
        EXPECT_EQ(source.read(content.data(), 1), -1);
    }
}

TEST_F(FileSource, endsAtOnceInAnEmptyMember)
{
    file_source source("empty", path_);
    EXPECT_TRUE(source.is_open());
    char byte = 0;
    EXPECT_EQ(source.read(&byte, 1), -1);
}

TEST_F(FileSource, sharesTheMemberAmongItsCopies)
{
    file_source first("text", path_);
    file_source second = first;
    std::string content(50000, '\0');
    EXPECT_EQ(first.read(content.data(), 50000), 50000);
    EXPECT_EQ(second.read(content.data(), 50000), 50000);
    EXPECT_EQ(content, text_.substr(50000));
    first.close();
    EXPECT_FALSE(second.is_open());
    EXPECT_EQ(second.read(content.data(), 1), -1);
    second.close();
}

TEST_F(FileSource, closesItsFile)
{
    const support::FailingSystemCalls calls;
    {
        const file_source dropped("text", path_);
        file_source closed("text", path_);
        closed.close();
        EXPECT_EQ(calls.openDescriptors(), 1);
        const file_source missing("missing", path_);
    }
    EXPECT_EQ(calls.openDescriptors(), 0);
}

TEST_F(FileSource, throwsThroughTheStreamsBuffer)
{
    boost::iostreams::filtering_istream stream;
    stream.push(file_source("damaged", path_));
    std::string content;
    const std::string failure = support::zipFailure(path_, [&] {
        for (std::istreambuf_iterator<char> at(stream), end; at != end; ++at) {
            content += *at;
        }
    });
    EXPECT_EQ(failure.substr(0, 28), "member \"damaged\": CRC-32 is ");
    EXPECT_LT(content.size(), text_.size());
}

TEST_F(FileSource, makesTheStreamBad)
{
    boost::iostreams::filtering_istream stream;
    stream.push(file_source("damaged", path_));
    std::string content(text_.size() + 1, '\0');
    stream.read(content.data(), static_cast<std::streamsize>(content.size()));
    EXPECT_TRUE(stream.bad());
}
