#pragma once

#include <rapidjson/fwd.h>

#include <string>

#include "platform/Export.h"

RAPIDJSON_NAMESPACE_BEGIN
struct ParseResult;
RAPIDJSON_NAMESPACE_END

/// What readers and writers of JSON documents share.
class HWDEF_API HCRapidJsonReadWriteUtils {
public:
    HCRapidJsonReadWriteUtils() = delete;

    /// What a document takes its memory from.
    using Allocator = rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>;

    /// Reports a file that isn't valid JSON: one message by ComMsgMgr::sendMessage that names the
    /// file and the reason.
    static void errorParsingJsonFile(const std::string& file, const std::string& reason);

    /// Why and at which byte offset, from 0, parsing failed; empty when it didn't.
    static std::string GetErrorMsgFromDocument(const rapidjson::Document& document);
    /// The same for a text that was parsed without a document.
    static std::string GetErrorMsg(const rapidjson::ParseResult& result);

    /// The member's value as text: a string as it is, a number or boolean as its JSON text; the
    /// empty text for null, arrays, objects and a missing member, and when `object` is no object. Of
    /// repeated members the first is taken. A string may hold null characters. Linear in the members.
    static std::string GetStringProperty(const rapidjson::Value& object, const std::string& name);

    /// Appends a string member to an object; a member of that name already there stays. Both texts
    /// are copied into the allocator's memory.
    static void AddStringProperty(rapidjson::Value& object, const std::string& name, const std::string& value,
                                  Allocator& allocator);
};
