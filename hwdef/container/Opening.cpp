#include <boost/filesystem/exception.hpp>
#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <memory>

#include "hwdef/bom/HHDFHwDefBomReader.h"
#include "hwdef/container/BomSize.h"
#include "hwdef/model/HHDFHwDefImp.h"
#include "platform/ComMsgMgr.h"
#include "platform/HEXAll.h"
#include "platform/HSTStringUtils.h"
#include "platform/HUTPathUtils.h"
#include "platform/HUTZip.h"
#include "platform/HXMLWInterface.h"
#include "platform/Limits.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/UnpackTime.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::Entry;

namespace {

/// Hardly anything that a document can say takes more than so many times its size. One that stays below
/// the limit to memory by this measure is not looked at more closely.
constexpr std::uint64_t mostBytesPerByte = 60;

bool fail(const char* id)
{
    ComMsgMgr::sendMsg("hdf", id, 0, ComMsgMgr::FAILURE);
    return false;
}

bool fail(const char* id, const std::string& argument)
{
    ComMsgMgr::sendMsg("hdf", id, 1, ComMsgMgr::FAILURE, argument.c_str());
    return false;
}

/// The archive, or null for what can't be read as one.
std::unique_ptr<ArchiveReader> openArchive(const std::string& path)
{
    try {
        return std::make_unique<ArchiveReader>(path);
    } catch (const HEXAll&) {
        return nullptr;
    }
}

/// The member's content; empty, after the reason was sent, when it can't be read.
std::string readBom(const ArchiveReader& archive, const Entry& entry)
{
    try {
        iostreams::zip::UnpackTime time(platform::limits::BOM_SHARE_OF_UNPACK_SECONDS);
        time.allow(archive.file().size());
        return archive.read(entry, platform::limits::maxMemberInMemory(), &time);
    } catch (const iostreams::device::detail::zip_exception& error) {
        ComMsgMgr::sendMessage(error.what(), false);
        return {};
    }
}

/// The container's path without its extension, made absolute. The extension is what follows the last
/// "." of the whole path, of a directory's name too.
std::string unzipDirOf(const std::string& containerPath)
{
    std::string dir =
        containerPath.substr(0, containerPath.rfind('.'));  // not const, so that it is moved out
    if (boost::filesystem::path(containerPath).has_root_directory()) {
        return dir;
    }
    return boost::filesystem::current_path().string() + HUTFile::getDirSeparator() + dir;
}

bool passesDigestCheck(const HHDFHwDefImp& imp, const std::string& recorded)
{
    std::string digest;
    HHDFHwDef::Texts digestMap;
    const auto digested = imp.calculateDigest(digest, digestMap);
    if (digested == HHDFHwDefImp::Digested::CANCELLED) {
        return false;  // as was told
    }
    std::string message;
    const bool matches = imp.owner->compareDigest(digest, digestMap, message);
    if (recorded.empty()) {
        return true;
    }
    // A member beyond the limit to digesting, which was told, isn't known to have been tampered with.
    if (digested == HHDFHwDefImp::Digested::SOME && message.empty()) {
        return false;
    }
    return matches || fail("@64-23@%s", message);
}

/// What is known of the BOM apart from its text.
struct Bom {
    std::string container;
    std::string member;
    std::string minor;
    std::string digest;
};

/// Whether opening may take so much memory; says that it may not.
bool fitsMemory(std::uint64_t bytes, const Bom& bom, const char* what)
{
    const std::uint64_t limit = platform::limits::maxDocumentMemory();
    if (bytes > limit) {
        ComMsgMgr::sendMessage(bom.container + ": member \"" + bom.member + "\": " + what + " may take " +
                                   std::to_string(bytes) + " bytes of memory, allowed are " +
                                   std::to_string(limit),
                               false);
        return fail("@64-11@%s", bom.member);
    }
    return true;
}

/// The definition as far as the document alone tells it. False when it doesn't parse or would take too
/// much memory.
bool readDocument(HHDFHwDefImp& imp, std::string buffer, Bom& bom, bool checkIntegrity,
                  const std::string& driverPath)
{
    // A driver's file repeats the container's path twice, and is told in a dozen characters.
    const bool isSmall = buffer.size() <= platform::limits::maxDocumentMemory() /
                                              (mostBytesPerByte + bom.container.size() / 6);
    if (!isSmall && !fitsMemory(HXMLWInterface::mostBytes(buffer, platform::limits::maxDocumentMemory()), bom,
                                "parsing it")) {
        return false;
    }
    HXMLWInterface document;
    document.readFromBuffer(std::move(buffer));
    HXMLWElement* root = document.getRootElement();
    if (root == nullptr) {
        return false;
    }
    bom.minor = HHDFHwDefBomReader::valueOrEmpty(root->getAttribute("Minor"));
    bom.digest = HHDFHwDefBomReader::valueOrEmpty(root->getAttribute("DIGEST"));
    const std::string version = HHDFHwDefBomReader::valueOrEmpty(root->getAttribute("Version"));
    if (!HSTStringUtils::iequals(version, "1")) {
        return true;
    }
    if (!isSmall) {
        const BomSize size(document, bom.container);
        const bool computesDigests = checkIntegrity && HSTStringUtils::iequals(bom.minor, "2");
        if (!fitsMemory(size.mostBytes(), bom, "reading it") ||
            (computesDigests && !fitsMemory(size.mostBytesForDigests(), bom, "computing digests"))) {
            return false;
        }
    }
    HHDFHwDefBomReader(imp.owner, root).readHDF(driverPath);
    return true;
}

bool passesIntegrityCheck(HHDFHwDefImp& imp, const Bom& bom)
{
    if (HSTStringUtils::iequals(bom.minor, "2")) {
        return passesDigestCheck(imp, bom.digest);
    }
    if (!HSTStringUtils::iequals(bom.minor, "3")) {
        return true;
    }
    const int found = HUTZip::checkIntegrity(*imp.container);
    if (found == HUTZip::CANCELLED) {
        ComMsgMgr::sendMessage(bom.container + ": cancelled while its digest was computed", false);
        return false;
    }
    return found == HUTZip::INTACT || fail("@64-25@");
}

/// The steps of opening from the first look into the archive on.
bool readContainer(HHDFHwDefImp& imp, const std::string& path, bool checkIntegrity,
                   const std::string& driverPath)
{
    std::unique_ptr<ArchiveReader> archive = openArchive(path);
    std::string bomMember = "hwdef.xml";
    const Entry* bom = archive == nullptr ? nullptr : archive->find(bomMember);
    if (archive != nullptr && bom == nullptr) {
        bomMember = "sysdef.xml";
        bom = archive->find(bomMember);
    }
    if (bom == nullptr) {
        return fail("@64-4@%s", path);
    }
    imp.unzipDir = unzipDirOf(path);
    std::string buffer = readBom(*archive, *bom);
    archive.reset();  // its directory and the parsed document need not share the memory
    if (buffer.empty()) {
        return fail("@64-11@%s", bomMember);
    }
    // The document is gone when digests are computed, which take memory as well.
    Bom about = {path, bomMember, "", ""};
    return readDocument(imp, std::move(buffer), about, checkIntegrity, driverPath) &&
           (!checkIntegrity || passesIntegrityCheck(imp, about));
}

}  // namespace

bool HHDFHwDefImp::init(bool checkIntegrity, const std::string& driverPath)
{
    if (container == nullptr) {
        return fail("@64-6@");
    }
    std::string path;
    container->getFullPath(path);
    if (!HUTPathUtils::exists(path)) {
        return fail("@64-5@%s", path);
    }
    try {
        return readContainer(*this, path, checkIntegrity, driverPath);
    } catch (const HEXAll& error) {
        ComMsgMgr::sendMessage(error.what(), false);
    } catch (const boost::filesystem::filesystem_error& error) {
        ComMsgMgr::sendMessage(error.what(), false);
    }
    return false;
}

bool HHDFHwDef::init(bool checkIntegrity, std::string driverPath)
{
    return implementation_ != nullptr && implementation_->init(checkIntegrity, driverPath);
}

void HHDFHwDef::getContainerFullPath(std::string& path) const
{
    if (implementation_ != nullptr && implementation_->container != nullptr) {
        implementation_->container->getCanonicalName(path);
    }
}

std::string HHDFHwDef::getUnzipDir() const
{
    return implementation_ == nullptr ? std::string() : implementation_->unzipDir;
}
