#include <fcntl.h>

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <cerrno>
#include <limits>

#include "hwdef/container/Extraction.h"
#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/ComMsgMgr.h"
#include "platform/HUTFile.h"
#include "platform/ProgressWork.h"
#include "platform/iostreams/Append.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/zip.h"

namespace zip = iostreams::zip;

namespace {

/// An open archive with the one member asked for.
struct Member {
    std::unique_ptr<zip::ArchiveReader> archive;
    const zip::Entry* entry = nullptr;

    Member(const std::string& name, const std::string& container)
        : archive(zip::ArchiveReader::openIfExists(container))
    {
        if (archive != nullptr) {
            entry = archive->find(name);
        }
    }

    bool isOpen() const { return entry != nullptr; }
};

/// Does `operation`, and answers `otherwise` after the reason was sent when an archive fails or who
/// watches the progress of the work on `container` cancels.
template <typename Operation, typename Result>
Result reportingArchiveErrors(const std::string& container, Operation operation, Result otherwise)
{
    const platform::ProgressWork work(container);
    try {
        return operation();
    } catch (const iostreams::device::detail::zip_exception& error) {
        ComMsgMgr::sendMessage(error.what(), false);
        return otherwise;
    } catch (const platform::Cancelled& cancelled) {
        ComMsgMgr::sendMessage(cancelled.what(), false);
        return otherwise;
    }
}

/// Whether something stands at the path that can be written to but not be replaced, like a FIFO.
bool isSpecialFile(const std::string& path)
{
    boost::system::error_code error;
    const boost::filesystem::file_status status = boost::filesystem::status(path, error);
    return boost::filesystem::exists(status) && boost::filesystem::is_other(status);
}

/// Whether a file can't be replaced for the sake of its directory, while it may be written to itself.
bool forbidsReplacing(const platform::FileError& error)
{
    return error.error() == EACCES || error.error() == EPERM || error.error() == EROFS ||
           error.error() == EBUSY;
}

void replaceOrOverwrite(const Member& member, const std::string& destination)
{
    try {
        extractMember(*member.archive, *member.entry, destination);
    } catch (const platform::FileError& error) {
        if (!forbidsReplacing(error) || !HUTFile(destination).exists()) {
            throw;
        }
        checkMember(*member.archive, *member.entry);  // before the old content is gone
        streamMember(*member.archive, *member.entry, platform::File::open(destination, O_WRONLY | O_TRUNC));
    }
}

/// Copies the member to the file; its directory is made. That the file can't be written isn't told.
void copyOut(const Member& member, const std::string& destination)
{
    platform::ProgressWork::expect(member.entry->size);
    HUTFile::ensureWritableDirectory(boost::filesystem::path(destination).parent_path().string());
    try {
        if (isSpecialFile(destination)) {
            streamMember(*member.archive, *member.entry, platform::File::open(destination, O_WRONLY));
        } else {
            replaceOrOverwrite(member, destination);
        }
    } catch (const platform::FileError&) {
        // The result says only whether the member could be read.
    }
}

}  // namespace

std::string HHDFHwDefUtils::getFileBufferFromHDF(const std::string& member, const std::string& container)
{
    return reportingArchiveErrors(
        container,
        [&] {
            const Member source(member, container);
            platform::ProgressWork::expect(source.isOpen() ? source.entry->size : 0);
            return source.isOpen()
                       ? source.archive->read(*source.entry, std::numeric_limits<std::uint64_t>::max())
                       : std::string();
        },
        std::string());
}

bool HHDFHwDefUtils::writeFileFromHDF(const std::string& destination, const std::string& member,
                                      const std::string& container)
{
    if (destination.empty() || member.empty() || container.empty() || !HUTFile(container).exists()) {
        return false;
    }
    return reportingArchiveErrors(
        container,
        [&] {
            const Member source(member, container);
            if (source.isOpen()) {
                copyOut(source, destination);
            }
            return source.isOpen();
        },
        false);
}

bool HHDFHwDefUtils::writeFileFromHDFToDir(const std::string& member, const std::string& container,
                                           const std::string& name, const std::string& dir)
{
    if (member.empty() || container.empty() || name.empty() || dir.empty()) {
        return false;
    }
    return reportingArchiveErrors(
        container,
        [&] {
            const Member source(member, container);
            if (source.isOpen()) {
                copyOut(source, dir + HUTFile::getDirSeparator() + name);
            }
            return source.isOpen();
        },
        false);
}

bool HHDFHwDefUtils::writeFileToHDF(const std::string& source, const std::string& member,
                                    const std::string& container)
{
    if (source.empty() || member.empty() || container.empty()) {
        return false;
    }
    return reportingArchiveErrors(
        container,
        [&] {
            std::string reason;  // of a source that can't be read, which is silent
            return zip::appendFile(source, member, container, reason);
        },
        false);
}

bool HHDFHwDefUtils::writeFileFromHDFToHDF(const std::string& member, const std::string& container,
                                           const std::string& destinationMember,
                                           const std::string& destinationContainer)
{
    if (member.empty() || container.empty() || destinationMember.empty() || destinationContainer.empty()) {
        return false;
    }
    return reportingArchiveErrors(
        destinationContainer,
        [&] {
            const Member source(member, container);
            if (!source.isOpen()) {
                return false;
            }
            std::string reason;
            if (zip::appendMember(*source.archive, *source.entry, destinationMember, destinationContainer,
                                  reason)) {
                return true;
            }
            ComMsgMgr::sendMessage(reason, false);
            return false;
        },
        false);
}
