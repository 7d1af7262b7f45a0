#include "platform/Progress.h"

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <set>
#include <string>

#include "hwdef/container/HHDFHwDefArchive.h"
#include "hwdef/model/HHDFHwDef.h"
#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/HUTFile.h"
#include "platform/HUTZip.h"
#include "support/Container.h"
#include "support/Messages.h"
#include "support/TempDir.h"

using platform::Progress;
using platform::ProgressWatch;
using support::Messages;
using support::randomBytes;
using support::readFile;
using support::TempDir;
using support::textBytes;
using support::writeFile;

namespace {

constexpr std::size_t bitBytes = 9u << 20;  // stored, and copied inside the kernel
constexpr std::size_t textSize = 3u << 20;  // deflated
const auto bit = HHDFHwDefFileTypes::BIT;

/// What was told during one call.
struct Told {
    std::uint64_t calls = 0;
    std::uint64_t last = 0;
    std::uint64_t lastTotal = 0;
    std::uint64_t firstTotal = 0;
    std::set<std::string> members;
    bool rose = true;

    bool note(const Progress& progress)
    {
        rose = rose && progress.doneBytes >= last && progress.totalBytes >= progress.doneBytes;
        firstTotal = calls++ == 0 ? progress.totalBytes : firstTotal;
        last = progress.doneBytes;
        lastTotal = progress.totalBytes;
        members.insert(std::string(progress.member));
        return true;
    }
};

/// A container with a stored and a deflated member of some size, and a driver.
class ProgressOfCalls : public testing::Test {
protected:
    ProgressOfCalls()
    {
        writeFile(dir / "in/top.bit", randomBytes(bitBytes, 1));
        writeFile(dir / "in/map.txt", textBytes(textSize, 2));
        writeFile(dir / "in/drivers/x.mdd", "driver");
        HUTFile::ensureWritableDirectory(dir / "out");
        auto def = HHDFHwDefUtils::createHDF(container);
        def->addFileToBom(dir / "in/top.bit", bit);
        def->addFileToBom(dir / "in/map.txt", bit);
        def->addDriverFileToBom("x", dir / "in", "drivers/x.mdd", "");
        def->setModeType(HHDFHwDefFileTypes::PRE_SYNTHESIS);
        def->setMinorVersion(3);
        def->write(true);
    }

    std::unique_ptr<HHDFHwDef> open() { return HHDFHwDefUtils::getHDF(container); }

    const TempDir dir;
    const std::string container = dir / "out/design.hdf";
    Told told;
    const platform::ProgressFunction note = [this](const Progress& progress) { return told.note(progress); };
    const platform::ProgressFunction refuse = [](const Progress&) { return false; };
    /// Cancels once half is done.
    const platform::ProgressFunction stop = [](const Progress& progress) {
        return progress.doneBytes < progress.totalBytes / 2;
    };
};

long filesIn(const std::string& path)
{
    return std::distance(boost::filesystem::directory_iterator(path),
                         boost::filesystem::directory_iterator());
}

bool saysCancelled(const Messages& messages)
{
    return messages.all().size() == 1 &&
           messages.all().front().text.find(": cancelled after ") != std::string::npos;
}

}  // namespace

TEST_F(ProgressOfCalls, packagingTellsOfEachMember)
{
    auto def = open();
    const ProgressWatch watch(note);
    EXPECT_TRUE(def->write(true));

    EXPECT_EQ(told.members, (std::set<std::string>{"hwdef.xml", "top.bit", "map.txt", "drivers/x.mdd"}));
    EXPECT_TRUE(told.rose);
    EXPECT_EQ(told.last, told.lastTotal);
    EXPECT_GT(told.last, bitBytes);
}

TEST_F(ProgressOfCalls, packagingFromDiskCountsEachSourceByteOnce)
{
    HHDFHwDef def(dir / "new.hdf");
    def.addFileToBom(dir / "in/top.bit", bit);
    def.addFileToBom(dir / "in/map.txt", bit);
    const ProgressWatch watch(note);
    EXPECT_TRUE(def.write(true));

    EXPECT_GE(told.firstTotal, bitBytes + textSize);
    EXPECT_EQ(told.last, told.firstTotal);
    EXPECT_LE(told.last, bitBytes + textSize + 4096);
}

TEST_F(ProgressOfCalls, cancelledPackagingKeepsTheOldContainer)
{
    const std::string before = readFile(container);
    for (const auto* function : {&refuse, &stop}) {
        auto def = open();
        def->setPart("another");
        const Messages messages;
        const ProgressWatch watch(*function);
        EXPECT_FALSE(def->write(true));
        EXPECT_TRUE(saysCancelled(messages)) << messages.joined();
        EXPECT_TRUE(readFile(container) == before);
        EXPECT_EQ(filesIn(dir / "out"), 1);
    }
}

TEST_F(ProgressOfCalls, cancelledPackagingFromDiskLeavesNothing)
{
    HHDFHwDef def(dir / "new/new.hdf");
    HUTFile::ensureWritableDirectory(dir / "new");
    def.addFileToBom(dir / "in/map.txt", bit);
    def.addFileToBom(dir / "in/top.bit", bit);
    const Messages messages;
    const ProgressWatch watch([](const Progress& progress) { return progress.member != "top.bit"; });

    EXPECT_FALSE(def.write(true));
    EXPECT_TRUE(saysCancelled(messages)) << messages.joined();
    EXPECT_FALSE(support::exists(dir / "new/new.hdf"));
    EXPECT_TRUE(boost::filesystem::is_empty(dir / "new"));
}

TEST_F(ProgressOfCalls, packagingCanBeCancelledWhileALargeMemberIsDigested)
{
    const std::string before = readFile(container);
    auto def = HHDFHwDefUtils::createHDF(container);
    def->addFileToBom(dir / "in/top.bit", bit);
    const Messages messages;
    const ProgressWatch watch([](const Progress& progress) { return !progress.member.empty(); });

    EXPECT_FALSE(def->write(true));
    EXPECT_TRUE(saysCancelled(messages)) << messages.joined();
    EXPECT_TRUE(readFile(container) == before);
}

TEST_F(ProgressOfCalls, cancelledPackagingLeavesNoMemberOutThatLiesInAContainer)
{
    ASSERT_TRUE(HHDFHwDefUtils::writeFileToHDF(dir / "in/map.txt", "inside.bit", dir / "in/core.xsa"));
    for (const bool forGood : {false, true}) {
        const std::string target = dir / (forGood ? "out/forGood.hdf" : "out/once.hdf");
        auto def = HHDFHwDefUtils::createHDF(target);
        def->addFileToBom(dir / "in/top.bit", bit);
        def->addFileToBom(dir / "in/core.xsa/inside.bit", bit);
        bool refused = false;
        Messages messages;
        const ProgressWatch watch([&](const Progress& progress) {
            const bool refuses = progress.member == "inside.bit" && (forGood || !refused);
            refused = refused || refuses;
            return !refuses;
        });
        EXPECT_FALSE(def->write(true));
        EXPECT_TRUE(refused);
        EXPECT_FALSE(boost::filesystem::exists(target));
        EXPECT_NE(messages.joined().find("cancelled"), std::string::npos) << messages.joined();
    }
}

TEST_F(ProgressOfCalls, exportToADirectoryTellsOfAllAndStopsWhenCancelled)
{
    HUTFile::ensureWritableDirectory(dir / "export");
    auto def = open();
    {
        const ProgressWatch watch(note);
        EXPECT_TRUE(def->write(dir / "export"));
    }
    EXPECT_EQ(told.firstTotal, bitBytes + textSize + 6 + readFile(dir / "export/hwdef.xml").size());
    EXPECT_EQ(told.last, told.lastTotal);

    HUTFile::ensureWritableDirectory(dir / "other");
    const Messages messages;
    const ProgressWatch watch([](const Progress& progress) { return progress.member != "map.txt"; });
    EXPECT_FALSE(def->write(dir / "other"));
    EXPECT_TRUE(saysCancelled(messages)) << messages.joined();
    EXPECT_EQ(readFile(dir / "other/top.bit").size(), bitBytes);
    EXPECT_FALSE(support::exists(dir / "other/map.txt"));
}

TEST_F(ProgressOfCalls, cancelledExportToAnArchiveKeepsTheOldOne)
{
    auto def = open();
    writeFile(dir / "export.dsa", readFile(container));
    const Messages messages;
    const ProgressWatch watch(stop);

    EXPECT_FALSE(def->write(dir / "export.dsa"));
    EXPECT_TRUE(saysCancelled(messages)) << messages.joined();
    EXPECT_TRUE(readFile(dir / "export.dsa") == readFile(container));
}

TEST_F(ProgressOfCalls, digestsTellOfAllAndAreNoTamperingWhenCancelled)
{
    auto def = open();
    std::string digest;
    HHDFHwDef::Texts digests;
    {
        const ProgressWatch watch(note);
        EXPECT_TRUE(def->calculateDigest(digest, digests));
    }
    EXPECT_EQ(told.firstTotal, bitBytes + textSize + 6);
    EXPECT_EQ(told.last, told.lastTotal);

    digest = "unchanged";
    const Messages messages;
    const ProgressWatch watch(stop);
    EXPECT_FALSE(def->calculateDigest(digest, digests));
    EXPECT_EQ(digest, "unchanged");
    EXPECT_TRUE(saysCancelled(messages)) << messages.joined();
}

TEST_F(ProgressOfCalls, cancelledIntegrityCheckIsNoDamage)
{
    const Messages messages;
    const ProgressWatch watch(stop);

    EXPECT_EQ(HUTZip::checkIntegrity(HUTFile(container)), HUTZip::CANCELLED);
    EXPECT_EQ(HHDFHwDefUtils::getHDF(container, true), nullptr);
    EXPECT_EQ(messages.joined(), "text: " + container + ": cancelled while its digest was computed\n");
}

TEST_F(ProgressOfCalls, extractionTellsOfTheMemberAndLeavesNoPart)
{
    {
        const ProgressWatch watch(note);
        EXPECT_TRUE(HHDFHwDefUtils::writeFileFromHDF(dir / "x/top.bit", "top.bit", container));
    }
    EXPECT_EQ(told.firstTotal, bitBytes);
    EXPECT_EQ(told.last, bitBytes);

    const Messages messages;
    const ProgressWatch watch(stop);
    EXPECT_FALSE(HHDFHwDefUtils::writeFileFromHDF(dir / "y/top.bit", "top.bit", container));
    EXPECT_TRUE(saysCancelled(messages)) << messages.joined();
    EXPECT_TRUE(boost::filesystem::is_empty(dir / "y"));
}

TEST_F(ProgressOfCalls, cancelledAdditionPutsTheOldBytesBack)
{
    const std::string before = readFile(container);
    const Messages messages;
    const ProgressWatch watch(stop);

    EXPECT_FALSE(HHDFHwDefUtils::writeFileToHDF(dir / "in/top.bit", "again.bit", container));
    EXPECT_TRUE(saysCancelled(messages)) << messages.joined();
    EXPECT_TRUE(readFile(container) == before);
}

TEST_F(ProgressOfCalls, driversTellOfAllAndStopWhenCancelled)
{
    auto def = open();
    {
        const ProgressWatch watch(note);
        EXPECT_TRUE(def->unzipDrivers(dir / "d"));
    }
    EXPECT_EQ(told.last, 6u);

    const Messages messages;
    const ProgressWatch watch(refuse);
    EXPECT_FALSE(def->unzipDrivers(dir / "e"));
    EXPECT_TRUE(saysCancelled(messages)) << messages.joined();
    EXPECT_FALSE(support::exists(dir / "e/drivers/x.mdd"));
}

TEST_F(ProgressOfCalls, extractionTellsOfAllMembersAndStopsWhenCancelled)
{
    const HHDFHwDefArchive archive(container);
    {
        const ProgressWatch watch(note);
        EXPECT_TRUE(archive.extractAll({"top.bit", "map.txt"}, dir / "e").empty());
    }
    EXPECT_TRUE(told.rose);
    EXPECT_EQ(told.firstTotal, bitBytes + textSize);
    EXPECT_EQ(told.last, bitBytes + textSize);
    EXPECT_EQ(told.lastTotal, bitBytes + textSize);
    EXPECT_EQ(told.members, (std::set<std::string>{"top.bit", "map.txt"}));

    const ProgressWatch watch(stop);
    EXPECT_THROW(archive.extractAll({"top.bit", "map.txt"}, dir / "f"), platform::Cancelled);
    EXPECT_EQ(filesIn(dir / "f"), 0);
}

TEST_F(ProgressOfCalls, extractionExpectsNoMoreOfAMemberThatFailed)
{
    writeFile(dir / "e/top.bit/file", "a directory in the way");
    const ProgressWatch watch(note);
    EXPECT_EQ(HHDFHwDefArchive(container).extractAll({"top.bit", "map.txt"}, dir / "e").size(), 1u);
    EXPECT_TRUE(told.rose);
    EXPECT_EQ(told.lastTotal, textSize);
}

TEST_F(ProgressOfCalls, aWatchChangesNoByte)
{
    const std::string before = readFile(container);
    auto def = open();
    const ProgressWatch watch(note);
    EXPECT_TRUE(def->write(true));

    EXPECT_TRUE(readFile(container) == before);
}

TEST_F(ProgressOfCalls, openingEndsWhereItsDigestsAreCancelled)
{
    support::writeArchive(dir / "a.hdf",
                          {{"hwdef.xml", support::bomDocument("Version='1' Minor='2' DIGEST='0'",
                                                              "<File Type='BIT' Name='a.bit'/>")},
                           {"a.bit", "bits"}});
    const Messages messages;
    const ProgressWatch watch([](const Progress& progress) { return progress.member != "a.bit"; });
    EXPECT_EQ(HHDFHwDefUtils::getHDF(dir / "a.hdf", true), nullptr);
    ASSERT_EQ(messages.all().size(), 1u) << messages.joined();  // and it isn't called tampered with
    EXPECT_NE(messages.all()[0].text.find("cancelled after "), std::string::npos);
}
