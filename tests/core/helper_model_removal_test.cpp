// Taking everything back.

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

constexpr const char* partly = "일부를 해제하지 못했어요. 다시 눌러 주세요.\n";
constexpr const char* loginFailure = "로그인할 때 열기를 바꾸지 못했어요: ";

class HelperModelRemoval : public test::AccountsFixture {
  protected:
    void removeAll() {
        removeEverything();
        settle();
        ASSERT_FALSE(model().isRemoving());
    }
    std::vector<std::string> makeThree() {
        return {makeRegisteredFolder(".claude-a"), makeRegisteredFolder(".claude-b"),
                makeRegisteredFolder(".claude-c")};
    }
    std::size_t writes() const {
        const std::vector<std::string>& steps = files_.steps();
        return static_cast<std::size_t>(
            std::count_if(steps.begin(), steps.end(), [](const std::string& step) {
                return step.starts_with("replace ") && step.ends_with("/settings.json");
            }));
    }
};

TEST_F(HelperModelRemoval, PutsAllStatusLinesBack) {
    const std::string old = makeClaudeFolder(".claude-old");
    writeStatusLine(old, home_ + "/.brimwatch/brimwatch.py");
    const std::string moved = makeClaudeFolder(".claude-moved");
    writeStatusLine(moved, "'/gone/bin/brimwatch' --statusline --account moved");
    const std::string own = makeClaudeFolder(".claude-own");
    writeStatusLine(own, "~/bin/mine");
    const std::vector<std::string> three = makeThree();
    defaults_.put("claudeAutoConnect", R"({"enabled":false,"declined":[]})");
    start();
    ASSERT_EQ(claudeAccount(moved).state, State::needsRepair);
    const std::string before = test::readFile(own + "/settings.json");
    removeAll();
    for (const ClaudeCodeSetup::Account& account : model().accounts())
        EXPECT_EQ(account.state, State::notRegistered) << account.directory;
    EXPECT_EQ(model().accounts().size(), 6U);
    EXPECT_EQ(statusLine(old), "");
    EXPECT_EQ(statusLine(moved), "");
    EXPECT_FALSE(isRegistered(three[1]));
    EXPECT_EQ(test::readFile(own + "/settings.json"), before);
    EXPECT_TRUE(model().removedEverything());
    EXPECT_EQ(model().failure(), std::nullopt);
}

TEST_F(HelperModelRemoval, WithNothingToRemoveSucceedsWithoutAText) {
    start();
    removeAll();
    EXPECT_TRUE(model().removedEverything());
    EXPECT_EQ(model().failure(), std::nullopt);
}

TEST_F(HelperModelRemoval, PassesOverFoldersWithoutOurStatusLine) {
    writeStatusLine(makeClaudeFolder(".claude-own"), "~/bin/mine");
    makeClaudeFolder(".claude-plain");
    start();
    const std::uint64_t wakeUps = time_.wakeUpCount();
    removeAll();
    EXPECT_TRUE(model().removedEverything());
    EXPECT_EQ(time_.wakeUpCount(), wakeUps) << "it gives the thread up for those alone";
}

TEST_F(HelperModelRemoval, BeginsWithPausingDecliningAndSwitchingOff) {
    const std::vector<std::string> three = makeThree();
    const std::string fourth = makeClaudeFolder(".claude-d");
    makeCodexFolder(".codex");
    writeLimits("claude-a", 10, 20);
    start();
    poll();
    answer(10);
    ASSERT_THAT(shownIds(), ElementsAre("claude-a", "codex-default"));
    const std::int64_t revision = model().codexConnectionRevision();
    removeEverything();
    ASSERT_TRUE(model().isRemoving());
    EXPECT_TRUE(model().claudeUsagePaused());
    EXPECT_EQ(stored("claudeUsagePaused"), "true");
    EXPECT_FALSE(model().autoConnect().enabled);
    EXPECT_THAT(model().autoConnect().declined, ElementsAre(three[0], three[1], three[2], fourth));
    EXPECT_EQ(stored("claudeAutoConnect"), R"({"declined":[")" + three[0] + R"(",")" + three[1] +
                                               R"(",")" + three[2] + R"(",")" + fourth +
                                               R"("],"enabled":false})");
    EXPECT_FALSE(model().codexEnabled());
    EXPECT_EQ(stored("codexEnabled"), "false");
    EXPECT_EQ(model().codexConnectionRevision(), revision + 1);
    EXPECT_THAT(model().receivedCodex(), IsEmpty());
    EXPECT_THAT(model().codexAccountStatuses(), IsEmpty());
    EXPECT_THAT(model().limits(), IsEmpty());
    EXPECT_THAT(model().claudeIDs(), IsEmpty());
    EXPECT_THAT(model().codexIDs(), IsEmpty());
    EXPECT_FALSE(model().isCodexAccountOn(codexAccount("default")));
    EXPECT_FALSE(model().removedEverything());
    settle();
    EXPECT_TRUE(model().removedEverything());
}

TEST_F(HelperModelRemoval, ReplacesWhatWasDeclinedAndForgetsWhatFailed) {
    const std::string bad = makeClaudeFolder(".claude-bad");
    defaults_.put("claudeAutoConnect", R"({"enabled":true,"declined":["/gone/.claude"]})");
    lockSettings(bad);
    start();
    ASSERT_THAT(model().autoConnectFailed(), ElementsAre(bad));
    removeAll();
    EXPECT_THAT(model().autoConnect().declined, ElementsAre(bad));
    EXPECT_THAT(model().autoConnectFailed(), IsEmpty());
}

TEST_F(HelperModelRemoval, GivesTheThreadUpBetweenTheAccounts) {
    const std::vector<std::string> three = makeThree();
    start();
    removeEverything();
    for (const std::string& folder : three) {
        EXPECT_TRUE(isRegistered(folder));
        while (isRegistered(folder))
            ASSERT_TRUE(time_.wakeNext());
        EXPECT_TRUE(model().isRemoving() || folder == three[2]);
    }
    settle();
    EXPECT_FALSE(model().isRemoving());
}

TEST_F(HelperModelRemoval, IsNotPutOutByARefreshBetweenTheAccounts) {
    const std::vector<std::string> three = makeThree();
    start();
    removeEverything();
    while (isRegistered(three[0]))
        ASSERT_TRUE(time_.wakeNext());
    std::filesystem::remove_all(three[0]);
    const std::string late = makeClaudeFolder(".claude-late");
    model().refresh();
    ASSERT_TRUE(model().isRemoving());
    settle();
    EXPECT_FALSE(isRegistered(three[1]));
    EXPECT_FALSE(isRegistered(three[2]));
    EXPECT_FALSE(isRegistered(late));
    EXPECT_TRUE(model().removedEverything());
}

TEST_F(HelperModelRemoval, OneFolderThatFailsIsNamedAndTheOthersAreRestored) {
    const std::vector<std::string> three = makeThree();
    start();
    lockSettings(three[1]);
    removeAll();
    EXPECT_FALSE(isRegistered(three[0]));
    EXPECT_TRUE(isRegistered(three[1]));
    EXPECT_FALSE(isRegistered(three[2]));
    EXPECT_EQ(model().failure(), partly + ("b: " + messageOf(std::errc::no_space_on_device)));
    EXPECT_FALSE(model().removedEverything());
    EXPECT_TRUE(model().claudeUsagePaused());
    EXPECT_FALSE(model().autoConnect().enabled);
}

TEST_F(HelperModelRemoval, EveryFolderThatFailsHasALine) {
    const std::vector<std::string> three = makeThree();
    writeLimits("claude-a", 10, 20);
    start();
    lockSettings(three[0], std::errc::read_only_file_system);
    lockSettings(three[1], std::errc::permission_denied);
    lockSettings(three[2]);
    removeAll();
    EXPECT_EQ(model().failure(), partly + ("a: " + messageOf(std::errc::read_only_file_system)) +
                                     "\nb: " + messageOf(std::errc::permission_denied) +
                                     "\nc: " + messageOf(std::errc::no_space_on_device));
    EXPECT_THAT(model().limits(), IsEmpty()) << "the figures stay hidden";
}

TEST_F(HelperModelRemoval, ASecondTryRestoresWhatIsLeft) {
    const std::vector<std::string> three = makeThree();
    start();
    lockSettings(three[1]);
    removeAll();
    files_.failNothing();
    const std::size_t before = writes();
    removeAll();
    EXPECT_EQ(writes(), before + 1) << "the restored ones are skipped";
    EXPECT_FALSE(isRegistered(three[1]));
    EXPECT_TRUE(model().removedEverything());
    EXPECT_EQ(model().failure(), std::nullopt);
}

TEST_F(HelperModelRemoval, ASecondPressDoesNothing) {
    makeThree();
    start();
    ASSERT_FALSE(model().addClaudeFolder(folder_.file("nowhere")));
    const SignalCount ends(model(), &HelperModel::removedEverythingChanged);
    const SignalCount runs(model(), &HelperModel::isRemovingChanged);
    removeEverything();
    removeEverything();
    EXPECT_TRUE(model().isRemoving());
    settle();
    EXPECT_EQ(writes(), 3U);
    EXPECT_EQ(ends.count(), 1);
    EXPECT_EQ(runs.count(), 2) << "once on, once off";
}

TEST_F(HelperModelRemoval, ClearsAFormerFailure) {
    start();
    ASSERT_FALSE(model().addClaudeFolder(folder_.file("nowhere")));
    removeAll();
    EXPECT_EQ(model().failure(), std::nullopt);
}

TEST_F(HelperModelRemoval, NothingIsConnectedAfterwardsByItself) {
    const std::vector<std::string> three = makeThree();
    writeLimits("claude-a", 10, 20);
    start();
    removeAll();
    model().refresh();
    EXPECT_EQ(model().accounts().size(), 3U);
    EXPECT_FALSE(isRegistered(three[0]));
    start();
    model().refresh();
    EXPECT_FALSE(isRegistered(three[0]));
    EXPECT_THAT(model().limits(), IsEmpty());
    EXPECT_FALSE(model().codexEnabled());
    EXPECT_TRUE(model().claudeUsagePaused());
}

TEST_F(HelperModelRemoval, KeepsNamesOrderMemoryHistoryAndFiles) {
    makeThree();
    writeLimits("claude-a", 10, 20);
    writeLimits("claude-b", 10, 20);
    start();
    model().connectClaude();
    model().setUsageName("claude-a", "A");
    model().moveCard("subscription.claude-a", 1);
    const std::vector<std::string> keys = {"setupDone", "limitsMemory", "recentUsageHistory",
                                           "usageNames", "menuOrder"};
    std::vector<std::string> before;
    for (const std::string& key : keys) {
        before.push_back(stored(key));
        EXPECT_NE(before.back(), "") << key;
    }
    removeAll();
    for (std::size_t i = 0; i < keys.size(); ++i)
        EXPECT_EQ(stored(keys[i]), before[i]) << keys[i];
    EXPECT_TRUE(test::exists(limitsFile("claude-a")));
}

TEST_F(HelperModelRemoval, TheConnectingOperationsDoNothingMeanwhile) {
    test::writeFile(folder_.file("claude/.claude.json"), "{}");
    test::writeFile(folder_.file("codex/config.toml"), "");
    const std::vector<std::string> three = makeThree();
    start();
    const ClaudeCodeSetup::Account last = claudeAccount(three[2]);
    const CodexAccounts::Account codex = codexAccount("default");
    removeEverything();
    const std::int64_t revision = model().codexConnectionRevision();
    const SignalCount failures(model(), &HelperModel::failureChanged);
    defaults_.changes.clear();
    model().connectClaude();
    model().disconnectClaude(last);
    EXPECT_FALSE(model().addClaudeFolder(folder_.file("claude")));
    EXPECT_FALSE(model().addClaudeFolder(folder_.file("nowhere")));
    model().connectCodex();
    EXPECT_FALSE(model().addCodexFolder(folder_.file("codex")));
    EXPECT_FALSE(model().addCodexFolder(folder_.file("nowhere")));
    model().setCodexAccount(codex, false);
    model().setCodexAccount(codex, true);
    EXPECT_THAT(defaults_.changes, IsEmpty());
    EXPECT_EQ(model().codexConnectionRevision(), revision);
    EXPECT_EQ(failures.count(), 0);
    EXPECT_TRUE(isRegistered(three[2]));
    EXPECT_FALSE(model().codexEnabled());
    settle();
    EXPECT_FALSE(codex_.isAsking());
    EXPECT_TRUE(model().removedEverything());
}

TEST_F(HelperModelRemoval, NamesAndOrderCanBeChangedMeanwhile) {
    defaults_.setStrings("menuOrder", {"subscription.claude-x"});
    startAndBeginRemoval();
    model().setUsageName("claude-r1", "One");
    EXPECT_EQ(model().usageNames().at("subscription.claude-r1"), "One");
    model().resetCardOrder();
    EXPECT_THAT(model().menuOrder(), IsEmpty());
}

TEST_F(HelperModelRemoval, CodexCanNotBeSwitchedOnMeanwhile) {
    startAndBeginRemoval();
    const std::int64_t revision = model().codexConnectionRevision();
    defaults_.changes.clear();
    model().setCodexEnabled(true);
    EXPECT_FALSE(model().codexEnabled());
    EXPECT_EQ(model().codexConnectionRevision(), revision);
    EXPECT_THAT(defaults_.changes, IsEmpty());
    settle();
    model().setCodexEnabled(true);
    EXPECT_TRUE(model().codexEnabled());
}

TEST_F(HelperModelRemoval, AModelThatGoesAwayMeanwhileLeavesTheRestAlone) {
    startAndBeginRemoval();
    while (isRegistered(path(".claude-r1")))
        ASSERT_TRUE(time_.wakeNext());
    model_.reset();
    settle();
    EXPECT_TRUE(isRegistered(path(".claude-r3")));
    EXPECT_EQ(time_.sleeperCount(), 0U);
}

TEST_F(HelperModelRemoval, SwitchesTheLoginItemOff) {
    services_.login.enabled = true;
    startWithServices();
    ASSERT_TRUE(model().launchAtLogin());
    removeAll();
    EXPECT_FALSE(services_.login.enabled);
    EXPECT_FALSE(model().launchAtLogin());
    EXPECT_TRUE(model().removedEverything());
}

TEST_F(HelperModelRemoval, LeavesALoginItemAloneThatIsOff) {
    services_.login.error = std::make_error_code(std::errc::permission_denied);
    startWithServices();
    removeAll();
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_TRUE(model().removedEverything());
}

TEST_F(HelperModelRemoval, AFailureOfTheLoginItemStandsBesideTheSuccess) {
    makeRegisteredFolder(".claude-a");
    services_.login.enabled = true;
    services_.login.error = std::make_error_code(std::errc::permission_denied);
    startWithServices();
    removeAll();
    EXPECT_EQ(model().failure(), loginFailure + messageOf(std::errc::permission_denied));
    EXPECT_TRUE(model().removedEverything());
    EXPECT_TRUE(model().launchAtLogin());
}

TEST_F(HelperModelRemoval, FoldersThatFailReplaceTheFailureOfTheLoginItem) {
    const std::string folder = makeRegisteredFolder(".claude-a");
    services_.login.enabled = true;
    services_.login.error = std::make_error_code(std::errc::permission_denied);
    startWithServices();
    lockSettings(folder);
    removeAll();
    EXPECT_EQ(model().failure(), partly + ("a: " + messageOf(std::errc::no_space_on_device)));
    EXPECT_FALSE(model().removedEverything());
}

TEST_F(HelperModelRemoval, IsUnderWayBeforeAnythingElseChanges) {
    makeThree();
    start();
    const auto expectRemoving = [this] { EXPECT_TRUE(model().isRemoving()); };
    const SignalCount pauses(model(), &HelperModel::claudeUsagePausedChanged);
    QObject::connect(&model(), &HelperModel::claudeUsagePausedChanged, &model(), expectRemoving);
    QObject::connect(&model(), &HelperModel::codexEnabledChanged, &model(), expectRemoving);
    QObject::connect(&model(), &HelperModel::accountsChanged, &model(), expectRemoving);
    removeAll();
    EXPECT_EQ(pauses.count(), 1);
}

TEST_F(HelperModelRemoval, EndsOnlyAfterItsOutcomeIsThere) {
    makeThree();
    start();
    bool wasRemoved = false;
    QObject::connect(&model(), &HelperModel::isRemovingChanged, &model(), [&] {
        if (!model().isRemoving()) wasRemoved = model().removedEverything();
    });
    removeAll();
    EXPECT_TRUE(wasRemoved);
}

}  // namespace
}  // namespace brimwatch
