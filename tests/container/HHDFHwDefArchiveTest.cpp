#include "hwdef/container/HHDFHwDefArchive.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>

#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
#include "platform/iostreams/zip.h"
#include "support/BomDocument.h"
#include "support/ChildProcess.h"
#include "support/Container.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::device::detail::zip_exception;
using support::Members;
using support::TempDir;

namespace {

/// An archive with a comment of members of several sizes; the second is listed twice.
void writeArchive(const std::string& path)
{
    support::ZipBuilder zip;
    zip.comment = "of other hands";
    zip.addStored("hwdef.xml", "<Project/>");
    zip.addStored("a.bit", "old");
    zip.addDeflated("deep/b.elf", std::string(3000, 'b'));
    zip.addStored("a.bit", "new one");
    zip.write(path);
}

std::string whyNot(const std::function<void()>& work)
{
    try {
        work();
    } catch (const HEXAll& error) {
        return error.what();
    }
    return "done";
}

}  // namespace

TEST(HHDFHwDefArchive, listsTheMembersThatCountInTheArchivesOrder)
{
    const TempDir dir;
    writeArchive(dir / "a.hdf");

    const HHDFHwDefArchive archive(dir / "a.hdf");

    ASSERT_EQ(archive.members().size(), 3U);
    EXPECT_EQ(archive.members()[0].name, "hwdef.xml");
    EXPECT_EQ(archive.members()[1].name, "deep/b.elf");
    EXPECT_EQ(archive.members()[1].sizeBytes, 3000U);
    EXPECT_LT(archive.members()[1].packedBytes, 1000U);
    EXPECT_EQ(archive.members()[1].crc, support::crc32(std::string(3000, 'b')));
    EXPECT_EQ(archive.members()[2].name, "a.bit");
    EXPECT_EQ(archive.members()[2].sizeBytes, 7U);
    EXPECT_EQ(archive.find("a.bit"), &archive.members()[2]);
    EXPECT_EQ(archive.find("A.bit"), nullptr);
}

TEST(HHDFHwDefArchive, refusesWhatIsNoArchive)
{
    const TempDir dir;
    support::writeFile(dir / "a.hdf", "no archive");
    EXPECT_THROW(HHDFHwDefArchive(dir / "a.hdf"), zip_exception);
    EXPECT_THROW(HHDFHwDefArchive(dir.path()), zip_exception);
    EXPECT_THROW(HHDFHwDefArchive(dir / "missing"), zip_exception);
}

TEST(HHDFHwDefArchive, tellsTheCommentWithoutTheDigest)
{
    const TempDir dir;
    writeArchive(dir / "a.hdf");
    EXPECT_EQ(HHDFHwDefArchive(dir / "a.hdf").comment(), "of other hands");
    EXPECT_FALSE(HHDFHwDefArchive(dir / "a.hdf").hasDigest());

    HUTZip::attachDigest(HUTFile(dir / "a.hdf"));

    EXPECT_EQ(HHDFHwDefArchive(dir / "a.hdf").comment(), "of other hands");
    EXPECT_TRUE(HHDFHwDefArchive(dir / "a.hdf").hasDigest());
}

TEST(HHDFHwDefArchive, tellsWhenAMemberWasModified)
{
    const TempDir dir;
    writeArchive(dir / "a.hdf");
    const auto modifiedAt = [&](const std::string& time, const std::string& date) {
        std::string bytes = support::readFile(dir / "a.hdf");
        const std::size_t record = bytes.find("PK\x01\x02");
        bytes.replace(record + 12, 4, time + date);
        support::writeFile(dir / "b.hdf", bytes);
        return HHDFHwDefArchive(dir / "b.hdf").members().front().modified;
    };
    EXPECT_EQ(modifiedAt(std::string(2, '\0'), "\x21" + std::string(1, '\0')), 315532800);  // 1980-01-01
    EXPECT_EQ(modifiedAt("\x7d\xbf", "\x9f\x5f"), 1830297598);                     // 2027-12-31 23:59:58
    EXPECT_LT(modifiedAt(std::string(2, '\0'), std::string(2, '\0')), 315532800);  // of no calendar
}

TEST(HHDFHwDefArchive, replacesAnArchiveByItsOwnMembersAndFiles)
{
    const TempDir dir;
    writeArchive(dir / "a.hdf");
    support::writeFile(dir / "file", "from disk");
    {
        const HHDFHwDefArchive present(dir / "a.hdf");
        HHDFHwDefArchive::write(dir / "a.hdf",
                                {{"hwdef.xml", dir / "file"}, {"a.bit", ""}, {"deep/b.elf", ""}}, &present,
                                present.comment(), true);
    }
    EXPECT_EQ(
        support::readArchive(dir / "a.hdf"),
        (Members{{"hwdef.xml", "from disk"}, {"a.bit", "new one"}, {"deep/b.elf", std::string(3000, 'b')}}));
    EXPECT_EQ(HHDFHwDefArchive(dir / "a.hdf").comment(), "of other hands");
    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(dir / "a.hdf")), HUTZip::INTACT);
}

TEST(HHDFHwDefArchive, keepsTimesAndAttributesOfMembersItTakesOver)
{
    const TempDir dir;
    writeArchive(dir / "a.hdf");
    std::string bytes = support::readFile(dir / "a.hdf");
    const auto change = [&](std::size_t place, const std::string& text) {
        bytes.replace(place, text.size(), text);
    };
    const std::size_t listed = bytes.find("PK\x01\x02");
    const std::string made = "\x3f\x07";  // by an OS/2 program of 6.3
    const std::string time = "\x7d\xbf\x9f\x5f";
    const std::string attributes = "\x21\x43\x65\x07";
    change(bytes.find("PK\x03\x04") + 10, time);
    change(listed + 4, made);
    change(listed + 12, time);
    change(listed + 38, attributes);
    support::writeFile(dir / "a.hdf", bytes);
    {
        const HHDFHwDefArchive present(dir / "a.hdf");
        HHDFHwDefArchive::write(dir / "b.hdf", {{"a.bit", dir / "a.hdf"}, {"hwdef.xml", ""}}, &present, "",
                                false);
    }
    const std::string written = support::readFile(dir / "b.hdf");
    const std::size_t record = written.rfind("PK\x01\x02");
    EXPECT_EQ(written.substr(record + 4, 2), made);
    EXPECT_EQ(written.substr(record + 12, 4), time);
    EXPECT_EQ(written.substr(record + 38, 4), attributes);
    EXPECT_EQ(written.substr(written.rfind("PK\x03\x04") + 10, 4), time);
    EXPECT_EQ(HHDFHwDefArchive(dir / "b.hdf").members()[0].modified, 315532800);
    EXPECT_EQ(HHDFHwDefArchive(dir / "b.hdf").members()[1].modified, 1830297598);
}

TEST(HHDFHwDefArchive, keepsMembersByteForByte)
{
    const TempDir dir;
    support::writeFile(dir / "in/hwdef.xml", support::bomOfFiles("0", {"a.bit"}));
    support::writeFile(dir / "in/a.bit", support::randomBytes(200000, 1));
    support::writeFile(dir / "in/b.elf", support::textBytes(300000, 1));
    support::writeFile(dir / "write.py",
                       "import sys, zipfile\n"
                       "class Pipe:\n"
                       "    def __init__(self, file): self.file = file\n"
                       "    def write(self, data): return self.file.write(data)\n"
                       "    def flush(self): pass\n"
                       "def fill(archive):\n"
                       "    info = zipfile.ZipInfo('hwdef.xml', (2001, 2, 3, 4, 5, 6))\n"
                       "    info.extra, info.comment = b'UT\\x03\\x00abc', b'of the first'\n"
                       "    archive.writestr(info, open('in/hwdef.xml').read())\n"
                       "    for method in 0, 8:\n"
                       "        for wide in False, True:\n"
                       "            info = zipfile.ZipInfo('b%d%d' % (method, wide))\n"
                       "            info.compress_type = method\n"
                       "            with archive.open(info, 'w', force_zip64=wide) as member:\n"
                       "                member.write(open('in/b.elf', 'rb').read())\n"
                       "with zipfile.ZipFile('seekable.hdf', 'w') as archive: fill(archive)\n"
                       "with open('piped.hdf', 'wb') as file, zipfile.ZipFile(Pipe(file), 'w') as archive: "
                       "fill(archive)\n");
    const std::string script =
        "cd '" + dir.path() +
        "' && python3 write.py && cd in && zip -q9r ../zip.hdf . && "
        "zip -q9r - . | cat >../stream.hdf && "
        "( printf front; cat ../zip.hdf ) >../prefixed.hdf && 7z a -bd ../seven.zip . >/dev/null";
    ASSERT_EQ(std::system(script.c_str()), 0);
    for (const char* const name :
         {"seekable.hdf", "piped.hdf", "zip.hdf", "stream.hdf", "prefixed.hdf", "seven.zip"}) {
        const std::string before = support::readFile(dir / name);
        const HHDFHwDefArchive present(dir / name);
        std::vector<HHDFHwDefArchive::Part> parts;
        for (const auto& member : present.members()) {
            parts.push_back({member.name, ""});
        }
        HHDFHwDefArchive::write(dir / name, parts, &present, present.comment(), false);
        EXPECT_TRUE(support::readFile(dir / name) == before) << name;
        // Behind another member they are the same but for the offsets.
        parts.insert(parts.begin(), {"new", dir / "in/b.elf"});
        HHDFHwDefArchive::write(dir / "more.hdf", parts, &present, "", false);
        const std::string more = support::readFile(dir / "more.hdf");
        const std::size_t first = before.find("PK\x03\x04");
        const std::string members = before.substr(first, before.find("PK\x01\x02") - first);
        EXPECT_NE(more.find(members), std::string::npos) << name;
        EXPECT_EQ(std::system(("unzip -tqq '" + dir.path() + "/more.hdf' 2>/dev/null").c_str()) >> 8,
                  std::string_view(name) == "prefixed.hdf" ? 1 : 0);
    }
}

TEST(HHDFHwDefArchive, keepsAMemberWhoseDescriptorIsMissing)
{
    const TempDir dir;
    support::ZipBuilder zip;
    support::ZipMember& first = zip.addStored("hwdef.xml", support::bomOfFiles("0", {}));
    first.local.flags = first.listed.flags = 8;
    zip.write(dir / "a.hdf");
    const std::string before = support::readFile(dir / "a.hdf");
    const HHDFHwDefArchive present(dir / "a.hdf");
    HHDFHwDefArchive::write(dir / "a.hdf", {{"hwdef.xml", ""}}, &present, "", false);
    EXPECT_EQ(support::readFile(dir / "a.hdf"), before);
}

TEST(HHDFHwDefArchive, tellsTheBytesAroundAnArchive)
{
    const TempDir dir;
    writeArchive(dir / "a.hdf");
    const HHDFHwDefArchive plain(dir / "a.hdf");
    EXPECT_EQ(plain.bytesInFront(), 0U);
    EXPECT_EQ(plain.bytesBehind(), 0U);
    support::writeFile(dir / "b.hdf", "front" + support::readFile(dir / "a.hdf"));
    EXPECT_EQ(HHDFHwDefArchive(dir / "b.hdf").bytesInFront(), 5U);
    EXPECT_EQ(HHDFHwDefArchive(dir / "b.hdf").bytesBehind(), 0U);
    support::writeFile(dir / "b.hdf", support::readFile(dir / "a.hdf") + "behind");
    EXPECT_EQ(HHDFHwDefArchive(dir / "b.hdf").bytesInFront(), 0U);
    EXPECT_EQ(HHDFHwDefArchive(dir / "b.hdf").bytesBehind(), 6U);
}

TEST(HHDFHwDefArchive, streamsTheContentOfMembersOfAnyArchive)
{
    const TempDir dir;
    const std::string large = std::string(150000, 'x') + "end";
    support::writeArchive(dir / "a.hdf", {{"large", large}, {"empty", ""}});
    support::writeArchive(dir / "b.hdf", {{"small", "of b"}});
    const HHDFHwDefArchive first(dir / "a.hdf");
    const HHDFHwDefArchive second(dir / "b.hdf");
    HHDFHwDefArchive::Content content;
    content.open(first, "large");
    EXPECT_EQ(content.next(), std::string(64 * 1024, 'x'));
    content.open(second, "small");  // whatever became of the one before
    EXPECT_EQ(content.next(), "of b");
    EXPECT_EQ(content.next(), "");
    content.open(first, "large");
    std::string all;
    for (std::string_view bytes; !(bytes = content.next()).empty();) {
        all += bytes;
    }
    EXPECT_EQ(all, large);
    content.open(first, "empty");
    EXPECT_EQ(content.next(), "");
}

TEST(HHDFHwDefArchive, streamsNoContentThatIsDamaged)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"a.bit", "bits"}, {"b.bit", "other"}});
    support::patchFile(dir / "a.hdf", "other", "oTher");
    const HHDFHwDefArchive archive(dir / "a.hdf");
    HHDFHwDefArchive::Content content;
    EXPECT_EQ(whyNot([&] { content.open(archive, "gone"); }),
              dir / "a.hdf" + ": there is no member \"gone\"");
    content.open(archive, "b.bit");
    EXPECT_THROW(content.next(), zip_exception);
    content.open(archive, "a.bit");
    EXPECT_EQ(content.next(), "bits");
}

TEST(HHDFHwDefArchive, leavesTheArchiveAloneWhenAPartCantBeHad)
{
    const TempDir dir;
    writeArchive(dir / "a.hdf");
    const std::string before = support::readFile(dir / "a.hdf");
    const HHDFHwDefArchive present(dir / "a.hdf");
    const auto write = [&](const HHDFHwDefArchive::Part& part, const HHDFHwDefArchive* from) {
        return whyNot([&] {
            HHDFHwDefArchive::write(dir / "a.hdf", {{"hwdef.xml", ""}, part}, from, "", false);
        });
    };
    EXPECT_EQ(write({"c.bit", ""}, &present), dir / "a.hdf" + ": there is no member \"c.bit\"");
    EXPECT_NE(write({"c.bit", dir / "missing"}, &present).find("member \"c.bit\" can't be added: "),
              std::string::npos);
    EXPECT_EQ(write({"c.bit", ""}, nullptr),
              dir / "a.hdf" + ": member \"hwdef.xml\" can't be added: it has no source");
    EXPECT_EQ(support::readFile(dir / "a.hdf"), before);
    EXPECT_EQ(dir.list(), "a.hdf");
}

TEST(HHDFHwDefArchive, extractsBelowTheDirectoryOnly)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"deep/b.elf", "b"}, {"../out", "evil"}});
    const HHDFHwDefArchive archive(dir / "a.hdf");

    archive.extract("deep/b.elf", dir / "to/there");

    EXPECT_EQ(support::readFile(dir / "to/there/deep/b.elf"), "b");
    EXPECT_EQ(whyNot([&] { archive.extract("../out", dir / "to/there"); }),
              dir / "to/there" + ": member \"../out\" is not extracted: the name climbs out by \"..\"");
    EXPECT_FALSE(support::exists(dir / "to/out"));
    EXPECT_EQ(whyNot([&] { archive.extract("none", dir.path()); }),
              dir / "a.hdf" + ": there is no member \"none\"");
    support::writeFile(dir / "file", "no directory");
    EXPECT_EQ(whyNot([&] { archive.extract("deep/b.elf", dir / "file"); }),
              dir / "file/deep is no directory that can be written to");
}

TEST(HHDFHwDefArchive, extractsToTheWorkingDirectoryWithoutAnother)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"b.elf", "b"}});
    const int status = support::inChild([&] {
        std::exit(::chdir(dir.path().c_str()) == 0 ? (HHDFHwDefArchive("a.hdf").extract("b.elf", ""), 0) : 1);
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(support::readFile(dir / "b.elf"), "b");
}

TEST(HHDFHwDefArchive, extractsTheOthersWhenOneMemberCantBe)
{
    const TempDir dir;
    support::writeArchive(dir / "a.hdf", {{"../out", "evil"}, {"a.bit", "a"}, {"b.elf", "b"}});
    const HHDFHwDefArchive archive(dir / "a.hdf");

    const auto failures = archive.extractAll({"../out", "a.bit", "none", "b.elf"}, dir / "to");

    ASSERT_EQ(failures.size(), 2U);
    EXPECT_EQ(failures[0].name, "../out");
    EXPECT_EQ(failures[0].reason,
              dir / "to" + ": member \"../out\" is not extracted: the name climbs out by \"..\"");
    EXPECT_EQ(failures[1].name, "none");
    EXPECT_EQ(failures[1].reason, dir / "a.hdf" + ": there is no member \"none\"");
    EXPECT_EQ(support::readFile(dir / "to/a.bit"), "a");
    EXPECT_EQ(support::readFile(dir / "to/b.elf"), "b");
}
