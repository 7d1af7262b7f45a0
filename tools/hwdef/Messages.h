#pragma once

#include <string>
#include <vector>

#include "Output.h"
#include "hwdef/hwdef.h"
#include "platform/ComMsgMgr.h"

/// Lets the library's messages go to standard error, one line each. With `isQuiet` only failures, and
/// texts without a severity, do, and tell() is silent.
void showMessages(bool isQuiet, Colours colours);

/// Tells the user something on standard error: `hwdef: TEXT`, further lines as they are.
void tell(const std::string& text);
/// Tells of an error.
void tellError(const std::string& text);

/// While it lives, keeps the library's messages back; they are lost unless tellAll() is called.
class HeldMessages {
public:
    HeldMessages();
    ~HeldMessages();
    HeldMessages(const HeldMessages&) = delete;
    HeldMessages& operator=(const HeldMessages&) = delete;

    const std::vector<ComMsg>& all() const { return messages_; }
    /// Gives all to whom they were kept from.
    void tellAll();
    /// Drops those whose text holds that part.
    void drop(const std::string& part);

private:
    std::vector<ComMsg> messages_;
    ComMsgMgr::Handler earlier_;
};
