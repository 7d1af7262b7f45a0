#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/ArchiveWriter.h"
#include "support/Container.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

/// Generated archives, and what this library and other programs make of them.
namespace differential {

using support::Members;
using support::TempDir;

/// The members as this library reads them.
inline Members oursIn(const std::string& path)
{
    const iostreams::zip::ArchiveReader archive(path);
    Members members;
    for (const iostreams::zip::Entry& entry : archive.entries()) {
        members.emplace_back(entry.name, archive.read(entry, std::numeric_limits<std::uint64_t>::max()));
    }
    return members;
}

/// Writes an archive by this library; the members' bytes pass through a file in `dir`.
inline void writeOurs(const std::string& path, const Members& members, const TempDir& dir)
{
    iostreams::zip::ArchiveWriter writer(path);
    for (const auto& [name, content] : members) {
        support::writeFile(dir / "source", content);
        std::string reason;
        ASSERT_TRUE(writer.addFile(dir / "source", name, reason)) << reason;
    }
    writer.commit();
}

/// Draws members; the same seed gives the same ones. Some names are up to `longest` bytes longer than others.
class MemberGenerator {
public:
    explicit MemberGenerator(unsigned seed, std::size_t longest = 150) : engine_(seed), longest_(longest) {}

    std::size_t below(std::size_t limit) { return engine_() % limit; }

    /// Names in UTF-8, distinct by their number, none of which stands for another's directory.
    std::string name(std::size_t number)
    {
        static const char* const parts[] = {
            "a", "drivers/", "top.bit", "\xc3\xa4", "\xe6\xbc\xa2", " ",
            "-", "x\ty",     "'",       "\"",       "b/c/",         "\xf0\x9f\x98\x80"};
        std::string name = std::to_string(number);
        for (std::size_t count = below(6); count > 0; --count) {
            name += parts[below(std::size(parts))];
        }
        return below(50) == 0 ? name + std::string(below(longest_), 'n') + "e" : name + "e";
    }

    std::string content()
    {
        const std::size_t sizes[] = {0, 1, 2, 30, 1000, 5000, 70'000};
        const std::size_t size = sizes[below(below(20) == 0 ? 7 : 6)];
        const auto seed = static_cast<unsigned>(below(1000));
        return below(2) == 0 ? support::randomBytes(size, seed) : support::textBytes(size, seed);
    }

    Members members(std::size_t most, std::size_t least = 0)
    {
        Members members;
        for (std::size_t number = 0, count = least + below(most - least + 1); number < count; ++number) {
            const std::string chosen = name(number);
            members.emplace_back(chosen, content());
        }
        return members;
    }

private:
    std::mt19937 engine_;
    std::size_t longest_;
};

/// Runs a command of the shell in a directory, its output into the file "log".
inline void run(const TempDir& dir, const std::string& command)
{
    const std::string line = "export LC_ALL=C.UTF-8 && cd '" + dir.path() + "' && ( " + command + " ) > '" +
                             dir / "log" + "' 2>&1";
    EXPECT_EQ(std::system(line.c_str()), 0) << command << "\n" << support::readFile(dir / "log");
}

/// Runs a script of python in a directory.
inline void runPython(const TempDir& dir, const std::string& script)
{
    support::writeFile(dir / "script.py", script);
    run(dir, "python3 script.py");
}

/// Archives as one text: the number of members, then each one's two lengths, name and content.
inline std::string flat(const std::vector<Members>& archives)
{
    std::string text;
    for (const Members& members : archives) {
        text += std::to_string(members.size()) + "\n";
        for (const auto& [name, content] : members) {
            text +=
                std::to_string(name.size()) + " " + std::to_string(content.size()) + "\n" + name + content;
        }
    }
    return text;
}

/// The same of the archives "0.zip" and so on, as python finds them.
inline std::string inPython(const TempDir& dir, int count)
{
    runPython(dir, "count = " + std::to_string(count) + R"(
import zipfile
with open('found', 'wb') as found:
    for number in range(count):
        archive = zipfile.ZipFile('%d.zip' % number)
        found.write(b'%d\n' % len(archive.infolist()))
        for info in archive.infolist():
            name = info.orig_filename.encode('utf-8' if info.flag_bits & 0x800 else 'cp437')
            content = archive.read(info)
            found.write(b'%d %d\n' % (len(name), len(content)) + name + content)
)");
    return support::readFile(dir / "found");
}

}  // namespace differential
