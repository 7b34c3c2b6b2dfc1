// Whatever fails, and wherever the process dies: no key is lost.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/preferences_file.h"
#include "platform/linux/settings_folders.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;

const std::string before = R"({"a":1.50})";
const std::string after = "{\n  \"a\": 1.50,\n  \"b\": true\n}\n";

class PreferencesFileCrash : public test::SettingsFolders {
  protected:
    // How many steps opening and one change take.
    std::size_t steps() {
        startAgain(before);
        test::ScriptedFileSystem counting(files_);
        EXPECT_TRUE(PreferencesFile(counting, settings_, lock_).change("b", true));
        return counting.steps().size();
    }

    void expectNoLitter() {
        for (const std::string& name : names(config_))
            EXPECT_TRUE(name.starts_with("settings.json")) << name;
    }
};

TEST_F(PreferencesFileCrash, TheDiskHasTheNewFileBeforeTheCallReturns) {
    store(before);
    test::ScriptedFileSystem recording(files_);
    ASSERT_TRUE(PreferencesFile(recording, settings_, lock_).change("b", true));
    std::vector<std::string> order;
    for (const std::string& step : recording.steps()) {
        if (step.starts_with("synchronize") || step.starts_with("replace")) order.push_back(step);
    }
    EXPECT_THAT(order,
                ElementsAre("synchronize", "replace " + settings_, "synchronizeFolder " + config_));
}

TEST_F(PreferencesFileCrash, AFailureAtAnyStepLeavesTheOldFileOrTheNewOneAndIsMadeUpFor) {
    const std::size_t count = steps();
    ASSERT_GE(count, 12U);
    for (const std::errc error : test::diskErrors) {
        for (std::size_t step = 0; step < count; ++step) {
            startAgain(before);
            test::ScriptedFileSystem failing(files_);
            failing.failAtStep(step, error);
            PreferencesFile file(failing, settings_, lock_);
            const FileResult<void> result = file.change("b", true);
            EXPECT_TRUE(stored() == after || (!result && stored() == before)) << step;
            EXPECT_EQ(file.value("b"), JsonValue(true)) << step;
            EXPECT_TRUE(file.change("c", JsonValue(false))) << step;
            EXPECT_EQ(parseJsonObject(stored()),
                      parseJsonObject(R"({"a":1.50,"b":true,"c":false})"))
                << step;
            expectNoLitter();
        }
    }
}

TEST_F(PreferencesFileCrash, WhatReachedTheFileButPerhapsNotTheDiskIsWrittenAgain) {
    store(before);
    test::ScriptedFileSystem failing(files_);
    PreferencesFile file(failing, settings_, lock_);
    failing.interruptBeforeEachStep([&](std::size_t step, const std::string& name) {
        if (name == "synchronizeFolder") failing.failAtStep(step, std::errc::io_error);
    });
    EXPECT_EQ(file.change("b", true).error(), std::errc::io_error);
    EXPECT_EQ(stored(), after);
    EXPECT_EQ(file.change("b", true).error(), std::errc::io_error);
    failing.interruptBeforeEachStep(nullptr);
    EXPECT_TRUE(file.flush());
    EXPECT_EQ(failing.steps().back(), "synchronizeFolder " + config_);
    const std::size_t steps = failing.steps().size();
    EXPECT_TRUE(file.flush());
    EXPECT_EQ(failing.steps().size(), steps);
    EXPECT_TRUE(file.change("b", true));
    EXPECT_NE(failing.steps().back(), "synchronizeFolder " + config_);
}

TEST_F(PreferencesFileCrash, AProcessThatDiesAtAnyStepLeavesTheOldFileOrTheNewOne) {
    bool died = true;
    for (std::size_t step = 0; died; ++step) {
        startAgain(before);
        died = test::isStopped([&] {
            test::ScriptedFileSystem stopping(files_);
            stopping.stopAtStep(step);
            static_cast<void>(PreferencesFile(stopping, settings_, lock_).change("b", true));
        });
        EXPECT_TRUE(stored() == after || (died && stored() == before)) << step;
        EXPECT_TRUE(PreferencesFile(files_, settings_, lock_).change("c", true));
        EXPECT_TRUE(parseJsonObject(stored())->find("a") != nullptr) << step;
        expectNoLitter();
    }
}

TEST_F(PreferencesFileCrash, AProcessThatDiesReplacingADamagedFileHasKeptItsBytes) {
    bool died = true;
    for (std::size_t step = 0; died; ++step) {
        startAgain("{");
        died = test::isStopped([&] {
            test::ScriptedFileSystem stopping(files_);
            stopping.stopAtStep(step);
            static_cast<void>(PreferencesFile(stopping, settings_, lock_).change("b", true));
        });
        EXPECT_TRUE(stored() == "{" || test::readFile(damagedCopy_ + "1") == "{") << step;
        EXPECT_TRUE(PreferencesFile(files_, settings_, lock_).change("c", true));
        EXPECT_EQ(test::readFile(damagedCopy_ + "1"), "{") << step;
        EXPECT_FALSE(test::exists(damagedCopy_ + "2")) << step;
    }
}

TEST_F(PreferencesFileCrash, AFailureAtAnyStepOfReplacingADamagedFileKeepsItsBytes) {
    for (const std::errc error : test::diskErrors) {
        bool failed = true;
        for (std::size_t step = 0; failed; ++step) {
            startAgain("{");
            test::ScriptedFileSystem failing(files_);
            failing.failAtStep(step, error);
            PreferencesFile file(failing, settings_, lock_);
            static_cast<void>(file.change("b", true));
            failed = step < failing.steps().size();
            EXPECT_TRUE(stored() == "{" || test::readFile(damagedCopy_ + "1") == "{") << step;
        }
    }
}

}  // namespace
}  // namespace brimwatch
