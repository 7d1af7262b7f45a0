#include "platform/HCRapidJsonReadWriteUtils.h"

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "platform/ComMsgMgr.h"
#include "platform/JsonMemory.h"

namespace {

using rapidjson::SizeType;
using rapidjson::Value;

/// A copy of the text as a JSON string; given by its length, since a null character does not end it.
Value copyOf(const std::string& text, HCRapidJsonReadWriteUtils::Allocator& allocator)
{
    return {text.data(), static_cast<SizeType>(text.size()), allocator};
}

std::string jsonTextOf(const Value& value)
{
    using Utf8 = rapidjson::UTF8<>;
    using Text = rapidjson::GenericStringBuffer<Utf8, platform::JsonMemory>;
    Text text;
    rapidjson::Writer<Text, Utf8, Utf8, platform::JsonMemory> writer(text);
    value.Accept(writer);
    return {text.GetString(), text.GetSize()};
}

}  // namespace

void HCRapidJsonReadWriteUtils::errorParsingJsonFile(const std::string& file, const std::string& reason)
{
    ComMsgMgr::sendMessage(file + ": not a JSON document: " + reason, false);
}

std::string HCRapidJsonReadWriteUtils::GetErrorMsgFromDocument(const rapidjson::Document& document)
{
    return GetErrorMsg(document);
}

std::string HCRapidJsonReadWriteUtils::GetErrorMsg(const rapidjson::ParseResult& result)
{
    if (!result.IsError()) {
        return "";
    }
    return "byte offset " + std::to_string(result.Offset()) + ": " +
           rapidjson::GetParseError_En(result.Code());
}

std::string HCRapidJsonReadWriteUtils::GetStringProperty(const rapidjson::Value& object,
                                                         const std::string& name)
{
    if (!object.IsObject()) {
        return "";
    }
    const auto member = object.FindMember(Value(name.data(), static_cast<SizeType>(name.size())));
    if (member == object.MemberEnd()) {
        return "";
    }
    const Value& value = member->value;
    if (value.IsString()) {
        return {value.GetString(), value.GetStringLength()};
    }
    return value.IsNumber() || value.IsBool() ? jsonTextOf(value) : "";
}

void HCRapidJsonReadWriteUtils::AddStringProperty(rapidjson::Value& object, const std::string& name,
                                                  const std::string& value, Allocator& allocator)
{
    object.AddMember(copyOf(name, allocator), copyOf(value, allocator), allocator);
}
