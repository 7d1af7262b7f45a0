// Adding to a damaged archive, whose owner may not know of the damage: what could be read before can be
// read afterwards.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>
#include <utility>

#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/iostreams/ArchiveReader.h"
#include "support/Messages.h"
#include "support/TempDir.h"
#include "support/ZipBuilder.h"

using iostreams::zip::ArchiveReader;
using iostreams::zip::Entry;
using support::ZipBuilder;

namespace {

using Readable = std::multiset<std::pair<std::string, std::string>>;

/// Names and contents of the members that can be read. Throws zip_exception when the archive can't be.
Readable readableMembers(const std::string& path)
{
    Readable members;
    const ArchiveReader archive(path);
    for (const Entry& entry : archive.entries()) {
        try {
            members.emplace(entry.name, archive.read(entry, std::numeric_limits<std::uint64_t>::max()));
        } catch (const HEXAll&) {
        }
    }
    return members;
}

enum class Last { STORED, DEFLATED, DESCRIBED, WITH_EXTRA_FIELD };

/// An archive whose last member is of that form.
std::string archiveWith(Last form)
{
    ZipBuilder zip;
    zip.addStored("a", "content of a");
    support::ZipMember& last = form == Last::DEFLATED ? zip.addDeflated("directory/b", "bbbbbbbbbbbbbbb")
                                                      : zip.addStored("directory/b", "content of b");
    if (form == Last::DESCRIBED) {
        last.setDescriptor(true, 4);
    } else if (form == Last::WITH_EXTRA_FIELD) {
        last.local.extra = support::zip64Extra({12, 12});
    }
    return zip.build();
}

class AddingToDamage : public testing::Test {
protected:
    AddingToDamage() { support::writeFile(file_, "new"); }

    /// Adds to the form, and holds what can be read afterwards against what could be before.
    void tryForm(const std::string& form, const std::string& what)
    {
        const support::Messages messages;
        support::writeFile(path_, form);
        Readable before;
        try {
            before = readableMembers(path_);
        } catch (const HEXAll&) {
            return;
        }
        if (!HHDFHwDefUtils::writeFileToHDF(file_, "added", path_)) {
            EXPECT_TRUE(support::readFile(path_) == form) << what;
            return;
        }
        ++additions_;
        before.emplace("added", "new");
        Readable after;
        EXPECT_NO_THROW(after = readableMembers(path_)) << what;
        EXPECT_TRUE(std::includes(after.begin(), after.end(), before.begin(), before.end())) << what;
    }

    support::TempDir dir_;
    const std::string path_ = dir_ / "archive.zip";
    const std::string file_ = dir_ / "new";
    int additions_ = 0;
};

}  // namespace

TEST_F(AddingToDamage, losesNothingWhateverByteIsDamaged)
{
    for (const Last last : {Last::STORED, Last::DEFLATED, Last::DESCRIBED, Last::WITH_EXTRA_FIELD}) {
        const std::string sound = archiveWith(last);
        for (std::size_t at = 0; at < sound.size(); ++at) {
            const auto byte = static_cast<unsigned char>(sound[at]);
            for (const int value : {byte ^ 1, byte ^ 0x80, 0, 0xff}) {
                std::string form = sound;
                form[at] = static_cast<char>(value);
                tryForm(form, "byte " + std::to_string(at) + " is " + std::to_string(value));
            }
        }
    }
    EXPECT_GE(additions_, 2000);
}

TEST_F(AddingToDamage, losesNothingWhenTheLastMemberCallsItselfShorter)
{
    std::string form = archiveWith(Last::STORED);
    const std::size_t header = form.rfind("PK\3\4");
    form[header + 26] = 3;  // of the 11 bytes of its name
    tryForm(form, "a shorter name");
    EXPECT_EQ(additions_, 1);
    EXPECT_EQ(readableMembers(path_), (Readable{{"a", "content of a"}, {"added", "new"}}));
}

TEST_F(AddingToDamage, isRefusedWhereTheCommentHoldsAnEndRecord)
{
    ZipBuilder zip;
    zip.addStored("a", "content of a");
    zip.comment = "PK\5\6";
    zip.write(path_);
    const std::string before = support::readFile(path_);
    const support::Messages messages;

    EXPECT_FALSE(HHDFHwDefUtils::writeFileToHDF(file_, "added", path_));
    EXPECT_NE(
        messages.joined().find("the comment holds an end record, which would be taken for the archive's own"),
        std::string::npos)
        << messages.joined();
    EXPECT_EQ(support::readFile(path_), before);
}
