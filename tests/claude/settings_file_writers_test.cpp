// Other programs that write the file at the same time.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "claude/settings_file.h"
#include "claude/settings_folder.h"
#include "claude/status_line_command.h"
#include "harness/memory_file_system.h"
#include "support/atomic_file.h"
#include "support/json_writer.h"

namespace brimwatch {
namespace {

using std::chrono::milliseconds;
using test::userCommand;
using test::userSettings;
using ::testing::ElementsAre;

class SettingsFileWriters : public test::SettingsFolder {
  protected:
    static void interruptAt(test::ScriptedFileSystem& files, std::size_t step,
                            const std::function<void()>& action) {
        files.interruptBeforeEachStep([step, action](std::size_t next, const std::string&) {
            if (next == step) action();
        });
    }
};

// Adds a member to what is there, as Claude Code does when the user chooses a model.
void chooseModel(FileSystem& files, const std::string& path) {
    JsonObject settings = parseJsonObject(*files.read(path, settingsSizeLimit)).value();
    settings.set("model", "sonnet");
    ASSERT_TRUE(replaceFile(files, path, writeJson(settings, JsonLayout::compact), {}));
}

TEST_F(SettingsFileWriters, AnotherProgramsChangeBeforeTheRenamingIsNotLost) {
    const std::size_t steps = stepsToConnect();
    for (std::size_t step = 0; step < steps; ++step) {
        startAgain();
        test::ScriptedFileSystem interrupted(files_);
        interruptAt(interrupted, step, [&] { chooseModel(files_, path_); });
        ASSERT_TRUE(connect(interrupted));
        const JsonObject settings = parsed(stored());
        EXPECT_EQ(presentStatusLineCommand(settings), test::programCommand);
        // The renaming itself is the one step that nothing can look into.
        const bool isRenaming = interrupted.steps()[step] == "replace " + path_;
        EXPECT_EQ(settings.find("model") == nullptr, isRenaming) << interrupted.steps()[step];
    }
}

TEST_F(SettingsFileWriters, AnotherProgramsChangeInPlaceIsNotLostEither) {
    const std::string changed =
        R"({"statusLine":{"type":"command","command":"new"},"theme":"light"})";
    const std::size_t steps = stepsToConnect();
    for (std::size_t step = 0; step < steps; ++step) {
        startAgain();
        test::ScriptedFileSystem interrupted(files_);
        interruptAt(interrupted, step, [&] { store(changed); });
        ASSERT_TRUE(connect(interrupted));
        const std::string& name = interrupted.steps()[step];
        if (name == "replace " + path_) continue;
        EXPECT_EQ(*parsed(stored()).find("theme"), JsonValue("light")) << name;
    }
}

TEST_F(SettingsFileWriters, AFileThatAppearsMeanwhileIsNotOverwritten) {
    std::filesystem::remove(path_);
    test::ScriptedFileSystem recording(files_);
    ASSERT_TRUE(connect(recording));
    const std::size_t renaming = static_cast<std::size_t>(
        std::find(recording.steps().begin(), recording.steps().end(), "replace " + path_) -
        recording.steps().begin());
    for (std::size_t step = 0; step < renaming; ++step) {
        std::filesystem::remove_all(work_);
        std::filesystem::create_directories(work_);
        test::ScriptedFileSystem interrupted(files_);
        interruptAt(interrupted, step, [&] { store(userSettings); });
        ASSERT_TRUE(connect(interrupted));
        EXPECT_EQ(*parsed(stored()).find("theme"), JsonValue("dark")) << step;
    }
}

TEST_F(SettingsFileWriters, AChangeOfTheModeMeanwhileIsKept) {
    const std::size_t steps = stepsToConnect();
    for (std::size_t step = 0; step < steps; ++step) {
        startAgain();
        test::ScriptedFileSystem interrupted(files_);
        interruptAt(interrupted, step, [&] { ::chmod(path_.c_str(), 0600); });
        ASSERT_TRUE(connect(interrupted));
        if (interrupted.steps()[step] == "replace " + path_) continue;
        EXPECT_EQ(files_.status(path_)->permissions, 0600U) << interrupted.steps()[step];
    }
}

TEST_F(SettingsFileWriters, AFileThatChangesAgainAndAgainIsWrittenOnceItRests) {
    int changes = 0;
    test::ScriptedFileSystem interrupted(files_);
    interrupted.interruptBeforeEachStep([&](std::size_t, const std::string& name) {
        if (name == "synchronize" && changes < 8) store(userSettings + std::string(++changes, ' '));
    });
    ASSERT_TRUE(connect(interrupted));
    EXPECT_EQ(changes, 8);
    EXPECT_EQ(*parsed(stored()).find("env")->member("BRIMWATCH_NEXT_STATUSLINE"),
              JsonValue(test::userCommand));
}

TEST_F(SettingsFileWriters, AProgramThatNeverStopsWritingIsNotFoughtForEver) {
    test::MemoryFileSystem memory;
    memory.put("/c/settings.json", "{}");
    int changes = 0;
    test::ScriptedFileSystem restless(memory);
    restless.interruptBeforeEachStep([&](std::size_t, const std::string& name) {
        if (name != "makeTemporary") return;
        memory.put("/c/settings.json", R"({"count":)" + std::to_string(++changes) + '}');
    });
    const auto result =
        ClaudeCodeSetup::connect(restless, "/c", "work", environment(), [](milliseconds) {});
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), std::errc::resource_unavailable_try_again);
    EXPECT_LT(changes, 20);
    EXPECT_EQ(memory.files().at("/c/settings.json").bytes,
              R"({"count":)" + std::to_string(changes) + '}');
}

pid_t inAnotherProcess(const std::function<bool()>& action) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(action() ? 0 : 1);
    return child;
}

bool succeeded(pid_t process) {
    int status = 0;
    return ::waitpid(process, &status, 0) == process && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

TEST_F(SettingsFileWriters, ProcessesThatConnectAtOnceAgree) {
    const std::string whole = connectedText();
    for (int round = 0; round < 30; ++round) {
        startAgain();
        std::vector<pid_t> processes;
        for (int process = 0; process < 4; ++process) {
            processes.push_back(inAnotherProcess([&] { return connect(files_).has_value(); }));
        }
        for (const pid_t process : processes)
            EXPECT_TRUE(succeeded(process));
        EXPECT_EQ(stored(), whole);
        EXPECT_EQ(test::readFile(backup_), userSettings);
        EXPECT_THAT(names(work_), ElementsAre("settings.json", "settings.json.brimwatch-backup"));
    }
}

TEST_F(SettingsFileWriters, NoMixtureOfWritersLosesTheUsersCommand) {
    const pid_t other = inAnotherProcess([&] {
        for (int round = 0; round < 200; ++round) {
            JsonObject settings = parseJsonObject(test::readFile(path_)).value();
            settings.set("round", JsonNumber::fromInteger(round));
            if (!replaceFile(files_, path_, writeJson(settings, JsonLayout::pretty), {}))
                return false;
        }
        return true;
    });
    for (int round = 0; round < 50; ++round) {
        static_cast<void>(round % 2 == 0 ? connect(files_) : disconnect(files_));
        const JsonObject settings = parsed(stored());
        EXPECT_EQ(*settings.find("theme"), JsonValue("dark"));
        EXPECT_THAT(writeJson(settings, JsonLayout::compact), ::testing::HasSubstr(userCommand));
    }
    EXPECT_TRUE(succeeded(other));
    ASSERT_TRUE(connect(files_));
    ASSERT_TRUE(disconnect(files_));
    EXPECT_EQ(presentStatusLineCommand(parsed(stored())), userCommand);
}

}  // namespace
}  // namespace brimwatch
