// Thousands of generated archives: we and other programs find the same names and bytes in them.

#include <gtest/gtest.h>

#include <cstdio>

#include "hostile/DifferentialArchives.h"

using differential::oursIn;
using differential::writeOurs;
using iostreams::zip::ArchiveReader;
using support::Members;
using support::TempDir;
using support::ZipBuilder;
using support::ZipMember;

namespace {

/// Draws archives; the same seed gives the same ones.
class Generator : public differential::MemberGenerator {
public:
    explicit Generator(unsigned seed) : MemberGenerator(seed, 3000) {}

    /// An archive of these members with whatever the format allows beside them.
    ZipBuilder archive(const Members& members)
    {
        ZipBuilder zip;
        for (const auto& [name, content] : members) {
            decorate(below(2) == 0 ? zip.addStored(name, content) : zip.addDeflated(name, content));
        }
        zip.zip64 = below(4) == 0;
        zip.comment = below(4) == 0 ? support::textBytes(below(300), 1) : "";
        zip.prefix = below(4) == 0 ? support::textBytes(1 + below(300), 2) : "";
        return zip;
    }

private:
    void decorate(ZipMember& member)
    {
        member.setFlag(1U << 11U);
        const std::uint64_t size = member.listed.size;
        const std::uint64_t packed = member.listed.compressedSize;
        if (below(4) == 0) {
            member.setDescriptor(below(2) == 0, 4);
        } else if (below(4) == 0) {
            member.local.extra = support::zip64Extra({size, packed});
            member.local.size = 0xffffffff;
            member.local.compressedSize = 0xffffffff;
        }
        if (below(4) == 0) {
            member.listed.extra = support::zip64Extra({size, packed});
            member.listed.size = 0xffffffff;
            member.listed.compressedSize = 0xffffffff;
        }
        if (below(4) == 0) {
            // A time stamp's field, which says nothing about the content.
            member.local.extra += support::little(0x5455, 2) + support::little(5, 2) + "\x01" + "time";
        }
        member.comment = below(8) == 0 ? "a comment" : "";
    }
};

}  // namespace

TEST(Differential, agreesOnGeneratedArchives)
{
    const TempDir dir;
    Generator generator(1);
    int disagreements = 0;
    constexpr int count = 3000;
    std::vector<Members> archives;
    for (int number = 0; number < count; ++number) {
        archives.push_back(generator.members(8));
        const Members& members = archives.back();
        const ZipBuilder zip = generator.archive(members);
        const std::string path = dir / std::to_string(number) + ".zip";
        zip.write(path);
        // libzip takes no archive with bytes in front of it, python does.
        const bool alike = !zip.prefix.empty() || support::readArchive(path) == members;
        disagreements += oursIn(path) != members || !alike;
    }
    EXPECT_EQ(disagreements, 0);
    EXPECT_TRUE(differential::inPython(dir, count) == differential::flat(archives));
}

TEST(Differential, writesWhatLibzipReads)
{
    const TempDir dir;
    Generator generator(2);
    int disagreements = 0;
    for (int number = 0; number < 500; ++number) {
        const Members members = generator.members(6);
        writeOurs(dir / "a.zip", members, dir);
        disagreements += oursIn(dir / "a.zip") != members || support::readArchive(dir / "a.zip") != members;
    }
    EXPECT_EQ(disagreements, 0);
}

TEST(Differential, readsWhatLibzipWrites)
{
    const TempDir dir;
    Generator generator(3);
    int disagreements = 0;
    for (int number = 0; number < 500; ++number) {
        Members members = generator.members(6);
        members.emplace_back("last", "so that there is a file");
        support::writeArchive(dir / "a.zip", members);
        disagreements += oursIn(dir / "a.zip") != members;
    }
    EXPECT_EQ(disagreements, 0);
}

TEST(Differential, takesNamesForBytesWhateverTheirCode)
{
    const TempDir dir;
    ZipBuilder zip;
    zip.addStored("\x84.bit", "CP437");
    zip.addStored("\xc3\xa4.bit", "UTF-8").setFlag(1U << 11U);
    zip.addStored("\xff\xfe", "neither").setFlag(1U << 11U);
    zip.write(dir / "a.zip");

    EXPECT_EQ(oursIn(dir / "a.zip"),
              (Members{{"\x84.bit", "CP437"}, {"\xc3\xa4.bit", "UTF-8"}, {"\xff\xfe", "neither"}}));
}

TEST(Differential, takesTheLastOfTwoMembersOfOneName)
{
    const TempDir dir;
    ZipBuilder zip;
    zip.addStored("a.bit", "first");
    zip.addStored("a.bit", "second");
    zip.write(dir / "a.zip");

    const ArchiveReader archive(dir / "a.zip");
    EXPECT_EQ(archive.entries().size(), 2U);
    EXPECT_EQ(archive.read(*archive.find("a.bit"), 100), "second");
}

TEST(Differential, refusesAMemberWhoseHeadersDisagree)
{
    const TempDir dir;
    const std::pair<const char*, void (*)(ZipMember&)> defects[] = {
        {"name", [](ZipMember& member) { member.local.name = "b.bit"; }},
        {"method", [](ZipMember& member) { member.local.method = 8; }},
        {"size", [](ZipMember& member) { member.local.size = 3; }},
        {"packed size", [](ZipMember& member) { member.local.compressedSize = 3; }},
        {"CRC", [](ZipMember& member) { member.local.crc ^= 1U; }},
        {"both sizes", [](ZipMember& member) { member.listed.size = member.local.size = 3; }},
    };
    for (const auto& [what, damage] : defects) {
        ZipBuilder zip;
        damage(zip.addStored("a.bit", "content"));
        zip.write(dir / "a.zip");
        EXPECT_NE(support::zipFailure(dir / "a.zip", [&] { oursIn(dir / "a.zip"); }), "") << what;
    }
}
