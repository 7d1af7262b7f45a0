#include "platform/iostreams/MemberReader.h"

#include <isa-l/crc.h>

#include <algorithm>
#include <exception>
#include <iomanip>
#include <sstream>

#include "platform/ProgressWork.h"
#include "platform/iostreams/EntryHeaders.h"
#include "platform/iostreams/Inflater.h"
#include "platform/iostreams/MemberInput.h"
#include "platform/iostreams/ZipException.h"

namespace iostreams::zip {

namespace {

/// What is unpacked at once is still in the processor's cache when its CRC-32 is taken.
constexpr std::size_t stepBytes = 64 * 1024;

}  // namespace

class MemberReader::Impl {
public:
    void open(const ArchiveReader& archive, const Entry& entry)
    {
        archive_ = &archive;
        entry_ = entry;
        input_.open(archive, entry_);
        restartInflater();
        left_ = entry.size;
        crc_ = 0;
        checked_ = false;
        failure_ = nullptr;
    }

    void limitTime(UnpackTime* time) { time_ = time; }

    std::size_t read(char* buffer, std::size_t size)
    {
        if (failure_) {
            std::rethrow_exception(failure_);
        }
        try {
            return deliver(buffer, size);
        } catch (const platform::FileError& error) {
            failure_ = std::make_exception_ptr(memberError(archive_->path(), entry_.name, error));
        } catch (const zip_exception&) {
            failure_ = std::current_exception();
        }
        std::rethrow_exception(failure_);
    }

private:
    void restartInflater()
    {
        isDeflated_ = entry_.method == METHOD_DEFLATED;
        if (!isDeflated_) {
            return;
        }
        if (inflater_) {
            inflater_->restart();
        } else {
            inflater_ = std::make_unique<Inflater>();
        }
    }

    std::size_t deliver(char* buffer, std::size_t size)
    {
        size = static_cast<std::size_t>(std::min<std::uint64_t>(size, left_));
        for (std::size_t done = 0; done < size;) {
            const std::size_t step = std::min(size - done, stepBytes);
            char* begin = buffer + done;
            const std::size_t got = isDeflated_ ? inflate(begin, step) : copy(begin, step);
            if (got == 0) {
                throw error("unpacks to " + std::to_string(entry_.size - left_) + " bytes, directory says " +
                            std::to_string(entry_.size));
            }
            crc_ = crc32_gzip_refl(crc_, reinterpret_cast<const unsigned char*>(begin), got);
            done += got;
            left_ -= got;
            platform::ProgressWork::advance(entry_.name, got);
        }
        if (left_ == 0 && !checked_) {
            checkEnd();
            checked_ = true;
        }
        return size;
    }

    std::size_t copy(char* buffer, std::size_t size)
    {
        input_.read(buffer, size);
        return size;
    }

    /// The next bytes that the stream unpacks to; 0 at its end.
    std::size_t inflate(char* buffer, std::size_t size)
    {
        for (;;) {
            const std::size_t got = unpackInTime(buffer, size);
            if (inflater_->damage() != nullptr) {
                throw error(std::string("deflated data is damaged: ") + inflater_->damage());
            }
            if (got > 0 || inflater_->isFinished()) {
                return got;
            }
            if (inflater_->needsInput()) {
                if (input_.left() == 0) {
                    throw error("deflated data doesn't end within the compressed size of " +
                                std::to_string(entry_.compressedSize));
                }
                inflater_->feed(input_.next());
            }
        }
    }

    std::size_t unpackInTime(char* buffer, std::size_t size)
    {
        if (time_ == nullptr) {
            return inflater_->unpack(buffer, size);
        }
        if (time_->isUp()) {
            std::ostringstream reason;
            reason << "takes longer to unpack than the " << std::fixed << std::setprecision(2)
                   << time_->allowedSeconds() << " seconds allowed";
            throw TimeError(error(reason.str()).what());
        }
        const UnpackTime::Clock::time_point begin = UnpackTime::Clock::now();
        const std::size_t got = inflater_->unpack(buffer, size);
        time_->spend(UnpackTime::Clock::now() - begin, got);
        return got;
    }

    void checkEnd()
    {
        if (isDeflated_) {
            checkStreamEnd();
        }
        if (crc_ != entry_.crc) {
            throw ChecksumError(
                error("CRC-32 is " + hex(crc_) + ", directory says " + hex(entry_.crc)).what());
        }
        if ((entry_.flags & FLAG_DESCRIPTOR) != 0) {
            checkDescriptor(input_.behind(), entry_, archive_->path());
        }
    }

    /// The stream must end where its output does, and with the last of the compressed bytes.
    void checkStreamEnd()
    {
        char more = 0;
        if (inflate(&more, 1) != 0) {
            throw error("unpacks to more than the " + std::to_string(entry_.size) +
                        " bytes that the directory says");
        }
        const std::uint64_t unused = inflater_->unusedBytes() + input_.left();
        if (unused != 0) {
            throw error("deflated data ends after " + std::to_string(entry_.compressedSize - unused) +
                        " bytes, directory says " + std::to_string(entry_.compressedSize));
        }
    }

    zip_exception error(const std::string& reason) const
    {
        return memberError(archive_->path(), entry_.name, reason);
    }

    const ArchiveReader* archive_ = nullptr;
    Entry entry_;
    MemberInput input_;
    bool isDeflated_ = false;
    std::unique_ptr<Inflater> inflater_;  // once a member needed it
    std::uint64_t left_ = 0;              // bytes still to be delivered
    std::uint32_t crc_ = 0;
    bool checked_ = false;
    UnpackTime* time_ = nullptr;
    std::exception_ptr failure_;  // a damaged member stays one, however often it is read
};

MemberReader::MemberReader() : impl_(std::make_unique<Impl>()) {}

MemberReader::MemberReader(const ArchiveReader& archive, const Entry& entry) : MemberReader()
{
    open(archive, entry);
}

MemberReader::~MemberReader() = default;

void MemberReader::open(const ArchiveReader& archive, const Entry& entry)
try {
    checkSupported(entry, archive.path());
    impl_->open(archive, entry);
} catch (const platform::FileError& error) {
    throw memberError(archive.path(), entry.name, error);
}

void MemberReader::limitTime(UnpackTime* time)
{
    impl_->limitTime(time);
}

std::size_t MemberReader::read(char* buffer, std::size_t size)
{
    return impl_->read(buffer, size);
}

}  // namespace iostreams::zip
