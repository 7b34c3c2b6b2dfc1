// What a model starts with, and when it tells its observers of a change.
#include <gmock/gmock.h>

#include "core/helper_model.h"
#include "model_fixture.h"
#include "platform/spawn.h"

namespace brimwatch {
namespace {

using test::ModelFixture;
using test::SignalLog;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HelperModelFields : public ModelFixture {
  protected:
    void pollOnce() { spawn(model().pollCodex()); }
    void answerAtOnceWith(CodexReadResult result) {
        codex_.answerAtOnce = [result](const auto&) { return result; };
    }
};

TEST_F(HelperModelFields, StartAtTheirInitialValues) {
    codex_.installed.reset();
    const HelperModel& model = start();
    EXPECT_EQ(model.codexConnectionRevision(), 0);
    EXPECT_FALSE(model.claudeUsagePaused());
    EXPECT_THAT(model.menuOrder(), IsEmpty());
    EXPECT_THAT(model.limits(), IsEmpty());
    EXPECT_THAT(model.accounts(), IsEmpty());
    EXPECT_THAT(model.claudeManualDirectories(), IsEmpty());
    EXPECT_EQ(model.codexBinary(), std::nullopt);
    EXPECT_EQ(model.codexStatus(), std::nullopt);
    EXPECT_THAT(model.codexAccountStatuses(), IsEmpty());
    EXPECT_THAT(model.usageNames(), IsEmpty());
    EXPECT_EQ(model.codexSelection(), CodexAccounts::Selection{});
    EXPECT_FALSE(model.pollingCodex());
    EXPECT_FALSE(model.codexPollRequested());
    EXPECT_FALSE(model.launchAtLogin());
    EXPECT_EQ(model.menuTitle(), "");
    EXPECT_EQ(model.menuGauge().remaining, std::nullopt);
    EXPECT_EQ(model.menuGauge().weekly, 1.0);
    EXPECT_EQ(model.usageDisplay(), UsageDisplay::remaining);
    EXPECT_EQ(model.failure(), std::nullopt);
    EXPECT_FALSE(model.isRemoving());
    EXPECT_EQ(model.recentUsagePeriod(), RecentUsagePeriod::off);
    EXPECT_EQ(model.appTheme(), AppTheme::system);
    EXPECT_EQ(model.recentHistory(), RecentUsageHistory{});
    EXPECT_EQ(model.memory(), LimitsMemory{});
    EXPECT_THAT(model.receivedCodex(), IsEmpty());
    EXPECT_THAT(model.claudeTiers(), IsEmpty());
    EXPECT_EQ(model.autoConnect(), ClaudeCodeSetup::AutoConnect{});
    EXPECT_THAT(model.autoConnectFailed(), IsEmpty());
    EXPECT_TRUE(model.codexEnabled());
    EXPECT_FALSE(model.removedEverything());
    EXPECT_FALSE(model.revealsMenuCardOrder());
}

TEST_F(HelperModelFields, AChoiceTellsOfItselfOnceAndOfNothingElse) {
    start();
    SignalLog log(model());
    for (int times = 0; times < 2; ++times) {
        model().setClaudeUsagePaused(true);
        EXPECT_THAT(log.take(), ElementsAre("claudeUsagePaused"));
        model().setClaudeUsagePaused(true);
        EXPECT_THAT(log.take(), IsEmpty());
        model().setUsageDisplay(UsageDisplay::used);
        EXPECT_THAT(log.take(), ElementsAre("usageDisplay"));
        model().setUsageDisplay(UsageDisplay::used);
        EXPECT_THAT(log.take(), IsEmpty());
        model().setRecentUsagePeriod(RecentUsagePeriod::twoHours);
        EXPECT_THAT(log.take(), ElementsAre("recentUsagePeriod"));
        model().setRecentUsagePeriod(RecentUsagePeriod::twoHours);
        EXPECT_THAT(log.take(), IsEmpty());
        model().setAppTheme(AppTheme::dark);
        EXPECT_THAT(log.take(), ElementsAre("appTheme"));
        model().setAppTheme(AppTheme::dark);
        EXPECT_THAT(log.take(), IsEmpty());
        model().setRevealsMenuCardOrder(true);
        EXPECT_THAT(log.take(), ElementsAre("revealsMenuCardOrder"));
        model().setRevealsMenuCardOrder(true);
        EXPECT_THAT(log.take(), IsEmpty());
        model().setCodexEnabled(false);
        EXPECT_THAT(log.take(), ElementsAre("codexEnabled"));
        model().setCodexEnabled(false);
        EXPECT_THAT(log.take(), IsEmpty());

        model().setClaudeUsagePaused(false);
        model().setUsageDisplay(UsageDisplay::remaining);
        model().setRecentUsagePeriod(RecentUsagePeriod::off);
        model().setAppTheme(AppTheme::system);
        model().setRevealsMenuCardOrder(false);
        model().setCodexEnabled(true);
        EXPECT_THAT(log.take(),
                    ElementsAre("claudeUsagePaused", "usageDisplay", "recentUsagePeriod",
                                "appTheme", "revealsMenuCardOrder", "codexEnabled"));
    }
}

TEST_F(HelperModelFields, AnObserverSeesTheNewValueAtOnce) {
    makeRegisteredFolder(".claude-work");
    start();
    int seen = 0;
    QObject::connect(&model(), &HelperModel::appThemeChanged, &model(), [&] {
        EXPECT_EQ(model().appTheme(), AppTheme::dark);
        ++seen;
    });
    QObject::connect(&model(), &HelperModel::limitsChanged, &model(), [&] {
        EXPECT_EQ(shownWeekly("claude-work"), 40);
        ++seen;
    });
    model().setAppTheme(AppTheme::dark);
    EXPECT_EQ(seen, 1);
    writeLimits("claude-work", 10, 40);
    model().reload();
    EXPECT_EQ(seen, 2);
}

TEST_F(HelperModelFields, AccountsTellOfEachThatIsNew) {
    start();
    SignalLog log(model());
    model().refresh();
    EXPECT_THAT(log.take(), IsEmpty());
    makeRegisteredFolder(".claude-work");
    model().refresh();
    EXPECT_THAT(log.take(), ElementsAre("accounts"));
    makeCodexFolder(".codex-work");
    model().refresh();
    EXPECT_THAT(log.take(), ElementsAre("codexAccounts"));
    model().refresh();
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(HelperModelFields, AFolderAddedByHandIsToldOfOnce) {
    const std::string folder = folder_.file("elsewhere");
    test::writeFile(folder + "/.claude.json", "{}");
    start();
    const test::SignalCount count(model(), &HelperModel::claudeManualDirectoriesChanged);
    model().addClaudeFolder(folder);
    EXPECT_EQ(count.count(), 1);
    model().addClaudeFolder(folder);
    EXPECT_EQ(count.count(), 1);
}

TEST_F(HelperModelFields, TheCodexSelectionTellsOfRealChanges) {
    const std::string folder = makeCodexFolder(".codex-work");
    const CodexAccounts::Account account = {.directory = folder, .name = "work", .key = "work"};
    start();
    SignalLog log(model());
    model().setCodexAccount(account, false);
    EXPECT_THAT(log.take(), ElementsAre("codexSelection"));
    model().setCodexAccount(account, false);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(HelperModelFields, TheCodexExecutableTellsWhenItComesAndGoes) {
    start();
    SignalLog log(model());
    codex_.installed.reset();
    model().refresh();
    EXPECT_THAT(log.take(), ElementsAre("codexBinary"));
    EXPECT_EQ(model().codexBinary(), std::nullopt);
    model().refresh();
    EXPECT_THAT(log.take(), IsEmpty());
    codex_.installed = "/opt/codex";
    model().refresh();
    EXPECT_THAT(log.take(), ElementsAre("codexBinary"));
    EXPECT_EQ(model().codexBinary(), "/opt/codex");
}

TEST_F(HelperModelFields, TheStateOfCodexTellsOfRealChanges) {
    codex_.installed.reset();
    start();
    SignalLog log(model());
    pollOnce();
    EXPECT_THAT(log.take(), ElementsAre("codexStatus"));
    pollOnce();
    EXPECT_THAT(log.take(), IsEmpty());
    codex_.installed = "/usr/bin/codex";
    answerAtOnceWith(test::codexFailure(CodexPoller::Failure::Kind::timedOut));
    pollOnce();
    EXPECT_THAT(log.take(), ElementsAre("codexBinary", "codexAccountStatuses", "codexStatus"));
    pollOnce();
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(HelperModelFields, AReadingTellsOfEverythingThatItChangesOnce) {
    start();
    answerAtOnceWith(test::codexReading(20, 30, now()));
    SignalLog log(model());
    pollOnce();
    EXPECT_THAT(log.take(), ElementsAre("receivedCodex", "codexAccountStatuses", "limits",
                                        "menuTitle", "menuGauge"));
    pollOnce();
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(HelperModelFields, ATierTellsOfItselfAndOfTheCardThatShowsIt) {
    const std::string folder = makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 40);
    start();
    SignalLog log(model());
    storeTier(folder, "default_claude_max_5x");
    model().refresh();
    EXPECT_THAT(log.take(), ElementsAre("claudeTiers", "limits"));
    model().refresh();
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(HelperModelFields, NamesAndOrderTellOfRealChanges) {
    for (const char* name : {"a", "b"}) {
        makeCodexFolder(".codex-" + std::string(name));
        writeLimits("codex-" + std::string(name), 10, 40);
    }
    start();
    SignalLog log(model());
    model().setUsageName("codex-a", "집");
    EXPECT_THAT(log.take(), ElementsAre("usageNames", "limits"));
    model().setUsageName("codex-a", " 집 ");
    EXPECT_THAT(log.take(), IsEmpty());
    model().moveCard("subscription.codex-a", 1);
    EXPECT_THAT(log.take(), ElementsAre("menuOrder"));
    model().moveCard("subscription.codex-a", 1);
    EXPECT_THAT(log.take(), IsEmpty());
    model().resetCardOrder();
    EXPECT_THAT(log.take(), ElementsAre("menuOrder"));
    model().resetCardOrder();
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(HelperModelFields, TheStartAtLoginTellsWhenTheSessionSaysSomethingElse) {
    startWithServices();
    SignalLog log(model());
    services_.login.enabled = true;
    model().refresh();
    EXPECT_THAT(log.take(), ElementsAre("launchAtLogin"));
    EXPECT_TRUE(model().launchAtLogin());
    model().refresh();
    EXPECT_THAT(log.take(), IsEmpty());
    model().setLaunchAtLogin(false);
    EXPECT_THAT(log.take(), ElementsAre("launchAtLogin"));
    EXPECT_FALSE(services_.login.enabled);
}

TEST_F(HelperModelFields, AFailureIsToldOfAndGoesWithTheNextOperation) {
    startWithServices();
    services_.login.error = std::make_error_code(std::errc::permission_denied);
    SignalLog log(model());
    model().setLaunchAtLogin(true);
    EXPECT_THAT(log.take(), ElementsAre("failure"));
    EXPECT_NE(model().failure(), std::nullopt);
    EXPECT_FALSE(model().launchAtLogin());
    services_.login.enabled = true;
    model().setLaunchAtLogin(false);
    EXPECT_TRUE(model().launchAtLogin());
    services_.login.error.reset();
    services_.login.enabled = false;
    model().refresh();
    log.take();
    model().setLaunchAtLogin(true);
    EXPECT_THAT(log.take(), ElementsAre("failure", "launchAtLogin"));
    EXPECT_EQ(model().failure(), std::nullopt);
}

TEST_F(HelperModelFields, ARemovalTellsOfEachStepOfItsOwn) {
    start();
    SignalLog log(model());
    spawn(model().removeEverything());
    time_.settle();
    EXPECT_THAT(log.take(), ElementsAre("isRemoving", "claudeUsagePaused", "codexEnabled",
                                        "removedEverything", "isRemoving"));
}

TEST_F(HelperModelFields, NothingIsToldOfAllThatIsNotObserved) {
    makeClaudeFolder(".claude-work");
    start();
    SignalLog log(model());
    const CodexAccounts::Account unknown = {.directory = "/x", .name = "x", .key = "x"};
    model().setCodexAccount(unknown, false);
    EXPECT_EQ(model().codexConnectionRevision(), 1);
    EXPECT_THAT(log.take(), ElementsAre("codexSelection"));
    executables_.clear();
    model().connectClaude();
    EXPECT_TRUE(model().autoConnect().enabled);
    EXPECT_FALSE(model().autoConnectFailed().empty());
    EXPECT_THAT(log.take(), ElementsAre("failure"));
}

}  // namespace
}  // namespace brimwatch
