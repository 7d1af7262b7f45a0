#include "Messages.h"

#include <unistd.h>

#include "CommandError.h"
#include "ProgressLine.h"
#include "Text.h"

namespace {

Colours coloursOfErrors = Colours::AUTO;
bool isSilent = false;  // as to what is no failure

void writeError(Style style, const std::string& word, const std::string& text)
{
    const std::string shown =
        word.empty() ? "" : (isColoured(STDERR_FILENO, coloursOfErrors) ? painted(style, word) : word) + " ";
    ProgressLine::hide();
    try {
        writeToStream(STDERR_FILENO, "hwdef: " + shown + text + "\n");
    } catch (const CommandError&) {
        // There is nowhere left to tell it.
    }
}

void show(const ComMsg& message)
{
    const std::string id = message.id.empty() ? "" : " [" + message.id.substr(0, message.id.find('%')) + "]";
    const std::string text = printable(message.text) + id;
    switch (message.mask) {
        case ComMsgMgr::FAILURE:
            return writeError(Style::RED, "error:", text);
        case ComMsgMgr::WARNING:
            return writeError(Style::YELLOW, "warning:", text);
        case ComMsgMgr::NOTICE:
            return writeError(Style::YELLOW, "notice:", text);
        default:
            return writeError(Style::PLAIN, "", text);  // it doesn't say how grave it is
    }
}

}  // namespace

void showMessages(bool isQuiet, Colours colours)
{
    coloursOfErrors = colours;
    isSilent = isQuiet;
    ComMsgMgr::setHandler([](const ComMsg& message) {
        if (!isSilent || message.mask == ComMsgMgr::FAILURE || message.mask == 0) {
            show(message);
        }
    });
}

void tell(const std::string& text)
{
    if (!isSilent) {
        writeError(Style::PLAIN, "", text);
    }
}

void tellError(const std::string& text)
{
    writeError(Style::RED, "error:", text);
}

HeldMessages::HeldMessages()
    : earlier_(ComMsgMgr::setHandler([this](const ComMsg& message) { messages_.push_back(message); }))
{
}

HeldMessages::~HeldMessages()
{
    ComMsgMgr::setHandler(earlier_);
}

void HeldMessages::drop(const std::string& part)
{
    std::erase_if(messages_,
                  [&](const ComMsg& message) { return message.text.find(part) != std::string::npos; });
}

void HeldMessages::tellAll()
{
    for (const ComMsg& message : messages_) {
        earlier_(message);
    }
    messages_.clear();
}
