#include "platform/JsonWriter.h"

#include <rapidjson/memorystream.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <vector>

#include "platform/JsonMemory.h"

namespace platform {

namespace {

using Utf8 = rapidjson::UTF8<>;
using Buffer = rapidjson::GenericStringBuffer<Utf8, JsonMemory>;

/// Where validated bytes would go.
struct Nowhere {
    void Put(char) {}
};

/// The text with U+FFFD in place of each byte that isn't UTF-8.
std::string validUtf8(std::string_view text)
{
    std::string valid;
    valid.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        rapidjson::MemoryStream stream(text.data() + at, text.size() - at);
        Nowhere nowhere;
        if (Utf8::Validate(stream, nowhere)) {
            valid += text.substr(at, stream.Tell());
            at += stream.Tell();
        } else {
            valid += "\xef\xbf\xbd";
            ++at;
        }
    }
    return valid;
}

}  // namespace

class JsonWriter::Impl {
public:
    Impl() : writer_(buffer_)
    {
        writer_.SetIndent(' ', 4);
        writer_.SetMaxDecimalPlaces(2);
    }

    void string(std::string_view text)
    {
        const std::string valid = validUtf8(text);
        writer_.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
    }

    Buffer buffer_;
    rapidjson::PrettyWriter<Buffer, Utf8, Utf8, JsonMemory> writer_;
    std::vector<bool> isArray_;  // of those not ended, outermost first
};

JsonWriter::JsonWriter() : impl_(std::make_unique<Impl>()) {}

JsonWriter::~JsonWriter() = default;

void JsonWriter::beginObject()
{
    impl_->writer_.StartObject();
    impl_->isArray_.push_back(false);
}

void JsonWriter::beginObject(std::string_view key)
{
    impl_->string(key);
    beginObject();
}

void JsonWriter::beginArray(std::string_view key)
{
    impl_->string(key);
    impl_->writer_.StartArray();
    impl_->isArray_.push_back(true);
}

void JsonWriter::end()
{
    if (impl_->isArray_.back()) {
        impl_->writer_.EndArray();
    } else {
        impl_->writer_.EndObject();
    }
    impl_->isArray_.pop_back();
}

void JsonWriter::add(std::string_view key, std::string_view text)
{
    impl_->string(key);
    impl_->string(text);
}

void JsonWriter::add(std::string_view key, std::uint64_t number)
{
    impl_->string(key);
    impl_->writer_.Uint64(number);
}

void JsonWriter::add(std::string_view key, std::int64_t number)
{
    impl_->string(key);
    impl_->writer_.Int64(number);
}

void JsonWriter::add(std::string_view key, double number)
{
    impl_->string(key);
    impl_->writer_.Double(number);
}

void JsonWriter::add(std::string_view key, bool value)
{
    impl_->string(key);
    impl_->writer_.Bool(value);
}

void JsonWriter::addNull(std::string_view key)
{
    impl_->string(key);
    impl_->writer_.Null();
}

void JsonWriter::addRaw(std::string_view key, std::string_view json)
{
    impl_->string(key);
    impl_->writer_.RawValue(json.data(), json.size(), rapidjson::kObjectType);
}

void JsonWriter::addElement(std::string_view text)
{
    impl_->string(text);
}

std::string JsonWriter::text() const
{
    return {impl_->buffer_.GetString(), impl_->buffer_.GetSize()};
}

}  // namespace platform
