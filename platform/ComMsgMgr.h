#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/Export.h"

/// One message as an observer receives it.
struct ComMsg {
    std::string category;           ///< sender's family, "hdf" in this library; empty for a plain text
    std::string id;                 ///< the format as passed, for example "@64-5@%s"; empty for a plain text
    std::vector<std::string> args;  ///< the arguments in order, unescaped
    unsigned mask = 0;              ///< one of ComMsgMgr's severities; 0 for a plain text
    std::string text;               ///< the catalogue's text with the arguments filled in, or the plain text
};

/// The process-wide message manager: every failure, warning and notice goes through it.
///
/// All operations may be called from several threads. A handler is called outside the manager's lock
/// on the sender's thread, so it may send messages and set handlers itself; it may still be running
/// on another thread when setHandler returns. What a handler throws is dropped.
class HWDEF_API ComMsgMgr {
public:
    /// Receives each message.
    using Handler = std::function<void(const ComMsg&)>;

    static constexpr unsigned FAILURE = 0x20000000;  ///< the operation returns false
    static constexpr unsigned WARNING = 0x10000000;  ///< work goes on
    static constexpr unsigned NOTICE = 0x08000000;   ///< for information

    /// Sends the catalogue's message `format` ("@group-number@" and one "%s" per expected argument).
    ///
    /// `argCount` texts (`const char*`, null read as empty) follow `mask`. Fewer arguments than the
    /// identifier has "%s" are allowed: the text then leaves the missing ones out. The text of an
    /// identifier that the catalogue doesn't know is its arguments, joined with ", ".
    static void sendMsg(const char* category, const char* format, int argCount, unsigned mask, ...);

    /// Sends a text that has no identifier, with mask 0. The flag is kept for callers' sake and
    /// changes nothing.
    static void sendMessage(const std::string& text, bool flag);

    /// Makes `handler` the only receiver of messages and returns the earlier one (empty when that
    /// was the default). An empty handler restores the default: one line on standard error with
    /// severity ("error", "warning", "notice", or "message" for mask 0), identifier and text, written
    /// in one call. Control characters and what isn't UTF-8 appear as "\x1b", a backslash as two.
    static Handler setHandler(Handler handler);
};
