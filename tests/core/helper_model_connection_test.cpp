// Connecting and disconnecting the accounts of Claude Code.

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "accounts_fixture.h"

namespace brimwatch {
namespace {

using test::messageOf;
using test::SignalCount;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using State = ClaudeCodeSetup::State;

constexpr const char* nothingFound =
    "Claude Code 계정을 찾지 못했어요. Claude Code에 로그인한 뒤 다시 연결해 주세요.";
constexpr const char* notConnected = "Claude Code 설정을 바꾸지 못했어요:\n";
constexpr const char* installRequired =
    "Brimwatch?를 응용 프로그램 폴더에 설치한 뒤 앱을 다시 열어 주세요.";

class HelperModelConnection : public test::AccountsFixture {
  protected:
    std::vector<std::string> failed() {
        return {model().autoConnectFailed().begin(), model().autoConnectFailed().end()};
    }
    std::vector<std::string> declined() {
        return {model().autoConnect().declined.begin(), model().autoConnect().declined.end()};
    }
};

TEST_F(HelperModelConnection, ConnectsEveryAccountUnderItsId) {
    const std::string standard = makeClaudeFolder(".claude");
    const std::string work = makeClaudeFolder(".claude-work");
    start();
    EXPECT_THAT(model().claudeIDs(), IsEmpty());
    model().connectClaude();
    EXPECT_EQ(statusLine(standard), ourStatusLine("default"));
    EXPECT_EQ(statusLine(work), ourStatusLine("work"));
    EXPECT_EQ(claudeAccount(work).state, State::registered);
    EXPECT_THAT(model().claudeIDs(), ElementsAre("default", "work"));
    EXPECT_EQ(model().failure(), std::nullopt);
}

TEST_F(HelperModelConnection, ConnectsAManualFolderUnderItsIdToo) {
    const std::string folder = folder_.file("team/.claude");
    test::writeFile(folder + "/.claude.json", "{}");
    defaults_.setStrings("claudeManualDirectories", {folder});
    start();
    model().connectClaude();
    ASSERT_EQ(model().claudeIDs().size(), 1U);
    const std::string id = *model().claudeIDs().begin();
    EXPECT_THAT(id, ::testing::MatchesRegex("team-[0-9a-f]{12}"));
    EXPECT_EQ(statusLine(folder), ourStatusLine(id));
    writeLimits("claude-" + id, 10, 20);
    model().reload();
    EXPECT_EQ(shownWeekly("claude-" + id), 20);
}

TEST_F(HelperModelConnection, RepairsAndReplacesWhatIsOurs) {
    const std::string old = makeClaudeFolder(".claude-old");
    writeStatusLine(old, "/usr/bin/python3 " + home_ + "/.brimwatch/brimwatch.py");
    const std::string moved = makeClaudeFolder(".claude-moved");
    writeStatusLine(moved, "'/gone/bin/brimwatch' --statusline --account moved");
    const std::string renamed = makeClaudeFolder(".claude-renamed");
    writeStatusLine(renamed, ourStatusLine("former"));
    defaults_.put("claudeAutoConnect", R"({"enabled":false,"declined":[]})");
    start();
    EXPECT_EQ(claudeAccount(old).state, State::oldHelper);
    EXPECT_EQ(claudeAccount(moved).state, State::needsRepair);
    EXPECT_EQ(claudeAccount(renamed).state, State::registered);
    model().connectClaude();
    EXPECT_EQ(statusLine(old), ourStatusLine("old"));
    EXPECT_EQ(statusLine(moved), ourStatusLine("moved"));
    EXPECT_EQ(statusLine(renamed), ourStatusLine("renamed"));
}

TEST_F(HelperModelConnection, FindsAccountsThatAppearedJustBefore) {
    start();
    const std::string folder = makeClaudeFolder(".claude-work");
    model().connectClaude();
    EXPECT_EQ(statusLine(folder), ourStatusLine("work"));
}

TEST_F(HelperModelConnection, WithoutAnyAccountItSaysSoAndChangesNothing) {
    start();
    defaults_.changes.clear();
    model().connectClaude();
    EXPECT_EQ(model().failure(), nothingFound);
    EXPECT_FALSE(model().autoConnect().enabled);
    EXPECT_THAT(defaults_.changes, IsEmpty());
    EXPECT_EQ(stored("setupDone"), "");
}

TEST_F(HelperModelConnection, AccountsThatWentAwayAreNotThereAnyMore) {
    const std::string folder = makeRegisteredFolder(".claude-work");
    start();
    ASSERT_EQ(model().accounts().size(), 1U);
    std::filesystem::remove_all(folder);
    model().connectClaude();
    EXPECT_EQ(model().failure(), nothingFound);
    EXPECT_THAT(model().accounts(), IsEmpty());
}

TEST_F(HelperModelConnection, SwitchesAutomaticConnectionOnAndForgetsWhatWasDeclined) {
    const std::string folder = makeRegisteredFolder(".claude-work");
    makeClaudeFolder(".claude-other");
    start();
    model().disconnectClaude(claudeAccount(folder));
    ASSERT_THAT(declined(), ElementsAre(path(".claude-other"), folder));
    model().connectClaude();
    EXPECT_TRUE(model().autoConnect().enabled);
    EXPECT_THAT(declined(), IsEmpty());
    EXPECT_EQ(stored("claudeAutoConnect"), R"({"declined":[],"enabled":true})");
    EXPECT_TRUE(isRegistered(folder));
    EXPECT_TRUE(isRegistered(path(".claude-other")));
}

TEST_F(HelperModelConnection, ASuccessEndsThePauseAndTheSetup) {
    makeClaudeFolder(".claude-work");
    writeLimits("claude-work", 10, 20);
    start();
    model().setClaudeUsagePaused(true);
    model().connectClaude();
    EXPECT_FALSE(model().claudeUsagePaused());
    EXPECT_EQ(stored("claudeUsagePaused"), "false");
    EXPECT_EQ(stored("setupDone"), "true");
    EXPECT_EQ(shownWeekly("claude-work"), 20);
}

TEST_F(HelperModelConnection, ASuccessClearsTheLastRemoval) {
    makeRegisteredFolder(".claude-work");
    start();
    removeEverything();
    settle();
    ASSERT_TRUE(model().removedEverything());
    model().connectClaude();
    EXPECT_FALSE(model().removedEverything());
}

TEST_F(HelperModelConnection, ARunWithoutAnySuccessLeavesPauseSetupAndRemovalAsTheyWere) {
    const std::string folder = makeRegisteredFolder(".claude-work");
    start();
    removeEverything();
    settle();
    lockSettings(folder);
    model().connectClaude();
    EXPECT_TRUE(model().claudeUsagePaused());
    EXPECT_TRUE(model().removedEverything());
    EXPECT_EQ(stored("setupDone"), "");
    EXPECT_TRUE(model().autoConnect().enabled) << "the choice stays";
    EXPECT_EQ(stored("claudeAutoConnect"), R"({"declined":[],"enabled":true})");
}

TEST_F(HelperModelConnection, OneAccountThatFailsDoesNotHinderTheOthers) {
    const std::string a = makeClaudeFolder(".claude-a");
    const std::string b = makeClaudeFolder(".claude-b");
    const std::string c = makeClaudeFolder(".claude-c");
    start();
    lockSettings(b);
    model().connectClaude();
    EXPECT_TRUE(isRegistered(a));
    EXPECT_FALSE(isRegistered(b));
    EXPECT_TRUE(isRegistered(c));
    EXPECT_EQ(model().failure(), notConnected + ("b: " + messageOf(std::errc::no_space_on_device)));
    EXPECT_THAT(failed(), ElementsAre(b));
    const std::vector<std::string>& steps = files_.steps();
    EXPECT_EQ(std::count(steps.begin(), steps.end(), "makeTemporary " + b), 1)
        << "the refresh behind it does not try again";
    EXPECT_EQ(stored("setupDone"), "true");
}

TEST_F(HelperModelConnection, EachAccountThatFailsHasALineInTheirOrder) {
    const std::string a = makeClaudeFolder(".claude-a");
    const std::string manual = folder_.file("team/.claude");
    test::writeFile(manual + "/.claude.json", "{}");
    defaults_.setStrings("claudeManualDirectories", {manual});
    start();
    lockSettings(a, std::errc::read_only_file_system);
    lockSettings(manual, std::errc::permission_denied);
    model().connectClaude();
    EXPECT_EQ(model().failure(), notConnected +
                                     ("a: " + messageOf(std::errc::read_only_file_system)) +
                                     "\nteam: " + messageOf(std::errc::permission_denied));
    EXPECT_THAT(failed(), ::testing::UnorderedElementsAre(a, manual));
}

TEST_F(HelperModelConnection, WithoutAUsableProgramItAsksForAnInstallation) {
    makeClaudeFolder(".claude-a");
    makeClaudeFolder(".claude");
    executables_.clear();
    start();
    model().connectClaude();
    EXPECT_EQ(model().failure(), notConnected + ("default: " + std::string(installRequired)) +
                                     "\na: " + installRequired);
}

TEST_F(HelperModelConnection, AnAccountThatIsNotConnectedAfterwardsIsAFailure) {
    const std::string folder = makeClaudeFolder(".claude-a");
    start();
    files_.interruptBeforeEachStep([this](std::size_t, const std::string& name) {
        if (name == "replace") executables_.clear();
    });
    model().connectClaude();
    EXPECT_EQ(model().failure(), notConnected + ("a: " + std::string(installRequired)));
    EXPECT_THAT(failed(), ElementsAre(folder));
    EXPECT_EQ(stored("setupDone"), "");
}

TEST_F(HelperModelConnection, AFolderThatVanishesWhileItIsConnectedIsAFailure) {
    const std::string folder = makeClaudeFolder(".claude-a");
    makeRegisteredFolder(".claude-b");
    start();
    bool isWritten = false;
    files_.interruptBeforeEachStep([&](std::size_t, const std::string& name) {
        isWritten = isWritten || name == "synchronizeFolder";
        if (isWritten && name == "entries") std::filesystem::remove_all(folder);
    });
    model().connectClaude();
    EXPECT_EQ(model().failure(), notConnected + ("a: " + std::string(installRequired)))
        << "another account that is connected does not count for it";
    EXPECT_EQ(model().accounts().size(), 1U);
}

TEST_F(HelperModelConnection, TryingAgainForgetsTheFormerFailures) {
    const std::string a = makeClaudeFolder(".claude-a");
    start();
    lockSettings(a);
    model().connectClaude();
    ASSERT_THAT(failed(), ElementsAre(a));
    files_.failNothing();
    const SignalCount changes(model(), &HelperModel::failureChanged);
    model().connectClaude();
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_THAT(failed(), IsEmpty());
    EXPECT_TRUE(isRegistered(a));
    EXPECT_EQ(changes.count(), 1);
}

TEST_F(HelperModelConnection, KeepsTheUsersOwnStatusLineInTheChain) {
    const std::string folder = makeClaudeFolder(".claude-work");
    writeStatusLine(folder, "~/bin/mine");
    start();
    model().connectClaude();
    EXPECT_EQ(statusLine(folder), ourStatusLine("work"));
    EXPECT_THAT(test::readFile(folder + "/settings.json"),
                ::testing::HasSubstr(R"("BRIMWATCH_NEXT_STATUSLINE": "~/bin/mine")"));
    model().disconnectClaude(claudeAccount(folder));
    EXPECT_EQ(statusLine(folder), "~/bin/mine");
}

TEST_F(HelperModelConnection, DisconnectingRestoresTheStatusLineAndDeclinesTheFolder) {
    const std::string folder = makeRegisteredFolder(".claude-work");
    makeRegisteredFolder(".claude-other");
    writeLimits("claude-work", 10, 20);
    writeLimits("claude-other", 10, 20);
    start();
    model().disconnectClaude(claudeAccount(folder));
    EXPECT_FALSE(isRegistered(folder));
    EXPECT_THAT(declined(), ElementsAre(folder));
    EXPECT_EQ(stored("claudeAutoConnect"), R"({"declined":[")" + folder + R"("],"enabled":true})");
    EXPECT_THAT(shownIds(), ElementsAre("claude-other"));
    EXPECT_EQ(claudeAccount(folder).state, State::notRegistered);
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_TRUE(test::exists(limitsFile("claude-work")));
}

TEST_F(HelperModelConnection, WhatWasDisconnectedIsNotConnectedByItselfAgain) {
    const std::string folder = makeRegisteredFolder(".claude-work");
    start();
    model().disconnectClaude(claudeAccount(folder));
    model().refresh();
    EXPECT_FALSE(isRegistered(folder));
    start();
    model().refresh();
    EXPECT_FALSE(isRegistered(folder));
}

TEST_F(HelperModelConnection, DisconnectingWhatIsNotOursOnlyDeclinesIt) {
    const std::string folder = makeClaudeFolder(".claude-work");
    writeStatusLine(folder, "~/bin/mine");
    const std::string settings = test::readFile(folder + "/settings.json");
    start();
    model().disconnectClaude(claudeAccount(folder));
    EXPECT_EQ(test::readFile(folder + "/settings.json"), settings);
    EXPECT_THAT(declined(), ElementsAre(folder));
    EXPECT_EQ(model().failure(), std::nullopt);
}

TEST_F(HelperModelConnection, AFailureToRestoreIsToldAndTheFolderStaysDeclined) {
    const std::string folder = makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 20);
    start();
    ASSERT_THAT(shownIds(), ElementsAre("claude-work"));
    lockSettings(folder);
    model().disconnectClaude(claudeAccount(folder));
    EXPECT_EQ(model().failure(),
              "Claude Code 설정을 되돌리지 못했어요: " + messageOf(std::errc::no_space_on_device));
    EXPECT_TRUE(isRegistered(folder));
    EXPECT_THAT(declined(), ElementsAre(folder));
    EXPECT_EQ(stored("claudeAutoConnect"), R"({"declined":[")" + folder + R"("],"enabled":true})");
    EXPECT_THAT(shownIds(), IsEmpty());
}

TEST_F(HelperModelConnection, APauseHidesTheFiguresAndItsEndBringsThemBack) {
    const std::string folder = makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 20);
    start();
    model().setClaudeUsagePaused(true);
    EXPECT_THAT(model().claudeIDs(), IsEmpty());
    model().reload();
    EXPECT_THAT(shownIds(), IsEmpty());
    EXPECT_TRUE(isRegistered(folder)) << "the status line goes on writing";
    writeLimits("claude-work", 11, 21);
    model().setClaudeUsagePaused(false);
    model().reload();
    EXPECT_EQ(shownWeekly("claude-work"), 21);
}

}  // namespace
}  // namespace brimwatch
