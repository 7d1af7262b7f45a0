// Additions that are stopped by the end of the process.

#include "platform/iostreams/AppendCrash.h"

using iostreams::zip::ArchiveReader;

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
