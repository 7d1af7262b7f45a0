// Additions in which calls of the system fail.

#include "platform/iostreams/AppendCrash.h"

using iostreams::device::detail::zip_exception;
using support::FailingSystemCalls;

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

TEST_F(AppendCrash, restoresBytesOfNoMemberWhenADigestCoversThem)
{
    support::ZipBuilder builder = smallArchive();
    builder.comment += "hwdef-sha256:" + std::string(64, '7');
    std::string bytes = builder.build();
    const std::size_t directory = bytes.find("PK\x01\x02");
    bytes.insert(directory, 200, 'x');  // as an interrupted addition leaves them
    const std::size_t offsetField = bytes.rfind("PK\x05\x06") + 16;
    bytes[offsetField] = static_cast<char>((directory + 200) & 0xff);
    bytes[offsetField + 1] = static_cast<char>((directory + 200) >> 8);
    startFromBytes(bytes);
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
