// The numbers at which the format changes its form, as we write them, as others read them, and as we do.

#include <gtest/gtest.h>

#include <boost/filesystem/operations.hpp>
#include <cstdlib>
#include <fstream>

#include "platform/iostreams/Append.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/ArchiveWriter.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::ArchiveWriter;
using support::TempDir;

namespace {

constexpr std::uint64_t fourGibibytes = std::uint64_t{4} << 30U;

/// Runs a shell command in the directory; fails the test when it fails.
std::string run(const TempDir& dir, const std::string& command)
{
    const std::string line = "export LC_ALL=C.UTF-8 && cd '" + dir.path() + "' && ( " + command + " ) > '" +
                             dir / "log" + "' 2>&1";
    EXPECT_EQ(std::system(line.c_str()), 0) << command << "\n"
                                            << support::readFile(dir / "log").substr(0, 1000);
    return support::readFile(dir / "log");
}

class MemberCount : public testing::TestWithParam<std::size_t> {};

/// Where an added member's local header begins.
class MemberOffset : public testing::TestWithParam<std::uint64_t> {};

class MemberSize : public testing::TestWithParam<std::uint64_t> {};

}  // namespace

TEST_P(MemberCount, isReadByUsAndByOthers)
{
    const TempDir dir;
    support::writeFile(dir / "source", "x");
    ArchiveWriter writer(dir / "a.zip");
    for (std::size_t number = 0; number < GetParam(); ++number) {
        std::string reason;
        ASSERT_TRUE(writer.addFile(dir / "source", std::to_string(number), reason)) << reason;
    }
    writer.commit(false);

    const std::string count = std::to_string(GetParam());
    EXPECT_EQ(ArchiveReader(dir / "a.zip").entries().size(), GetParam());
    EXPECT_EQ(run(dir,
                  "python3 -c \"import zipfile; z = zipfile.ZipFile('a.zip'); print(len(z.namelist()), "
                  "z.testzip(), z.read(z.namelist()[-1]).decode())\""),
              count + " None x\n");
    run(dir, "unzip -tqq a.zip");
    EXPECT_EQ(run(dir, "bsdtar -tf a.zip | wc -l"), count + "\n");
    EXPECT_NE(run(dir, "7z t a.zip").find("Files: " + count + "\n"), std::string::npos);
}

TEST_P(MemberCount, growsByOneMoreInPlace)
{
    const TempDir dir;
    support::writeFile(dir / "source", "x");
    {
        ArchiveWriter writer(dir / "a.zip");
        for (std::size_t number = 0; number < GetParam(); ++number) {
            std::string reason;
            ASSERT_TRUE(writer.addFile(dir / "source", std::to_string(number), reason)) << reason;
        }
        writer.commit(false);
    }
    std::string reason;
    ASSERT_TRUE(iostreams::zip::appendFile(dir / "source", "last", dir / "a.zip", reason)) << reason;

    EXPECT_EQ(ArchiveReader(dir / "a.zip").entries().size(), GetParam() + 1);
    run(dir, "unzip -tqq a.zip");
}

INSTANTIATE_TEST_SUITE_P(Of, MemberCount, testing::Values(65'533, 65'534, 65'535, 65'536, 70'000));

TEST_P(MemberSize, isReadByUsAndByOthers)
{
    const TempDir dir;
    const std::uint64_t size = GetParam();
    support::writeFile(dir / "large", "start");
    boost::filesystem::resize_file(dir / "large", size);
    support::writeFile(dir / "small", "behind");
    std::string reason;
    ArchiveWriter writer(dir / "a.zip");
    ASSERT_TRUE(writer.addFile(dir / "large", "large", reason)) << reason;
    ASSERT_TRUE(writer.addFile(dir / "small", "small", reason)) << reason;
    writer.commit(false);

    const ArchiveReader archive(dir / "a.zip");
    ASSERT_NE(archive.find("large"), nullptr);
    EXPECT_EQ(archive.find("large")->size, size);
    EXPECT_EQ(archive.read(*archive.find("small"), 100), "behind");
    EXPECT_EQ(run(dir,
                  "python3 -c \"import zipfile; z = zipfile.ZipFile('a.zip'); "
                  "print(z.getinfo('large').file_size, z.read('small').decode())\""),
              std::to_string(size) + " behind\n");
    EXPECT_NE(run(dir, "unzip -l a.zip").find(std::to_string(size) + " "), std::string::npos);
    EXPECT_NE(run(dir, "7z l a.zip").find(" " + std::to_string(size) + " "), std::string::npos);
    EXPECT_NE(run(dir, "bsdtar -tvf a.zip").find(" " + std::to_string(size) + " "), std::string::npos);
    EXPECT_EQ(run(dir, "unzip -p a.zip small && bsdtar -xOf a.zip small"), "behindbehind");
}

INSTANTIATE_TEST_SUITE_P(Of, MemberSize,
                         testing::Values(fourGibibytes - 2, fourGibibytes - 1, fourGibibytes,
                                         fourGibibytes + 1));

TEST_P(MemberOffset, isReadByUsAndByOthers)
{
    const TempDir dir;
    // A stored member that is a hole, up to where the next one is to begin. Its CRC-32 is left open:
    // nothing here reads it.
    const std::uint64_t size = GetParam() - 30 - 5;
    const std::string common = support::little(20, 2) + support::little(0, 4) +
                               support::little(0x00210000, 4) + support::little(0, 4) +
                               support::little(size, 4) + support::little(size, 4) + support::little(5, 2) +
                               support::little(0, 2);
    support::writeFile(dir / "a.zip", "PK\x03\x04" + common + "large");
    boost::filesystem::resize_file(dir / "a.zip", GetParam());
    const std::string record =
        "PK\x01\x02" + support::little(20, 2) + common + std::string(14, '\0') + "large";
    const bool fits = GetParam() < 0xffffffff;
    std::ofstream out(dir / "a.zip", std::ios::binary | std::ios::app);
    out << record;
    if (!fits) {
        out << "PK\x06\x06" << support::little(44, 8) << support::little(45, 2) << support::little(45, 2)
            << support::little(0, 8) << support::little(1, 8) << support::little(1, 8)
            << support::little(record.size(), 8) << support::little(GetParam(), 8) << "PK\x06\x07"
            << support::little(0, 4) << support::little(GetParam() + record.size(), 8)
            << support::little(1, 4);
    }
    out << "PK\x05\x06" << support::little(0, 4) << support::little(1, 2) << support::little(1, 2)
        << support::little(record.size(), 4) << support::little(fits ? GetParam() : 0xffffffff, 4)
        << support::little(0, 2);
    out.close();
    support::writeFile(dir / "small", "behind");
    std::string reason;
    ASSERT_TRUE(iostreams::zip::appendFile(dir / "small", "small", dir / "a.zip", reason)) << reason;

    const ArchiveReader archive(dir / "a.zip");
    ASSERT_NE(archive.find("small"), nullptr);
    EXPECT_EQ(archive.find("small")->headerOffset, GetParam());
    EXPECT_EQ(archive.read(*archive.find("small"), 100), "behind");
    EXPECT_EQ(run(dir,
                  "python3 -c \"import zipfile; i = zipfile.ZipFile('a.zip').getinfo('small'); "
                  "print(i.header_offset, zipfile.ZipFile('a.zip').read(i).decode())\""),
              std::to_string(GetParam()) + " behind\n");
    EXPECT_EQ(run(dir, "unzip -p a.zip small && bsdtar -xOf a.zip small && 7z x -so a.zip small"),
              "behindbehindbehind");
}

INSTANTIATE_TEST_SUITE_P(Of, MemberOffset,
                         testing::Values(fourGibibytes - 2, fourGibibytes - 1, fourGibibytes,
                                         fourGibibytes + 1));
