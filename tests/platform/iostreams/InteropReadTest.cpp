#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/EndRecord.h"
#include "platform/iostreams/EntryHeaders.h"
#include "platform/iostreams/ZipException.h"
#include "support/Container.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::Entry;

namespace {

constexpr std::uint64_t noLimit = 1U << 30U;

/// Archives that other programs write, of files below "in".
class InteropRead : public testing::Test {
protected:
    InteropRead()
    {
        files_["sysdef.xml"] = support::textBytes(3000, 1);
        files_["empty"] = "";
        files_["drivers/uart_v1/data/uart.mdd"] = "OPTION psf_version = 2.1;\n";
        files_["top.bit"] = support::randomBytes(400000, 1);
        files_["large.txt"] = support::textBytes(300000, 2);
        files_
            ["Gr\xc3\xb6\xc3\x9f"
             "e.pdf"] = support::randomBytes(1000, 2);
        for (const auto& [name, content] : files_) {
            support::writeFile(dir_ / ("in/" + name), content);
        }
    }

    /// Runs a shell command in "in"; the archive is "$A" there. A program that is missing fails the test.
    void run(const std::string& command)
    {
        const std::string line = "export LC_ALL=C.UTF-8 A='" + path_ + "' && cd '" + (dir_ / "in") +
                                 "' && ( " + command + " ) > ../log 2>&1";
        EXPECT_EQ(std::system(line.c_str()), 0) << command << "\n" << support::readFile(dir_ / "log");
    }
    void runPython(const std::string& script)
    {
        support::writeFile(
            dir_ / "script.py",
            "import os, sys, zipfile\n"
            "A = os.environ['A']\n"
            "names = sorted(os.path.relpath(os.path.join(d, f)) for d, _, fs in os.walk('.') for f in fs)\n" +
                script);
        run("python3 ../script.py");
    }

    /// Whether the archive holds all files and nothing else but directories; returns the reader.
    std::unique_ptr<ArchiveReader> expectFiles()
    {
        auto archive = std::make_unique<ArchiveReader>(path_);
        std::map<std::string, std::string> found;
        for (const Entry& entry : archive->entries()) {
            if (entry.name.back() != '/') {
                found[std::string(entry.name)] = archive->read(entry, noLimit);
            }
        }
        EXPECT_TRUE(found == files_);
        return archive;
    }

    /// What reading "large.txt" fails with.
    std::string failure()
    {
        const ArchiveReader archive(path_);
        const Entry* entry = archive.find("large.txt");
        EXPECT_NE(entry, nullptr);
        return support::zipFailure(path_, [&] { archive.read(*entry, noLimit); });
    }

    static bool hasDescriptors(const ArchiveReader& archive)
    {
        return (archive.find("large.txt")->flags & iostreams::zip::FLAG_DESCRIPTOR) != 0;
    }

    support::TempDir dir_;
    const std::string path_ = dir_ / "a.zip";
    std::map<std::string, std::string> files_;
};

}  // namespace

TEST_F(InteropRead, readsWhatZipWrites)
{
    for (const std::string options : {"-r", "-r -0", "-r -9", "-r -D", "-r -fz", "-r -X"}) {
        run("rm -f $A; zip -q " + options + " $A .");
        expectFiles();
    }
}

TEST_F(InteropRead, readsWhatZipWritesIntoAPipe)
{
    run("zip -q -r - . | cat > $A");
    EXPECT_TRUE(hasDescriptors(*expectFiles()));
}

TEST_F(InteropRead, readsArchivesThatZipChanged)
{
    run("zip -q -r $A . && echo changed > ../new && zip -q -j $A ../new && zip -q -d $A new && zip -q $A "
        "large.txt");
    expectFiles();
    run("echo 'a comment' | zip -q -z $A");
    expectFiles();
    EXPECT_EQ(iostreams::zip::findEndRecord(platform::File::openRegular(path_, 0)).comment, "a comment");
}

TEST_F(InteropRead, readsArchivesBehindOtherBytes)
{
    run("zip -q -r ../b.zip . && { printf '#!/bin/sh\\nexit 0\\n'; cat ../b.zip; } > $A");
    expectFiles();
    run("zip -q -A $A");  // offsets then count the bytes in front
    expectFiles();
}

TEST_F(InteropRead, readsNoSplitArchive)
{
    run("zip -q -r -s 64k $A .");
    EXPECT_THROW(ArchiveReader reader(path_), iostreams::zip::zip_exception);
}

TEST_F(InteropRead, refusesWhatZipEncrypts)
{
    run("zip -q -r -P secret $A .");
    EXPECT_EQ(failure(), "member \"large.txt\": is encrypted, which isn't supported");
}

TEST_F(InteropRead, readsWhat7zWrites)
{
    for (const std::string options : {"", "-mx=9", "-mx=1", "-mm=Copy", "-mfb=258 -mpass=3"}) {
        run("rm -f $A; 7z a -tzip -bd " + options + " $A .");
        expectFiles();
    }
}

TEST_F(InteropRead, refusesOtherMethodsOf7z)
{
    for (const auto& [name, number] :
         {std::pair{"Deflate64", "9"}, std::pair{"BZip2", "12"}, std::pair{"LZMA", "14"}}) {
        run(std::string("rm -f $A; 7z a -tzip -bd -mm=") + name + " $A .");
        EXPECT_EQ(failure(), std::string("member \"large.txt\": has compression method ") + number +
                                 ", supported are 0 (stored) and 8 (deflated)");
    }
}

TEST_F(InteropRead, refusesWhat7zEncrypts)
{
    run("7z a -tzip -bd -psecret -mem=AES256 $A .");
    EXPECT_EQ(failure(), "member \"large.txt\": is encrypted, which isn't supported");
}

TEST_F(InteropRead, readsWhatBsdtarWrites)
{
    for (const std::string options : {"", "--options zip:compression=store",
                                      "--options zip:compression-level=9", "--options zip:zip64"}) {
        run("rm -f $A; bsdtar --format zip " + options + " -cf $A *");
        expectFiles();
        run("bsdtar --format zip " + options + " -cf - * | cat > $A");
        expectFiles();
    }
}

TEST_F(InteropRead, readsWhatPythonWrites)
{
    for (const std::string method : {"ZIP_STORED", "ZIP_DEFLATED"}) {
        runPython("with zipfile.ZipFile(A, 'w', zipfile." + method +
                  ") as z:\n"
                  "    z.comment = b'a comment'\n"
                  "    for n in names: z.write(n)\n");
        expectFiles();
    }
}

TEST_F(InteropRead, readsForcedZip64OfPython)
{
    runPython(
        "with zipfile.ZipFile(A, 'w', zipfile.ZIP_DEFLATED) as z:\n"
        "    for n in names:\n"
        "        with z.open(n, 'w', force_zip64=True) as m: m.write(open(n, 'rb').read())\n");
    expectFiles();
}

TEST_F(InteropRead, readsWhatPythonWritesIntoAPipe)
{
    for (const std::string zip64 : {"False", "True"}) {
        runPython(
            "class Pipe:\n"
            "    def __init__(self, f): self.f = f\n"
            "    def write(self, b): return self.f.write(b)\n"
            "    def flush(self): self.f.flush()\n"
            "with open(A, 'wb') as f, zipfile.ZipFile(Pipe(f), 'w', zipfile.ZIP_DEFLATED) as z:\n"
            "    for n in names:\n"
            "        with z.open(n, 'w', force_zip64=" +
            zip64 + ") as m: m.write(open(n, 'rb').read())\n");
        EXPECT_TRUE(hasDescriptors(*expectFiles()));
    }
}

TEST_F(InteropRead, readsWhatPythonAppendsToOtherBytes)
{
    runPython(
        "open(A, 'wb').write(b'x' * 100000)\n"
        "with zipfile.ZipFile(A, 'a', zipfile.ZIP_DEFLATED) as z:\n"
        "    for n in names: z.write(n)\n");
    expectFiles();
}

TEST_F(InteropRead, readsMoreMembersThanThePlainRecordCounts)
{
    runPython(
        "with zipfile.ZipFile(A, 'w') as z:\n"
        "    for i in range(66000): z.writestr('m%d' % i, str(i))\n");
    const ArchiveReader archive(path_);
    EXPECT_EQ(archive.entries().size(), 66000U);
    EXPECT_EQ(archive.read(*archive.find("m65999"), noLimit), "65999");
}

TEST_F(InteropRead, readsTheLastOfTwoMembersOfPython)
{
    runPython(
        "with zipfile.ZipFile(A, 'w') as z:\n"
        "    for n in names: z.write(n)\n"
        "    z.writestr('extra', 'old')\n"
        "    z.writestr('extra', 'new')\n");
    files_["extra"] = "new";
    EXPECT_EQ(expectFiles()->entries().size(), 8U);
    EXPECT_EQ(ArchiveReader(path_).find("extra")->crc, support::crc32("new"));
}

TEST_F(InteropRead, readsNamesThatAreNotUtf8)
{
    runPython(
        "class Latin(zipfile.ZipInfo):\n"
        "    def _encodeFilenameFlags(self): return self.filename.encode('latin-1'), 0\n"
        "i = Latin('gr\\u00fcn')\n"
        "with zipfile.ZipFile(A, 'w') as z: z.writestr(i, 'content')\n");
    const ArchiveReader archive(path_);
    ASSERT_NE(archive.find("gr\xfcn"), nullptr);
    EXPECT_EQ(archive.read(*archive.find("gr\xfcn"), noLimit), "content");
}

TEST_F(InteropRead, readsWhatLibzipWrites)
{
    support::writeArchive(path_, support::Members(files_.begin(), files_.end()));
    expectFiles();
    support::writeZeros(path_, "zeros", 5000000);
    const ArchiveReader archive(path_);
    EXPECT_TRUE(archive.read(*archive.find("zeros"), noLimit) == std::string(5000000, '\0'));
}
