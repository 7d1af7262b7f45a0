// Threads that each work on definitions of their own, and share what belongs to the process.

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "hwdef/swparam/SWParamWriter.h"
#include "hwdef/utils/HHDFHwDefUtils.h"
#include "platform/ComMsgMgr.h"
#include "platform/HPAParamMgr.h"
#include "support/Container.h"
#include "support/TempDir.h"

using support::TempDir;
using Utils = HHDFHwDefUtils;

namespace {

constexpr int rounds = 20;

/// Runs the work on two threads, each with its number.
void onTwoThreads(const std::function<void(int)>& work)
{
    std::vector<std::thread> threads;
    for (int number = 0; number < 2; ++number) {
        threads.emplace_back(work, number);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// Everything that one thread does with a definition, told by the number of failures.
int liveWithADefinition(const std::string& dir)
{
    int failures = 0;
    const auto check = [&failures](bool isRight) { failures += isRight ? 0 : 1; };
    const std::string path = dir + "/design.hdf";
    const auto def = Utils::createHDF(path);
    def->setMajorVersion(1);
    def->setMinorVersion(3);
    def->addFileToBom(dir + "/a.bit", HHDFHwDefFileTypes::BIT);
    def->addFileToBom(dir + "/p.json", HHDFHwDefFileTypes::POWER_DATA);
    def->addDriverFileToBom("ip", dir, "x.c", "");
    check(def->write(true));

    const auto opened = Utils::getHDF(path, true);
    check(opened != nullptr);
    opened->removeUnnecessaryFilesForQVA();
    check(opened->unzipDrivers(dir + "/out"));
    check(opened->write(dir + "/export.dsa"));
    check(Utils::writeFileToHDF(dir + "/a.bit", "more", path));
    check(Utils::getFileBufferFromHDF("more", path) == "content");
    check(Utils::writeFileFromHDF(dir + "/out/a", "a.bit", path));
    std::string name;
    Utils::Attributes attributes;
    check(Utils::getSWParamInfo("POWER_DATA", path, name, attributes) && name == "u1");
    check(Utils::writeHDF(dir + "/built.hdf", {{dir + "/a.bit", HHDFHwDefFileTypes::BIT}}, true, {}, {}));
    check(Utils::getHDF(dir + "/missing.hdf") == nullptr);
    return failures;
}

/// Puts a handler of messages in force while it lives.
class Handler {
public:
    explicit Handler(ComMsgMgr::Handler handler) : earlier_(ComMsgMgr::setHandler(std::move(handler))) {}
    ~Handler() { ComMsgMgr::setHandler(earlier_); }
    Handler(const Handler&) = delete;
    Handler& operator=(const Handler&) = delete;

private:
    ComMsgMgr::Handler earlier_;
};

}  // namespace

TEST(Threads, workOnDefinitionsOfTheirOwn)
{
    const TempDir dir;
    std::atomic<int> warnings{0};
    std::atomic<int> missing{0};
    const Handler handler([&](const ComMsg& message) {
        warnings += message.id == "@64-24@%s" ? 1 : 0;
        missing += message.id == "@64-5@%s" ? 1 : 0;
    });
    std::atomic<int> failures{0};
    for (int number = 0; number < 2; ++number) {
        const std::string mine = dir / std::to_string(number);
        support::writeFile(mine + "/a.bit", "content");
        support::writeFile(mine + "/x.c", "source");
        SWParamWriter::writeParamInfo(mine + "/p.json", "u1", "key", "value");
    }
    onTwoThreads([&](int number) {
        for (int round = 0; round < rounds; ++round) {
            failures += liveWithADefinition(dir / std::to_string(number));
        }
    });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(warnings, 2 * rounds * 2);  // of packaging and of the export
    EXPECT_EQ(missing, 2 * rounds);
}

TEST(Threads, shareTheParameters)
{
    const std::string name = "project.removeVELDFilesFromQVA";
    const TempDir dir;
    onTwoThreads([&](int number) {
        for (int round = 0; round < 10 * rounds; ++round) {
            if (number == 0) {
                HPAParamMgr::getParamMgr()->setValue(name, round % 2 == 0 ? "true" : "false");
            } else {
                const auto def = Utils::createHDF(dir / "design.hdf");
                def->addFileToBom("/in/x.elf", HHDFHwDefFileTypes::ELF);
                def->removeUnnecessaryFilesForQVA();
            }
        }
        HPAParamMgr::getParamMgr()->removeValue(name + std::to_string(number));
    });
    HPAParamMgr::getParamMgr()->removeValue(name);
    EXPECT_FALSE(HPAParamMgr::getParamMgr()->getValueIfExistAsBool(name, false));
}

TEST(Threads, sendMessagesWhileTheHandlerChanges)
{
    std::atomic<int> received{0};
    const auto count = [&received](const ComMsg&) { ++received; };
    const Handler handler(count);
    onTwoThreads([&](int number) {
        for (int round = 0; round < 10 * rounds; ++round) {
            if (number == 0) {
                ComMsgMgr::setHandler(count);
            } else {
                EXPECT_EQ(Utils::getHDF("/missing/design.hdf"), nullptr);
            }
        }
    });
    EXPECT_EQ(received, 10 * rounds);
}

TEST(Threads, makeScratchDirectoriesAndWriteToOnePlace)
{
    const TempDir dir;
    std::mutex mutex;
    std::vector<std::unique_ptr<HHDFHwDef>> all;
    onTwoThreads([&](int) {
        for (int round = 0; round < rounds; ++round) {
            auto def = Utils::createHDF(dir / "design.hdf");
            def->setModeType(HHDFHwDefFileTypes::PRE_SYNTHESIS);
            EXPECT_TRUE(def->write(dir.path()));
            const std::lock_guard lock(mutex);
            all.push_back(std::move(def));
        }
    });
    EXPECT_EQ(all.size(), 2U * rounds);
    EXPECT_EQ(dir.list(), "hwdef.xml");
}
