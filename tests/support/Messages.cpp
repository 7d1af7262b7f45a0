#include "support/Messages.h"

#include <cstdio>

namespace support {

Messages::Messages()
{
    earlier_ = ComMsgMgr::setHandler([this](const ComMsg& message) { messages_.push_back(message); });
}

Messages::~Messages()
{
    ComMsgMgr::setHandler(earlier_);
}

std::string Messages::joined() const
{
    std::string lines;
    for (const ComMsg& message : messages_) {
        if (message.id.empty()) {
            lines += "text: " + message.text + "\n";
            continue;
        }
        char mask[16];
        std::snprintf(mask, sizeof mask, "%08x", message.mask);
        std::string args;
        for (const std::string& arg : message.args) {
            args += (args.empty() ? "" : "|") + arg;
        }
        lines += message.category + " " + message.id + " " + mask + " [" + args + "]\n";
    }
    return lines;
}

}  // namespace support
