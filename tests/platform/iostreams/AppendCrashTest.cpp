#include <fcntl.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "platform/iostreams/Append.h"
#include "platform/iostreams/ArchiveWriter.h"
#include "platform/iostreams/EndRecord.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::device::detail::zip_exception;
using iostreams::zip::ArchiveReader;
using support::FailingSystemCalls;
using support::Members;

namespace {

constexpr unsigned CHANGES = FailingSystemCalls::CHANGES;

Members membersOf(const std::string& path)
{
    const ArchiveReader reader(path);
    Members members;
    for (const auto& entry : reader.entries()) {
        members.emplace_back(entry.name, reader.read(entry, entry.size));
    }
    return members;
}

/// Whether the file's end holds no end record, so that only our reader finds one.
bool hasDebrisBehind(const std::string& path)
{
    const platform::File file = platform::File::open(path, O_RDONLY);
    return iostreams::zip::findEndRecord(file).end != file.size();
}

/// Knows how many bytes each change was to transfer, by its number.
struct MeasuringCalls : FailingSystemCalls {
    ssize_t pwrite(int file, const void* buffer, std::size_t size, off_t offset) override
    {
        sizes[count(CHANGES) + 1] = size;
        return FailingSystemCalls::pwrite(file, buffer, size, offset);
    }
    ssize_t copyFileRange(int from, off_t* fromOffset, int to, off_t* toOffset, std::size_t size) override
    {
        sizes[count(CHANGES) + 1] = size;
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

    void startFrom(const support::ZipBuilder& builder)
    {
        start_ = builder.build();
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
        changes_ = calls.count(CHANGES);
        sizes_ = calls.sizes;
        new_ = membersOf(path_);
        addLater();
        newAndLater_ = support::readFile(path_);
    }

    /// Adds, and dies in the nth change after so many bytes; false when it didn't come to that.
    bool dieIn(unsigned nth, std::size_t bytes)
    {
        reset();
        FailingSystemCalls calls;
        calls.dieAt(CHANGES, nth, bytes);
        try {
            operation_();
        } catch (const zip_exception&) {
        }
        return calls.died();
    }

    /// Whole old or whole new state, for every reader; then another member follows, and nothing
    /// of the interrupted addition stays.
    void checkAfterDeath(const std::string& where)
    {
        const bool debris = hasDebrisBehind(path_);
        const Members members = membersOf(path_);
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
            FailingSystemCalls calls;
            for (unsigned i = 0; i < times; ++i) {
                calls.fail(CHANGES, nth, error);
            }
            EXPECT_THROW(operation_(), zip_exception) << nth;
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
    Members old_;
    Members new_;
    std::string oldAndLater_;
    std::string newAndLater_;
    unsigned changes_ = 0;
    std::map<unsigned, std::size_t> sizes_;  ///< bytes that each of the changes transfers
    bool libzipReads_ = true;                ///< it reads no archives with bytes in front
    int oldSeen_ = 0;
    int newSeen_ = 0;
    int debrisSeen_ = 0;
};

support::ZipBuilder smallArchive()
{
    support::ZipBuilder builder;
    builder.addStored("a", "content of a");
    builder.addDeflated("b", support::textBytes(2000, 1));
    builder.comment = "a comment";
    return builder;
}

/// Its directory is larger than what is added.
support::ZipBuilder archiveOfMany()
{
    support::ZipBuilder builder;
    for (int i = 0; i < 40; ++i) {
        builder.addStored("member" + std::to_string(i), "x");
    }
    return builder;
}

}  // namespace

TEST_F(AppendCrash, showsTheOldOrTheNewStateAfterEachByteOfAnAddition)
{
    startFrom(smallArchive());
    dieAtEveryByte();
    EXPECT_EQ(changes_, 3U);
    EXPECT_GT(oldSeen_, 100);
    EXPECT_GT(debrisSeen_, 100);
}

TEST_F(AppendCrash, showsTheOldOrTheNewStateAfterEachByteOfAReplacement)
{
    startFrom(smallArchive());
    name_ = "a";
    dieAtEveryByte();
    EXPECT_GT(oldSeen_, 100);
}

TEST_F(AppendCrash, survivesBesideALargeDirectory)
{
    startFrom(archiveOfMany());
    dieAtSomeBytes();
    EXPECT_GT(oldSeen_, 3);
    EXPECT_GT(debrisSeen_, 3);
}

TEST_F(AppendCrash, survivesWhileLargeNoiseIsAdded)
{
    startFrom(smallArchive());
    support::writeFile(source_, support::randomBytes(700000, 2));
    dieAtSomeBytes();
    EXPECT_GT(oldSeen_, 20);
}

TEST_F(AppendCrash, survivesWhileLargeTextIsAdded)
{
    startFrom(smallArchive());
    support::writeFile(source_, support::textBytes(3000000, 2));
    dieAtSomeBytes();
    EXPECT_GT(oldSeen_, 20);
}

TEST_F(AppendCrash, survivesWhileAMemberIsCopiedInTheKernel)
{
    support::writeArchive(dir_ / "from.hdf", {{"m", support::randomBytes(300000, 3)}});
    const ArchiveReader from(dir_ / "from.hdf");
    operation_ = [&] { return iostreams::zip::appendMember(from, *from.find("m"), name_, path_, reason_); };
    startFrom(smallArchive());
    dieAtSomeBytes();
    EXPECT_GT(oldSeen_, 20);
}

TEST_F(AppendCrash, survivesWhileAMemberIsCopiedWithinTheArchive)
{
    support::ZipBuilder builder;
    builder.addStored("m", support::randomBytes(300000, 3));
    startFrom(builder);
    operation_ = [&] {
        const ArchiveReader from(path_);
        return iostreams::zip::appendMember(from, *from.find("m"), name_, path_, reason_);
    };
    dieAtSomeBytes();
    EXPECT_GT(oldSeen_, 20);
}

TEST_F(AppendCrash, survivesASecondTimeWhileTheOldStateStandsInItsCopy)
{
    // What a death after the first write leaves: the copy is whole, some of the new state written.
    startFrom(smallArchive());
    ASSERT_NO_FATAL_FAILURE(learn());
    ASSERT_TRUE(dieIn(2, 20));
    start_ = support::readFile(path_);
    ASSERT_FALSE(hasDebrisBehind(path_));
    dieAtEveryByte();
    EXPECT_EQ(changes_, 2U);  // what is new fits in front of the copy, which serves a second time
}

TEST_F(AppendCrash, survivesASecondTimeWhenTheCopyIsInTheWay)
{
    startFrom(smallArchive());
    ASSERT_NO_FATAL_FAILURE(learn());
    ASSERT_TRUE(dieIn(2, 20));
    start_ = support::readFile(path_);
    support::writeFile(source_, support::randomBytes(4000, 4));
    dieAtSomeBytes();
    EXPECT_EQ(changes_, 3U);
}

TEST_F(AppendCrash, survivesASecondTimeWithDebrisBehind)
{
    startFrom(smallArchive());
    ASSERT_NO_FATAL_FAILURE(learn());
    ASSERT_TRUE(dieIn(1, 20));
    start_ = support::readFile(path_);
    ASSERT_TRUE(hasDebrisBehind(path_));
    dieAtEveryByte();
    EXPECT_EQ(changes_, 4U);  // cutting the debris comes first
}

TEST_F(AppendCrash, survivesInAnArchiveWithBytesInFront)
{
    support::ZipBuilder builder = smallArchive();
    builder.prefix = "#!/bin/sh\n";
    startFrom(builder);
    libzipReads_ = false;
    dieAtSomeBytes();
    EXPECT_EQ(debrisSeen_, 0);
    EXPECT_GT(oldSeen_, 3);
}

TEST_F(AppendCrash, survivesInAnArchiveBehindAnother)
{
    support::ZipBuilder other;
    other.addStored("other", "content of another archive");
    support::ZipBuilder builder = smallArchive();
    builder.prefix = other.build();
    startFrom(builder);
    libzipReads_ = false;
    dieAtSomeBytes();
    EXPECT_GT(oldSeen_, 3);
}

TEST_F(AppendCrash, survivesBehindAProgramThatTheOffsetsCountIn)
{
    const std::string program = "#!/bin/sh\nexit 0\n";
    support::ZipBuilder builder;
    builder.addStored("a", "content of a").offset = static_cast<std::uint32_t>(program.size());
    builder.end.directoryOffset = builder.build().find("PK\1\2") + program.size();
    builder.prefix = program;
    startFrom(builder);
    dieAtSomeBytes();
    EXPECT_GT(oldSeen_, 3);
}

TEST_F(AppendCrash, survivesInAnArchiveWithoutMembers)
{
    startFrom(support::ZipBuilder());
    dieAtSomeBytes();
    EXPECT_GT(oldSeen_, 3);
}

TEST_F(AppendCrash, survivesWhenTheNewStateIsSmallerThanTheOld)
{
    support::ZipBuilder builder = smallArchive();
    builder.members[0].comment = std::string(3000, 'c');
    startFrom(builder);
    name_ = "a";
    dieAtSomeBytes();
    EXPECT_GT(debrisSeen_, 3);
    EXPECT_GT(oldSeen_, 3);
}

TEST_F(AppendCrash, showsNothingOrTheNewStateWhileAnArchiveIsCreated)
{
    ASSERT_NO_FATAL_FAILURE(learn());
    for (unsigned nth = 1; nth <= changes_; ++nth) {
        ASSERT_TRUE(dieIn(nth, 10));
        if (support::exists(path_)) {
            EXPECT_TRUE(membersOf(path_) == new_) << nth;
        }
    }
}

TEST_F(AppendCrash, restoresTheOldBytesWhenACallFails)
{
    startFrom(smallArchive());
    failEverywhere(1, ENOSPC);
    failEverywhere(1, EIO);
    EXPECT_EQ(changes_, 3U);
}

TEST_F(AppendCrash, restoresTheOldBytesWhenALargeAdditionFails)
{
    startFrom(archiveOfMany());
    support::writeFile(source_, support::randomBytes(1000000, 5));
    failEverywhere(1, ENOSPC);
    EXPECT_GT(changes_, 5U);
    support::writeFile(source_, support::textBytes(3000000, 5));
    failEverywhere(1, ENOSPC);
}

TEST_F(AppendCrash, restoresTheOldBytesWhenAReplacementFails)
{
    startFrom(smallArchive());
    name_ = "b";
    failEverywhere(1, ENOSPC);
}

TEST_F(AppendCrash, restoresTheOldBytesOfAnArchiveWithADigest)
{
    support::ZipBuilder builder = smallArchive();
    builder.comment += "hwdef-sha256:" + std::string(64, '7');
    startFrom(builder);
    failEverywhere(1, ENOSPC);
}

TEST_F(AppendCrash, keepsTheOldFileWhenAWholeCopyFails)
{
    support::ZipBuilder builder = smallArchive();
    builder.prefix = "#!/bin/sh\n";
    startFrom(builder);
    failEverywhere(1, ENOSPC);
    EXPECT_GE(changes_, 5U);
}

TEST_F(AppendCrash, showsTheOldStateWhenTheRestoreFailsAsWell)
{
    startFrom(smallArchive());
    support::writeFile(source_, support::randomBytes(1000000, 6));
    for (const unsigned times : {2U, 3U, 100U}) {
        failEverywhere(times, EIO);
    }
}

TEST_F(AppendCrash, restoresTheOldBytesWhenTheSourceFailsHalfWay)
{
    startFrom(archiveOfMany());
    support::writeFile(source_, support::randomBytes(1000000, 7));
    unsigned refused = 0;
    for (unsigned nth = 1; nth < 30; ++nth) {
        reset();
        FailingSystemCalls calls;
        calls.fail(FailingSystemCalls::READ, nth, EIO);
        try {
            refused += add() ? 0 : 1;
        } catch (const zip_exception&) {
        }
        calls.restart();
        EXPECT_TRUE(membersOf(path_) == old_ || membersOf(path_).back().first == "new") << nth;
        EXPECT_TRUE(support::readFile(path_) == start_ || membersOf(path_).back().first == "new") << nth;
    }
    EXPECT_GE(refused, 4U);
}

TEST_F(AppendCrash, showsTheOldStateToPythonWhereverTheCopyIsWhole)
{
    startFrom(smallArchive());
    ASSERT_NO_FATAL_FAILURE(learn());
    for (const auto& [nth, bytes] :
         {std::pair<unsigned, std::size_t>{2, 0}, {2, 1}, {2, 40}, {2, 150}, {3, 0}}) {
        ASSERT_TRUE(dieIn(nth, bytes));
        const std::string command = "python3 -c \"import zipfile; z = zipfile.ZipFile('" + path_ +
                                    "'); assert z.testzip() is None; assert z.namelist() == ['a', 'b']\"";
        EXPECT_EQ(std::system(command.c_str()), 0) << nth << ", " << bytes;
    }
}
