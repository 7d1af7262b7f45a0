#pragma once

#include <rapidjson/document.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "CommandError.h"
#include "Text.h"

/// One value of a JSON document, and where it stands, which is told of what isn't as expected: then all of
/// these throw CommandError. The document must outlive it.
class JsonNode {
public:
    JsonNode(const rapidjson::Value& value, std::string place) : value_(&value), place_(std::move(place)) {}

    [[noreturn]] void refuse(const std::string& text) const { throw CommandError(place_ + ": " + text); }

    bool has(const char* key) const { return object().HasMember(key); }

    /// Refuses every other key, and one that stands there twice: it would be passed over, which hides a slip.
    void allow(const std::vector<std::string>& keys) const
    {
        std::set<std::string> seen;
        for (const auto& member : object().GetObject()) {
            const std::string key(member.name.GetString(), member.name.GetStringLength());
            if (!seen.insert(key).second) {
                refuse("the key \"" + printable(key) + "\" stands here twice");
            }
            if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
                refuse("there is no key \"" + printable(key) + "\"" + didYouMean(key, keys));
            }
        }
    }

    JsonNode at(const char* key) const
    {
        const auto found = object().FindMember(key);
        if (found == object().MemberEnd()) {
            refuse(std::string("\"") + key + "\" is missing");
        }
        return {found->value, place_ + ": \"" + key + "\""};
    }

    std::string text() const
    {
        if (!value_->IsString()) {
            refuse("a text is expected");
        }
        return {value_->GetString(), value_->GetStringLength()};
    }

    /// The text under the key, empty when there is none.
    std::string text(const char* key) const { return has(key) ? at(key).text() : std::string(); }

    bool flag(const char* key, bool otherwise) const
    {
        if (!has(key)) {
            return otherwise;
        }
        const JsonNode node = at(key);
        if (!node.value_->IsBool()) {
            node.refuse("true or false is expected");
        }
        return node.value_->GetBool();
    }

    std::int64_t number() const
    {
        if (!value_->IsInt64()) {
            refuse("a whole number is expected");
        }
        return value_->GetInt64();
    }

    /// Calls `visit` with each element of the array under the key; with none when there is no such key.
    template <typename Visit>
    void each(const char* key, Visit visit) const
    {
        if (!has(key)) {
            return;
        }
        const JsonNode list = at(key);
        if (!list.value_->IsArray()) {
            list.refuse("an array is expected");
        }
        std::size_t index = 0;
        for (const rapidjson::Value& element : list.value_->GetArray()) {
            visit(JsonNode(element, list.place_ + "[" + std::to_string(index++) + "]"));
        }
    }

    /// The same for the members of the object under the key, which are texts.
    template <typename Visit>
    void eachText(const char* key, Visit visit) const
    {
        if (!has(key)) {
            return;
        }
        const JsonNode texts = at(key);
        std::set<std::string> seen;
        for (const auto& member : texts.object().GetObject()) {
            const std::string name(member.name.GetString(), member.name.GetStringLength());
            if (!seen.insert(name).second) {
                texts.refuse("the key \"" + printable(name) + "\" stands here twice");
            }
            visit(name, JsonNode(member.value, texts.place_ + ": \"" + printable(name) + "\"").text());
        }
    }

private:
    const rapidjson::Value& object() const
    {
        if (!value_->IsObject()) {
            refuse("an object is expected");
        }
        return *value_;
    }

    const rapidjson::Value* value_;
    std::string place_;
};
