#include "hwdef/swparam/RootMembers.h"

#include <rapidjson/error/error.h>
#include <rapidjson/istreamwrapper.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdint>
#include <istream>
#include <utility>

#include "platform/HCRapidJsonReadWriteUtils.h"
#include "platform/JsonMemory.h"

namespace {

using Utf8 = rapidjson::UTF8<>;
using TextPairs = std::vector<std::pair<std::string, std::string>>;

/// Collects the members of a root object as texts and passes over what lies below them, so that a
/// small archive can't unfold into a huge document.
class Collector : public rapidjson::BaseReaderHandler<Utf8, Collector> {
public:
    explicit Collector(std::uint64_t maxMemoryBytes) : memoryLeft_(maxMemoryBytes) {}

    bool Key(const char* text, rapidjson::SizeType length, bool)
    {
        if (depth_ == 1) {
            key_.assign(text, length);
        }
        return true;
    }
    bool Int(int value) { return addNumber(&NumberWriter::Int, value); }
    bool Uint(unsigned value) { return addNumber(&NumberWriter::Uint, value); }
    bool Int64(std::int64_t value) { return addNumber(&NumberWriter::Int64, value); }
    bool Uint64(std::uint64_t value) { return addNumber(&NumberWriter::Uint64, value); }
    bool Double(double value) { return addNumber(&NumberWriter::Double, value); }
    bool String(const char* text, rapidjson::SizeType length, bool) { return add({text, length}); }
    bool Bool(bool value) { return add(value ? "true" : "false"); }
    bool Null() { return add(""); }
    bool StartObject()
    {
        rootIsObject_ = rootIsObject_ || depth_ == 0;
        return open();
    }
    bool StartArray() { return open(); }
    bool EndObject(rapidjson::SizeType) { return close(); }
    bool EndArray(rapidjson::SizeType) { return close(); }

    TextPairs take() { return std::move(members_); }
    /// True once the members would take too much memory; the document ends there.
    bool areTooMany() const { return tooMany_; }

private:
    /// Of one member without its characters, in a list that grows and in a map.
    static constexpr std::uint64_t memberBytes = 320;
    /// Of one level of nesting.
    static constexpr std::uint64_t levelBytes = 32;

    using NumberText = rapidjson::GenericStringBuffer<Utf8, platform::JsonMemory>;
    using NumberWriter = rapidjson::Writer<NumberText, Utf8, Utf8, platform::JsonMemory>;

    template <typename Number>
    bool addNumber(bool (NumberWriter::*write)(Number), Number value)
    {
        NumberText text;
        NumberWriter writer(text);
        (writer.*write)(value);
        return add(text.GetString());
    }
    bool add(std::string value)
    {
        if (depth_ == 1 && rootIsObject_) {
            const std::uint64_t needed = memberBytes + key_.size() + value.size();
            tooMany_ = needed > memoryLeft_;
            if (tooMany_) {
                return false;
            }
            memoryLeft_ -= needed;
            members_.emplace_back(std::move(key_), std::move(value));
        }
        return true;
    }
    bool open()
    {
        const bool goesOn = add("");
        ++depth_;
        if (depth_ > deepest_) {
            // The parser keeps a note of each open level, in memory that it doubles as it grows.
            deepest_ = depth_;
            tooMany_ = tooMany_ || levelBytes > memoryLeft_;
            memoryLeft_ -= tooMany_ ? 0 : levelBytes;
        }
        return goesOn && !tooMany_;
    }
    bool close()
    {
        --depth_;
        return true;
    }

    TextPairs members_;
    std::string key_;
    std::size_t depth_ = 0;
    std::size_t deepest_ = 0;
    std::uint64_t memoryLeft_;
    bool tooMany_ = false;
    bool rootIsObject_ = false;
};

/// A stream's bytes up to the largest size allowed, in the form that RapidJSON wraps.
class LimitedBytes {
public:
    using char_type = char;
    using traits_type = std::char_traits<char>;
    using int_type = traits_type::int_type;

    LimitedBytes(std::istream& in, std::size_t maxBytes) : in_(in), maxBytes_(maxBytes), buffer_(bufferBytes)
    {
    }

    int_type peek()
    {
        return at_ < size_ || fill() ? traits_type::to_int_type(buffer_[at_]) : traits_type::eof();
    }
    int_type get()
    {
        const int_type byte = peek();
        ++at_;
        return byte;
    }
    bool atEnd() { return peek() == traits_type::eof(); }
    /// True once more than the largest size was asked for; the bytes end there.
    bool areTooMany() const { return total_ > maxBytes_; }

private:
    static constexpr std::size_t bufferBytes = 64 * 1024;

    bool fill()
    {
        in_.read(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
        total_ += static_cast<std::size_t>(in_.gcount());
        size_ = areTooMany() ? 0 : static_cast<std::size_t>(in_.gcount());
        at_ = 0;
        return size_ > 0;
    }

    std::istream& in_;
    std::size_t maxBytes_;
    std::vector<char> buffer_;
    std::size_t at_ = 0;
    std::size_t size_ = 0;
    std::size_t total_ = 0;
};

}  // namespace

RootMembers readRootMembers(std::istream& in, std::size_t maxBytes, std::uint64_t maxMemoryBytes)
{
    constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;
    LimitedBytes bytes(in, maxBytes);
    rapidjson::BasicIStreamWrapper<LimitedBytes> text(bytes);
    Collector collector(maxMemoryBytes);
    rapidjson::GenericReader<Utf8, Utf8, platform::JsonMemory> reader;
    rapidjson::ParseResult result = reader.Parse<flags>(text, collector);
    if (!result.IsError() && !bytes.atEnd()) {
        // The parser takes a null character for the end.
        result.Set(rapidjson::kParseErrorDocumentRootNotSingular, text.Tell());
    }
    if (collector.areTooMany()) {
        return {
            {},
            "its members take more than the " + std::to_string(maxMemoryBytes) + " bytes of memory allowed",
            ""};
    }
    if (bytes.areTooMany()) {
        return {{}, "larger than the " + std::to_string(maxBytes) + " bytes allowed", ""};
    }
    if (in.bad()) {
        return {{}, "can't be read to its end", ""};
    }
    if (result.IsError()) {
        return {{}, "", HCRapidJsonReadWriteUtils::GetErrorMsg(result)};
    }
    return {collector.take(), "", ""};
}
