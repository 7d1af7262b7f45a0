#pragma once

#include <string>
#include <vector>

#include "platform/ComMsgMgr.h"

namespace support {

/// Collects every message sent while it lives, and puts the earlier handler back at the end.
class Messages {
public:
    Messages();
    ~Messages();
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    const std::vector<ComMsg>& all() const { return messages_; }
    /// One line a message: "category id mask(hex) [arg|arg]" for those with an identifier, and
    /// "text: ..." for plain texts.
    std::string joined() const;
    void clear() { messages_.clear(); }

private:
    std::vector<ComMsg> messages_;
    ComMsgMgr::Handler earlier_;
};

}  // namespace support
