#include "hwdef/inspect/ContentFindings.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

#include "hwdef/container/Sha1.h"
#include "hwdef/container/SourceArchives.h"
#include "platform/Buffer.h"
#include "platform/Limits.h"
#include "platform/iostreams/EntryHeaders.h"
#include "platform/iostreams/MemberReader.h"
#include "platform/iostreams/ZipException.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::Entry;
using iostreams::zip::zip_exception;

namespace {

constexpr std::size_t bufferBytes = 128 * 1024;

/// One run over the members of an archive.
class ContentCheck {
public:
    ContentCheck(const ArchiveReader& archive, const std::string& bom, FindingList& findings)
        : archive_(archive),
          bom_(bom),
          findings_(findings),
          leftBytes_(std::max(platform::limits::maxDigested(),
                              platform::limits::DIGESTED_PER_CONTAINER_BYTE * archive.file().size()))
    {
    }

    /// Digests of what the BOM lists will be wanted.
    void want(const BomListing& listing)
    {
        for (const auto& [name, isDriver] : listing.digested) {
            const Entry* const entry = find(name, isDriver);
            if (entry != nullptr && (listing.minor == "2" || listing.digests.contains(name))) {
                digests_.try_emplace(entry->record.data());
            }
        }
    }

    void readAll()
    {
        for (const Entry& entry : archive_.entries()) {
            if (isReadable(entry) && isAffordable(entry)) {
                read(entry);
            }
        }
    }

    /// Holds the digests against those of the BOM as opening with an integrity check does.
    void compare(const BomListing& listing)
    {
        const bool isChecked = listing.minor == "2" && !listing.overallDigest.empty();
        std::string all;
        bool isWhole = true;
        for (const auto& [name, isDriver] : listing.digested) {
            const std::optional<std::string> digest = digestOf(name, isDriver);
            isWhole = isWhole && digest;
            if (digest) {
                all += *digest;
                compareOne(listing, name, *digest, isChecked);
            }
        }
        if (!isChecked || !isWhole) {
            return;
        }
        sha1_.reset();
        sha1_.add(all.data(), all.size());
        const std::string overall = sha1_.finish();
        if (overall != listing.overallDigest) {
            findings_.add("bom.digest", bom_,
                          "all members together have the digest " + overall + ", recorded is " +
                              shown(listing.overallDigest));
        }
    }

private:
    const Entry* find(const std::string& name, bool isDriver) const
    {
        return isDriver ? findDriverFile(archive_, name) : archive_.find(name);
    }

    bool isReadable(const Entry& entry)
    {
        try {
            iostreams::zip::checkSupported(entry, archive_.path());
            return true;
        } catch (const zip_exception&) {
            return false;  // told as part of the structure
        }
    }

    bool isAffordable(const Entry& entry)
    {
        const std::uint64_t cost = std::max(entry.size, entry.compressedSize);
        if (cost <= leftBytes_) {
            leftBytes_ -= cost;
            return true;
        }
        findings_.addAt(entry.headerOffset, "archive.too-large", entry.name,
                        "has " + std::to_string(entry.size) + " bytes, of which no more than " +
                            std::to_string(leftBytes_) + " may still be unpacked; it isn't looked at");
        return false;
    }

    void read(const Entry& entry)
    {
        const auto digest = digests_.find(entry.record.data());
        sha1_.reset();
        try {
            iostreams::zip::MemberReader content(archive_, entry);
            while (const std::size_t count = content.read(buffer_.data(), buffer_.size())) {
                if (digest != digests_.end()) {
                    sha1_.add(buffer_.data(), count);
                }
            }
            if (digest != digests_.end()) {
                digest->second = sha1_.finish();
            }
        } catch (const iostreams::zip::ChecksumError& error) {
            tell("archive.crc", entry, error);
        } catch (const zip_exception& error) {
            tell("archive.member", entry, error);
        }
    }

    void tell(const char* id, const Entry& entry, const zip_exception& error)
    {
        findings_.addAt(entry.headerOffset, id, entry.name,
                        reasonOf(error.what(), archive_.path(), entry.name));
    }

    /// Nothing for a member that couldn't be read. One that isn't there counts as empty.
    std::optional<std::string> digestOf(const std::string& name, bool isDriver)
    {
        const Entry* const entry = find(name, isDriver);
        if (entry == nullptr) {
            sha1_.reset();
            return sha1_.finish();
        }
        const auto digest = digests_.find(entry->record.data());
        return digest == digests_.end() || digest->second.empty() ? std::nullopt
                                                                  : std::optional(digest->second);
    }

    void compareOne(const BomListing& listing, const std::string& name, const std::string& digest,
                    bool isChecked)
    {
        const auto recorded = listing.digests.find(name);
        if (recorded == listing.digests.end()) {
            if (isChecked) {
                findings_.add("bom.digest", name, "no digest is recorded, so that it counts as changed");
            }
            return;
        }
        if (recorded->second.text != digest) {
            findings_.addInLine(recorded->second.line, "bom.digest", name,
                                "has the digest " + digest + ", recorded is " + shown(recorded->second.text));
            findings_.setSeverity(isChecked ? HHDFFinding::ERROR : HHDFFinding::WARNING);
        }
    }

    const ArchiveReader& archive_;
    const std::string& bom_;
    FindingList& findings_;
    std::uint64_t leftBytes_;
    std::unordered_map<const char*, std::string> digests_;  // by directory record; empty until known
    Sha1 sha1_;
    platform::Buffer buffer_{bufferBytes};
};

}  // namespace

void findContentFaults(const ArchiveReader& archive, const std::string& bom, const BomListing* listing,
                       FindingList& findings)
{
    ContentCheck check(archive, bom, findings);
    if (listing != nullptr) {
        check.want(*listing);
    }
    check.readAll();
    if (listing != nullptr) {
        check.compare(*listing);
    }
}

std::string reasonOf(const std::string& text, const std::string& archive, std::string_view member)
{
    const std::string lead =
        archive + ": " + (member.empty() ? "" : "member " + iostreams::zip::quoted(member) + ": ");
    return text.compare(0, lead.size(), lead) == 0 ? text.substr(lead.size()) : text;
}
