#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Export.h"

namespace platform {

/// A JSON document (RFC 8259) as it is written, from its beginning to its end; indented by 4 blanks.
///
/// Texts are UTF-8: each byte of a text that isn't becomes U+FFFD. A key is for the members of an
/// object; in an array there is none. std::bad_alloc is all that is thrown.
class HWDEF_API JsonWriter {
public:
    /// An empty text, which the first beginObject() begins.
    JsonWriter();
    ~JsonWriter();
    JsonWriter(const JsonWriter&) = delete;
    JsonWriter& operator=(const JsonWriter&) = delete;

    /// Begins an object, the document's own or a nested one, or an array.
    /// @{
    void beginObject();
    void beginObject(std::string_view key);
    void beginArray(std::string_view key);
    /// @}
    /// Ends the object or array begun last.
    void end();

    /// Adds a text, a number or a truth value; a fraction with up to two digits behind the point.
    /// @{
    void add(std::string_view key, std::string_view text);
    void add(std::string_view key, const char* text) { add(key, std::string_view(text)); }
    void add(std::string_view key, const std::string& text) { add(key, std::string_view(text)); }
    void add(std::string_view key, std::uint64_t number);
    void add(std::string_view key, std::int64_t number);
    void add(std::string_view key, double number);
    void add(std::string_view key, bool value);
    /// @}
    /// Adds a key without a value.
    void addNull(std::string_view key);
    /// Adds a value that is JSON already, as it is.
    void addRaw(std::string_view key, std::string_view json);
    /// Adds a text as an element of an array.
    void addElement(std::string_view text);

    /// What was written.
    std::string text() const;

private:
    class HWDEF_LOCAL Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace platform
