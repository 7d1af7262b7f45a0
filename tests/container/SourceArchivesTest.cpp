#include "hwdef/container/SourceArchives.h"

#include <gtest/gtest.h>

#include "hwdef/container/MemberEntry.h"
#include "hwdef/model/HHDFHwDefDriver.h"
#include "hwdef/model/HHDFHwDefFile.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"

using support::FailingSystemCalls;
using support::TempDir;
using support::writeArchive;

TEST(SourceArchives, openAnArchiveOnce)
{
    const TempDir dir;
    writeArchive(dir / "a.hdf", {{"a", "content"}});
    const FailingSystemCalls calls;
    SourceArchives archives;
    std::string reason;

    const auto* first = archives.open(dir / "a.hdf", reason);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(archives.open(dir / "a.hdf", reason), first);
    EXPECT_EQ(calls.count(FailingSystemCalls::OPEN), 1u);
    EXPECT_EQ(reason, "");
}

TEST(SourceArchives, tellAMissingArchiveFromOneThatCantBeRead)
{
    const TempDir dir;
    support::writeFile(dir / "text.hdf", "no archive");
    SourceArchives archives;
    std::string reason = "earlier";

    EXPECT_EQ(archives.open(dir / "missing.hdf", reason), nullptr);
    EXPECT_EQ(reason, "");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(archives.open(dir / "text.hdf", reason), nullptr);
        EXPECT_NE(reason.find("text.hdf"), std::string::npos) << reason;
        reason.clear();
    }
}

TEST(SourceArchives, serveMoreArchivesThanTheyKeepOpen)
{
    const TempDir dir;
    FailingSystemCalls calls;
    SourceArchives archives;
    std::string reason;
    for (int i = 0; i < 200; ++i) {
        const std::string path = dir / (std::to_string(i) + ".hdf");
        writeArchive(path, {{"a", "content"}});
        const auto* archive = archives.open(path, reason);
        ASSERT_NE(archive, nullptr) << reason;
        EXPECT_NE(archive->find("a"), nullptr);
        EXPECT_LE(calls.openDescriptors(), 64);
    }
}

TEST(SourceArchives, findADriverFileUnderEitherOfItsNames)
{
    const TempDir dir;
    writeArchive(dir / "a.hdf",
                 {{"drivers/x.c", "1"}, {"y.c", "2"}, {"both.c", "3"}, {"drivers/both.c", "4"}});
    const iostreams::zip::ArchiveReader archive(dir / "a.hdf");
    const auto nameFound = [&](const std::string& name) {
        const iostreams::zip::Entry* entry =
            findMember(archive, MemberEntry(HHDFHwDefDriver("/d", name, "a.hdf")));
        return entry == nullptr ? "nothing" : std::string(entry->name);
    };

    EXPECT_EQ(nameFound("x.c"), "drivers/x.c");
    EXPECT_EQ(nameFound("drivers/y.c"), "y.c");
    EXPECT_EQ(nameFound("both.c"), "both.c");
    EXPECT_EQ(nameFound("drivers/both.c"), "drivers/both.c");
    EXPECT_EQ(nameFound("z.c"), "nothing");
}

TEST(SourceArchives, findABomFileUnderItsNameOnly)
{
    const TempDir dir;
    writeArchive(dir / "a.hdf", {{"drivers/x.bit", "1"}, {"y.bit", "2"}});
    const iostreams::zip::ArchiveReader archive(dir / "a.hdf");
    const HHDFHwDefFile x("/in/x.bit"), y("/in/y.bit");

    EXPECT_EQ(findMember(archive, MemberEntry(x)), nullptr);
    EXPECT_NE(findMember(archive, MemberEntry(y)), nullptr);
}
