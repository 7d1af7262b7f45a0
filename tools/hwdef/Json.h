#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

/// A JSON document (RFC 8259) as it is written, from its beginning to its end.
///
/// Texts are UTF-8: each byte of a text that isn't becomes U+FFFD. A key is for the members of an
/// object; in an array there is none.
class Json {
public:
    Json();
    ~Json();
    Json(const Json&) = delete;
    Json& operator=(const Json&) = delete;

    void beginObject();
    void beginObject(std::string_view key);
    void beginArray(std::string_view key);
    /// Ends the object or array begun last.
    void end();

    void add(std::string_view key, std::string_view text);
    void add(std::string_view key, const char* text) { add(key, std::string_view(text)); }
    void add(std::string_view key, const std::string& text) { add(key, std::string_view(text)); }
    void add(std::string_view key, std::uint64_t number);
    void add(std::string_view key, std::int64_t number);
    void add(std::string_view key, bool value);
    /// A number of up to two digits behind the point.
    void add(std::string_view key, double number);
    void addNull(std::string_view key);
    /// A value that is JSON already.
    void addRaw(std::string_view key, std::string_view json);
    /// A text as an element of an array.
    void element(std::string_view text);

    /// What was written.
    std::string text() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};
