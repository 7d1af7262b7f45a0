// Thousands of generated archives: we and other programs find the same names and bytes in them.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <limits>
#include <map>
#include <random>

#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/ArchiveWriter.h"
#include "support/Container.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::ArchiveWriter;
using iostreams::zip::Entry;
using support::Members;
using support::TempDir;
using support::ZipBuilder;
using support::ZipMember;

namespace {

/// The members as this library reads them.
Members oursIn(const std::string& path)
{
    const ArchiveReader archive(path);
    Members members;
    for (const Entry& entry : archive.entries()) {
        members.emplace_back(entry.name, archive.read(entry, std::numeric_limits<std::uint64_t>::max()));
    }
    return members;
}

/// Draws archives; the same seed gives the same ones.
class Generator {
public:
    explicit Generator(unsigned seed) : engine_(seed) {}

    std::size_t below(std::size_t limit) { return engine_() % limit; }

    /// Names in UTF-8, of any length, distinct by their number.
    std::string name(std::size_t number)
    {
        static const char* const parts[] = {
            "a", "drivers/", "top.bit", "\xc3\xa4", "\xe6\xbc\xa2", " ",
            "-", "x\ty",     "'",       "\"",       "b/c/",         "\xf0\x9f\x98\x80"};
        std::string name = std::to_string(number);
        for (std::size_t count = below(6); count > 0; --count) {
            name += parts[below(std::size(parts))];
        }
        return below(50) == 0 ? name + std::string(below(3000), 'n') + "e" : name + "e";
    }

    std::string content()
    {
        const std::size_t sizes[] = {0, 1, 2, 30, 1000, 5000, 70'000};
        const std::size_t size = sizes[below(below(20) == 0 ? 7 : 6)];
        const auto seed = static_cast<unsigned>(below(1000));
        return below(2) == 0 ? support::randomBytes(size, seed) : support::textBytes(size, seed);
    }

    Members members(std::size_t most)
    {
        Members members;
        for (std::size_t number = 0, count = below(most + 1); number < count; ++number) {
            const std::string chosen = name(number);
            members.emplace_back(chosen, content());
        }
        return members;
    }

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

    std::mt19937 engine_;
};

/// Lists each member's name, size and CRC by another program; the names of `members` must be plain.
std::string python(const TempDir& dir, const std::string& script)
{
    support::writeFile(dir / "script.py", "import sys, zipfile, zlib, random\nD = sys.argv[1]\n" + script);
    const std::string command = "LC_ALL=C.UTF-8 python3 '" + dir / "script.py" + "' '" + dir.path() +
                                "' > '" + dir / "out" + "' 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << support::readFile(dir / "out");
    return support::readFile(dir / "out");
}

void run(const TempDir& dir, const std::string& command)
{
    const std::string line = "export LC_ALL=C.UTF-8 && cd '" + dir.path() + "' && ( " + command + " ) > '" +
                             dir / "log" + "' 2>&1";
    EXPECT_EQ(std::system(line.c_str()), 0) << command << "\n" << support::readFile(dir / "log");
}

/// One line a member: size, CRC-32, name.
std::string listing(const Members& members)
{
    std::string lines;
    for (const auto& [name, content] : members) {
        lines += std::to_string(content.size()) + " " + std::to_string(support::crc32(content)) + " " + name +
                 "\n";
    }
    return lines;
}

const char* const printAll =
    "for i in z.infolist():\n"
    "  b = z.read(i); print(len(b), zlib.crc32(b), i.filename)\n";

void write(const std::string& path, const Members& members, const TempDir& dir)
{
    ArchiveWriter writer(path);
    for (const auto& [name, content] : members) {
        support::writeFile(dir / "source", content);
        std::string reason;
        ASSERT_TRUE(writer.addFile(dir / "source", name, reason)) << reason;
    }
    writer.commit(false);
}

}  // namespace

TEST(Differential, agreesOnGeneratedArchives)
{
    const TempDir dir;
    Generator generator(1);
    int disagreements = 0;
    constexpr int count = 3000;
    std::string forPython;
    for (int number = 0; number < count; ++number) {
        const Members members = generator.members(8);
        const ZipBuilder zip = generator.archive(members);
        const std::string path = dir / std::to_string(number) + ".zip";
        zip.write(path);
        // libzip takes no archive with bytes in front of it, python does.
        const bool alike = !zip.prefix.empty() || support::readArchive(path) == members;
        disagreements += oursIn(path) != members || !alike;
        if (number < 500) {
            forPython += listing(members);
        } else {
            std::remove(path.c_str());
        }
    }
    RecordProperty("archives", count);
    EXPECT_EQ(disagreements, 0);
    EXPECT_TRUE(python(dir, std::string("for n in range(500):\n z = zipfile.ZipFile(D + '/%d.zip' % n)\n ") +
                                "for i in z.infolist():\n  b = z.read(i); print(len(b), zlib.crc32(b), "
                                "i.filename)\n") == forPython);
}

TEST(Differential, writesWhatLibzipReads)
{
    const TempDir dir;
    Generator generator(2);
    int disagreements = 0;
    for (int number = 0; number < 500; ++number) {
        const Members members = generator.members(6);
        write(dir / "a.zip", members, dir);
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

TEST(Differential, writesWhatOtherProgramsRead)
{
    const TempDir dir;
    Generator generator(4);
    Members members;
    for (std::size_t number = 0; number < 500; ++number) {
        members.emplace_back("d" + std::to_string(number % 7) + "/\xc3\xa4_" + std::to_string(number),
                             generator.content());
    }
    write(dir / "a.zip", members, dir);

    EXPECT_EQ(python(dir, std::string("z = zipfile.ZipFile(D + '/a.zip')\n") + printAll), listing(members));
    run(dir, "unzip -tq a.zip && 7z t a.zip && mkdir x && bsdtar -xf a.zip -C x");
    for (const auto& [name, content] : members) {
        EXPECT_TRUE(support::readFile(dir / "x/" + name) == content) << name;
    }
}

TEST(Differential, readsWhatOtherProgramsWrite)
{
    const TempDir dir;
    Generator generator(5);
    std::map<std::string, std::string> files;
    for (std::size_t number = 0; number < 300; ++number) {
        const std::string name = "d" + std::to_string(number % 7) + "/\xc3\xa4_" + std::to_string(number);
        files[name] = generator.content();
        support::writeFile(dir / "in/" + name, files[name]);
    }
    for (const char* command :
         {"zip -qr ../a.zip .", "zip -qr0 ../a.zip .", "zip -qr -fz ../a.zip .", "zip -qr -fd ../a.zip .",
          "zip -qr - . | cat > ../a.zip", "7z a -mx1 ../a.zip .", "7z a -mx0 ../a.zip .",
          "bsdtar --format zip -cf ../a.zip *",
          "bsdtar --format zip --options zip:compression=store -cf ../a.zip *",
          "python3 -m zipfile -c ../a.zip *"}) {
        run(dir, std::string("rm -f a.zip && cd in && ") + command);
        std::map<std::string, std::string> found;
        for (const auto& [name, content] : oursIn(dir / "a.zip")) {
            if (name.back() != '/') {
                found[name] = content;
            }
        }
        EXPECT_TRUE(found == files) << command;
    }
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
