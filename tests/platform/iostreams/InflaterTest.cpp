#include "platform/iostreams/Inflater.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::zip::Inflater;

namespace {

/// All that a stream unpacks to, its bytes fed and taken in pieces of these sizes.
std::string unpack(const std::string& stream, std::size_t feedBytes, std::size_t takeBytes)
{
    Inflater inflater;
    std::string content;
    std::string piece(takeBytes, '\0');
    std::size_t fed = 0;
    for (;;) {
        const std::size_t got = inflater.unpack(piece.data(), piece.size());
        content.append(piece, 0, got);
        if (inflater.isFinished()) {
            return content;
        }
        if (got == 0 && inflater.needsInput()) {
            if (fed == stream.size()) {
                ADD_FAILURE() << "the stream doesn't end";
                return content;
            }
            const std::size_t some = std::min(feedBytes, stream.size() - fed);
            inflater.feed(std::string_view(stream).substr(fed, some));
            fed += some;
        }
    }
}

}  // namespace

TEST(Inflater, unpacksWhateverTheSizesOfThePieces)
{
    const std::string content = support::textBytes(70000, 1) + support::randomBytes(5000, 2);
    const std::string stream = support::deflated(content);
    for (const std::size_t feedBytes : {1U, 2U, 7U, 1000U, 1U << 20U}) {
        for (const std::size_t takeBytes : {1U, 3U, 258U, 4096U, 1U << 20U}) {
            EXPECT_TRUE(unpack(stream, feedBytes, takeBytes) == content) << feedBytes << " " << takeBytes;
        }
    }
}

TEST(Inflater, unpacksBlocksOfEachKind)
{
    EXPECT_EQ(unpack(std::string("\x03\x00", 2), 1, 10), "");  // fixed codes, nothing in them
    EXPECT_EQ(unpack(std::string("\x01\x05\x00\xfa\xff", 5) + "hello", 3, 2), "hello");  // stored
    EXPECT_EQ(
        unpack(std::string("\x00\x02\x00\xfd\xff", 5) + "he" + std::string("\x01\x00\x00\xff\xff", 5), 1, 1),
        "he");
    EXPECT_EQ(unpack("\xcb\x48\xcd\xc9\xc9\x07" + std::string(1, '\0'), 2, 3), "hello");  // fixed codes
}

TEST(Inflater, tellsHowManyBytesFollowTheStream)
{
    const std::string content = support::textBytes(1000, 1);
    const std::string stream = support::deflated(content);
    for (std::size_t more = 0; more < 20; ++more) {
        const std::string input = stream + std::string(more, 'x');
        Inflater inflater;
        inflater.feed(input);
        std::string buffer(2000, '\0');
        EXPECT_EQ(inflater.unpack(buffer.data(), buffer.size()), content.size());
        EXPECT_TRUE(inflater.isFinished());
        EXPECT_EQ(inflater.unusedBytes(), more);
    }
}

TEST(Inflater, saysWhatIsWrongWithAStream)
{
    const auto damageOf = [](std::string_view stream) {
        Inflater inflater;
        inflater.feed(stream);
        char byte = 0;
        EXPECT_EQ(inflater.unpack(&byte, 1), 0U);
        return std::string(inflater.damage() != nullptr ? inflater.damage() : "");
    };
    EXPECT_EQ(damageOf("\x07 no such kind of block"), "invalid block");
    EXPECT_EQ(damageOf(std::string_view("\x01\x05\x00\x05\x00hello", 10)), "invalid block");
    EXPECT_EQ(damageOf(std::string_view("\x03\x02\x00\x00", 4)), "reference to before the start");
}

TEST(Inflater, staysDamaged)
{
    Inflater inflater;
    inflater.feed("\x07 no such kind of block");
    char byte = 0;
    EXPECT_EQ(inflater.unpack(&byte, 1), 0U);
    EXPECT_EQ(inflater.unpack(&byte, 1), 0U);
    EXPECT_STREQ(inflater.damage(), "invalid block");
}

TEST(Inflater, isNotFinishedBeforeTheStreamsLastByte)
{
    const std::string stream = support::deflated(support::textBytes(1000, 1));
    Inflater inflater;
    inflater.feed(std::string_view(stream).substr(0, stream.size() - 1));
    std::string buffer(2000, '\0');
    inflater.unpack(buffer.data(), buffer.size());
    EXPECT_FALSE(inflater.isFinished());
    EXPECT_TRUE(inflater.needsInput());
}
