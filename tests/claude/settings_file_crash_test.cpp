// Whatever fails, and wherever the process dies: the user loses nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "claude/settings_folder.h"
#include "claude/status_line_command.h"
#include "harness/memory_file_system.h"

namespace brimwatch {
namespace {

using std::chrono::milliseconds;
using test::userCommand;
using test::userSettings;
using ::testing::ElementsAre;

const std::vector<std::errc> errors = {
    std::errc::no_space_on_device, std::errc::permission_denied,   std::errc::read_only_file_system,
    std::errc::io_error,           std::errc::too_many_files_open, std::errc::file_too_large};

class SettingsFileCrash : public test::SettingsFolder {};

TEST_F(SettingsFileCrash, TheDiskHasTheNewFileBeforeTheCallReturns) {
    test::ScriptedFileSystem recording(files_);
    ASSERT_TRUE(connect(recording));
    std::vector<std::string> order;
    for (const std::string& step : recording.steps()) {
        if (step == "synchronize" || step.starts_with("claim") || step.starts_with("replace") ||
            step.starts_with("synchronizeFolder"))
            order.push_back(step);
    }
    EXPECT_THAT(order,
                ElementsAre("synchronize", "claim " + backup_, "synchronizeFolder " + work_,
                            "synchronize", "replace " + path_, "synchronizeFolder " + work_));
}

TEST_F(SettingsFileCrash, AFailureAtAnyStepLeavesTheOldFileOrTheNewOne) {
    const std::string whole = connectedText();
    const std::size_t steps = stepsToConnect();
    ASSERT_GE(steps, 15U);
    for (const std::errc error : errors) {
        for (std::size_t step = 0; step < steps; ++step) {
            startAgain();
            test::ScriptedFileSystem failing(files_);
            failing.failAtStep(step, error);
            const FileResult<void> result = connect(failing);
            EXPECT_TRUE(stored() == whole || (!result && stored() == userSettings)) << step;
            if (test::exists(backup_)) {
                EXPECT_EQ(test::readFile(backup_), userSettings) << step;
            }
            EXPECT_FALSE(hasLitter(work_)) << step;
        }
    }
}

TEST_F(SettingsFileCrash, AFailureAtAnyStepOfDisconnectingLeavesTheOldFileOrTheNewOne) {
    const std::string whole = connectedText();
    store(whole);
    test::ScriptedFileSystem counting(files_);
    ASSERT_TRUE(disconnect(counting));
    const std::string restored = stored();
    EXPECT_EQ(presentStatusLineCommand(parsed(restored)), userCommand);
    for (const std::errc error : errors) {
        for (std::size_t step = 0; step < counting.steps().size(); ++step) {
            store(whole);
            test::ScriptedFileSystem failing(files_);
            failing.failAtStep(step, error);
            const FileResult<void> result = disconnect(failing);
            EXPECT_TRUE(stored() == restored || (!result && stored() == whole)) << step;
        }
    }
}

TEST_F(SettingsFileCrash, AProcessThatDiesAtAnyStepLeavesTheOldFileOrTheNewOne) {
    const std::string whole = connectedText();
    bool died = true;
    for (std::size_t step = 0; died; ++step) {
        startAgain();
        died = test::isStopped([&] {
            test::ScriptedFileSystem stopping(files_);
            stopping.stopAtStep(step);
            static_cast<void>(connect(stopping));
        });
        EXPECT_TRUE(stored() == whole || (died && stored() == userSettings)) << step;
        if (test::exists(backup_)) {
            EXPECT_EQ(test::readFile(backup_), userSettings) << step;
        }
        ASSERT_TRUE(
            ClaudeCodeSetup::connect(files_, work_, "next", environment(), [](milliseconds) {}));
        EXPECT_FALSE(hasLitter(work_)) << step;
        EXPECT_EQ(*parsed(stored()).find("env")->member("BRIMWATCH_NEXT_STATUSLINE"),
                  JsonValue(userCommand));
    }
}

TEST_F(SettingsFileCrash, AProcessThatDiesReplacingADamagedFileHasKeptItsBytes) {
    const std::string damaged = userSettings.substr(0, userSettings.size() - 1);
    bool died = true;
    for (std::size_t step = 0; died; ++step) {
        startAgain(damaged);
        test::writeFile(backup_, "{}");
        died = test::isStopped([&] {
            test::ScriptedFileSystem stopping(files_);
            stopping.stopAtStep(step);
            static_cast<void>(connect(stopping));
        });
        EXPECT_TRUE(stored() == damaged || test::readFile(damagedCopy_ + "1") == damaged) << step;
        EXPECT_EQ(test::readFile(backup_), "{}");
    }
    EXPECT_EQ(presentStatusLineCommand(parsed(stored())), test::programCommand);
}

// In memory, for its number: every length, every step, every error.
class TruncatedSettings : public test::SettingsFolder {
  protected:
    static constexpr const char* memoryPath = "/c/settings.json";

    void expectNothingLost(const std::string& bytes, const test::MemoryFileSystem& files) {
        const std::string& present = files.files().at(memoryPath).bytes;
        if (present == bytes) return;
        EXPECT_EQ(presentStatusLineCommand(parsed(present)), test::programCommand);
        const bool isKept =
            std::any_of(files.files().begin(), files.files().end(), [&bytes](const auto& file) {
                return file.first != memoryPath && file.second.bytes == bytes;
            });
        const JsonValue* variables = parsed(present).find("env");
        EXPECT_TRUE(isKept || (variables != nullptr && parseJsonObject(bytes))) << bytes;
    }

    FileResult<void> connectInMemory(FileSystem& files) {
        return ClaudeCodeSetup::connect(files, "/c", "work", environment(), [](milliseconds) {});
    }
};

TEST_F(TruncatedSettings, AreKeptWhateverFailsWhileTheyAreReplaced) {
    for (std::size_t length = 0; length <= userSettings.size(); ++length) {
        const std::string bytes = userSettings.substr(0, length);
        for (const bool hasBackup : {false, true}) {
            bool failed = true;
            for (std::size_t step = 0; failed; ++step) {
                for (const std::errc error : errors) {
                    test::MemoryFileSystem files;
                    files.put(memoryPath, bytes);
                    if (hasBackup) files.put("/c/settings.json.brimwatch-backup", "{}");
                    test::ScriptedFileSystem failing(files);
                    failing.failAtStep(step, error);
                    static_cast<void>(connectInMemory(failing));
                    failed = failing.steps().size() > step;
                    expectNothingLost(bytes, files);
                }
            }
        }
    }
}

TEST_F(TruncatedSettings, AreKeptWhereverTheProcessDiesWhileTheyAreReplaced) {
    for (std::size_t length = 0; length <= userSettings.size(); ++length) {
        const std::string bytes = userSettings.substr(0, length);
        for (const bool hasBackup : {false, true}) {
            bool crashed = true;
            for (std::size_t step = 0; crashed; ++step) {
                test::MemoryFileSystem files;
                files.put(memoryPath, bytes);
                if (hasBackup) files.put("/c/settings.json.brimwatch-backup", "{}");
                test::ScriptedFileSystem crashing(files);
                crashing.crashAtStep(step);
                try {
                    static_cast<void>(connectInMemory(crashing));
                    crashed = false;
                } catch (const test::ScriptedFileSystem::Crash&) {
                }
                expectNothingLost(bytes, files);
            }
        }
    }
}

TEST_F(TruncatedSettings, OfOursAreNeverChangedByDisconnecting) {
    const std::string whole = connectedText();
    for (std::size_t length = 0; length < whole.size() - 1; ++length) {
        test::MemoryFileSystem files;
        files.put(memoryPath, whole.substr(0, length));
        EXPECT_TRUE(ClaudeCodeSetup::disconnect(files, "/c", environment(), [](milliseconds) {}));
        EXPECT_EQ(files.files().at(memoryPath).bytes, whole.substr(0, length)) << length;
    }
}

TEST_F(SettingsFileCrash, AProcessThatDiesAtAnyStepOfDisconnectingLeavesTheOldFileOrTheNewOne) {
    const std::string whole = connectedText();
    store(whole);
    ASSERT_TRUE(disconnect(files_));
    const std::string restored = stored();
    bool died = true;
    for (std::size_t step = 0; died; ++step) {
        startAgain(whole);
        died = test::isStopped([&] {
            test::ScriptedFileSystem stopping(files_);
            stopping.stopAtStep(step);
            static_cast<void>(disconnect(stopping));
        });
        EXPECT_TRUE(stored() == restored || (died && stored() == whole)) << step;
        ASSERT_TRUE(disconnect(files_));
        EXPECT_EQ(stored(), restored);
        EXPECT_FALSE(hasLitter(work_) && !died) << step;
    }
}

}  // namespace
}  // namespace brimwatch
