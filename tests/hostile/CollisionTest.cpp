// Names that were chosen so that std::hash gives all of them the same number.

#include <gtest/gtest.h>

#include <functional>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/ArchiveWriter.h"
#include "support/Container.h"
#include "support/MeasuredChild.h"
#include "support/TempDir.h"

using support::Measured;
using support::measureInChild;
using support::TempDir;

namespace {

constexpr std::size_t nameCount = 100'000;
constexpr std::uint64_t noLimit = std::uint64_t{8} << 30U;
/// All of these take well below a second; comparing each name with all others takes minutes.
constexpr double mostSeconds = support::isSanitized() ? 60 : 10;

/// The names are three links of two words of eight characters, each link in one of so many forms.
constexpr std::size_t formCount = 47;
constexpr std::size_t nameBytes = 48;

/// std::hash of the standard library in use: it takes a text in words, and each step can be undone.
constexpr std::uint64_t factor = 0xc6a4a7935bd1e995;
constexpr std::uint64_t start = 0xc70f6907 ^ (nameBytes * factor);

constexpr std::uint64_t inverseOf(std::uint64_t odd)
{
    std::uint64_t inverse = odd;
    for (int i = 0; i < 6; ++i) {
        inverse *= 2 - odd * inverse;
    }
    return inverse;
}
constexpr std::uint64_t inverse = inverseOf(factor);

std::uint64_t mixed(std::uint64_t word)
{
    word *= factor;
    return (word ^ (word >> 47U)) * factor;
}

std::uint64_t unmixed(std::uint64_t word)
{
    word *= inverse;
    return (word ^ (word >> 47U)) * inverse;
}

/// Whether all eight characters can stand in a file's name and in XML, and have no other case.
bool isPlain(std::uint64_t word)
{
    static const std::string plain = "abcdefghijklmnopqrstuvwxyz0123456789-_.,;:!?()[]{}@#$%^~`|+*=";
    for (int at = 0; at < 8; ++at, word >>= 8U) {
        if (plain.find(static_cast<char>(word & 0xff)) == std::string::npos) {
            return false;
        }
    }
    return true;
}

std::string textOf(std::uint64_t word)
{
    return {reinterpret_cast<const char*>(&word), sizeof word};
}

/// Eight letters, others for each number.
std::uint64_t letters(std::uint64_t number)
{
    std::uint64_t word = 0;
    for (int at = 0; at < 8; ++at, number /= 26) {
        word = word << 8U | ('a' + number % 26);
    }
    return word;
}

/// Texts of two words that all lead from one state of the hash to one other, which `state` becomes.
std::vector<std::string> link(std::uint64_t& state)
{
    const std::uint64_t next = ((state ^ mixed(letters(0))) * factor ^ mixed(letters(0))) * factor;
    std::vector<std::string> forms;
    for (std::uint64_t number = 0; forms.size() < formCount; ++number) {
        const std::uint64_t between = (state ^ mixed(letters(number))) * factor;
        const std::uint64_t second = unmixed(next * inverse ^ between);
        if (isPlain(second)) {
            forms.push_back(textOf(letters(number)) + textOf(second));
        }
    }
    state = next;
    return forms;
}

std::vector<std::string> collidingNames()
{
    std::uint64_t state = start;
    const std::vector<std::string> first = link(state);
    const std::vector<std::string> second = link(state);
    const std::vector<std::string> third = link(state);
    std::vector<std::string> names;
    for (std::size_t number = 0; number < nameCount; ++number) {
        names.push_back(first[number % formCount] + second[number / formCount % formCount] +
                        third[number / formCount / formCount]);
    }
    return names;
}

/// A container whose BOM lists files of these names, each a member.
void writeContainer(const std::string& path, const std::vector<std::string>& names)
{
    support::Members members = {{"hwdef.xml", support::bomOfFiles("2", names)}};
    for (const std::string& name : names) {
        members.emplace_back(name, "");
    }
    support::writeArchive(path, members);
}

}  // namespace

TEST(Collision, isWhatTheNamesAreMadeFor)
{
    const std::vector<std::string> names = collidingNames();
    const std::size_t hash = std::hash<std::string>()(names.front());
    for (const std::string& name : names) {
        ASSERT_EQ(std::hash<std::string>()(name), hash) << name;
    }
}

TEST(Collision, doesNotSlowDownOpening)
{
    const TempDir dir;
    writeContainer(dir / "design.hdf", collidingNames());

    const Measured measured = measureInChild(dir.path(), noLimit, [&] {
        const auto def = HHDFHwDefUtils::getHDF(dir / "design.hdf", true);
        std::vector<std::string> files;
        return def != nullptr && def->getBomFiles(files) == nameCount ? 7 : 1;
    });
    EXPECT_EQ(measured.exitCode, 7);
    EXPECT_LT(measured.cpuSeconds, mostSeconds);
}

TEST(Collision, doesNotSlowDownRewritingAndMerging)
{
    const TempDir dir;
    writeContainer(dir / "design.hdf", collidingNames());

    const Measured measured = measureInChild(dir.path(), noLimit, [&] {
        const auto def = HHDFHwDefUtils::getHDF(dir / "design.hdf");
        const auto again = HHDFHwDefUtils::getHDF(dir / "design.hdf");
        const auto merged = HHDFHwDefUtils::getMrgdHDF({def.get(), again.get()}, dir / "merged.hdf");
        return merged != nullptr && merged->write(true) ? 7 : 1;
    });
    EXPECT_EQ(measured.exitCode, 7);
    EXPECT_LT(measured.cpuSeconds, mostSeconds);
    EXPECT_EQ(iostreams::zip::ArchiveReader(dir / "merged.hdf").entries().size(), nameCount + 1);
}
