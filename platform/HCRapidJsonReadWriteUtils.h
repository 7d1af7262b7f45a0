#pragma once

#include <rapidjson/fwd.h>

#include <string>

#include "platform/Export.h"

/// What readers and writers of JSON documents share.
class HWDEF_API HCRapidJsonReadWriteUtils {
public:
    HCRapidJsonReadWriteUtils() = delete;

    using Allocator = rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>;

    /// Reports a file that isn't valid JSON: one message by ComMsgMgr::sendMessage that names the
    /// file and the reason.
    static void errorParsingJsonFile(const std::string& file, const std::string& reason);

    /// Why and at which byte offset parsing failed; empty when it didn't.
    static std::string GetErrorMsgFromDocument(const rapidjson::Document& document);

    /// The member's value as text: a string as it is, a number or boolean as its JSON text; the
    /// empty text for null, arrays, objects and a missing member. Of repeated members the first
    /// is taken. A string may hold null characters.
    static std::string GetStringProperty(const rapidjson::Value& object, const std::string& name);

    /// Appends a string member; a member of that name already there stays. Both texts are copied
    /// into the allocator's memory.
    static void AddStringProperty(rapidjson::Value& object, const std::string& name,
                                  const std::string& value, Allocator& allocator);
};
