#include "platform/ComMsgMgr.h"

#include <unistd.h>

#include <boost/locale/utf.hpp>
#include <cerrno>
#include <cstdarg>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

#include "platform/MessageCatalogue.h"
#include "platform/NoDestructor.h"

namespace {

/// The handler in force. Shared, so that a sender can call it outside the lock while another thread
/// sets a new one.
struct Receiver {
    std::mutex mutex;
    std::shared_ptr<const ComMsgMgr::Handler> handler;
};

Receiver& receiver()
{
    static platform::NoDestructor<Receiver> instance;
    return *instance;
}

std::string textOf(std::string_view id, const std::vector<std::string>& args)
{
    if (const platform::CatalogueMessage* message = platform::findMessage(id)) {
        return platform::fillIn(*message, args);
    }
    std::string text;
    for (const std::string& arg : args) {
        text += (text.empty() ? "" : ", ") + arg;
    }
    return text;
}

std::string_view severityOf(unsigned mask)
{
    if ((mask & ComMsgMgr::FAILURE) != 0) {
        return "error";
    }
    if ((mask & ComMsgMgr::WARNING) != 0) {
        return "warning";
    }
    return (mask & ComMsgMgr::NOTICE) != 0 ? "notice" : "message";
}

void appendEscaped(std::string& line, unsigned char byte)
{
    constexpr char digits[] = "0123456789abcdef";
    line += {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
}

/// Appends a text with everything escaped that could drive a terminal: control characters (C0, DEL
/// and C1) and bytes that aren't UTF-8. A backslash is doubled, so that the line tells an escape from
/// a text that looks like one.
void appendPrintable(std::string& line, const std::string& text)
{
    namespace utf = boost::locale::utf;
    for (auto at = text.begin(); at != text.end();) {
        const auto start = at;
        const utf::code_point point = utf::utf_traits<char>::decode(at, text.end());
        if (!utf::is_valid_codepoint(point)) {
            appendEscaped(line, static_cast<unsigned char>(*start));
            at = start + 1;
        } else if (point < 0x20 || (point >= 0x7f && point < 0xa0)) {
            for (auto byte = start; byte != at; ++byte) {
                appendEscaped(line, static_cast<unsigned char>(*byte));
            }
        } else {
            line.append(start, at);
            line += point == '\\' ? "\\" : "";
        }
    }
}

/// The default handler. One call per line keeps the lines of several processes and threads whole.
void writeToStandardError(const ComMsg& message)
{
    std::string line(severityOf(message.mask));
    line += message.id.empty() ? "" : " ";
    appendPrintable(line, message.id);
    line += message.text.empty() ? "" : ": ";
    appendPrintable(line, message.text);
    line += '\n';
    for (std::string_view rest = line; !rest.empty();) {
        const ssize_t written = ::write(STDERR_FILENO, rest.data(), rest.size());
        if (written == 0 || (written < 0 && errno != EINTR)) {
            return;
        }
        rest.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
    }
}

void deliver(const ComMsg& message)
{
    std::shared_ptr<const ComMsgMgr::Handler> handler;
    {
        const std::lock_guard lock(receiver().mutex);
        handler = receiver().handler;
    }
    try {
        if (handler) {
            (*handler)(message);
        } else {
            writeToStandardError(message);
        }
    } catch (...) {
        // Messages are sent from destructors and from the handling of errors, where an observer's
        // own trouble must not end the process or hide the result.
    }
}

}  // namespace

void ComMsgMgr::sendMsg(const char* category, const char* format, int argCount, unsigned mask, ...)
{
    ComMsg message;
    message.category = category != nullptr ? category : "";
    message.id = format != nullptr ? format : "";
    message.mask = mask;
    std::va_list args;
    va_start(args, mask);
    for (int i = 0; i < argCount; ++i) {
        const char* arg = va_arg(args, const char*);
        message.args.emplace_back(arg != nullptr ? arg : "");
    }
    va_end(args);
    message.text = textOf(message.id, message.args);
    deliver(message);
}

void ComMsgMgr::sendMessage(const std::string& text, bool)
{
    ComMsg message;
    message.text = text;
    deliver(message);
}

ComMsgMgr::Handler ComMsgMgr::setHandler(Handler handler)
{
    auto next = handler ? std::make_shared<const Handler>(std::move(handler)) : nullptr;
    {
        const std::lock_guard lock(receiver().mutex);
        receiver().handler.swap(next);
    }
    return next ? *next : Handler();
}
