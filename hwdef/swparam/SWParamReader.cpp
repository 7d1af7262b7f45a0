#include "hwdef/swparam/SWParamReader.h"

#include <algorithm>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <string_view>
#include <utility>

#include "hwdef/swparam/RootMembers.h"
#include "platform/ComMsgMgr.h"
#include "platform/HCRapidJsonReadWriteUtils.h"
#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
#include "platform/Limits.h"
#include "platform/iostreams/zip.h"

namespace limits = platform::limits;

namespace {

static_assert(SWParamReader::MAX_MEMBER_BYTES == limits::DEFAULT_MAX_MEMBER_IN_MEMORY);

/// The zip streams know no encrypted members; they accept the hint all the same.
constexpr int encryptionHint = 3;

constexpr std::string_view refNameKey = "refName";

bool isRefName(const std::pair<std::string, std::string>& member)
{
    return member.first == refNameKey;
}

void report(const RootMembers& read, const std::string& member, const std::string& container)
{
    if (!read.readError.empty()) {
        ComMsgMgr::sendMessage(container + ": member \"" + member + "\": " + read.readError, false);
    } else if (!read.parseError.empty()) {
        std::string canonicalName;
        HUTFile(member).getCanonicalName(canonicalName);
        HCRapidJsonReadWriteUtils::errorParsingJsonFile(canonicalName, read.parseError);
    }
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
    RootMembers read = readRootMembers(in, limits::maxMemberInMemory(), limits::maxDocumentMemory());
    in.close();
    report(read, member, container);
    if (std::none_of(read.members.begin(), read.members.end(), isRefName)) {
        return;
    }
    std::string name;
    std::map<std::string, std::string> found;
    for (auto& [key, value] : read.members) {
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
