#include "platform/linux/state_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/settings_folders.h"

namespace brimwatch {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class StateFilesTest : public test::SettingsFolders {
  protected:
    std::string memory_ = state_ + "/memory.json";
    std::string keptMemory_ = memory_ + ".brimwatch-damaged-1";

    StateFiles opened() { return opened(files_); }
    StateFiles opened(FileSystem& files) { return StateFiles(files, state_, {"memory", "id"}); }
};

TEST_F(StateFilesTest, OnlyTheirKeysAreTheirs) {
    const StateFiles state = opened();
    EXPECT_TRUE(state.has("memory"));
    EXPECT_FALSE(state.has("other"));
    EXPECT_EQ(state.value("other"), std::nullopt);
}

TEST_F(StateFilesTest, TheLatestValueIsInTheFileAfterFlush) {
    StateFiles state = opened();
    for (int number = 0; number < 1000; ++number)
        EXPECT_TRUE(state.change("memory", JsonNumber::fromInteger(number)));
    EXPECT_EQ(state.value("memory"), JsonValue(JsonNumber{"999"}));
    EXPECT_TRUE(state.flush());
    EXPECT_EQ(test::readFile(memory_), "999");
    EXPECT_THAT(names(state_), ElementsAre("memory.json"));
}

TEST_F(StateFilesTest, TheLatestValueIsInTheFileAtTheEnd) {
    { EXPECT_TRUE(opened().change("memory", "x")); }
    EXPECT_EQ(opened().value("memory"), JsonValue("x"));
}

TEST_F(StateFilesTest, AnEqualValueWritesNothing) {
    test::writeFile(memory_, R"( {"a" : 1.50} )");
    test::ScriptedFileSystem recording(files_);
    {
        StateFiles state = opened(recording);
        EXPECT_TRUE(state.change("memory", parseJson(R"({"a":1.50})")));
        EXPECT_TRUE(state.change("id", std::nullopt));
        EXPECT_TRUE(state.flush());
    }
    EXPECT_EQ(recording.steps().size(), 2U);
    EXPECT_EQ(test::readFile(memory_), R"( {"a" : 1.50} )");
}

TEST_F(StateFilesTest, NobodyWaitsForTheDisk) {
    test::ScriptedFileSystem recording(files_);
    StateFiles state = opened(recording);
    EXPECT_TRUE(state.change("memory", true));
    EXPECT_TRUE(state.flush());
    EXPECT_THAT(recording.steps(), Not(Contains(HasSubstr("synchronize"))));
}

TEST_F(StateFilesTest, RemovingWhatIsNotThereIsNoFailure) {
    test::writeFile(memory_, "1");
    StateFiles state = opened();
    std::filesystem::remove(memory_);
    EXPECT_TRUE(state.change("memory", std::nullopt));
    EXPECT_TRUE(state.flush());
}

TEST_F(StateFilesTest, ADamagedFileIsAbsentAndKeptOnceWhileTheOthersStand) {
    const std::string whole = R"({"files":{"a":[1,2]}})";
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::string damaged = whole.substr(0, length);
        startAgain("{}");
        test::writeFile(memory_, damaged);
        test::writeFile(state_ + "/id.json", "\"id\"");
        StateFiles state = opened();
        EXPECT_EQ(state.value("memory"), std::nullopt);
        EXPECT_EQ(state.value("id"), JsonValue("id"));
        EXPECT_EQ(test::readFile(memory_), damaged);
        for (const int number : {1, 2}) {
            EXPECT_TRUE(state.change("memory", JsonNumber::fromInteger(number)));
            EXPECT_TRUE(state.flush());
        }
        EXPECT_EQ(test::readFile(memory_), "2");
        EXPECT_THAT(names(state_),
                    ElementsAre("id.json", "memory.json", "memory.json.brimwatch-damaged-1"));
        EXPECT_EQ(test::readFile(keptMemory_), damaged);
    }
}

TEST_F(StateFilesTest, AFileThatCantBeReadIsKept) {
    test::writeFile(memory_, "1");
    test::ScriptedFileSystem failing(files_);
    failing.failEveryRead(memory_, std::errc::io_error);
    StateFiles state = opened(failing);
    EXPECT_TRUE(state.change("memory", true));
    EXPECT_TRUE(state.flush());
    EXPECT_EQ(test::readFile(keptMemory_), "1");
    EXPECT_EQ(test::readFile(memory_), "true");
}

TEST_F(StateFilesTest, AFileThatCouldNotBeReadAtTheStartIsKeptAsItWasThen) {
    test::writeFile(memory_, "1");
    test::ScriptedFileSystem failing(files_);
    failing.failAtStep(0, std::errc::io_error);
    StateFiles state = opened(failing);
    for (const bool value : {false, true}) {
        EXPECT_TRUE(state.change("memory", value));
        EXPECT_TRUE(state.flush());
    }
    EXPECT_EQ(test::readFile(keptMemory_), "1");
    EXPECT_EQ(test::readFile(memory_), "true");
    EXPECT_THAT(names(state_), ElementsAre("memory.json", "memory.json.brimwatch-damaged-1"));
}

TEST_F(StateFilesTest, ADamagedFileThatIsToGoIsKeptToo) {
    test::writeFile(memory_, "{");
    StateFiles state = opened();
    EXPECT_TRUE(state.change("memory", true));
    EXPECT_TRUE(state.change("memory", std::nullopt));
    EXPECT_TRUE(state.flush());
    EXPECT_THAT(names(state_), ElementsAre("memory.json.brimwatch-damaged-1"));
}

TEST_F(StateFilesTest, WhatCantBeKeptIsNotReplaced) {
    test::writeFile(memory_, "{");
    test::ScriptedFileSystem failing(files_);
    StateFiles state = opened(failing);
    failing.interruptBeforeEachStep([&](std::size_t step, const std::string& name) {
        if (name == "claim") failing.failAtStep(step, std::errc::no_space_on_device);
    });
    EXPECT_TRUE(state.change("memory", true));
    EXPECT_EQ(state.flush().error(), std::errc::no_space_on_device);
    EXPECT_EQ(test::readFile(memory_), "{");
    EXPECT_EQ(state.value("memory"), JsonValue(true));
}

TEST_F(StateFilesTest, ATooLargeFileIsAbsentAndKeptAndNoneIsWritten) {
    const std::string large = '"' + std::string(stateFileSizeLimit, 'x') + '"';
    test::writeFile(memory_, large);
    StateFiles state = opened();
    EXPECT_EQ(state.value("memory"), std::nullopt);
    EXPECT_EQ(state.change("memory", std::string(stateFileSizeLimit, 'x')).error(),
              std::errc::file_too_large);
    EXPECT_TRUE(state.flush());
    EXPECT_EQ(test::readFile(memory_), large);
    EXPECT_TRUE(state.change("memory", "small"));
    EXPECT_TRUE(state.flush());
    EXPECT_EQ(test::readFile(memory_), "\"small\"");
    EXPECT_EQ(test::readFile(keptMemory_), large);
}

TEST_F(StateFilesTest, AValueThatIsTooLargeFailsEachTimeAndHoldsForThisObject) {
    test::writeFile(memory_, "1");
    const JsonValue large(std::string(stateFileSizeLimit, 'x'));
    StateFiles state = opened();
    EXPECT_EQ(state.change("memory", large).error(), std::errc::file_too_large);
    EXPECT_EQ(state.change("memory", large).error(), std::errc::file_too_large);
    EXPECT_TRUE(state.change("id", "id"));
    EXPECT_TRUE(state.flush());
    EXPECT_TRUE(state.value("memory") == large);
    EXPECT_EQ(test::readFile(memory_), "1");
    EXPECT_EQ(test::readFile(state_ + "/id.json"), "\"id\"");
    EXPECT_TRUE(state.change("memory", JsonNumber{"1"}));
    EXPECT_TRUE(state.change("memory", JsonNumber{"1"}));
}

TEST_F(StateFilesTest, AFailureAtAnyStepLeavesTheOldFileOrTheNewOneAndIsMadeUpFor) {
    for (const std::errc error : test::diskErrors) {
        bool failed = true;
        for (std::size_t step = 2; failed; ++step) {
            startAgain("{}");
            test::writeFile(memory_, "1");
            test::ScriptedFileSystem failing(files_);
            failing.failAtStep(step, error);
            StateFiles state = opened(failing);
            EXPECT_TRUE(state.change("memory", JsonNumber{"2"}));
            const FileResult<void> result = state.flush();
            failed = step < failing.steps().size();
            const std::string present = test::readFile(memory_);
            EXPECT_TRUE(present == "2" || (!result && present == "1")) << step;
            EXPECT_EQ(state.value("memory"), JsonValue(JsonNumber{"2"}));
            if (!failed) break;
            EXPECT_TRUE(state.change("id", "id"));
            EXPECT_TRUE(state.flush());
            EXPECT_EQ(test::readFile(memory_), "2") << step;
            EXPECT_THAT(names(state_), ElementsAre("id.json", "memory.json"));
        }
    }
}

TEST_F(StateFilesTest, AProcessThatDiesAtAnyStepLeavesTheOldFileOrTheNewOne) {
    bool died = true;
    for (std::size_t step = 0; died; ++step) {
        startAgain("{}");
        test::writeFile(memory_, "1");
        died = test::isStopped([&] {
            test::ScriptedFileSystem stopping(files_);
            stopping.stopAtStep(step);
            StateFiles state = opened(stopping);
            static_cast<void>(state.change("memory", JsonNumber{"2"}));
            static_cast<void>(state.flush());
        });
        const std::string present = test::readFile(memory_);
        EXPECT_TRUE(present == "2" || (died && present == "1")) << step;
        { EXPECT_TRUE(opened().change("memory", JsonNumber{"3"})); }
        EXPECT_THAT(names(state_), ElementsAre("memory.json")) << step;
    }
}

}  // namespace
}  // namespace brimwatch
