#include "platform/iostreams/Deflater.h"

#include <gtest/gtest.h>
#include <isa-l/igzip_lib.h>
#include <malloc.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "platform/iostreams/StreamPlace.h"
#include "support/MeasuredChild.h"
#include "support/TempDir.h"

using iostreams::zip::Deflater;

namespace {

/// One whole stream, its input cut into pieces.
std::string deflated(Deflater& deflater, std::string_view content, std::size_t pieceBytes)
{
    std::string packed;
    deflater.restart();
    do {
        const std::string_view piece = content.substr(0, pieceBytes);
        content.remove_prefix(piece.size());
        deflater.feed(piece, content.empty());
        for (auto out = deflater.drain(); !out.empty(); out = deflater.drain()) {
            packed += out;
        }
    } while (!content.empty());
    return packed;
}

std::string inflated(std::string packed, std::size_t size)
{
    std::string content(size + 1, '\0');
    inflate_state state;
    isal_inflate_init(&state);
    state.next_in = reinterpret_cast<std::uint8_t*>(packed.data());
    state.avail_in = static_cast<std::uint32_t>(packed.size());
    state.next_out = reinterpret_cast<std::uint8_t*>(content.data());
    state.avail_out = static_cast<std::uint32_t>(content.size());
    EXPECT_EQ(isal_inflate_stateless(&state), ISAL_DECOMP_OK);
    EXPECT_EQ(state.avail_in, 0U);
    content.resize(content.size() - state.avail_out);
    return content;
}

}  // namespace

TEST(Deflater, givesAStreamThatInflatesToItsInput)
{
    Deflater deflater;
    const std::string text = support::textBytes(1000000, 1);
    const std::string packed = deflated(deflater, text, text.size());
    EXPECT_LT(packed.size(), text.size() / 4);
    EXPECT_EQ(inflated(packed, text.size()), text);
}

TEST(Deflater, takesInputInPieces)
{
    Deflater deflater;
    const std::string text = support::textBytes(300000, 2);
    EXPECT_EQ(inflated(deflated(deflater, text, 1000), text.size()), text);
}

TEST(Deflater, endsAStreamWithoutInput)
{
    Deflater deflater;
    EXPECT_EQ(inflated(deflated(deflater, "", 100), 0), "");
}

TEST(Deflater, keepsDataThatDoesNotShrinkWhole)
{
    Deflater deflater;
    const std::string random = support::randomBytes(500000, 3);
    const std::string packed = deflated(deflater, random, random.size());
    EXPECT_GE(packed.size(), random.size());
    EXPECT_EQ(inflated(packed, random.size()), random);
}

TEST(Deflater, givesTheSameBytesAfterAnyOtherStream)
{
    const std::string text = support::textBytes(400000, 4);
    Deflater fresh;
    const std::string expected = deflated(fresh, text, 65536);
    Deflater used;
    deflated(used, support::randomBytes(70000, 5), 4096);
    used.feed("a stream that is left before its end", false);
    used.drain();
    EXPECT_EQ(deflated(used, text, 65536), expected);
}

TEST(Deflater, givesTheSameBytesWhateverItsMemoryHeldBefore)
{
    if (support::isSanitized()) {
        GTEST_SKIP() << "the sanitizer's allocator fills memory as it likes";
    }
    const std::string content = support::textBytes(300000, 6) + support::randomBytes(100000, 7);
    std::vector<std::string> streams;
    for (const int filling : {0x55, 0xaa, 0xff}) {
        ::mallopt(M_PERTURB, filling);
        Deflater deflater;
        streams.push_back(deflated(deflater, content, 70000));
    }
    ::mallopt(M_PERTURB, 0);
    EXPECT_TRUE(streams[0] == streams[1] && streams[1] == streams[2]);
}

TEST(Deflater, triesWithoutKeepingTheResult)
{
    Deflater deflater;
    const std::string text = support::textBytes(100000, 6);
    const std::size_t size = deflated(deflater, text, text.size()).size();
    EXPECT_EQ(deflater.trialSize(text, text.size()), size);
    EXPECT_EQ(deflater.trialSize(text, 100), 100U);
    EXPECT_EQ(deflated(deflater, text, text.size()).size(), size);
}

TEST(Deflater, givesTheSameBytesWhereverItLies)
{
    // Each repeats its first bytes, whose match is the first to go.
    std::vector<std::string> texts = {"void gpio(void) {}\n", "int uart(int) {}\nint spi(int) {}\n"};
    texts.push_back("drivers/" + support::textBytes(300, 1) + "drivers/");
    texts.push_back("#include " + support::textBytes(9000, 2) + "#include ");
    std::vector<std::unique_ptr<Deflater>> deflaters;
    std::vector<std::string> first;
    for (int count = 0; count < 500; ++count) {
        deflaters.push_back(std::make_unique<Deflater>());
        std::vector<std::string> packed;
        for (const auto& text : texts) {
            packed.push_back(deflated(*deflaters.back(), text, text.size()));
        }
        if (first.empty()) {
            first = packed;
        }
        ASSERT_EQ(packed, first) << "deflater " << count;
    }
}

TEST(Deflater, worksWhereverItLies)
{
    // More at a time than there are places for.
    std::vector<std::unique_ptr<iostreams::zip::StreamPlace>> places;
    for (int count = 0; count < 1100; ++count) {
        places.push_back(std::make_unique<iostreams::zip::StreamPlace>());
    }
    Deflater deflater;
    const std::string text = support::textBytes(10000, 1);
    EXPECT_EQ(inflated(deflated(deflater, text, text.size()), text.size()), text);
}
