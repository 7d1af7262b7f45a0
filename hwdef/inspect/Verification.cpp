#include <fcntl.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <unordered_set>

#include "hwdef/inspect/BomFindings.h"
#include "hwdef/inspect/BomText.h"
#include "hwdef/inspect/ContentFindings.h"
#include "hwdef/inspect/FindingList.h"
#include "hwdef/inspect/HHDFInspect.h"
#include "platform/ArchiveDigest.h"
#include "platform/ComMsgMgr.h"
#include "platform/KeyedHash.h"
#include "platform/Limits.h"
#include "platform/ProgressWork.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/EndRecord.h"
#include "platform/iostreams/EntryHeaders.h"
#include "platform/iostreams/ZipException.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::EndRecord;
using iostreams::zip::Entry;
using iostreams::zip::zip_exception;

namespace {

/// Whether other programs might unpack a member of this name somewhere else than below their directory.
bool leadsOut(std::string_view name)
{
    if (name.starts_with('/') || name.find('\0') != std::string_view::npos) {
        return true;
    }
    for (std::size_t at = 0; at <= name.size();) {
        const std::size_t end = std::min(name.find('/', at), name.size());
        if (name.substr(at, end - at) == "..") {
            return true;
        }
        at = end + 1;
    }
    return false;
}

/// One run over a container.
class Verification {
public:
    Verification(const platform::File& file, FindingList& findings) : file_(file), findings_(findings) {}

    void run(HHDFInspect::Level level)
    {
        openArchive();
        if (archive_ == nullptr) {
            return;
        }
        expectWork(level);
        checkEnd();
        checkEntries();
        const bool hasListing = checkBom();
        if (hasListing) {
            checkUnlisted();
        }
        if (level == HHDFInspect::Level::FULL) {
            findContentFaults(*archive_, bom_, hasListing ? &listing_ : nullptr, findings_);
            checkDigest();
        }
    }

private:
    const std::string& path() const { return file_.path(); }

    void openArchive()
    {
        try {
            end_ = iostreams::zip::findEndRecord(file_);
            archive_ = std::make_unique<ArchiveReader>(path());
        } catch (const zip_exception& error) {
            const char* const id = end_ || endsAsArchive() ? "archive.damaged"
                                   : beginsAsArchive()     ? "archive.truncated"
                                                           : "archive.not-archive";
            findings_.add(id, {}, reasonOf(error.what(), path(), {}));
        }
    }

    bool beginsAsArchive() const
    {
        constexpr std::string_view signature("PK\x03\x04", 4);
        std::array<char, 4> first = {};
        return file_.readAt(first.data(), first.size(), 0) == first.size() &&
               std::string_view(first.data(), first.size()) == signature;
    }

    bool endsAsArchive() const
    {
        constexpr std::string_view signature("PK\x05\x06", 4);
        constexpr std::uint64_t mostBytes = iostreams::zip::END_RECORD_BYTES + 0xffff;
        const std::uint64_t size = file_.size();
        std::string tail(std::min(size, mostBytes), '\0');
        tail.resize(file_.readAt(tail.data(), tail.size(), size - tail.size()));
        return tail.find(signature) != std::string::npos;
    }

    void expectWork(HHDFInspect::Level level) const
    {
        if (!platform::ProgressWork::isWatched()) {
            return;
        }
        for (const Entry& entry : archive_->entries()) {
            platform::ProgressWork::expect(level == HHDFInspect::Level::FULL ? entry.size : 0);
        }
        platform::ProgressWork::expect(level == HHDFInspect::Level::FULL ? file_.size() : 0);
    }

    void checkEnd()
    {
        if (end_->prefixSize > 0) {
            findings_.addAt(0, "archive.leading-bytes", {},
                            std::to_string(end_->prefixSize) + " bytes stand in front of the archive");
        }
        const std::uint64_t size = file_.size();
        if (end_->end < size) {
            findings_.addAt(end_->end, "archive.trailing-bytes", {},
                            std::to_string(size - end_->end) + " bytes stand behind the archive's end");
        }
    }

    void checkEntries()
    {
        std::unordered_set<std::string_view, platform::KeyedHash> names;
        for (const Entry& entry : archive_->entries()) {
            if (!names.insert(entry.name).second) {
                findings_.addAt(entry.headerOffset, "archive.duplicate-member", entry.name,
                                "the archive's directory lists it more than once; the last one counts");
            }
            if (leadsOut(entry.name)) {
                findings_.addAt(entry.headerOffset, "archive.unsafe-name", entry.name,
                                "its name leads out of the directory that the archive is unpacked to");
            }
            try {
                iostreams::zip::checkSupported(entry, path());
            } catch (const zip_exception& error) {
                findings_.addAt(entry.headerOffset, "archive.unsupported", entry.name,
                                reasonOf(error.what(), path(), entry.name));
            }
        }
    }

    /// False when nothing is known of what the BOM lists.
    bool checkBom()
    {
        const Entry* const first = archive_->find("hwdef.xml");
        const Entry* const second = archive_->find("sysdef.xml");
        const Entry* const entry = first != nullptr ? first : second;
        if (entry == nullptr) {
            findings_.add("bom.missing", {},
                          "the archive has neither \"hwdef.xml\" nor \"sysdef.xml\" on its top level");
            return false;
        }
        bom_ = entry->name;
        if (first != nullptr && second != nullptr) {
            findings_.addAt(second->headerOffset, "bom.two", "sysdef.xml",
                            "\"hwdef.xml\" is there as well and takes its place as the BOM");
        }
        std::string text;
        if (!readBom(*entry, text)) {
            return false;
        }
        const std::uint64_t bytes = BomText::mostBytes(text);
        BomText document(std::move(text));
        if (document.root() == nullptr) {
            findings_.addInLine(
                document.error().line, "bom.xml", bom_,
                "column " + std::to_string(document.error().column) + ": " + document.error().text);
            return false;
        }
        if (!fitsMemory(bytes + BomFindings::mostBytes(document), *entry) ||
            !BomFindings(document, bom_, *archive_, findings_).look(listing_)) {
            return false;
        }
        findPartitionFaults(document, bom_, listing_, findings_);
        return true;
    }

    bool readBom(const Entry& entry, std::string& text)
    {
        const std::uint64_t most = platform::limits::maxMemberInMemory();
        if (entry.size > most) {
            findings_.addAt(
                entry.headerOffset, "bom.too-large", bom_,
                "has " + std::to_string(entry.size) + " bytes, allowed are " + std::to_string(most));
            return false;
        }
        try {
            text = archive_->read(entry, most);
        } catch (const zip_exception& error) {
            findings_.addAt(entry.headerOffset, "bom.unreadable", bom_, reasonOf(error.what(), path(), bom_));
            return false;
        }
        return fitsMemory(BomText::mostBytes(text), entry);
    }

    bool fitsMemory(std::uint64_t bytes, const Entry& entry)
    {
        const std::uint64_t allowed = platform::limits::maxDocumentMemory();
        if (bytes <= allowed) {
            return true;
        }
        findings_.addAt(entry.headerOffset, "bom.too-large", bom_,
                        "looking through it may take " + std::to_string(bytes) +
                            " bytes of memory, allowed are " + std::to_string(allowed));
        return false;
    }

    void checkUnlisted()
    {
        for (const Entry& entry : archive_->entries()) {
            const std::string name(entry.name);
            const bool isBom = name == "hwdef.xml" || name == "sysdef.xml";
            if (isBom || name.ends_with('/') || listing_.names.contains(name) || isDriverSource(name)) {
                continue;
            }
            findings_.addAt(entry.headerOffset, "bom.member-unlisted", name,
                            "the archive has this member, but the BOM doesn't list it");
        }
    }

    bool isDriverSource(const std::string& name) const
    {
        return std::any_of(listing_.sources.begin(), listing_.sources.end(),
                           [&name](const std::string& dir) { return name.starts_with(dir); });
    }

    void checkDigest()
    {
        const std::string_view recorded = platform::ArchiveDigest::recordedIn(end_->comment);
        const bool isAskedFor = listing_.minor == "3";
        if (recorded.empty()) {
            findings_.add("archive.no-digest", {},
                          std::string("the archive records no digest of itself") +
                              (isAskedFor ? ", which opening with an integrity check refuses" : ""));
            findings_.setSeverity(isAskedFor ? HHDFFinding::ERROR : HHDFFinding::NOTICE);
            return;
        }
        if (end_->end != file_.size()) {
            findings_.addAt(end_->end, "archive.digest", {},
                            "the recorded digest must be the end of the file, but bytes stand behind it");
            return;
        }
        const std::uint64_t covered = end_->end - platform::ArchiveDigest::DIGITS;
        const std::string digest = platform::ArchiveDigest::ofFile(file_, covered);
        if (digest != recorded) {
            findings_.addAt(covered, "archive.digest", {},
                            "the archive's SHA-256 is " + digest + ", recorded is " + std::string(recorded));
        }
    }

    const platform::File& file_;
    FindingList& findings_;
    std::optional<EndRecord> end_;
    std::unique_ptr<ArchiveReader> archive_;
    std::string bom_;
    BomListing listing_;
};

}  // namespace

bool HHDFInspect::verify(const std::string& path, Level level, std::vector<HHDFFinding>& findings)
{
    FindingList list(findings);
    try {
        const platform::ProgressWork work(path);
        Verification(platform::File::openRegular(path, O_RDONLY), list).run(level);
        list.finish();
        return true;
    } catch (const HEXAll& error) {
        ComMsgMgr::sendMessage(error.what(), false);
        return false;
    }
}
