#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "platform/iostreams/Append.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/EndRecord.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

inline support::Members membersOf(const std::string& path)
{
    const iostreams::zip::ArchiveReader reader(path);
    support::Members members;
    for (const auto& entry : reader.entries()) {
        members.emplace_back(entry.name, reader.read(entry, entry.size));
    }
    return members;
}

/// Whether the file's end holds no end record, so that only our reader finds one.
inline bool hasDebrisBehind(const std::string& path)
{
    const platform::File file = platform::File::open(path, O_RDONLY);
    return iostreams::zip::findEndRecord(file).end != file.size();
}

/// Knows how many bytes each change was to transfer, by its number.
struct MeasuringCalls : support::FailingSystemCalls {
    ssize_t pwrite(int file, const void* buffer, std::size_t size, off_t offset) override
    {
        sizes[count(support::FailingSystemCalls::CHANGES) + 1] = size;
        return FailingSystemCalls::pwrite(file, buffer, size, offset);
    }
    ssize_t copyFileRange(int from, off_t* fromOffset, int to, off_t* toOffset, std::size_t size) override
    {
        sizes[count(support::FailingSystemCalls::CHANGES) + 1] = size;
        return FailingSystemCalls::copyFileRange(from, fromOffset, to, toOffset, size);
    }
    std::map<unsigned, std::size_t> sizes;
};

/// One addition, stopped at every point on its way.
class AppendCrash : public testing::Test {
protected:
    void SetUp() override
    {
        support::writeFile(source_, "content of the new member");
        support::writeFile(dir_ / "later", "content of a later member");
    }

    /// Puts the archive to its state before the addition.
    void reset()
    {
        if (start_.empty()) {
            static_cast<void>(::remove(path_.c_str()));
        } else {
            support::writeFile(path_, start_);
        }
    }

    void startFrom(const support::ZipBuilder& builder) { startFromBytes(builder.build()); }

    void startFromBytes(std::string bytes)
    {
        start_ = std::move(bytes);
        reset();
        old_ = membersOf(path_);
    }

    bool add() { return iostreams::zip::appendFile(source_, name_, path_, reason_); }

    void addLater()
    {
        EXPECT_TRUE(iostreams::zip::appendFile(dir_ / "later", "later", path_, reason_)) << reason_;
    }

    /// The addition without a hitch: learns the new state, and what the files look like once another
    /// member has followed.
    void learn()
    {
        MeasuringCalls calls;
        reset();
        addLater();
        oldAndLater_ = support::readFile(path_);
        reset();
        calls.restart();
        calls.sizes.clear();
        ASSERT_TRUE(operation_()) << reason_;
        changes_ = calls.count(support::FailingSystemCalls::CHANGES);
        sizes_ = calls.sizes;
        new_ = membersOf(path_);
        addLater();
        newAndLater_ = support::readFile(path_);
    }

    /// Adds, and dies in the nth change after so many bytes; false when it didn't come to that.
    bool dieIn(unsigned nth, std::size_t bytes)
    {
        reset();
        support::FailingSystemCalls calls;
        calls.dieAt(support::FailingSystemCalls::CHANGES, nth, bytes);
        try {
            operation_();
        } catch (const iostreams::device::detail::zip_exception&) {
        }
        return calls.died();
    }

    /// Whole old or whole new state, for every reader; then another member follows, and nothing
    /// of the interrupted addition stays.
    void checkAfterDeath(const std::string& where)
    {
        const bool debris = hasDebrisBehind(path_);
        const support::Members members = membersOf(path_);
        const bool isNew = members == new_;
        EXPECT_TRUE(isNew || members == old_) << where;
        EXPECT_TRUE(!debris || !isNew) << where;
        if (!debris && libzipReads_) {
            EXPECT_TRUE(support::readArchive(path_) == members) << where;
        }
        ++(debris ? debrisSeen_ : isNew ? newSeen_ : oldSeen_);
        addLater();
        EXPECT_TRUE(support::readFile(path_) == (isNew ? newAndLater_ : oldAndLater_)) << where;
    }

    /// Dies in each change after 0 bytes, `next(0)` bytes and so on up to all that it was to transfer.
    void dieEverywhere(const std::function<std::size_t(std::size_t)>& next)
    {
        ASSERT_NO_FATAL_FAILURE(learn());
        for (unsigned nth = 1; nth <= changes_; ++nth) {
            for (std::size_t bytes = 0; bytes <= sizes_[nth]; bytes = next(bytes)) {
                ASSERT_TRUE(dieIn(nth, bytes));
                checkAfterDeath("change " + std::to_string(nth) + ", byte " + std::to_string(bytes));
                ASSERT_FALSE(HasFailure());
            }
        }
    }

    void dieAtEveryByte()
    {
        dieEverywhere([](std::size_t bytes) { return bytes + 1; });
    }

    void dieAtSomeBytes()
    {
        dieEverywhere([](std::size_t bytes) { return bytes * 3 + 1; });
    }

    void failEverywhere(unsigned times, int error)
    {
        ASSERT_NO_FATAL_FAILURE(learn());
        for (unsigned nth = 1; nth <= changes_; ++nth) {
            reset();
            support::FailingSystemCalls calls;
            for (unsigned i = 0; i < times; ++i) {
                calls.fail(support::FailingSystemCalls::CHANGES, nth, error);
            }
            EXPECT_THROW(operation_(), iostreams::device::detail::zip_exception) << nth;
            EXPECT_EQ(calls.openDescriptors(), 0) << nth;
            calls.restart();
            if (times == 1) {
                EXPECT_TRUE(support::readFile(path_) == start_) << nth;
            }
            EXPECT_TRUE(membersOf(path_) == old_) << nth;
        }
        EXPECT_EQ(dir_.list(), "a.hdf later source");
    }

    support::TempDir dir_;
    const std::string path_ = dir_ / "a.hdf";
    const std::string source_ = dir_ / "source";
    std::string name_ = "new";
    std::string reason_;
    std::function<bool()> operation_ = [this] { return add(); };

    std::string start_;  ///< the file before the addition
    support::Members old_;
    support::Members new_;
    std::string oldAndLater_;
    std::string newAndLater_;
    unsigned changes_ = 0;
    std::map<unsigned, std::size_t> sizes_;  ///< bytes that each of the changes transfers
    bool libzipReads_ = true;                ///< it reads no archives with bytes in front
    int oldSeen_ = 0;
    int newSeen_ = 0;
    int debrisSeen_ = 0;
};

inline support::ZipBuilder smallArchive()
{
    support::ZipBuilder builder;
    builder.addStored("a", "content of a");
    builder.addDeflated("b", support::textBytes(2000, 1));
    builder.comment = "a comment";
    return builder;
}

/// Its directory is larger than what is added.
inline support::ZipBuilder archiveOfMany()
{
    support::ZipBuilder builder;
    for (int i = 0; i < 40; ++i) {
        builder.addStored("member" + std::to_string(i), "x");
    }
    return builder;
}
