#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/iostreams/zip.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::zip::is_file;

TEST(IsFile, tellsWhetherAnArchiveHoldsAMember)
{
    const support::TempDir dir;
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", "");
    zip.addStored("dir/", "");
    zip.addStored("locked", "x").setFlag(1);
    zip.write(dir / "z.zip");
    EXPECT_TRUE(is_file("hwdef.xml", dir / "z.zip"));
    EXPECT_TRUE(is_file("dir/", dir / "z.zip"));
    EXPECT_TRUE(is_file("locked", dir / "z.zip"));
    EXPECT_FALSE(is_file("sysdef.xml", dir / "z.zip"));
    EXPECT_FALSE(is_file("dir", dir / "z.zip"));
    EXPECT_FALSE(is_file("HWDEF.XML", dir / "z.zip"));
    EXPECT_FALSE(is_file("", dir / "z.zip"));
}

TEST(IsFile, isFalseForWhatCantBeReadAsAnArchive)
{
    const support::TempDir dir;
    support::writeFile(dir / "text", "hwdef.xml");
    support::writeFile(dir / "empty", "");
    for (const std::string& path :
         {dir / "text", dir / "empty", dir / "missing", dir / "text/below", dir.path(), std::string(),
          std::string("/dev/null"), std::string("/dev/zero")}) {
        EXPECT_FALSE(is_file("hwdef.xml", path)) << path;
    }
}

TEST(IsFile, leavesFifosAlone)
{
    const support::TempDir dir;
    ASSERT_EQ(::mkfifo((dir / "fifo").c_str(), 0600), 0);
    const support::FailingSystemCalls calls;
    EXPECT_FALSE(is_file("hwdef.xml", dir / "fifo"));
    EXPECT_EQ(calls.count(), 0U);
}

TEST(IsFile, isFalseWhenTheSystemRefusesARead)
{
    const support::TempDir dir;
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", "");
    zip.write(dir / "z.zip");
    support::FailingSystemCalls calls;
    calls.failAll(support::FailingSystemCalls::READ, EIO);
    EXPECT_FALSE(is_file("hwdef.xml", dir / "z.zip"));
}

TEST(IsFile, readsTheTailOfASmallArchiveAndNothingElse)
{
    const support::TempDir dir;
    support::ZipBuilder zip;
    zip.addStored("hwdef.xml", support::textBytes(1000000, 1));
    zip.write(dir / "z.zip");
    const support::FailingSystemCalls calls;
    EXPECT_TRUE(is_file("hwdef.xml", dir / "z.zip"));
    EXPECT_EQ(calls.count(support::FailingSystemCalls::READ), 1U);
}
