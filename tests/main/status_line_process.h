// What the tests of the status line as a process share.
#pragma once

#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "harness/process.h"
#include "harness/temporary_folder.h"
#include "limits/limits_file.h"

namespace brimwatch {

// A document of Claude Code with the given figure in its five-hour window, reset in an hour.
inline std::string statusLineDocument(double used, const std::string& more = "") {
    return R"({"session_id":"x",)" + more + R"("rate_limits":{"five_hour":{"used_percentage":)" +
           std::to_string(used) + R"(,"resets_at":)" +
           std::to_string(std::time(nullptr) / 600 * 600 + 3600) + "}}}\n";
}

class StatusLineProcess : public ::testing::Test {
  protected:
    test::ProcessRequest request(const std::string& input, const std::string& account = "work") {
        return {.program = BRIMWATCH_COMMAND,
                .arguments = {"--statusline", "--account", account},
                .environment = environment_,
                .input = input,
                .prepare = nullptr};
    }

    // A run that has to end as every run does: status 0 and nothing on standard error.
    std::string run(const test::ProcessRequest& request) {
        const test::ProcessResult result = test::runProcess(request);
        EXPECT_TRUE(result.exitedWith(0)) << "status " << result.status;
        EXPECT_EQ(result.errorOutput, "");
        return result.output;
    }

    std::string limitsPath(const std::string& account = "work") const {
        return limits_ + "/claude-" + account + ".json";
    }

    // Everything in the limits folder but the lock and the files of accounts.
    std::vector<std::string> leftovers() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(limits_)) {
            const std::string name = entry.path().filename();
            if (name != ".lock" && !name.ends_with(".json")) names.push_back(name);
        }
        return names;
    }

    test::TemporaryFolder folder_;
    std::string limits_ = folder_.file(".brimwatch/limits");
    test::EnvironmentList environment_ = {{"HOME", folder_.path()}, {"PATH", "/usr/bin:/bin"}};
};

}  // namespace brimwatch
