// Folders of Claude Code that are connected without asking.

#include <gmock/gmock.h>

#include <algorithm>

#include "accounts_fixture.h"
#include "log_capture.h"

namespace brimwatch {
namespace {

using test::LogCapture;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using State = ClaudeCodeSetup::State;

class HelperModelAutoConnect : public test::AccountsFixture {
  protected:
    void switchOn() { defaults_.put("claudeAutoConnect", R"({"enabled":true,"declined":[]})"); }
    std::size_t attempts(const std::string& folder) const {
        const std::vector<std::string>& steps = files_.steps();
        return static_cast<std::size_t>(
            std::count(steps.begin(), steps.end(), "makeTemporary " + folder));
    }
    std::vector<std::string> failed() {
        return {model().autoConnectFailed().begin(), model().autoConnectFailed().end()};
    }
    static std::vector<LogCapture::Message> logged(const std::string& start) {
        std::vector<LogCapture::Message> found;
        for (const LogCapture::Message& message : LogCapture::messages()) {
            if (message.second.starts_with(start)) found.push_back(message);
        }
        return found;
    }
};

TEST_F(HelperModelAutoConnect, ANewFolderIsConnectedAtTheNextRefresh) {
    switchOn();
    start();
    const std::string folder = makeClaudeFolder(".claude-new");
    writeLimits("claude-new", 10, 20);
    model().refresh();
    EXPECT_EQ(statusLine(folder), ourStatusLine("new"));
    EXPECT_EQ(claudeAccount(folder).state, State::registered) << "the accounts are looked at again";
    EXPECT_THAT(shownIds(), ElementsAre("claude-new")) << "in the same refresh";
}

TEST_F(HelperModelAutoConnect, ABrokenRegistrationIsRepaired) {
    switchOn();
    const std::string folder = makeClaudeFolder(".claude-moved");
    writeStatusLine(folder, "'/gone/bin/brimwatch' --statusline --account moved");
    start();
    EXPECT_EQ(statusLine(folder), ourStatusLine("moved"));
}

TEST_F(HelperModelAutoConnect, TheScriptThatCameBeforeIsLeftAlone) {
    switchOn();
    const std::string folder = makeClaudeFolder(".claude-old");
    const std::string command = home_ + "/.brimwatch/brimwatch.py";
    writeStatusLine(folder, command);
    start();
    EXPECT_EQ(statusLine(folder), command);
}

TEST_F(HelperModelAutoConnect, AManualFolderIsConnectedUnderItsId) {
    switchOn();
    const std::string folder = folder_.file("team/.claude");
    test::writeFile(folder + "/.claude.json", "{}");
    defaults_.setStrings("claudeManualDirectories", {folder});
    start();
    ASSERT_EQ(model().claudeIDs().size(), 1U);
    EXPECT_EQ(statusLine(folder), ourStatusLine(*model().claudeIDs().begin()));
}

TEST_F(HelperModelAutoConnect, NothingIsConnectedWhileItIsOff) {
    const std::string folder = makeClaudeFolder(".claude-new");
    start();
    model().refresh();
    EXPECT_FALSE(model().autoConnect().enabled);
    EXPECT_FALSE(isRegistered(folder));
}

TEST_F(HelperModelAutoConnect, WhatAUserDidNotConnectBeforeIsLeftAlone) {
    makeRegisteredFolder(".claude-work");
    const std::string other = makeClaudeFolder(".claude-other");
    start();
    EXPECT_EQ(stored("claudeAutoConnect"), R"({"declined":[")" + other + R"("],"enabled":true})");
    const std::string later = makeClaudeFolder(".claude-later");
    model().refresh();
    EXPECT_FALSE(isRegistered(other));
    EXPECT_TRUE(isRegistered(later));
}

TEST_F(HelperModelAutoConnect, ASuccessIsLogged) {
    switchOn();
    makeClaudeFolder(".claude-new");
    const LogCapture capture;
    start();
    const std::vector<LogCapture::Message> found = logged("Claude Code 계정을 연결했다: ");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].first, QtInfoMsg);
    EXPECT_THAT(logged("Claude Code 계정을 연결하지 못했다: "), IsEmpty());
}

TEST_F(HelperModelAutoConnect, AFailureIsLoggedAndNotShown) {
    switchOn();
    const std::string bad = makeClaudeFolder(".claude-bad");
    const std::string good = makeClaudeFolder(".claude-good");
    lockSettings(bad);
    const LogCapture capture;
    start();
    EXPECT_EQ(logged("Claude Code 계정을 연결하지 못했다: ").size(), 1U);
    EXPECT_EQ(logged("Claude Code 계정을 연결했다: ").size(), 1U);
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_THAT(failed(), ElementsAre(bad));
    EXPECT_TRUE(isRegistered(good)) << "the others go on";
}

TEST_F(HelperModelAutoConnect, AFailedFolderIsNotTriedAgainByItself) {
    switchOn();
    const std::string bad = makeClaudeFolder(".claude-bad");
    lockSettings(bad);
    start();
    const std::size_t once = attempts(bad);
    EXPECT_GT(once, 0U);
    for (int i = 0; i < 3; ++i)
        model().refresh();
    EXPECT_EQ(attempts(bad), once);
    files_.failNothing();
    model().refresh();
    EXPECT_FALSE(isRegistered(bad));
}

TEST_F(HelperModelAutoConnect, AFailedFolderIsTriedAgainAfterAStartOfTheProgram) {
    switchOn();
    const std::string bad = makeClaudeFolder(".claude-bad");
    lockSettings(bad);
    start();
    files_.failNothing();
    start();
    EXPECT_TRUE(isRegistered(bad));
    EXPECT_THAT(failed(), IsEmpty());
}

TEST_F(HelperModelAutoConnect, AFailedFolderIsTriedAgainWhenTheUserConnects) {
    switchOn();
    const std::string bad = makeClaudeFolder(".claude-bad");
    lockSettings(bad);
    start();
    files_.failNothing();
    model().connectClaude();
    EXPECT_TRUE(isRegistered(bad));
    EXPECT_THAT(failed(), IsEmpty());
}

TEST_F(HelperModelAutoConnect, DoesNotTouchThePauseTheSetupOrTheLastRemoval) {
    switchOn();
    start();
    model().setClaudeUsagePaused(true);
    makeClaudeFolder(".claude-new");
    model().refresh();
    EXPECT_TRUE(isRegistered(path(".claude-new")));
    EXPECT_TRUE(model().claudeUsagePaused());
    EXPECT_EQ(stored("setupDone"), "");
}

TEST_F(HelperModelAutoConnect, KeepsAFailureThatIsShown) {
    switchOn();
    start();
    EXPECT_FALSE(model().addClaudeFolder(folder_.file("nowhere")));
    const std::optional<std::string> shown = model().failure();
    ASSERT_NE(shown, std::nullopt);
    makeClaudeFolder(".claude-new");
    model().refresh();
    EXPECT_EQ(model().failure(), shown);
}

}  // namespace
}  // namespace brimwatch
