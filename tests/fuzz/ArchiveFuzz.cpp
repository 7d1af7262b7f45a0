// The zip layer's reader: open, list, find and read every member, twice, by the stream of one member
// and through copies into another archive.

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>
#include <unordered_map>
#include <utility>

#include "fuzz/FuzzInput.h"
#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
#include "platform/iostreams/Append.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/ArchiveWriter.h"
#include "platform/iostreams/MemberReader.h"
#include "platform/iostreams/zip.h"

using iostreams::device::detail::zip_exception;
using iostreams::zip::ArchiveReader;
using iostreams::zip::ArchiveWriter;
using iostreams::zip::Entry;
using iostreams::zip::Origin;

namespace {

/// Small enough that many members of an input can be unpacked.
constexpr std::uint64_t mostBytes = 4 * 1024 * 1024;

/// The member's content as read through a small buffer; false when it can't be read.
bool streamMember(const ArchiveReader& archive, const Entry& entry, std::string& content)
try {
    iostreams::zip::MemberReader reader(archive, entry);
    char buffer[4099];
    while (const std::size_t size = reader.read(buffer, sizeof buffer)) {
        content.append(buffer, size);
        fuzz::require(content.size() <= entry.size, "no member is longer than it is said to be");
    }
    return true;
} catch (const zip_exception&) {
    return false;
}

bool readMember(const ArchiveReader& archive, const Entry& entry, std::string& content)
try {
    content = archive.read(entry, mostBytes);
    return true;
} catch (const zip_exception&) {
    return false;
}

/// Both ways of reading agree on what can be read, and on its bytes.
void readTwice(const ArchiveReader& archive, const Entry& entry, std::string& content)
{
    if (entry.size > mostBytes) {
        return;
    }
    std::string streamed;
    const bool whole = streamMember(archive, entry, streamed);
    fuzz::require(readMember(archive, entry, content) == whole, "a member can be read, or can't");
    fuzz::require(!whole || streamed == content, "a member has one content");
}

/// A member that can be read here can be read in an archive that took it over as it is. Not the other
/// way round: a data descriptor that contradicts the directory is not taken along.
void copyMembers(const ArchiveReader& archive, Origin origin, const std::string& path)
{
    ArchiveWriter copy(path, ArchiveWriter::Digest::ATTACHED);
    if (origin == Origin::KEPT) {
        copy.keepFront(archive);
    }
    std::string reason;
    std::unordered_map<std::string, const Entry*> taken;
    for (const Entry& entry : archive.entries()) {
        const std::string name(entry.name);
        if (copy.addMember(archive, entry, name, reason, origin)) {
            taken[name] = &entry;
        }
    }
    try {
        copy.commit();
    } catch (const zip_exception&) {
        fuzz::require(origin == Origin::KEPT, "a copy with new headers is written");
        return;
    }
    fuzz::require(HUTZip::checkIntegrity(HUTFile(path)) == HUTZip::INTACT, "a copy is intact");
    const ArchiveReader reader(path);
    fuzz::require(reader.entries().size() == taken.size(), "a copy lists what it took");
    for (const auto& [name, entry] : taken) {
        std::string here, there;
        const Entry* found = reader.find(name);
        fuzz::require(found != nullptr, "a copied member is found");
        if (entry->size <= mostBytes) {
            const bool whole = readMember(archive, *entry, here);
            fuzz::require(!whole || (readMember(reader, *found, there) && here == there),
                          "a copied member has the first one's content");
        }
    }
}

/// The contents of the members that can be read, each with its name.
std::multiset<std::pair<std::string, std::string>> readableMembers(const std::string& path)
{
    std::multiset<std::pair<std::string, std::string>> members;
    const ArchiveReader archive(path);
    for (const Entry& entry : archive.entries()) {
        std::string content;
        if (entry.size <= mostBytes && readMember(archive, entry, content)) {
            members.emplace(entry.name, content);
        }
    }
    return members;
}

/// What can be read stays readable when a member is added, and the member can be read then.
void addMember(const std::string& path)
{
    const std::string source = fuzz::directory() + "/source";
    std::ofstream(source) << "content";
    auto before = readableMembers(path);
    for (auto member = before.begin(); member != before.end();) {
        member = member->first == "added" ? before.erase(member) : std::next(member);
    }
    std::string reason;
    try {
        fuzz::require(iostreams::zip::appendFile(source, "added", path, reason), "a file can be read");
        before.emplace("added", "content");
    } catch (const zip_exception&) {
        // Refused: then nothing may have changed.
    }
    const auto after = readableMembers(path);
    fuzz::require(std::includes(after.begin(), after.end(), before.begin(), before.end()),
                  "an addition keeps what can be read");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = fuzz::writeInput(fuzz::view(data, size));
    HUTZip::checkIntegrity(HUTFile(path));
    try {
        const ArchiveReader archive(path);
        std::string content;
        for (const Entry& entry : archive.entries()) {
            const Entry* found = archive.find(entry.name);
            fuzz::require(found != nullptr && found->name == entry.name, "what is listed is found");
            readTwice(archive, entry, content);
        }
        copyMembers(archive, Origin::FIXED, fuzz::directory() + "/copy.hdf");
        copyMembers(archive, Origin::KEPT, fuzz::directory() + "/copy.hdf");
        addMember(path);
    } catch (const zip_exception&) {
        // refused: that is an answer
    }
    return 0;
}
