#include <fcntl.h>

#include <boost/filesystem/path.hpp>
#include <cerrno>
#include <exception>
#include <limits>
#include <optional>

#include "platform/ReplacementFile.h"
#include "platform/iostreams/Addition.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/MemberWriter.h"
#include "platform/iostreams/ZipException.h"

namespace iostreams::device {

namespace {

/// A file without a name, beside the archive; nothing of it is left when the process ends. Empty where
/// the file system has no such files.
platform::File openNameless(const std::string& archive)
{
    const std::string parent = boost::filesystem::path(archive).parent_path().string();
    try {
        return platform::File::open(parent.empty() ? "." : parent, O_TMPFILE | O_RDWR, 0600);
    } catch (const platform::FileError& error) {
        if (error.error() == EOPNOTSUPP || error.error() == EISDIR || error.error() == ENOENT) {
            return {};
        }
        throw;
    }
}

/// Keeps what is written to a sink until it is known to be whole: in memory as long as it is small,
/// in a temporary file afterwards. It is kept as it comes, since only the whole tells whether deflate
/// makes it smaller.
class Spool {
public:
    explicit Spool(std::string archive) : archive_(std::move(archive)) {}

    void add(std::string_view bytes);
    /// Makes the content the writer's next member; nothing can be added afterwards.
    void open(zip::MemberWriter& writer, const std::string& name);

private:
    void moveToFile();

    std::string archive_;
    std::string memory_;  ///< all of it, or what has not gone to the file yet
    platform::File file_;
    std::optional<platform::ReplacementFile> named_;  ///< holds `file_` where nameless ones don't exist
};

void Spool::add(std::string_view bytes)
{
    if (memory_.size() + bytes.size() > zip::MemberWriter::CHUNK_BYTES) {
        moveToFile();
    }
    if (bytes.size() > zip::MemberWriter::CHUNK_BYTES) {
        file_.write(bytes.data(), bytes.size());
    } else {
        memory_ += bytes;
    }
}

void Spool::open(zip::MemberWriter& writer, const std::string& name)
{
    if (!file_.isOpen()) {
        writer.openBytes(memory_, name);
        return;
    }
    moveToFile();
    writer.openFile(std::move(file_), name);
}

void Spool::moveToFile()
{
    if (!file_.isOpen()) {
        file_ = openNameless(archive_);
    }
    if (!file_.isOpen()) {
        named_.emplace(archive_);
        file_ = std::move(named_->file());
    }
    file_.write(memory_.data(), memory_.size());
    memory_.clear();
}

}  // namespace

/// One member under way, shared by all copies of its sink.
class file_sink::Impl {
public:
    Impl(std::string member, std::string archive)
        : member_(std::move(member)), archive_(std::move(archive)), spool_(std::make_unique<Spool>(archive_))
    {
    }

    bool isOpen() const { return spool_ != nullptr; }
    void write(std::string_view bytes);
    void close();

private:
    std::string member_;
    std::string archive_;
    std::unique_ptr<Spool> spool_;  ///< none once the sink is closed or a write has failed
    int exceptions_ = std::uncaught_exceptions();
};

void file_sink::Impl::write(std::string_view bytes)
{
    if (!spool_) {
        throw zip::memberError(archive_, member_, "can't be written to: it is closed or a write has failed");
    }
    try {
        spool_->add(bytes);
    } catch (const platform::FileError& error) {
        spool_.reset();
        throw zip::memberError(archive_, member_, error);
    }
}

void file_sink::Impl::close()
{
    const std::unique_ptr<Spool> spool = std::move(spool_);
    // A stream that goes away because of an exception closes its devices as well, but what it has
    // written by then is not what it was meant to write.
    if (!spool || std::uncaught_exceptions() > exceptions_) {
        return;
    }
    try {
        zip::MemberWriter writer;
        spool->open(writer, member_);
        zip::addToArchive(archive_, writer);
    } catch (const zip::SourceError& error) {
        throw zip::memberError(archive_, member_, error.what());
    } catch (const platform::FileError& error) {
        throw zip::memberError(archive_, member_, error);
    }
}

file_sink::file_sink(const std::string& member, const std::string& archive, std::ios_base::openmode)
{
    // Opening the archive finds out now, not after all the bytes, that it can't be added to.
    zip::ArchiveReader::openIfExists(archive);
    if (!member.empty() && member.size() <= std::numeric_limits<std::uint16_t>::max()) {
        impl_ = std::make_shared<Impl>(member, archive);
    }
}

bool file_sink::is_open() const
{
    return impl_ && impl_->isOpen();
}

std::streamsize file_sink::write(const char* buffer, std::streamsize count)
{
    if (!impl_) {
        throw detail::zip_exception("a member without a name can't be written to");
    }
    impl_->write({buffer, static_cast<std::size_t>(count)});
    return count;
}

void file_sink::close()
{
    if (impl_) {
        impl_->close();
    }
}

}  // namespace iostreams::device
