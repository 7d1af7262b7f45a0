// Every damage of a kind done to whole containers: none of it crashes, hangs, or gives bytes that were
// never in the container without a failure.

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/filesystem/operations.hpp>
#include <fstream>
#include <limits>
#include <map>
#include <set>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/iostreams/ArchiveReader.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::Entry;
using support::bomOfFiles;
using support::randomBytes;
using support::TempDir;
using support::textBytes;
using support::ZipBuilder;

namespace {

constexpr std::uint64_t noLimit = std::numeric_limits<std::uint64_t>::max();

/// What damage came to, summed up over all damaged forms of a container.
struct Outcome {
    int tried = 0;
    int definitions = 0;  ///< forms that could be opened as containers
    int members = 0;      ///< members read without a failure
    int wrong = 0;        ///< of these, members with bytes that the container didn't have
};

/// A sound container and what may be read from it.
class Victim {
public:
    Victim(const TempDir& dir, std::string bytes) : path_(dir / "damaged.hdf"), bytes_(std::move(bytes))
    {
        support::writeFile(path_, bytes_);
        const ArchiveReader archive(path_);
        isBody_.resize(bytes_.size());
        for (const Entry& entry : archive.entries()) {
            const std::string content = archive.read(entry, noLimit);
            contents_.insert(content);
            members_[std::string(entry.name)] = content;
            const std::size_t header = static_cast<std::size_t>(entry.headerOffset);
            const std::size_t data = header + 30 + number(header + 26) + number(header + 28);
            std::fill_n(isBody_.begin() + static_cast<std::ptrdiff_t>(data), entry.compressedSize, true);
        }
    }

    const std::string& bytes() const { return bytes_; }
    std::size_t memberCount() const { return members_.size(); }

    /// The places of all bytes that are no member's data.
    std::vector<std::size_t> framePlaces() const
    {
        std::vector<std::size_t> places;
        for (std::size_t at = 0; at < bytes_.size(); ++at) {
            if (!isBody_[at]) {
                places.push_back(at);
            }
        }
        return places;
    }

    /// Opens the damaged form with the integrity check and reads every member that it lists.
    void tryForm(const std::string& damaged, Outcome& outcome) const
    {
        const support::Messages messages;
        overwrite(damaged);
        ++outcome.tried;
        const auto def = HHDFHwDefUtils::getHDF(path_, true);
        outcome.definitions += def != nullptr;
        try {
            const ArchiveReader archive(path_);
            for (const Entry& entry : archive.entries()) {
                readMember(archive, entry, outcome);
            }
        } catch (const HEXAll&) {
        }
    }

private:
    /// Without emptying the file first, after which some file systems wait for the disk.
    void overwrite(const std::string& damaged) const
    {
        std::fstream file(path_, std::ios::in | std::ios::out | std::ios::binary);
        file.write(damaged.data(), static_cast<std::streamsize>(damaged.size()));
        file.close();
        ASSERT_TRUE(file.good());
        boost::filesystem::resize_file(path_, damaged.size());
    }

    std::size_t number(std::size_t at) const
    {
        return static_cast<unsigned char>(bytes_[at]) + 256U * static_cast<unsigned char>(bytes_[at + 1]);
    }

    void readMember(const ArchiveReader& archive, const Entry& entry, Outcome& outcome) const
    {
        try {
            const std::string content = archive.read(entry, noLimit);
            const auto member = members_.find(std::string(entry.name));
            // Under another name than the container's it may be any of its members.
            const bool right =
                member != members_.end() ? member->second == content : contents_.contains(content);
            ++outcome.members;
            outcome.wrong += !right;
        } catch (const HEXAll&) {
        }
    }

    std::string path_;
    std::string bytes_;
    std::vector<bool> isBody_;
    std::map<std::string, std::string> members_;
    std::set<std::string> contents_;
};

std::string fileName(int number)
{
    return "design_file_" + std::to_string(number) + ".bit";
}

/// A container as this library packages it, with an archive digest.
std::string packaged(const TempDir& dir)
{
    const auto def = HHDFHwDefUtils::createHDF(dir / "made.hdf");
    for (int number = 0; number < 14; ++number) {
        const std::string path = dir / ("file_" + std::to_string(number) + ".bit");
        support::writeFile(path, number % 2 == 0 ? randomBytes(90, 7) : textBytes(300, 8));
        def->addFileToBom(path, HHDFHwDefFileTypes::BIT);
    }
    def->setMajorVersion(1);
    def->setMinorVersion(3);
    EXPECT_TRUE(def->write(true));
    return support::readFile(dir / "made.hdf");
}

/// One as others may write it: bytes in front, data descriptors of each form, zip64 records, extra
/// fields and comments. Stored members with equal and with different content.
std::string decorated()
{
    ZipBuilder zip;
    zip.prefix = "#!/bin/sh\nexit 0\n";
    std::vector<std::string> names;
    for (int number = 0; number < 16; ++number) {
        names.push_back(fileName(number));
    }
    zip.addDeflated("hwdef.xml", bomOfFiles("0", names)).setDescriptor(true, 4);
    for (int number = 0; number < 16; ++number) {
        const std::string content = textBytes(60 + static_cast<std::size_t>(number), 3);
        support::ZipMember& member = number % 3 == 0
                                         ? zip.addDeflated(names[static_cast<std::size_t>(number)], content)
                                         : zip.addStored(names[static_cast<std::size_t>(number)], content);
        if (number % 2 == 0) {
            member.setDescriptor(number % 4 == 0, 4);
        }
        if (number % 5 == 1) {
            const std::uint64_t size = member.listed.size;
            member.listed.extra = support::zip64Extra({size, member.listed.compressedSize});
            member.listed.size = 0xffffffff;
            member.listed.compressedSize = 0xffffffff;
        }
        if (number % 5 == 2) {
            member.comment = "a comment";
        }
    }
    zip.zip64 = true;
    zip.comment = "made elsewhere";
    return zip.build();
}

/// One with digests of its members in the BOM, written by libzip.
std::string digested(const TempDir& dir)
{
    support::Members members = {{"sysdef.xml", ""}};
    for (int number = 0; number < 16; ++number) {
        members.emplace_back(fileName(number), randomBytes(70, static_cast<unsigned>(number)));
    }
    std::string digest;
    std::map<std::string, std::string> digests;
    // The first round is for the digests, which the second one records.
    for (int round = 0; round < 2; ++round) {
        std::string elements;
        for (const auto& [name, content] : members) {
            if (name != "sysdef.xml") {
                elements += "<File Type=\"BIT\" Name=\"" + name + "\" DIGEST=\"" + digests[name] + "\"/>\n";
            }
        }
        members[0].second =
            support::bomDocument("Version=\"1\" Minor=\"2\" DIGEST=\"" + digest + "\"", elements);
        support::writeArchive(dir / "digested.hdf", members);
        digests.clear();
        EXPECT_TRUE(HHDFHwDefUtils::getHDF(dir / "digested.hdf")->calculateDigest(digest, digests));
    }
    return support::readFile(dir / "digested.hdf");
}

std::vector<std::string> threeContainers(const TempDir& dir)
{
    return {packaged(dir), decorated(), digested(dir)};
}

/// Puts four other values into the place of one byte.
void changeByte(const Victim& victim, std::size_t place, Outcome& outcome)
{
    std::string damaged = victim.bytes();
    const char right = damaged[place];
    std::set<char> wrong;
    for (const char one :
         {char(right ^ 0x01), char(right ^ 0x80), '\0', '\xff', char(right ^ 0x10), char(right ^ 0x55)}) {
        if (one != right && wrong.size() < 4) {
            wrong.insert(one);
        }
    }
    for (const char one : wrong) {
        damaged[place] = one;
        victim.tryForm(damaged, outcome);
    }
}

void record(const Outcome& outcome)
{
    testing::Test::RecordProperty("tried", outcome.tried);
    testing::Test::RecordProperty("definitions", outcome.definitions);
    testing::Test::RecordProperty("members", outcome.members);
    testing::Test::RecordProperty("wrong", outcome.wrong);
}

}  // namespace

TEST(Damage, startsFromThreeSoundContainers)
{
    const TempDir dir;
    for (const std::string& container : threeContainers(dir)) {
        const Victim victim(dir, container);
        Outcome outcome;
        victim.tryForm(container, outcome);

        EXPECT_EQ(outcome.definitions, 1);
        EXPECT_EQ(outcome.members, static_cast<int>(victim.memberCount()));
        EXPECT_EQ(outcome.wrong, 0);
    }
}

TEST(Damage, givesNoWrongBytesForAnyPrefix)
{
    const TempDir dir;
    Outcome outcome;
    for (const std::string& container : threeContainers(dir)) {
        const Victim victim(dir, container);
        for (std::size_t size = 0; size < container.size(); ++size) {
            victim.tryForm(container.substr(0, size), outcome);
        }
    }

    record(outcome);
    EXPECT_EQ(outcome.wrong, 0);
    EXPECT_GE(outcome.tried, 10'000);
    // No end record is whole, so that there is nothing to read.
    EXPECT_EQ(outcome.definitions, 0);
    EXPECT_EQ(outcome.members, 0);
}

TEST(Damage, givesNoWrongBytesForAnyChangedByteOfHeadersAndDirectories)
{
    const TempDir dir;
    Outcome outcome;
    for (const std::string& container : threeContainers(dir)) {
        const Victim victim(dir, container);
        for (const std::size_t place : victim.framePlaces()) {
            changeByte(victim, place, outcome);
        }
    }

    record(outcome);
    EXPECT_EQ(outcome.wrong, 0);
    EXPECT_GE(outcome.tried, 20'000);
    // Many a byte matters to one member at most (times, versions, attributes, comments to none).
    EXPECT_GT(outcome.members, outcome.tried);
}

TEST(Damage, showsByTheArchiveDigestWhateverByteIsChanged)
{
    const TempDir dir;
    Outcome outcome;
    const Victim victim(dir, packaged(dir));
    for (std::size_t place = 0; place < victim.bytes().size(); ++place) {
        changeByte(victim, place, outcome);
    }

    record(outcome);
    EXPECT_EQ(outcome.wrong, 0);
    EXPECT_GE(outcome.tried, 10'000);
    EXPECT_EQ(outcome.definitions, 0);
}
