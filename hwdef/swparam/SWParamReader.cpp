#include "hwdef/swparam/SWParamReader.h"

#include <rapidjson/error/en.h>
#include <rapidjson/istreamwrapper.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <istream>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/ComMsgMgr.h"
#include "platform/HCRapidJsonReadWriteUtils.h"
#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
#include "platform/iostreams/zip.h"

namespace {

using Members = std::vector<std::pair<std::string, std::string>>;

/// The zip streams know no encrypted members; they accept the hint all the same.
constexpr int encryptionHint = 3;

constexpr std::string_view refNameKey = "refName";

/// Collects the members of a root object as texts and passes over what lies below them, so that a
/// small archive can't unfold into a huge document.
class RootMembers : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, RootMembers> {
public:
    bool Key(const char* text, rapidjson::SizeType length, bool)
    {
        if (depth_ == 1) {
            key_.assign(text, length);
        }
        return true;
    }
    /// Numbers come here as well, as they stand in the document.
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

    Members take() { return std::move(members_); }

private:
    bool add(std::string value)
    {
        if (depth_ == 1 && rootIsObject_) {
            members_.emplace_back(std::move(key_), std::move(value));
        }
        return true;
    }
    bool open()
    {
        add("");
        ++depth_;
        return true;
    }
    bool close()
    {
        --depth_;
        return true;
    }

    Members members_;
    std::string key_;
    std::size_t depth_ = 0;
    bool rootIsObject_ = false;
};

/// A stream's bytes up to the largest size allowed, in the form that RapidJSON wraps.
class LimitedBytes {
public:
    using char_type = char;
    using traits_type = std::char_traits<char>;
    using int_type = traits_type::int_type;

    explicit LimitedBytes(std::istream& in) : in_(in), buffer_(bufferBytes) {}

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
    bool areTooMany() const { return total_ > SWParamReader::MAX_MEMBER_BYTES; }

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
    std::vector<char> buffer_;
    std::size_t at_ = 0;
    std::size_t size_ = 0;
    std::size_t total_ = 0;
};

/// Why the bytes are not those of the whole member; empty when they are.
std::string readFailure(const LimitedBytes& bytes, const std::istream& in)
{
    if (bytes.areTooMany()) {
        return "larger than the " + std::to_string(SWParamReader::MAX_MEMBER_BYTES) + " bytes allowed";
    }
    return in.bad() ? "can't be read to its end" : "";
}

/// The root object's members in document order; none, after a message, for what is no whole JSON
/// document.
Members readMembers(std::istream& in, const std::string& member, const std::string& container)
{
    constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag |
                               rapidjson::kParseNumbersAsStringsFlag;
    LimitedBytes bytes(in);
    rapidjson::BasicIStreamWrapper<LimitedBytes> text(bytes);
    RootMembers root;
    rapidjson::Reader reader;
    rapidjson::ParseResult result = reader.Parse<flags>(text, root);
    if (!result.IsError() && !bytes.atEnd()) {
        // The parser takes a null character for the end.
        result.Set(rapidjson::kParseErrorDocumentRootNotSingular, text.Tell());
    }
    if (const std::string reason = readFailure(bytes, in); !reason.empty()) {
        ComMsgMgr::sendMessage(container + ": member \"" + member + "\": " + reason, false);
        return {};
    }
    if (result.IsError()) {
        std::string canonicalName;
        HUTFile(member).getCanonicalName(canonicalName);
        HCRapidJsonReadWriteUtils::errorParsingJsonFile(canonicalName,
                                                        HCRapidJsonReadWriteUtils::GetErrorMsg(result));
        return {};
    }
    return root.take();
}

/// Calls `take(line)` for each line, without its newline.
template <typename Take>
void forEachLine(const std::string& text, Take take)
{
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        take(text.substr(start, end - start));
        start = end + 1;
    }
}

constexpr std::string_view closingMarker = "\" *)";

}  // namespace

void SWParamReader::parseAttributeJsonFile(const std::string& member, const std::string& container,
                                           std::string& refName,
                                           std::map<std::string, std::string>& attributes)
{
    refName.clear();
    attributes.clear();
    if (member.empty() || !HUTZip::containsFile(HUTFile(container), member)) {
        return;
    }
    iostreams::zip_istream in(member, container, encryptionHint);
    if (!in.is_open()) {
        ComMsgMgr::sendMsg("hdf", "@36-530@%s%s", 2, ComMsgMgr::NOTICE, member.c_str(), container.c_str());
        return;
    }
    Members members = readMembers(in, member, container);
    in.close();
    if (std::none_of(members.begin(), members.end(),
                     [](const auto& read) { return read.first == refNameKey; })) {
        return;
    }
    std::string name;
    std::map<std::string, std::string> found;
    for (auto& [key, value] : members) {
        if (key == "pss_io") {
            processIOString(value);
        } else if (key == "pss_power") {
            processPowerString(value);
        }
        (key == refNameKey ? name : found[key]) = std::move(value);
    }
    refName.swap(name);
    attributes.swap(found);
}

std::string SWParamReader::trimWithArgument(const std::string& text, const std::string& characters)
{
    return boost::algorithm::trim_copy_if(text, boost::algorithm::is_any_of(characters));
}

void processIOString(std::string& text)
{
    constexpr std::string_view openingMarker = "(*PSS_IO= \"";
    if (text.empty()) {
        return;
    }
    std::string joined;
    forEachLine(text, [&](const std::string& line) { joined += line.substr(0, line.find("\\n\\")) + '\n'; });
    const std::size_t opening = joined.find(openingMarker);
    const std::size_t closing = joined.find(closingMarker);
    // A marker that isn't there counts as one less than zero: the sums wrap round on purpose.
    text = joined.substr(opening + openingMarker.size(), closing - opening - openingMarker.size());
}

void processPowerString(std::string& text)
{
    constexpr std::string_view openingMarker = "(*PSS_POWER= \"";
    if (text.empty()) {
        return;
    }
    std::string joined;
    forEachLine(text, [&](const std::string& line) {
        const std::size_t last = line.find_last_not_of('\\');
        joined += last == std::string::npos ? line : line.substr(0, last + 1);
    });
    const std::size_t opening = joined.find(openingMarker);
    const std::size_t closing = joined.find(closingMarker);
    if (opening == std::string::npos || closing == std::string::npos) {
        text.clear();
        return;
    }
    // A closing marker in front of the opening one's end makes the length wrap round to the whole rest.
    text = joined.substr(opening + openingMarker.size(), closing - opening - openingMarker.size());
}
