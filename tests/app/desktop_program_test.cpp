// The desktop program as a process, started by the command as a user starts it.

#include <gmock/gmock.h>

#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "harness/process.h"
#include "harness/temporary_folder.h"
#include "support/json_reader.h"

namespace brimwatch {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class DesktopProgram : public ::testing::Test {
  protected:
    void SetUp() override {
        test::writeFile(folder_.file(".claude.json"), "{}");
        std::filesystem::create_directories(folder_.file(".claude"));
        std::filesystem::create_directories(folder_.file("runtime"));
    }

    test::ProcessRequest request(const std::vector<std::string>& arguments) {
        return {.program = BRIMWATCH_COMMAND,
                .arguments = arguments,
                .environment = environment_,
                .input = "",
                .prepare = nullptr};
    }

    std::string settingsPath() const { return folder_.file(".claude/settings.json"); }
    std::string memoryPath() const {
        return folder_.file(".local/state/brimwatch/limitsMemory.json");
    }

    // There from the start of the services on.
    std::string socketPath() const {
        return folder_.file("runtime/net.quillmoor.brimwatch.limitsChanged");
    }

    // Runs what stands in the settings of Claude Code, as it would.
    std::string runRegisteredStatusLine(int used) {
        const auto settings = parseJsonObject(test::readFile(settingsPath()));
        const std::string command = *settings->find("statusLine")->member("command")->string();
        const std::string reset = std::to_string(std::time(nullptr) + 7200);
        test::ProcessRequest run = request({"-c", command});
        run.program = "/bin/sh";
        run.input = R"({"rate_limits":{"seven_day":{"used_percentage":)" + std::to_string(used) +
                    R"(,"resets_at":)" + reset + "}}}";
        const test::ProcessResult result = test::runProcess(run);
        EXPECT_TRUE(result.exitedWith(0));
        EXPECT_EQ(result.errorOutput, "");
        return result.output;
    }

    // Whether the program has taken the figure in and kept it.
    bool remembers(int used) const {
        return test::exists(memoryPath()) &&
               test::readFile(memoryPath()).find("\"used_percentage\":" + std::to_string(used)) !=
                   std::string::npos;
    }

    test::TemporaryFolder folder_;
    test::EnvironmentList environment_ = {{"HOME", folder_.path()},
                                          {"PATH", "/usr/bin:/bin"},
                                          {"LANG", "C.UTF-8"},
                                          {"XDG_RUNTIME_DIR", folder_.file("runtime")}};
};

TEST_F(DesktopProgram, ConnectsAndShowsTheFiguresOfTheRegisteredStatusLine) {
    test::Process program(request({"--figures", "--connect"}));
    ASSERT_TRUE(test::eventually([&] { return test::exists(settingsPath()); }));
    EXPECT_THAT(runRegisteredStatusLine(37), HasSubstr("63%"));
    ASSERT_TRUE(test::eventually([&] { return remembers(37); }));
    runRegisteredStatusLine(40);
    ASSERT_TRUE(test::eventually([&] { return remembers(40); }));
    program.signal(SIGTERM);
    const test::ProcessResult result = program.wait();
    EXPECT_TRUE(result.exitedWith(0));
    EXPECT_THAT(result.output, StartsWith("no figures yet  gauge empty, weekly 1.00\n"));
    EXPECT_THAT(result.output,
                ContainsRegex("\n63%  gauge 0\\.63, weekly 0\\.63\n  Claude · default  week 63% "
                              "left until [^\n]*\n60%  gauge 0\\.60"));
}

TEST_F(DesktopProgram, ShowsAfterANewStartWhatItKnew) {
    {
        test::Process program(request({"--figures", "--connect"}));
        ASSERT_TRUE(test::eventually([&] { return test::exists(settingsPath()); }));
        runRegisteredStatusLine(37);
        ASSERT_TRUE(test::eventually([&] { return remembers(37); }));
        program.signal(SIGKILL);
        EXPECT_TRUE(program.wait().endedBySignal(SIGKILL));
    }
    std::filesystem::remove(socketPath());
    // An older report that was written without the program.
    test::writeFile(folder_.file(".brimwatch/limits/claude-default.json"),
                    R"({"account":"default","provider":"claude","updated_at":1,"version":1,)"
                    R"("windows":{"seven_day":{"used_percentage":5,"resets_at":)" +
                        std::to_string(std::time(nullptr) + 7200) + "}}}");
    test::Process program(request({"--figures"}));
    ASSERT_TRUE(test::eventually([&] { return test::exists(socketPath()); }));
    program.signal(SIGINT);
    const test::ProcessResult result = program.wait();
    EXPECT_TRUE(result.exitedWith(0));
    EXPECT_THAT(result.output, StartsWith("63%  gauge 0.63"));
}

TEST_F(DesktopProgram, ConnectsNothingByItself) {
    test::Process program(request({"--figures"}));
    ASSERT_TRUE(test::eventually([&] { return test::exists(socketPath()); }));
    program.signal(SIGTERM);
    EXPECT_TRUE(program.wait().exitedWith(0));
    EXPECT_FALSE(test::exists(settingsPath()));
}

TEST_F(DesktopProgram, ASecondOneInTheSameStateIsRefused) {
    test::Process first(request({"--figures"}));
    ASSERT_TRUE(test::eventually([&] { return test::exists(socketPath()); }));
    const test::ProcessResult second = test::runProcess(request({}));
    EXPECT_TRUE(second.exitedWith(1));
    EXPECT_EQ(second.errorOutput, "brimwatch: it is running already\n");
    EXPECT_EQ(second.output, "");
    first.signal(SIGTERM);
    EXPECT_TRUE(first.wait().exitedWith(0));
}

TEST_F(DesktopProgram, AStateFolderThatCantBeMadeIsOneLineAndStatusOne) {
    test::writeFile(folder_.file(".local"), "a file in the way");
    const test::ProcessResult result = test::runProcess(request({"--figures"}));
    EXPECT_TRUE(result.exitedWith(1));
    EXPECT_THAT(result.errorOutput, ContainsRegex("^brimwatch: [^\n]+\n$"));
}

TEST_F(DesktopProgram, StartsWithSettingsThatAreDamagedAndKeepsThem) {
    const std::string path = folder_.file(".config/brimwatch/settings.json");
    test::writeFile(path, "{\"usageDisplay\": \"used\",");
    test::Process program(request({"--figures", "--connect"}));
    ASSERT_TRUE(test::eventually([&] { return test::exists(settingsPath()); }));
    ASSERT_TRUE(test::eventually(
        [&] { return test::readFile(path).find("setupDone") != std::string::npos; }));
    EXPECT_EQ(test::readFile(path + ".brimwatch-damaged-1"), "{\"usageDisplay\": \"used\",");
    program.signal(SIGTERM);
    EXPECT_TRUE(program.wait().exitedWith(0));
}

TEST_F(DesktopProgram, WithoutADisplayItSaysSoInOneLine) {
    const test::ProcessResult result = test::runProcess(request({}));
    EXPECT_TRUE(result.exitedWith(1));
    EXPECT_EQ(result.errorOutput, "brimwatch: there is no display to show anything on\n");
    EXPECT_EQ(result.output, "");
}

TEST_F(DesktopProgram, ADisplayThatDoesNotAnswerCountsAsNone) {
    environment_.set("DISPLAY", ":4711");
    const test::ProcessResult result = test::runProcess(request({}));
    EXPECT_TRUE(result.exitedWith(1));
    EXPECT_EQ(result.errorOutput, "brimwatch: there is no display to show anything on\n");
}

TEST_F(DesktopProgram, CollectsWithoutAPanelAndWithoutABus) {
    environment_.set("QT_QPA_PLATFORM", "offscreen");
    test::Process program(request({"--connect"}));
    ASSERT_TRUE(test::eventually([&] { return test::exists(settingsPath()); }));
    runRegisteredStatusLine(37);
    EXPECT_TRUE(test::eventually([&] { return remembers(37); }));
    program.signal(SIGTERM);
    const test::ProcessResult result = program.wait();
    EXPECT_TRUE(result.exitedWith(0));
    EXPECT_EQ(result.output, "");
}

TEST_F(DesktopProgram, APrivateUpdateCommandFailsInABuildWithoutTheirKeychainGroup) {
    const test::ProcessResult result = test::runProcess(request({"--clear-private-updates"}));
    EXPECT_TRUE(result.exitedWith(2));
    EXPECT_EQ(result.errorOutput, "Private update Keychain group is unavailable.\n");
    EXPECT_EQ(result.output, "");
}

TEST_F(DesktopProgram, LeavesNoSocketBehindWhenItEnds) {
    const std::string socket = socketPath();
    test::Process program(request({"--figures"}));
    ASSERT_TRUE(test::eventually([&] { return test::exists(socket); }));
    program.signal(SIGHUP);
    EXPECT_TRUE(program.wait().exitedWith(0));
    EXPECT_FALSE(test::exists(socket));
}

}  // namespace
}  // namespace brimwatch
