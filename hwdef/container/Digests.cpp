#include <fcntl.h>

#include <algorithm>
#include <map>
#include <unordered_map>
#include <utility>

#include "hwdef/container/MemberEntry.h"
#include "hwdef/container/Sha1.h"
#include "hwdef/container/SourceArchives.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/Buffer.h"
#include "platform/ComMsgMgr.h"
#include "platform/File.h"
#include "platform/Limits.h"
#include "platform/ProgressWork.h"
#include "platform/iostreams/MemberReader.h"
#include "platform/iostreams/UnpackTime.h"
#include "platform/iostreams/ZipException.h"

namespace {

constexpr std::size_t bufferBytes = 128 * 1024;
/// Members up to this size, packed too, are digested as fast as a known digest is found.
constexpr std::uint64_t smallBytes = 4096;
/// So many digests take 14 MB.
constexpr std::size_t mostRemembered = 100'000;

/// A member of one archive reader: its serial number, and where the member's directory record stands.
using MemberKey = std::pair<std::uint64_t, const char*>;

/// Computes digest texts, one file or member after the other, through one buffer.
class Digester {
public:
    Digester() { content_.limitTime(&time_); }

    /// How many bytes it will take to digest the entry.
    std::uint64_t bytesOf(const MemberEntry& member) { return sourceBytes(archives_, member, false); }

    /// False when the entry stands for a file on disk that can't be read, or for a member that may not be.
    bool digest(const MemberEntry& member, std::string& text)
    {
        const std::string archive = member.archive();
        if (!archive.empty()) {
            return digestMember(archive, member, text);
        }
        sha1_.reset();
        if (!addFile(member.diskPath())) {
            return false;
        }
        text = sha1_.finish();
        return true;
    }

    /// Whether no member was beyond the limit so far.
    bool keptLimit() const { return keptLimit_; }

    std::string overall(const std::map<std::string, std::string>& digestMap)
    {
        sha1_.reset();
        for (const auto& [name, text] : digestMap) {
            sha1_.add(text.data(), text.size());
        }
        return sha1_.finish();
    }

private:
    /// A member that isn't there counts as empty, and so does one that can't be read to its end, whose
    /// reason is sent. False, with the reason sent, for one beyond the limit; of those behind the time
    /// allowed only the first is told.
    bool digestMember(const std::string& archive, const MemberEntry& member, std::string& text)
    {
        std::string reason;
        const iostreams::zip::ArchiveReader* reader = archives_.open(archive, reason);
        const iostreams::zip::Entry* entry = reader == nullptr ? nullptr : findMember(*reader, member);
        if (entry != nullptr) {
            return digestEntry(*reader, *entry, text);
        }
        send(reason);
        sha1_.reset();
        text = sha1_.finish();
        return true;
    }

    /// A member that is listed once more costs nothing more.
    bool digestEntry(const iostreams::zip::ArchiveReader& reader, const iostreams::zip::Entry& entry,
                     std::string& text)
    {
        const MemberKey key = {reader.serial(), entry.record.data()};
        const auto known = memberDigests_.find(key);
        if (known != memberDigests_.end()) {
            text = known->second;
            platform::ProgressWork::advance(entry.name, entry.size);
            return true;
        }
        if (isTimeOver_ && entry.method == iostreams::zip::METHOD_DEFLATED) {
            return false;
        }
        if (!mayDigest(reader, entry)) {
            return refuse(reader.path() + ": member \"" + std::string(entry.name) + "\" has " +
                          std::to_string(entry.size) + " bytes, with which more are digested than the " +
                          std::to_string(mostBytes(reader)) + " allowed");
        }
        sha1_.reset();
        try {
            addContent(reader, entry);
        } catch (const iostreams::zip::TimeError& error) {
            isTimeOver_ = true;
            return refuse(error.what() + std::string("; no compressed member after it is digested"));
        } catch (const iostreams::device::detail::zip_exception& error) {
            sha1_.reset();
            send(error.what());
        }
        text = sha1_.finish();
        if (std::max(entry.size, entry.compressedSize) > smallBytes &&
            memberDigests_.size() < mostRemembered) {
            memberDigests_.emplace(key, text);
        }
        return true;
    }

    bool refuse(const std::string& reason)
    {
        keptLimit_ = false;
        send(reason);
        return false;
    }

    static void send(const std::string& reason)
    {
        if (!reason.empty()) {
            ComMsgMgr::sendMessage(reason, false);
        }
    }

    void addContent(const iostreams::zip::ArchiveReader& reader, const iostreams::zip::Entry& entry)
    {
        content_.open(reader, entry);
        while (const std::size_t count = content_.read(buffer_.data(), buffer_.size())) {
            sha1_.add(buffer_.data(), count);
        }
    }

    /// A small container may unpack to any number of bytes.
    bool mayDigest(const iostreams::zip::ArchiveReader& reader, const iostreams::zip::Entry& entry)
    {
        const std::uint64_t most = mostBytes(reader);
        const auto [known, isNew] = digestedBytes_.try_emplace(reader.path());
        std::uint64_t& digested = known->second;
        if (isNew) {
            time_.allow(reader.file().size());
        }
        if (digested > most || entry.size > most - digested) {
            return false;
        }
        digested += entry.size;
        return true;
    }

    static std::uint64_t mostBytes(const iostreams::zip::ArchiveReader& reader)
    {
        return std::max(platform::limits::maxDigested(),
                        platform::limits::DIGESTED_PER_CONTAINER_BYTE * reader.file().size());
    }

    bool addFile(const std::string& path)
    {
        try {
            const platform::File file = platform::File::openRegular(path, O_RDONLY);
            while (const std::size_t count = file.read(buffer_.data(), buffer_.size())) {
                sha1_.add(buffer_.data(), count);
                platform::ProgressWork::advance(path, count);
            }
            return true;
        } catch (const platform::FileError&) {
            return false;
        }
    }

    std::unordered_map<std::string, std::uint64_t> digestedBytes_;  // by archive
    std::map<MemberKey, std::string> memberDigests_;
    bool keptLimit_ = true;
    bool isTimeOver_ = false;  // for compressed members
    SourceArchives archives_;
    iostreams::zip::UnpackTime time_{1 - platform::limits::BOM_SHARE_OF_UNPACK_SECONDS};
    iostreams::zip::MemberReader content_;  // of the archives' members
    Sha1 sha1_;
    platform::Buffer buffer_{bufferBytes};
};

/// False, after that was said, when it was cancelled.
bool digestMembers(const HHDFHwDefImp& def, Digester& digester, HHDFHwDef::Texts& digestMap)
try {
    const platform::ProgressWork work(def.container == nullptr ? "" : def.container->path());
    if (platform::ProgressWork::isWatched()) {
        forEachMember(def, [&](const MemberEntry& member) {
            platform::ProgressWork::expect(digester.bytesOf(member));
        });
    }
    forEachMember(def, [&](const MemberEntry& member) {
        std::string text;
        if (digester.digest(member, text)) {
            digestMap[member.name()] = std::move(text);
        }
    });
    return true;
} catch (const platform::Cancelled& cancelled) {
    ComMsgMgr::sendMessage(cancelled.what(), false);
    return false;
}

}  // namespace

std::string HHDFHwDef::getDigest() const
{
    return implementation_->digest;
}

bool HHDFHwDef::setDigest(std::string& digest)
{
    if (implementation_ == nullptr) {
        return false;
    }
    implementation_->digest = digest;
    return true;
}

void HHDFHwDef::addDigestForFile(std::string name, std::string digest)
{
    if (implementation_ != nullptr) {
        implementation_->fileDigests.set(name, digest);
    }
}

void HHDFHwDef::updateDigest(std::string& digest, Texts& digestMap)
{
    if (implementation_ != nullptr) {
        implementation_->digest = digest;
        implementation_->fileDigests.assign(digestMap);
    }
}

HHDFHwDefImp::Digested HHDFHwDefImp::calculateDigest(std::string& overall, HHDFHwDef::Texts& digestMap) const
{
    Digester digester;
    if (!digestMembers(*this, digester, digestMap)) {
        return Digested::CANCELLED;
    }
    overall = digester.overall(digestMap);
    return digester.keptLimit() ? Digested::ALL : Digested::SOME;
}

bool HHDFHwDef::calculateDigest(std::string& digest, Texts& digestMap)
{
    if (implementation_ == nullptr) {
        digest = Digester().overall(digestMap);
        return true;
    }
    return implementation_->calculateDigest(digest, digestMap) != HHDFHwDefImp::Digested::CANCELLED;
}

bool HHDFHwDef::compareDigest(std::string& digest, Texts& digestMap, std::string& message)
{
    if (implementation_ == nullptr) {
        return false;
    }
    const Texts& recorded = implementation_->fileDigests.all();
    for (const auto& [name, computed] : digestMap) {
        const auto stored = recorded.find(name);
        if (stored == recorded.end() || stored->second != computed) {
            message = "File: " + name + " has been tampered.";
            return false;
        }
    }
    return digest == implementation_->digest;
}
