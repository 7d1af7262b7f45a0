#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/iostreams/Append.h"
#include "platform/iostreams/ArchiveWriter.h"
#include "support/Container.h"
#include "support/TempDir.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::ArchiveWriter;
using support::Members;

namespace {

/// Archives that were written here, read by the programs that people have.
class InteropWrite : public testing::Test {
protected:
    void add(ArchiveWriter& writer, const std::string& name, const std::string& content)
    {
        support::writeFile(dir_ / "source", content);
        EXPECT_TRUE(writer.addFile(dir_ / "source", name, reason_)) << reason_;
        members_.emplace_back(name, content);
    }

    void writeMixture(ArchiveWriter::Digest digest)
    {
        ArchiveWriter writer(path_, digest);
        add(writer, "sysdef.xml", support::textBytes(3000, 1));
        add(writer, "empty", "");
        add(writer, "drivers/uart_v1/data/uart.mdd", "OPTION psf_version = 2.1;\n");
        add(writer, "top.bit", support::randomBytes(600000, 1));
        add(writer, "large.txt", support::textBytes(2000000, 2));
        add(writer, "Schaltplan Größe.pdf", support::randomBytes(1000, 2));
        writer.commit();
    }

    int run(const std::string& command)
    {
        return std::system(
            ("LC_ALL=C.UTF-8 " + command + " '" + path_ + "' > '" + (dir_ / "log") + "' 2>&1").c_str());
    }

    void expectThatAllRead()
    {
        EXPECT_TRUE(support::readArchive(path_) == members_);
        for (const std::string command : {"unzip -t", "python3 -m zipfile -t", "bsdtar -tf", "7z t"}) {
            EXPECT_EQ(run(command), 0) << command << "\n" << support::readFile(dir_ / "log");
        }
    }

    support::TempDir dir_;
    const std::string path_ = dir_ / "a.hdf";
    std::string reason_;
    Members members_;
};

}  // namespace

TEST_F(InteropWrite, isReadByOthersWithAndWithoutDigest)
{
    writeMixture(ArchiveWriter::Digest::NONE);
    expectThatAllRead();
    members_.clear();
    writeMixture(ArchiveWriter::Digest::ATTACHED);
    expectThatAllRead();
}

TEST_F(InteropWrite, isReadByOthersAfterAdditions)
{
    writeMixture(ArchiveWriter::Digest::ATTACHED);
    support::writeFile(dir_ / "source", "new content");
    ASSERT_TRUE(iostreams::zip::appendFile(dir_ / "source", "new", path_, reason_));
    members_.emplace_back("new", "new content");
    const ArchiveReader reader(path_);
    ASSERT_TRUE(iostreams::zip::appendMember(reader, *reader.find("large.txt"), "copy", path_, reason_));
    members_.emplace_back("copy", support::textBytes(2000000, 2));
    expectThatAllRead();
}

TEST_F(InteropWrite, tellsOthersNamesTimesAndModes)
{
    writeMixture(ArchiveWriter::Digest::NONE);
    ASSERT_EQ(run("python3 -c \"import sys, zipfile\nfor i in zipfile.ZipFile(sys.argv[1]).infolist(): "
                  "print(i.filename, i.date_time, oct(i.external_attr >> 16), i.flag_bits, i.compress_type, "
                  "i.extract_version)\""),
              0);
    EXPECT_EQ(support::readFile(dir_ / "log"),
              "sysdef.xml (1980, 1, 1, 0, 0, 0) 0o100644 0 8 20\n"
              "empty (1980, 1, 1, 0, 0, 0) 0o100644 0 0 10\n"
              "drivers/uart_v1/data/uart.mdd (1980, 1, 1, 0, 0, 0) 0o100644 0 0 10\n"
              "top.bit (1980, 1, 1, 0, 0, 0) 0o100644 0 0 10\n"
              "large.txt (1980, 1, 1, 0, 0, 0) 0o100644 0 8 20\n"
              "Schaltplan Größe.pdf (1980, 1, 1, 0, 0, 0) 0o100644 2048 0 10\n");
}

TEST_F(InteropWrite, isReadByOthersWithMoreMembersThanAPlainEndRecordCounts)
{
    for (const int count : {65534, 65535, 65536}) {
        support::writeFile(dir_ / "source", "x");
        ArchiveWriter writer(path_);
        for (int i = 0; i < count; ++i) {
            ASSERT_TRUE(writer.addFile(dir_ / "source", std::to_string(i), reason_));
        }
        writer.commit();
        EXPECT_EQ(ArchiveReader(path_).entries().size(), static_cast<std::size_t>(count));
        EXPECT_EQ(
            run("python3 -c \"import sys, zipfile; print(len(zipfile.ZipFile(sys.argv[1]).namelist()))\""),
            0);
        EXPECT_EQ(support::readFile(dir_ / "log"), std::to_string(count) + "\n");
        EXPECT_EQ(run("unzip -tqq"), 0) << support::readFile(dir_ / "log");
        const bool zip64 = support::readFile(path_).find("PK\6\6") != std::string::npos;
        EXPECT_EQ(zip64, count > 65534);
    }
}
