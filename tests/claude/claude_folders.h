// What the tests of Claude Code folders share: a home of their own, and a program whose copies are
// usable where a test says so.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "claude/claude_code_setup.h"
#include "harness/temporary_folder.h"
#include "platform/posix/posix_file_system.h"
#include "support/json_reader.h"

namespace brimwatch::test {

inline const std::string program = "/opt/tools/bin/brimwatch";
inline const std::string programCommand = "'/opt/tools/bin/brimwatch' --statusline --account work";

class ClaudeFolders : public ::testing::Test {
  protected:
    CommandEnvironment environment() const {
        return {.executable = program,
                .installedCandidates = {},
                .rejectDevelopmentLocations = true,
                .isExecutable = [this](const std::string& path) {
                    return executables_.contains(path);
                }};
    }

    static std::string settingsIn(const std::string& folder) { return folder + "/settings.json"; }

    static JsonObject parsed(std::string_view text) {
        const std::optional<JsonObject> object = parseJsonObject(text);
        EXPECT_TRUE(object) << text;
        return object.value_or(JsonObject());
    }

    // What stands in a folder, sorted.
    std::vector<std::string> names(const std::string& folder) {
        std::vector<std::string> names =
            files_.entries(folder).value_or(std::vector<std::string>{"(no folder)"});
        std::sort(names.begin(), names.end());
        return names;
    }

    void link(const std::string& target, const std::string& path) {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::filesystem::create_symlink(target, path);
    }

    std::set<std::string> executables_ = {program};
    TemporaryFolder folder_;
    std::string home_ = folder_.file("home");
    std::string work_ = home_ + "/.claude-work";
    PosixFileSystem files_;
};

}  // namespace brimwatch::test
