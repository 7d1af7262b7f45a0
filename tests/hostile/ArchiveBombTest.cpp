// Archives that are built to exhaust whoever opens them.

#include <gtest/gtest.h>

#include <boost/filesystem/operations.hpp>
#include <cstdio>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/ComMsgMgr.h"
#include "platform/HXMLWInterface.h"
#include "support/Container.h"
#include "support/MeasuredChild.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using support::bomDocument;
using support::bomOfFiles;
using support::Measured;
using support::TempDir;
using support::ZipBuilder;

namespace {

constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20U;

/// Opens with the integrity check in a process of its own, within the limits; whether it succeeded.
bool opens(const TempDir& dir, double mostSeconds = 10)
{
    const Measured measured = support::measureInChild(dir.path(), 640 * mebibyte, [&] {
        ComMsgMgr::setHandler([](const ComMsg&) {});
        return HHDFHwDefUtils::getHDF(dir / "design.hdf", true) != nullptr ? 7 : 1;
    });
    testing::Test::RecordProperty("peakMiB", static_cast<int>(measured.peakBytes / mebibyte));
    testing::Test::RecordProperty("cpuMs", static_cast<int>(measured.cpuSeconds * 1000));
    EXPECT_TRUE(measured.exitCode == 7 || measured.exitCode == 1) << "signal " << measured.signal;
    if (!support::isSanitized()) {
        EXPECT_LT(measured.peakBytes, 512 * mebibyte);
        EXPECT_LT(measured.cpuSeconds, mostSeconds);
    }
    return measured.exitCode == 7;
}

std::string repeated(const std::string& unit, std::size_t sizeBytes)
{
    std::string bytes;
    while (bytes.size() < sizeBytes) {
        bytes += unit;
    }
    return bytes;
}

/// A container whose member `name` has one byte, "x", behind so many bytes of deflate blocks without
/// content; and its BOM, if that is another member.
void writeEmptyBlocks(const TempDir& dir, const std::string& name, std::size_t packedBytes,
                      const std::string& bom)
{
    ZipBuilder zip;
    if (!bom.empty()) {
        zip.addDeflated("hwdef.xml", bom);
    }
    support::putEmptyBlocks(zip.addDeflated(name, "x"), packedBytes);
    zip.write(dir / "design.hdf");
}

/// A container of one member of zeros, and a BOM of minor version 2 that lists it `times` times.
void writeDigestBomb(const TempDir& dir, std::size_t sizeBytes, std::size_t times)
{
    support::writeFile(dir / "zeros", "");
    boost::filesystem::resize_file(dir / "zeros", sizeBytes);
    std::remove((dir / "design.hdf").c_str());
    ASSERT_TRUE(HHDFHwDefUtils::writeFileToHDF(dir / "zeros", "a", dir / "design.hdf"));
    support::writeFile(dir / "bom", bomDocument("Version=\"1\" Minor=\"2\" DIGEST=\"1\"",
                                                repeated("<File Name=\"a\"/>", 16 * times)));
    ASSERT_TRUE(HHDFHwDefUtils::writeFileToHDF(dir / "bom", "hwdef.xml", dir / "design.hdf"));
}

/// A number as four letters.
std::string shortName(unsigned number)
{
    const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-";
    std::string name;
    for (int i = 0; i < 4; ++i, number /= 64) {
        name += letters[number % 64];
    }
    return name;
}

/// A BOM that lists so many files, and fills what is left of the room for elements with attributes.
std::string bomOfCrowd(unsigned count)
{
    std::string elements;
    for (unsigned number = 0; number < count; ++number) {
        elements += "<File Name='" + shortName(number) + "'/>";
    }
    elements += "<WDIATTRS>";
    for (unsigned number = 0; number < 900'000; ++number) {
        elements += "<a ATTRNAME='" + std::to_string(number) + "'/>";
    }
    return bomDocument("Version='1' Minor='2'", elements + "</WDIATTRS>");
}

/// A container of so many empty members, all listed, which the directory has the other way round.
void writeCrowd(const TempDir& dir, unsigned count)
{
    std::string bytes;
    std::string directory;
    const auto record = [&](const std::string& name, const std::string& data, const std::string& content) {
        const std::string common = support::little(20, 2) + support::little(0, 2) +
                                   support::little(data.empty() ? 0 : 8, 2) + support::little(0x00210000, 4) +
                                   support::little(support::crc32(content), 4) +
                                   support::little(data.size(), 4) + support::little(content.size(), 4) +
                                   support::little(name.size(), 2) + support::little(0, 2);
        const std::string offset = support::little(bytes.size(), 4);
        bytes += "PK\x03\x04" + common + name + data;
        return "PK\x01\x02" + support::little(20, 2) + common + std::string(10, '\0') + offset + name;
    };
    const std::string bom = bomOfCrowd(count);
    const std::string first = record("hwdef.xml", support::deflated(bom), bom);
    const std::size_t recordBytes = 46 + 4;
    directory.resize(count * recordBytes);
    for (unsigned number = 0; number < count; ++number) {
        directory.replace((count - 1 - number) * recordBytes, recordBytes, record(shortName(number), "", ""));
    }
    directory.insert(0, first);
    const std::uint64_t all = count + 1;
    bytes += directory + "PK\x06\x06" + support::little(44, 8) + support::little(45, 2) +
             support::little(45, 2) + support::little(0, 8) + support::little(all, 8) +
             support::little(all, 8) + support::little(directory.size(), 8) +
             support::little(bytes.size(), 8) + "PK\x06\x07" + support::little(0, 4) +
             support::little(bytes.size() + directory.size(), 8) + support::little(1, 4) + "PK\x05\x06" +
             support::little(0, 4) + std::string(12, '\xff') + support::little(0, 2);
    ASSERT_LT(bytes.size(), 60'000'000U);
    support::writeFile(dir / "design.hdf", bytes);
}

}  // namespace

TEST(ArchiveBomb, isRefusedWhenItClaimsFourBillionMembers)
{
    const TempDir dir;
    for (const std::uint64_t claim :
         {std::uint64_t{0xfffffffe}, ~std::uint64_t{0}, std::uint64_t{1} << 60U}) {
        ZipBuilder zip;
        zip.addStored("hwdef.xml", bomOfFiles("0", {}));
        zip.zip64 = true;
        zip.zip64End.entries = claim;
        zip.zip64End.entriesOnDisk = claim;
        zip.write(dir / "design.hdf");
        EXPECT_FALSE(opens(dir)) << claim;
        zip.zip64End.directorySize = claim;
        zip.write(dir / "design.hdf");
        EXPECT_FALSE(opens(dir)) << claim;
    }
}

TEST(ArchiveBomb, isRefusedWhenMembersOverlap)
{
    const TempDir dir;
    ZipBuilder zip;
    zip.addStored("hwdef.xml", bomOfFiles("0", {}));
    zip.addDeflated("kernel", std::string(mebibyte, '\0'));
    for (int number = 0; number < 10'000; ++number) {
        support::ZipMember member = zip.members[1];
        member.local.name = member.listed.name = "kernel" + std::to_string(number);
        member.offset = 200;
        member.data.clear();
        zip.members.push_back(member);
    }
    zip.write(dir / "design.hdf");
    EXPECT_FALSE(opens(dir));
}

TEST(ArchiveBomb, isOpenedWithAsManyListedMembersAsItCanHold)
{
    const TempDir dir;
    writeCrowd(dir, 500'000);
    EXPECT_TRUE(opens(dir));
}

TEST(ArchiveBomb, isRefusedSoonWhateverFillsTheFile)
{
    const TempDir dir;
    ZipBuilder zip;
    zip.addStored("hwdef.xml", bomOfFiles("0", {}));
    const std::string sound = zip.build();
    const std::string end = sound.substr(sound.rfind("PK\x05\x06"));
    for (const std::string& unit : {std::string("PK\x05\x06"), std::string("PK\x01\x02"), std::string("PK"),
                                    end, sound, std::string(1000, '\0')}) {
        support::writeFile(dir / "design.hdf", sound + repeated(unit, 60'000'000 - sound.size()) + "!");
        opens(dir);
    }
}

TEST(ArchiveBomb, isNotDigestedWithoutEnd)
{
    const TempDir dir;
    writeDigestBomb(dir, std::size_t{1} << 30U, 1000);
    EXPECT_FALSE(opens(dir));
    writeDigestBomb(dir, 1, 400'000);
    EXPECT_FALSE(opens(dir));
}

TEST(ArchiveBomb, isNotDigestedBeyondSomeGibibytes)
{
    const TempDir dir;
    ZipBuilder zip;
    std::string files;
    const support::ZipMember zeros = ZipBuilder().addDeflated("", std::string(std::size_t{64} << 20U, '\0'));
    for (int number = 0; number < 200; ++number) {
        zip.members.push_back(zeros);
        zip.members.back().local.name = zip.members.back().listed.name = std::to_string(number);
        files += "<File Name=\"" + std::to_string(number) + "\"/>";
    }
    zip.addStored("hwdef.xml", bomDocument("Version=\"1\" Minor=\"2\" DIGEST=\"\"", files));
    zip.write(dir / "design.hdf");
    EXPECT_TRUE(opens(dir));  // nothing is recorded that could differ
}

TEST(ArchiveBomb, isNotDigestedWhenItsDataHoldsNothing)
{
    const TempDir dir;
    writeEmptyBlocks(dir, "a", 58'000'000,
                     bomDocument("Version=\"1\" Minor=\"2\" DIGEST=\"1\"", "<File Name=\"a\"/>"));
    EXPECT_FALSE(opens(dir));
}

TEST(ArchiveBomb, isNotDigestedWhenItHidesThatItsDataHoldsNothing)
{
    const TempDir dir;
    ZipBuilder zip;
    zip.addDeflated("hwdef.xml", bomDocument("Version=\"1\" Minor=\"2\" DIGEST=\"1\"", "<File Name=\"a\"/>"));
    // 100 MB in a tenth of a megabyte, so that in all no more is packed than unpacked.
    const std::string zeros(100'000'000, '\0');  // NOLINT(bugprone-string-constructor): so many on purpose
    support::putEmptyBlocks(zip.addDeflated("a", zeros), 57'000'000);
    zip.write(dir / "design.hdf");
    EXPECT_FALSE(opens(dir));
}

TEST(ArchiveBomb, isGivenUpOnceHoweverOftenItIsListed)
{
    const TempDir dir;
    writeEmptyBlocks(
        dir, "a", 55'000'000,
        bomDocument("Version=\"1\" Minor=\"2\" DIGEST=\"1\"", repeated("<File Name=\"a\"/>", 16 * 690'000)));
    EXPECT_FALSE(opens(dir));
}

TEST(ArchiveBomb, isGivenUpWhenBomAndMembersTakeLongTogether)
{
    const TempDir dir;
    ZipBuilder zip;
    support::putEmptyBlocks(
        zip.addDeflated("hwdef.xml", bomDocument("Version=\"1\" Minor=\"2\" DIGEST=\"1\"",
                                                 repeated("<File Name=\"a\"/>", 16 * 690'000))),
        1'500'000);
    support::putEmptyBlocks(zip.addDeflated("a", "x"), 55'000'000);
    zip.write(dir / "design.hdf");
    EXPECT_FALSE(opens(dir));
}

TEST(ArchiveBomb, isDigestedOnceHoweverOftenItIsListed)
{
    const TempDir dir;
    writeEmptyBlocks(
        dir, "a", 1'000'000,
        bomDocument("Version=\"1\" Minor=\"2\" DIGEST=\"1\"", repeated("<File Name=\"a\"/>", 16 * 4000)));
    EXPECT_FALSE(opens(dir, 2));
}

TEST(ArchiveBomb, isRefusedWhenItsBomHoldsNothing)
{
    const TempDir dir;
    writeEmptyBlocks(dir, "hwdef.xml", 58'000'000, "");
    EXPECT_FALSE(opens(dir));
}

TEST(ArchiveBomb, isNoDocumentType)
{
    const TempDir dir;
    support::writeFile(dir / "secret", "secret");
    std::string entities = "<!ENTITY e0 \"lol\">";
    for (int level = 1; level < 30; ++level) {
        const std::string inner = "&e" + std::to_string(level - 1) + ";";
        entities += "<!ENTITY e" + std::to_string(level) + " \"" + inner + inner + inner + inner + "\">";
    }
    const std::string tops[] = {
        "<!DOCTYPE Project [" + entities + "]>",
        "<!DOCTYPE Project SYSTEM \"file://" + dir / "secret" + "\">",
        "<!DOCTYPE Project [<!ENTITY e29 SYSTEM \"file://" + dir / "secret" + "\">]>",
        "<!DOCTYPE Project [<!ENTITY % p SYSTEM \"file://" + dir / "secret" + "\"> %p;]>",
        "<!DOCTYPE Project [<!ATTLIST Project Part CDATA \"secret\">]>",
        "<!DOCTYPE Project [" + repeated("<!ENTITY e29 \"secret\">", 30'000'000) + "]>",
    };
    for (const std::string& top : tops) {
        const std::string document =
            top + "<Project Version=\"1\" Minor=\"0\"><SYSTEMINFO PART=\"&e29;\"/></Project>";
        HXMLWInterface parsed;
        ASSERT_TRUE(parsed.readFromBuffer(document)) << top.substr(0, 100);
        EXPECT_STREQ(parsed.getRootElement()->getAttribute("Part"), nullptr);
        EXPECT_STREQ(parsed.getRootElement()->getChildren()->front()->getAttribute("PART"), "&e29;");

        support::writeFile(dir / "bom", document);
        std::remove((dir / "design.hdf").c_str());
        ASSERT_TRUE(HHDFHwDefUtils::writeFileToHDF(dir / "bom", "hwdef.xml", dir / "design.hdf"));
        EXPECT_TRUE(opens(dir));
    }
}
