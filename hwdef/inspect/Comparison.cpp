#include <sstream>
#include <string_view>
#include <utility>

#include "hwdef/inspect/ContentFacts.h"
#include "hwdef/inspect/HHDFInspect.h"
#include "hwdef/swparam/RootMembers.h"
#include "platform/ComMsgMgr.h"
#include "platform/Limits.h"
#include "platform/ProgressWork.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::Entry;
using Parameters = std::map<std::string, std::string>;

namespace {

using Differences = std::vector<HHDFDifference>;

/// Tells what is in one of two maps only, or has another value in the other. `tell(key, before, after)`
/// gets a null pointer for what isn't there.
template <typename Map, typename Tell>
void merge(const Map& first, const Map& second, Tell tell)
{
    auto left = first.begin();
    auto right = second.begin();
    while (left != first.end() || right != second.end()) {
        if (right == second.end() || (left != first.end() && left->first < right->first)) {
            tell(left->first, &left->second, nullptr);
            ++left;
        } else if (left == first.end() || right->first < left->first) {
            tell(right->first, nullptr, &right->second);
            ++right;
        } else {
            if (left->second != right->second) {
                tell(left->first, &left->second, &right->second);
            }
            ++left;
            ++right;
        }
    }
}

HHDFDifference difference(FactKey key, const std::string* before, const std::string* after)
{
    const HHDFDifference::Kind kind = before == nullptr  ? HHDFDifference::ADDED
                                      : after == nullptr ? HHDFDifference::REMOVED
                                                         : HHDFDifference::CHANGED;
    return {std::move(key.section),           std::move(key.item),           std::move(key.field), kind,
            before == nullptr ? "" : *before, after == nullptr ? "" : *after};
}

/// The software parameters that a member holds; empty for one that isn't a document of such.
Parameters parametersOf(const ArchiveReader& archive, const std::string& name)
{
    const Entry* const entry = archive.find(name);
    if (entry == nullptr || entry->size > platform::limits::maxMemberInMemory()) {
        return {};
    }
    std::istringstream in(archive.read(*entry, platform::limits::maxMemberInMemory()));
    RootMembers read =
        readRootMembers(in, platform::limits::maxMemberInMemory(), platform::limits::maxDocumentMemory());
    Parameters parameters;
    for (auto& [key, value] : read.members) {
        parameters[std::move(key)] = std::move(value);
    }
    return parameters.contains("refName") ? parameters : Parameters();
}

void compareParameters(const ContentFacts& first, const ContentFacts& second, const std::string& name,
                       Differences& differences)
{
    const Parameters before = parametersOf(first.archive(), name);
    const Parameters after = parametersOf(second.archive(), name);
    if (before.empty() || after.empty()) {
        return;
    }
    merge(before, after, [&](const std::string& key, const std::string* left, const std::string* right) {
        differences.push_back(difference({"parameter", name, key}, left, right));
    });
}

void compareFacts(const ContentFacts& first, const ContentFacts& second, Differences& differences)
{
    Differences parameters;
    merge(first.all(), second.all(),
          [&](const FactKey& key, const std::string* before, const std::string* after) {
              // A thing that is there in one container only is told as a whole, by its first fact.
              const bool isWhole = !differences.empty() && differences.back().section == key.section &&
                                   differences.back().item == key.item && differences.back().field.empty() &&
                                   differences.back().kind != HHDFDifference::CHANGED;
              if (isWhole && !key.field.empty()) {
                  if (key.field == "content") {
                      differences.back().before = before == nullptr ? "" : *before;
                      differences.back().after = after == nullptr ? "" : *after;
                  }
                  return;
              }
              differences.push_back(difference(key, before, after));
              if (key.section == "file" && key.field == "content" && before != nullptr && after != nullptr) {
                  compareParameters(first, second, key.item, parameters);
              }
          });
    differences.insert(differences.end(), std::make_move_iterator(parameters.begin()),
                       std::make_move_iterator(parameters.end()));
}

}  // namespace

bool HHDFInspect::compare(const std::string& first, const std::string& second, Differences& differences)
{
    differences.clear();
    try {
        ContentFacts left(first);
        ContentFacts right(second);
        const platform::ProgressWork work(first);
        left.expectWork();
        right.expectWork();
        left.gather();
        right.gather();
        compareFacts(left, right, differences);
        return true;
    } catch (const HEXAll& error) {
        ComMsgMgr::sendMessage(error.what(), false);
        differences.clear();
        return false;
    }
}
