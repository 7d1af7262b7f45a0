#include "platform/HPAParamMgr.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace {

const std::string name = "test.parameter";

/// The manager, with the parameter removed before and after the test.
class HPAParamMgrTest : public testing::Test {
protected:
    HPAParamMgrTest() { manager.removeValue(name); }
    ~HPAParamMgrTest() override { manager.removeValue(name); }

    bool reads(const std::string& value)
    {
        manager.setValue(name, value);
        // The fallback must not matter once the parameter is set.
        const bool result = manager.getValueIfExistAsBool(name, false);
        EXPECT_EQ(manager.getValueIfExistAsBool(name, true), result) << value;
        return result;
    }

    HPAParamMgr& manager = *HPAParamMgr::getParamMgr();
};

}  // namespace

TEST_F(HPAParamMgrTest, isOneForTheProcess)
{
    EXPECT_EQ(HPAParamMgr::getParamMgr(), &manager);
}

TEST_F(HPAParamMgrTest, answersTheFallbackForWhatIsNotSet)
{
    EXPECT_TRUE(manager.getValueIfExistAsBool(name, true));
    EXPECT_FALSE(manager.getValueIfExistAsBool(name, false));
}

TEST_F(HPAParamMgrTest, readsTheFourWordsOfTruthInAnyCase)
{
    for (const char* word : {"true", "TRUE", "True", "1", "yes", "YES", "on", "On"}) {
        EXPECT_TRUE(reads(word)) << word;
    }
}

TEST_F(HPAParamMgrTest, readsAnyOtherTextAsFalse)
{
    for (const char* word : {"", "false", "0", "no", "off", "2", "tru", "truee", " true", "enabled"}) {
        EXPECT_FALSE(reads(word)) << word;
    }
}

TEST_F(HPAParamMgrTest, readsNumbersOfDigitsOnly)
{
    EXPECT_EQ(manager.getValueIfExistAsNumber(name, 7), 7U);
    manager.setValue(name, "18446744073709551615");
    EXPECT_EQ(manager.getValueIfExistAsNumber(name, 7), 18446744073709551615U);
    for (const char* text :
         {"", "18446744073709551616", "-1", "+1", " 1", "1 ", "1M", "0x10", "1.5", "true"}) {
        manager.setValue(name, text);
        EXPECT_EQ(manager.getValueIfExistAsNumber(name, 7), 7U) << text;
    }
}

TEST_F(HPAParamMgrTest, replacesAValue)
{
    manager.setValue(name, "true");
    manager.setValue(name, "false");
    EXPECT_FALSE(manager.getValueIfExistAsBool(name, true));
}

TEST_F(HPAParamMgrTest, forgetsARemovedParameter)
{
    manager.setValue(name, "true");
    manager.removeValue(name);
    manager.removeValue(name);
    EXPECT_FALSE(manager.getValueIfExistAsBool(name, false));
}

TEST_F(HPAParamMgrTest, takesNamesWithCase)
{
    manager.setValue(name, "true");
    EXPECT_FALSE(manager.getValueIfExistAsBool("TEST.parameter", false));
}

TEST_F(HPAParamMgrTest, servesSeveralThreads)
{
    std::thread setter([&] {
        for (int i = 0; i < 1000; ++i) {
            manager.setValue(name, i % 2 == 0 ? "true" : "yes");
            manager.setValue(name + std::to_string(i), "true");
        }
    });
    for (int i = 0; i < 1000; ++i) {
        EXPECT_TRUE(manager.getValueIfExistAsBool(name, true));
    }
    setter.join();
    for (int i = 0; i < 1000; ++i) {
        EXPECT_TRUE(manager.getValueIfExistAsBool(name + std::to_string(i), false));
        manager.removeValue(name + std::to_string(i));
    }
}
