#include "Json.h"

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <vector>

#include "Text.h"

class Json::Impl {
public:
    Impl() : writer_(buffer_)
    {
        writer_.SetIndent(' ', 4);
        writer_.SetMaxDecimalPlaces(2);
    }

    void string(std::string_view text)
    {
        const std::string valid = validUtf8(text);
        writer_.String(valid.data(), static_cast<unsigned>(valid.size()));
    }

    rapidjson::StringBuffer buffer_;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> writer_;
    std::vector<bool> isArray_;  // of those not ended, outermost first
};

Json::Json() : impl_(std::make_unique<Impl>()) {}
Json::~Json() = default;

void Json::beginObject()
{
    impl_->writer_.StartObject();
    impl_->isArray_.push_back(false);
}

void Json::beginObject(std::string_view key)
{
    impl_->string(key);
    beginObject();
}

void Json::beginArray(std::string_view key)
{
    impl_->string(key);
    impl_->writer_.StartArray();
    impl_->isArray_.push_back(true);
}

void Json::end()
{
    if (impl_->isArray_.back()) {
        impl_->writer_.EndArray();
    } else {
        impl_->writer_.EndObject();
    }
    impl_->isArray_.pop_back();
}

void Json::add(std::string_view key, std::string_view text)
{
    impl_->string(key);
    impl_->string(text);
}

void Json::add(std::string_view key, std::uint64_t number)
{
    impl_->string(key);
    impl_->writer_.Uint64(number);
}

void Json::add(std::string_view key, std::int64_t number)
{
    impl_->string(key);
    impl_->writer_.Int64(number);
}

void Json::add(std::string_view key, bool value)
{
    impl_->string(key);
    impl_->writer_.Bool(value);
}

void Json::add(std::string_view key, double number)
{
    impl_->string(key);
    impl_->writer_.Double(number);
}

void Json::addNull(std::string_view key)
{
    impl_->string(key);
    impl_->writer_.Null();
}

void Json::addRaw(std::string_view key, std::string_view json)
{
    impl_->string(key);
    impl_->writer_.RawValue(json.data(), json.size(), rapidjson::kObjectType);
}

void Json::element(std::string_view text)
{
    impl_->string(text);
}

std::string Json::text() const
{
    return {impl_->buffer_.GetString(), impl_->buffer_.GetSize()};
}
