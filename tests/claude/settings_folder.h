// A Claude Code folder whose `settings.json` has a status line of the user.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "claude/claude_folders.h"
#include "harness/scripted_file_system.h"

namespace brimwatch::test {

using std::chrono::milliseconds;

using ::testing::ElementsAre;

inline const std::string userCommand = "npx -y their-status-line --wide";
inline const std::string userSettings =
    R"({"env":{"A":"1"},"statusLine":{"type":"command","command":")" + userCommand +
    R"(","padding":1},"theme":"dark"})";

class SettingsFolder : public ClaudeFolders {
  protected:
    void SetUp() override { store(userSettings); }

    FileResult<void> connect(FileSystem& files) {
        return ClaudeCodeSetup::connect(files, work_, "work", environment(),
                                        [this](milliseconds pause) { pauses_.push_back(pause); });
    }
    FileResult<void> disconnect(FileSystem& files) {
        return ClaudeCodeSetup::disconnect(files, work_, environment(), [](milliseconds) {});
    }

    void store(std::string_view bytes) { writeFile(path_, bytes); }
    std::string stored() const { return readFile(path_); }

    // The folder with the one file.
    void startAgain(std::string_view bytes = userSettings) {
        std::filesystem::remove_all(work_);
        store(bytes);
    }

    std::string connectedText() {
        startAgain();
        EXPECT_TRUE(connect(files_));
        const std::string text = stored();
        startAgain();
        return text;
    }

    std::size_t stepsToConnect() {
        ScriptedFileSystem counting(files_);
        EXPECT_TRUE(connect(counting));
        startAgain();
        return counting.steps().size();
    }

    bool hasLitter(const std::string& folder) {
        const std::vector<std::string> all = names(folder);
        return std::any_of(all.begin(), all.end(),
                           [](const std::string& name) { return name.ends_with(".tmp"); });
    }

    std::string path_ = settingsIn(work_);
    std::string backup_ = path_ + ".brimwatch-backup";
    std::string damagedCopy_ = path_ + ".brimwatch-damaged-";
    std::vector<milliseconds> pauses_;
};

}  // namespace brimwatch::test
