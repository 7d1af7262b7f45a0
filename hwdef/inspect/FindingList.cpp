#include "hwdef/inspect/FindingList.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

#include "hwdef/inspect/HHDFInspect.h"
#include "platform/iostreams/ZipException.h"

namespace {

struct Rule {
    std::string_view id;
    HHDFFinding::Severity severity;
    const char* advice;
};

constexpr const char* writeAnew = "Write the container anew from its sources.";
constexpr const char* copyAnew = "Copy or download the file again; compare its size with the original's.";
constexpr const char* correctBom = "Correct the definition and write the container anew.";

/// Sorted by identifier.
constexpr Rule rules[] = {
    {"archive.crc", HHDFFinding::ERROR, copyAnew},
    {"archive.damaged", HHDFFinding::ERROR, copyAnew},
    {"archive.digest", HHDFFinding::ERROR,
     "Find out who changed the file after it was written; write it anew when the change is meant."},
    {"archive.duplicate-member", HHDFFinding::ERROR,
     "Write the container anew: which of the two counts depends on the program that reads it."},
    {"archive.leading-bytes", HHDFFinding::NOTICE, "None is needed; write the container anew to drop them."},
    {"archive.member", HHDFFinding::ERROR, copyAnew},
    {"archive.no-digest", HHDFFinding::NOTICE,
     "Write the container anew to record one; adding a member drops it."},
    {"archive.not-archive", HHDFFinding::ERROR, "Name a container, which is a zip archive."},
    {"archive.too-large", HHDFFinding::ERROR,
     "Raise the parameter \"hwdef.maxDigestedBytes\" or \"hwdef.maxUnpackSeconds\" when the container can be "
     "trusted."},
    {"archive.trailing-bytes", HHDFFinding::WARNING,
     "Add a member or write the container anew: an interrupted addition may have left them."},
    {"archive.truncated", HHDFFinding::ERROR, copyAnew},
    {"archive.unsafe-name", HHDFFinding::WARNING,
     "Don't unpack the archive with other programs; write the container anew without the member."},
    {"archive.unsupported", HHDFFinding::ERROR,
     "Pack the member anew, deflated or stored and not encrypted."},
    {"bom.digest", HHDFFinding::ERROR,
     "Find out who changed the member; record digests anew when it is meant."},
    {"bom.listed-twice", HHDFFinding::WARNING, correctBom},
    {"bom.member-missing", HHDFFinding::ERROR, "Add the file under this name, or take the entry out."},
    {"bom.member-unlisted", HHDFFinding::WARNING,
     "Add an entry for the member, or write the container anew."},
    {"bom.missing", HHDFFinding::ERROR, "Check that the file is a container and no other archive."},
    {"bom.no-name", HHDFFinding::WARNING, correctBom},
    {"bom.number", HHDFFinding::ERROR, correctBom},
    {"bom.too-large", HHDFFinding::ERROR,
     "Raise \"hwdef.maxMemberInMemory\" and \"hwdef.maxDocumentMemory\" when the container can be trusted."},
    {"bom.two", HHDFFinding::WARNING, "Write the container anew: only \"hwdef.xml\" is read."},
    {"bom.unknown-role", HHDFFinding::WARNING, correctBom},
    {"bom.unknown-type", HHDFFinding::WARNING, correctBom},
    {"bom.unreadable", HHDFFinding::ERROR, copyAnew},
    {"bom.version", HHDFFinding::ERROR, "Read the container with a library that knows this version."},
    {"bom.xml", HHDFFinding::ERROR, writeAnew},
    {"driver.no-description", HHDFFinding::WARNING, "Add the driver's description, a file \"*.mdd\"."},
    {"driver.no-path", HHDFFinding::WARNING, correctBom},
    {"partition.several-active", HHDFFinding::WARNING, correctBom},
    {"partition.twice", HHDFFinding::WARNING, correctBom},
    {"partition.unknown", HHDFFinding::ERROR, correctBom},
    {"partition.unknown-module", HHDFFinding::ERROR, correctBom},
    {"partition.unlisted-file", HHDFFinding::WARNING, "Add an entry for the file, or correct its name."},
};

const Rule& ruleOf(std::string_view id)
{
    const auto found =
        std::lower_bound(std::begin(rules), std::end(rules), id,
                         [](const Rule& rule, std::string_view wanted) { return rule.id < wanted; });
    assert(found != std::end(rules) && found->id == id);
    return *found;
}

}  // namespace

std::string shown(std::string_view name)
{
    constexpr std::size_t mostBytes = 200;
    return iostreams::zip::quoted(name.substr(0, mostBytes)) + (name.size() > mostBytes ? "..." : "");
}

HHDFFinding* FindingList::make(const char* id, std::string_view member, std::string text)
{
    const Rule& rule = ruleOf(id);
    Kind& kind = kinds_[rule.id];
    last_ = nullptr;
    if (++kind.count <= HHDFInspect::MOST_OF_A_KIND) {
        kind.lastPlace = findings_.size();
        last_ = &findings_.emplace_back();
        last_->id = id;
        last_->severity = rule.severity;
        last_->member = member;
        last_->text = std::move(text);
        last_->advice = rule.advice;
    }
    return last_;
}

void FindingList::add(const char* id, std::string_view member, std::string text)
{
    make(id, member, std::move(text));
}

void FindingList::addAt(std::uint64_t offset, const char* id, std::string_view member, std::string text)
{
    if (make(id, member, std::move(text)) != nullptr) {
        last_->offset = offset;
    }
}

void FindingList::addInLine(std::uint64_t line, const char* id, std::string_view member, std::string text)
{
    if (make(id, member, std::move(text)) != nullptr) {
        last_->line = line;
    }
}

void FindingList::setSeverity(HHDFFinding::Severity severity)
{
    if (last_ != nullptr) {
        last_->severity = severity;
    }
}

void FindingList::finish()
{
    for (const auto& [id, kind] : kinds_) {
        if (kind.count > HHDFInspect::MOST_OF_A_KIND) {
            findings_[kind.lastPlace].text +=
                "; " + std::to_string(kind.count - HHDFInspect::MOST_OF_A_KIND) + " more are not told";
        }
    }
}
