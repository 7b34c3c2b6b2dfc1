// Folders of Claude Code that the user adds by hand.

#include <gmock/gmock.h>

#include <filesystem>

#include "accounts_fixture.h"

namespace brimwatch {
namespace {

using test::messageOf;
using test::SignalCount;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using State = ClaudeCodeSetup::State;

constexpr const char* refusal =
    "Claude Code 설정 폴더를 골라 주세요. Claude Code를 실행한 적이 있는, .claude.json이 있는 "
    "폴더여야 해요.";

class HelperModelClaudeFolder : public test::AccountsFixture {
  protected:
    std::string makeManualFolder(const std::string& name) {
        const std::string folder = folder_.file(name);
        test::writeFile(folder + "/.claude.json", "{}");
        return folder;
    }
    std::string idOf(const std::string& folder) {
        return ClaudeCodeSetup::accountID(disk_, claudeAccount(folder), home_);
    }
};

TEST_F(HelperModelClaudeFolder, IsStoredConnectedAndShown) {
    const std::string folder = makeManualFolder("team");
    start();
    EXPECT_TRUE(model().addClaudeFolder(folder));
    EXPECT_THAT(model().claudeManualDirectories(), ElementsAre(folder));
    EXPECT_EQ(stored("claudeManualDirectories"), "[\"" + folder + "\"]");
    EXPECT_TRUE(claudeAccount(folder).isManual);
    EXPECT_EQ(claudeAccount(folder).state, State::registered);
    EXPECT_EQ(statusLine(folder), ourStatusLine(idOf(folder)));
    EXPECT_EQ(model().failure(), std::nullopt);
    writeLimits("claude-" + idOf(folder), 10, 20);
    model().reload();
    EXPECT_THAT(shownIds(), ElementsAre("claude-" + idOf(folder)));
}

TEST_F(HelperModelClaudeFolder, SurvivesAStartOfTheProgram) {
    const std::string folder = makeManualFolder("team");
    start();
    model().addClaudeFolder(folder);
    start();
    EXPECT_TRUE(claudeAccount(folder).isManual);
    EXPECT_EQ(model().claudeIDs().size(), 1U);
}

TEST_F(HelperModelClaudeFolder, WhereClaudeCodeNeverRanIsRefused) {
    const std::string folder = folder_.file("empty");
    std::filesystem::create_directories(folder);
    test::writeFile(path(".claude.json"), "{}");
    start();
    const SignalCount refreshes(model(), &HelperModel::accountsChanged);
    makeClaudeFolder(".claude-new");
    defaults_.changes.clear();
    for (const std::string& refused :
         {folder, home_, folder_.file("nowhere"), path(".claude.json")}) {
        EXPECT_FALSE(model().addClaudeFolder(refused)) << refused;
        EXPECT_EQ(model().failure(), refusal);
    }
    EXPECT_THAT(model().claudeManualDirectories(), IsEmpty());
    EXPECT_THAT(defaults_.changes, IsEmpty());
    EXPECT_EQ(refreshes.count(), 0);
}

TEST_F(HelperModelClaudeFolder, IsStoredInItsStandardFormAndOnce) {
    const std::string folder = makeManualFolder("team");
    std::filesystem::create_directory_symlink(folder, folder_.file("link"));
    start();
    for (const std::string& spelling :
         {folder_.file("link"), folder + "/", folder_.file("x/../team"), folder}) {
        EXPECT_TRUE(model().addClaudeFolder(spelling)) << spelling;
        EXPECT_THAT(model().claudeManualDirectories(), ElementsAre(folder)) << spelling;
    }
    EXPECT_EQ(model().accounts().size(), 1U);
}

TEST_F(HelperModelClaudeFolder, ComesBehindTheOnesAddedBefore) {
    const std::string b = makeManualFolder("b");
    const std::string a = makeManualFolder("a");
    start();
    model().addClaudeFolder(b);
    model().addClaudeFolder(a);
    EXPECT_THAT(model().claudeManualDirectories(), ElementsAre(b, a));
}

TEST_F(HelperModelClaudeFolder, ThatWasDeclinedIsWantedAgain) {
    const std::string folder = makeRegisteredFolder(".claude-work");
    const std::string other = makeRegisteredFolder(".claude-other");
    start();
    model().disconnectClaude(claudeAccount(folder));
    model().disconnectClaude(claudeAccount(other));
    EXPECT_TRUE(model().addClaudeFolder(folder));
    EXPECT_THAT(model().autoConnect().declined, ElementsAre(other));
    EXPECT_EQ(stored("claudeAutoConnect"), R"({"declined":[")" + other + R"("],"enabled":true})");
    EXPECT_EQ(statusLine(folder), ourStatusLine("work"));
    EXPECT_FALSE(claudeAccount(folder).isManual);
    EXPECT_THAT(model().claudeManualDirectories(), ElementsAre(folder));
    EXPECT_THAT(model().claudeIDs(), ElementsAre("work"));
    EXPECT_FALSE(isRegistered(other));
}

TEST_F(HelperModelClaudeFolder, IsTheAccountThatALinkInTheHomeLeadsTo) {
    const std::string folder = makeManualFolder("real");
    std::filesystem::create_directories(home_);
    std::filesystem::create_directory_symlink(folder, path(".claude-link"));
    start();
    const ClaudeCodeSetup::Account linked = claudeAccount(path(".claude-link"));
    model().disconnectClaude(linked);
    ASSERT_THAT(model().autoConnect().declined, ElementsAre(linked.directory));
    EXPECT_TRUE(model().addClaudeFolder(folder));
    EXPECT_THAT(model().autoConnect().declined, IsEmpty());
    EXPECT_EQ(statusLine(folder), ourStatusLine("link"));
}

TEST_F(HelperModelClaudeFolder, IsConnectedAloneAndDoesNotSwitchAutomaticConnectionOn) {
    const std::string other = makeClaudeFolder(".claude-other");
    const std::string folder = makeManualFolder("team");
    start();
    model().addClaudeFolder(folder);
    EXPECT_FALSE(model().autoConnect().enabled);
    EXPECT_FALSE(isRegistered(other));
    EXPECT_TRUE(isRegistered(folder));
}

TEST_F(HelperModelClaudeFolder, EndsThePauseTheSetupAndTheLastRemoval) {
    const std::string folder = makeManualFolder("team");
    start();
    removeEverything();
    settle();
    ASSERT_TRUE(model().removedEverything());
    ASSERT_TRUE(model().claudeUsagePaused());
    model().addClaudeFolder(folder);
    EXPECT_FALSE(model().removedEverything());
    EXPECT_FALSE(model().claudeUsagePaused());
    EXPECT_EQ(stored("claudeUsagePaused"), "false");
    EXPECT_EQ(stored("setupDone"), "true");
}

TEST_F(HelperModelClaudeFolder, ThatCanNotBeConnectedIsAcceptedAllTheSame) {
    const std::string folder = makeManualFolder("team");
    start();
    removeEverything();
    settle();
    lockSettings(folder);
    EXPECT_TRUE(model().addClaudeFolder(folder));
    EXPECT_EQ(model().failure(),
              "Claude Code 설정을 바꾸지 못했어요: " + messageOf(std::errc::no_space_on_device));
    EXPECT_THAT(model().claudeManualDirectories(), ElementsAre(folder));
    EXPECT_EQ(claudeAccount(folder).state, State::notRegistered);
    EXPECT_TRUE(model().removedEverything());
    EXPECT_TRUE(model().claudeUsagePaused());
    EXPECT_EQ(stored("setupDone"), "");
}

TEST_F(HelperModelClaudeFolder, ThatCanNotBeConnectedIsNoLongerDeclined) {
    const std::string folder = makeRegisteredFolder(".claude-work");
    start();
    model().disconnectClaude(claudeAccount(folder));
    lockSettings(folder);
    EXPECT_TRUE(model().addClaudeFolder(folder));
    EXPECT_THAT(model().autoConnect().declined, IsEmpty());
    EXPECT_EQ(stored("claudeAutoConnect"), R"({"declined":[],"enabled":true})");
    EXPECT_NE(model().failure(), std::nullopt) << "the refresh behind it does not clear it";
}

TEST_F(HelperModelClaudeFolder, NeedsAUsableProgram) {
    const std::string folder = makeManualFolder("team");
    executables_.clear();
    start();
    EXPECT_TRUE(model().addClaudeFolder(folder));
    EXPECT_EQ(model().failure(),
              "Claude Code 설정을 바꾸지 못했어요: Brimwatch?를 응용 프로그램 폴더에 설치한 뒤 "
              "앱을 다시 열어 주세요.");
}

TEST_F(HelperModelClaudeFolder, IsFollowedByARefresh) {
    const std::string folder = makeManualFolder("team");
    start();
    makeCodexFolder(".codex-new");
    model().addClaudeFolder(folder);
    EXPECT_EQ(codexAccount("new").name, "new");
    makeCodexFolder(".codex-newer");
    lockSettings(folder);
    executables_.clear();
    EXPECT_TRUE(model().addClaudeFolder(folder));
    EXPECT_EQ(codexAccount("newer").name, "newer") << "also after a failure";
}

TEST_F(HelperModelClaudeFolder, AFormerFailureIsClearedBySuccess) {
    const std::string folder = makeManualFolder("team");
    start();
    model().addClaudeFolder(folder_.file("nowhere"));
    ASSERT_EQ(model().failure(), refusal);
    model().addClaudeFolder(folder);
    EXPECT_EQ(model().failure(), std::nullopt);
}

}  // namespace
}  // namespace brimwatch
