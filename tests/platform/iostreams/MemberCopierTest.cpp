#include "platform/iostreams/MemberCopier.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/iostreams/ArchiveWriter.h"
#include "support/Container.h"
#include "support/FailingSystemCalls.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::zip::ArchiveReader;
using Writer = iostreams::zip::ArchiveWriter;
using support::FailingSystemCalls;

namespace {

class MemberCopier : public testing::Test {
protected:
    /// Adds content by way of a file on disk.
    bool add(Writer& writer, const std::string& name, const std::string& content)
    {
        support::writeFile(dir_ / "source", content);
        return writer.addFile(dir_ / "source", name, reason_);
    }

    bool copy(Writer& writer, const ArchiveReader& from, const std::string& name)
    {
        return writer.addMember(from, *from.find(name), name, reason_);
    }

    support::TempDir dir_;
    const std::string path_ = dir_ / "new.hdf";
    std::string reason_;
};

}  // namespace

TEST_F(MemberCopier, copiesMembersAsTheyAreCompressed)
{
    const std::string text = support::textBytes(5000, 11);
    const std::string large = support::textBytes(3000000, 11);
    {
        Writer writer(dir_ / "from.hdf");
        add(writer, "text", text);
        add(writer, "empty", "");
        add(writer, "large", large);
        add(writer, "noise", support::randomBytes(400000, 11));
        writer.commit();
    }
    const ArchiveReader from(dir_ / "from.hdf");
    Writer writer(path_);
    for (const auto& entry : from.entries()) {
        ASSERT_TRUE(writer.addMember(from, entry, std::string(entry.name), reason_)) << reason_;
    }
    writer.commit();
    EXPECT_TRUE(support::readFile(path_) == support::readFile(dir_ / "from.hdf"));
}

TEST_F(MemberCopier, copiesAMemberUnderAnotherName)
{
    support::writeArchive(dir_ / "from.hdf", {{"a", "content of a"}, {"b", "content of b"}});
    const ArchiveReader from(dir_ / "from.hdf");
    Writer writer(path_);
    ASSERT_TRUE(writer.addMember(from, *from.find("b"), "dir/new", reason_));
    writer.commit();
    EXPECT_EQ(support::readArchive(path_), (support::Members{{"dir/new", "content of b"}}));
}

TEST_F(MemberCopier, readsSmallNeighboursTogether)
{
    support::Members members;
    for (int i = 0; i < 1000; ++i) {
        members.emplace_back("member" + std::to_string(i), "content " + std::to_string(i));
    }
    support::writeArchive(dir_ / "from.hdf", members);
    const ArchiveReader from(dir_ / "from.hdf");
    FailingSystemCalls calls;
    Writer writer(path_);
    for (const auto& entry : from.entries()) {
        ASSERT_TRUE(writer.addMember(from, entry, std::string(entry.name), reason_)) << reason_;
    }
    writer.commit();
    EXPECT_LE(calls.count(FailingSystemCalls::READ | FailingSystemCalls::STATUS), 5U);
    EXPECT_EQ(support::readArchive(path_), members);
}

TEST_F(MemberCopier, tellsArchivesApartThatStandAtTheSameAddress)
{
    support::writeArchive(dir_ / "1.hdf", {{"m", "content 1"}});
    support::writeArchive(dir_ / "2.hdf", {{"m", "content 2"}});
    Writer writer(path_);
    for (const std::string name : {"1", "2"}) {
        const ArchiveReader from(dir_ / (name + ".hdf"));
        ASSERT_TRUE(writer.addMember(from, *from.find("m"), name, reason_)) << reason_;
    }
    writer.commit();
    EXPECT_EQ(support::readArchive(path_), (support::Members{{"1", "content 1"}, {"2", "content 2"}}));
}

TEST_F(MemberCopier, copiesMembersWithLongLocalHeaders)
{
    support::ZipBuilder builder;
    for (const std::string name : {"a", "b"}) {
        builder.addStored(name, "content of " + name).local.extra =
            support::little(0x7777, 2) + support::little(3000, 2) + std::string(3000, 'e');
    }
    builder.write(dir_ / "from.hdf");
    const ArchiveReader from(dir_ / "from.hdf");
    Writer writer(path_);
    EXPECT_TRUE(copy(writer, from, "b")) << reason_;
    EXPECT_TRUE(copy(writer, from, "a")) << reason_;
    writer.commit();
    EXPECT_EQ(support::readArchive(path_), (support::Members{{"b", "content of b"}, {"a", "content of a"}}));
    EXPECT_LT(support::readFile(path_).size(), 300U);
}

TEST_F(MemberCopier, copiesNoMemberThatRunsIntoTheNext)
{
    for (const std::size_t size : {10U, 100000U}) {
        support::ZipBuilder builder;
        builder.addStored("a", std::string(size, 'a')).local.extra = std::string(4, '\0');
        builder.addStored("b", "content of b");
        builder.write(dir_ / "from.hdf");
        std::string bytes = support::readFile(dir_ / "from.hdf");
        bytes[28] = 8;  // length of the extra field of "a"
        support::writeFile(dir_ / "from.hdf", bytes);
        const ArchiveReader from(dir_ / "from.hdf");
        Writer writer(path_);
        EXPECT_FALSE(copy(writer, from, "a"));
        EXPECT_EQ(reason_, (dir_ / "from.hdf") + ": member \"a\": " + std::to_string(size) +
                               " bytes at 39 run into what begins at " + std::to_string(35 + size));
    }
}

TEST_F(MemberCopier, copiesNoStoredMemberOfTwoSizes)
{
    support::ZipBuilder builder;
    auto& member = builder.addStored("a", "content of a");
    member.local.size = member.listed.size = 13;
    builder.write(dir_ / "from.hdf");
    const ArchiveReader from(dir_ / "from.hdf");
    Writer writer(path_);
    EXPECT_FALSE(copy(writer, from, "a"));
    EXPECT_EQ(reason_,
              (dir_ / "from.hdf") + ": member \"a\": is stored, yet has size 13 and compressed size 12");
}

TEST_F(MemberCopier, makesNoShortMemberOfAnArchiveThatShrinks)
{
    support::ZipBuilder builder;
    builder.addStored("a", "content of a").local.extra =
        support::little(0x7777, 2) + support::little(3000, 2) + std::string(3000, 'e');
    builder.write(dir_ / "from.hdf");
    const ArchiveReader from(dir_ / "from.hdf");
    // The first read finds out how long the header is, the second one gets it.
    using Lengths = std::vector<std::size_t>;
    for (const Lengths& lengths : {Lengths{0}, Lengths{107, 0}, Lengths{107, 3035, 0, 0}}) {
        Writer writer(path_);
        FailingSystemCalls calls;
        for (unsigned nth = 1; nth <= lengths.size(); ++nth) {
            calls.shorten(FailingSystemCalls::READ, nth, lengths[nth - 1]);
        }
        EXPECT_FALSE(copy(writer, from, "a"));
        EXPECT_EQ(calls.count(FailingSystemCalls::READ), lengths.size());
        writer.commit();
        EXPECT_EQ(support::readFile(path_).size(), 22U);
    }
}

TEST_F(MemberCopier, refusesToCopyAMemberWhoseHeaderDisagrees)
{
    support::writeArchive(dir_ / "from.hdf", {{"good", "content of good"}, {"bad_", "content of bad_"}});
    support::patchFile(dir_ / "from.hdf", "bad_", "evil");
    const ArchiveReader from(dir_ / "from.hdf");
    Writer writer(path_);
    EXPECT_FALSE(copy(writer, from, "bad_"));
    EXPECT_EQ(reason_, (dir_ / "from.hdf") + ": member \"bad_\": local header has the name \"evil\"");
    EXPECT_TRUE(copy(writer, from, "good"));
    writer.commit();
    EXPECT_EQ(support::namesIn(path_), "good");
}
