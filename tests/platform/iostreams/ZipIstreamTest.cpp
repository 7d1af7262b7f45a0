#include <gtest/gtest.h>

#include <iterator>

#include "platform/iostreams/zip.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::zip_istream;
using support::ZipBuilder;

namespace {

constexpr int hint = 3;

class ZipIstream : public testing::Test {
protected:
    ZipIstream()
    {
        ZipBuilder zip;
        zip.addDeflated("text", text_);
        zip.addStored("damaged", text_).data.back() ^= '\1';
        zip.addStored("encrypted", "x").setFlag(1);
        zip.addStored("line", "one two\nthree");
        zip.write(path_);
    }

    const std::string text_ = support::textBytes(100000, 1);
    support::TempDir dir_;
    const std::string path_ = dir_ / "z.zip";
};

}  // namespace

TEST_F(ZipIstream, readsAMember)
{
    zip_istream stream("text", path_, hint);
    EXPECT_TRUE(stream.is_open());
    EXPECT_TRUE(stream.good());
    const std::string content{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_TRUE(content == text_);
    EXPECT_FALSE(stream.bad());
}

TEST_F(ZipIstream, readsAsStandardStreamsDo)
{
    zip_istream stream("line", path_, hint);
    std::string word;
    stream >> word;
    EXPECT_EQ(word, "one");
    EXPECT_EQ(stream.peek(), ' ');
    std::getline(stream, word);
    EXPECT_EQ(word, " two");
    std::getline(stream, word);
    EXPECT_EQ(word, "three");
    EXPECT_TRUE(stream.eof());
}

TEST_F(ZipIstream, isNotOpenWithoutThrowing)
{
    support::writeFile(dir_ / "text.zip", "no archive");
    for (const auto& [member, archive] : {std::pair<std::string, std::string>{"missing", path_},
                                          {"encrypted", path_},
                                          {"text", dir_ / "missing.zip"},
                                          {"text", dir_ / "text.zip"},
                                          {"text", dir_.path()},
                                          {"text", "/dev/null"}}) {
        zip_istream stream(member, archive, hint);
        EXPECT_FALSE(stream.is_open()) << member << " " << archive;
        EXPECT_TRUE(stream.fail());
        EXPECT_EQ(stream.get(), std::char_traits<char>::eof());
        stream.close();
    }
}

TEST_F(ZipIstream, turnsBadAtDamage)
{
    zip_istream stream("damaged", path_, hint);
    EXPECT_TRUE(stream.is_open());
    std::string content(text_.size() + 1, '\0');
    stream.read(content.data(), static_cast<std::streamsize>(content.size()));
    EXPECT_TRUE(stream.bad());
    EXPECT_LT(stream.gcount(), static_cast<std::streamsize>(text_.size()));
}

TEST_F(ZipIstream, turnsBadForThoseWhoReadItsBuffer)
{
    zip_istream stream("damaged", path_, hint);
    const std::string content{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_LT(content.size(), text_.size());
    EXPECT_TRUE(stream.bad());
}

TEST_F(ZipIstream, throwsToThoseWhoAskForIt)
{
    zip_istream stream("damaged", path_, hint);
    stream.exceptions(std::ios::badbit);
    std::string content(text_.size() + 1, '\0');
    EXPECT_THROW(stream.read(content.data(), static_cast<std::streamsize>(content.size())),
                 std::ios::failure);
}

TEST_F(ZipIstream, endsWhenItIsClosed)
{
    zip_istream stream("text", path_, hint);
    stream.get();
    stream.close();
    EXPECT_FALSE(stream.is_open());
    EXPECT_EQ(stream.get(), std::char_traits<char>::eof());
    stream.close();
}
