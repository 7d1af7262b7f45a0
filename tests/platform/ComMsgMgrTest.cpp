#include "platform/ComMsgMgr.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/Messages.h"

namespace {

/// Standard error caught in a pipe that keeps each write call apart, while this object lives.
class StandardError {
public:
    StandardError() : original_(::dup(STDERR_FILENO))
    {
        EXPECT_EQ(::pipe2(pipe_.data(), O_DIRECT | O_NONBLOCK), 0);
        ::dup2(pipe_[1], STDERR_FILENO);
    }
    ~StandardError()
    {
        ::dup2(original_, STDERR_FILENO);
        for (const int file : {original_, pipe_[0], pipe_[1]}) {
            ::close(file);
        }
    }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

    /// What each write call since the last question wrote.
    std::vector<std::string> writes()
    {
        std::vector<std::string> all;
        std::array<char, 4096> packet;
        for (ssize_t size = 0; (size = ::read(pipe_[0], packet.data(), packet.size())) > 0;) {
            all.emplace_back(packet.data(), static_cast<std::size_t>(size));
        }
        return all;
    }

private:
    int original_;
    std::array<int, 2> pipe_ = {-1, -1};
};

using Lines = std::vector<std::string>;

/// The line that the default handler makes of a plain text, without "message: " and the line end.
std::string asPrinted(const std::string& text)
{
    StandardError standardError;
    ComMsgMgr::sendMessage(text, false);
    const Lines lines = standardError.writes();
    EXPECT_EQ(lines.size(), 1u);
    return lines.empty() ? "" : lines[0].substr(9, lines[0].size() - 10);
}

}  // namespace

TEST(ComMsgMgr, givesObserversTheMessageInItsParts)
{
    const support::Messages messages;
    ComMsgMgr::sendMsg("hdf", "@36-530@%s%s", 2, ComMsgMgr::NOTICE, "io.json", "/d/a.hdf");
    ASSERT_EQ(messages.all().size(), 1u);
    const ComMsg& message = messages.all()[0];
    EXPECT_EQ(message.category, "hdf");
    EXPECT_EQ(message.id, "@36-530@%s%s");
    EXPECT_EQ(message.args, (std::vector<std::string>{"io.json", "/d/a.hdf"}));
    EXPECT_EQ(message.mask, 0x08000000u);
    EXPECT_EQ(message.text,
              "/d/a.hdf: the software-parameter member \"io.json\" can't be opened; "
              "a member that can be read is expected");
}

TEST(ComMsgMgr, givesObserversPlainTextsWithoutIdentifierAndMask)
{
    const support::Messages messages;
    ComMsgMgr::sendMessage("disk\nfull", true);
    ASSERT_EQ(messages.all().size(), 1u);
    EXPECT_EQ(messages.all()[0].category, "");
    EXPECT_EQ(messages.all()[0].id, "");
    EXPECT_EQ(messages.all()[0].args.size(), 0u);
    EXPECT_EQ(messages.all()[0].mask, 0u);
    EXPECT_EQ(messages.all()[0].text, "disk\nfull");
}

TEST(ComMsgMgr, sendsAnUnknownIdentifierWithItsArgumentsAsText)
{
    const support::Messages messages;
    ComMsgMgr::sendMsg("hdf", "@1-2@%s%s", 2, ComMsgMgr::WARNING, "one", "two");
    ASSERT_EQ(messages.all().size(), 1u);
    EXPECT_EQ(messages.all()[0].id, "@1-2@%s%s");
    EXPECT_EQ(messages.all()[0].text, "one, two");
}

TEST(ComMsgMgr, readsNullTextsAsEmpty)
{
    const support::Messages messages;
    ComMsgMgr::sendMsg(nullptr, nullptr, 1, 0, static_cast<const char*>(nullptr));
    ASSERT_EQ(messages.all().size(), 1u);
    EXPECT_EQ(messages.all()[0].category, "");
    EXPECT_EQ(messages.all()[0].args, (std::vector<std::string>{""}));
}

TEST(ComMsgMgr, returnsTheEarlierHandler)
{
    const ComMsgMgr::Handler original = ComMsgMgr::setHandler(nullptr);
    int calls = 0;
    EXPECT_FALSE(ComMsgMgr::setHandler([&](const ComMsg&) { ++calls; }));
    const ComMsgMgr::Handler counting = ComMsgMgr::setHandler(original);
    ASSERT_TRUE(counting);
    counting(ComMsg());
    EXPECT_EQ(calls, 1);
}

TEST(ComMsgMgr, writesToStandardErrorOnceTheHandlerIsRemoved)
{
    StandardError standardError;
    const support::Messages messages;
    ComMsgMgr::setHandler(nullptr);
    ComMsgMgr::sendMessage("hello", false);
    EXPECT_EQ(messages.all().size(), 0u);
    EXPECT_EQ(standardError.writes(), Lines{"message: hello\n"});
}

TEST(ComMsgMgr, writesOneLineInOneCallWithSeverityIdentifierAndText)
{
    StandardError standardError;
    ComMsgMgr::sendMsg("hdf", "@64-5@%s", 1, ComMsgMgr::FAILURE, "/d/a.hdf");
    ComMsgMgr::sendMsg("hdf", "@64-24@%s", 1, ComMsgMgr::WARNING, "uart");
    ComMsgMgr::sendMsg("hdf", "@64-28@%s", 1, ComMsgMgr::NOTICE, "/tmp/x");
    EXPECT_EQ(standardError.writes(),
              (Lines{"error @64-5@%s: /d/a.hdf: nothing was found there; an existing path is expected\n",
                     "warning @64-24@%s: the driver \"uart\" has no file with the extension \".mdd\"; "
                     "at least one is expected\n",
                     "notice @64-28@%s: /tmp/x: the scratch directory is still there; it was expected to "
                     "be gone after its removal\n"}));
}

TEST(ComMsgMgr, dropsWhatStandardErrorDoesNotTake)
{
    StandardError standardError;
    for (int number = 0; number < 100; ++number) {  // more than the pipe has room for
        ComMsgMgr::sendMessage(std::to_string(number) + std::string(4000, 'x'), false);
    }
    const Lines lines = standardError.writes();
    ASSERT_GT(lines.size(), 0U);
    EXPECT_LT(lines.size(), 100U);
    EXPECT_EQ(lines.front().substr(0, 11), "message: 0x");
}

TEST(ComMsgMgr, escapesControlCharactersOnStandardError)
{
    EXPECT_EQ(asPrinted("a\x1b[2Jb\r\n\tc\x7f"), "a\\x1b[2Jb\\x0d\\x0a\\x09c\\x7f");
    EXPECT_EQ(asPrinted(std::string("nul\0nul", 7)), "nul\\x00nul");
    EXPECT_EQ(asPrinted("c1 \xc2\x9b"
                        "2J"),
              "c1 \\xc2\\x9b2J");
}

TEST(ComMsgMgr, escapesWhatIsNotUtf8OnStandardError)
{
    EXPECT_EQ(asPrinted("\x9b"
                        "2J"),
              "\\x9b2J");
    EXPECT_EQ(asPrinted("cut \xe2\x82"), "cut \\xe2\\x82");
    EXPECT_EQ(asPrinted("overlong \xc0\x9b"), "overlong \\xc0\\x9b");
    EXPECT_EQ(asPrinted("surrogate \xed\xa0\x80"), "surrogate \\xed\\xa0\\x80");
}

TEST(ComMsgMgr, keepsReadableTextOnStandardError)
{
    EXPECT_EQ(asPrinted("50 \xe2\x82\xac, \xc3\xa4, \xf0\x9f\x98\x80 ~"),
              "50 \xe2\x82\xac, \xc3\xa4, \xf0\x9f\x98\x80 ~");
}

TEST(ComMsgMgr, tellsAnEscapeFromATextThatLooksLikeOneOnStandardError)
{
    EXPECT_EQ(asPrinted("\\x1b"), "\\\\x1b");
}

TEST(ComMsgMgr, callsTheHandlerOutsideItsLock)
{
    const support::Messages messages;
    std::string texts;
    const ComMsgMgr::Handler earlier = ComMsgMgr::setHandler([&](const ComMsg& message) {
        texts += message.text + ";";
        if (message.text == "first") {
            ComMsgMgr::sendMessage("from the handler", false);
            ComMsgMgr::setHandler(nullptr);
        }
    });
    ComMsgMgr::sendMessage("first", false);
    ComMsgMgr::setHandler(earlier);
    EXPECT_EQ(texts, "first;from the handler;");
}

TEST(ComMsgMgr, dropsWhatAHandlerThrows)
{
    const ComMsgMgr::Handler earlier =
        ComMsgMgr::setHandler([](const ComMsg&) { throw std::runtime_error("observer's own trouble"); });
    EXPECT_NO_THROW(ComMsgMgr::sendMessage("text", false));
    ComMsgMgr::setHandler(earlier);
}

TEST(ComMsgMgr, servesSeveralThreads)
{
    std::atomic<int> calls = 0;
    const auto count = [&](const ComMsg&) { ++calls; };
    const ComMsgMgr::Handler earlier = ComMsgMgr::setHandler(count);
    std::thread sender([] {
        for (int i = 0; i < 1000; ++i) {
            ComMsgMgr::sendMsg("hdf", "@64-5@%s", 1, ComMsgMgr::FAILURE, "/d");
        }
    });
    for (int i = 0; i < 1000; ++i) {
        ComMsgMgr::setHandler(count);
        ComMsgMgr::sendMessage("text", false);
    }
    sender.join();
    ComMsgMgr::setHandler(earlier);
    EXPECT_EQ(calls, 2000);
}
