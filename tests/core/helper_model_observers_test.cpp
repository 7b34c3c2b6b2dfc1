// Observers that do something themselves when they are told: what they did must stand, and the
// operation that told them must end as it should.
#include <gmock/gmock.h>

#include "core/helper_model.h"
#include "model_fixture.h"
#include "platform/spawn.h"

namespace brimwatch {
namespace {

using test::ModelFixture;
using test::SignalCount;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HelperModelObservers : public ModelFixture {
  protected:
    void startWithCards() {
        makeRegisteredFolder(".claude-work");
        writeLimits("claude-work", 10, 40);
        writeLimits("codex-default", 20, 50);
        start();
    }
    // Runs the action at the first of the signals.
    void atFirst(void (HelperModel::*signal)(), std::function<void()> action) {
        QObject::connect(&model(), signal, &model(),
                         [action = std::move(action), done = false]() mutable {
                             if (std::exchange(done, true)) return;
                             action();
                         });
    }
    // What is shown follows from the files and choices, whatever has happened.
    void expectSettled() {
        const auto limits = model().limits();
        const auto title = model().menuTitle();
        test::SignalLog log(model());
        defaults_.changes.clear();
        model().refresh();
        EXPECT_THAT(log.take(), IsEmpty());
        EXPECT_THAT(defaults_.changes, IsEmpty());
        EXPECT_EQ(model().limits(), limits);
        EXPECT_EQ(model().menuTitle(), title);
    }
};

TEST_F(HelperModelObservers, MayReloadWhenTheyAreToldOfAReload) {
    startWithCards();
    QObject::connect(&model(), &HelperModel::limitsChanged, &model(), [&] { model().reload(); });
    QObject::connect(&model(), &HelperModel::menuTitleChanged, &model(),
                     [&] { model().refresh(); });
    const SignalCount limits(model(), &HelperModel::limitsChanged);
    const SignalCount titles(model(), &HelperModel::menuTitleChanged);
    const SignalCount gauges(model(), &HelperModel::menuGaugeChanged);
    writeLimits("claude-work", 10, 60);
    model().reload();
    EXPECT_EQ(limits.count(), 1);
    EXPECT_EQ(titles.count(), 1);
    EXPECT_EQ(gauges.count(), 1);
    EXPECT_EQ(model().menuTitle(), "45%");
    expectSettled();
}

TEST_F(HelperModelObservers, MayWriteAFileThatTheReloadHasNotSeen) {
    startWithCards();
    atFirst(&HelperModel::limitsChanged, [&] {
        writeLimits("claude-work", 10, 80);
        model().reload();
    });
    writeLimits("claude-work", 10, 60);
    model().reload();
    EXPECT_EQ(shownWeekly("claude-work"), 80);
    EXPECT_EQ(model().menuTitle(), "35%");
    EXPECT_EQ(model().memory().files.at("claude-work").windows.at("seven_day").usedPercentage, 80);
    expectSettled();
    const LimitsMemory memory = model().memory();
    EXPECT_EQ(start().memory(), memory);
}

TEST_F(HelperModelObservers, MayReloadNewFiguresWhenToldOfTheTitle) {
    startWithCards();
    atFirst(&HelperModel::menuTitleChanged, [&] {
        writeLimits("claude-work", 10, 80);
        model().reload();
    });
    writeLimits("claude-work", 10, 60);
    model().reload();
    EXPECT_EQ(model().menuTitle(), "35%");
    EXPECT_EQ(model().menuGauge().remaining, 0.35);
    expectSettled();
}

TEST_F(HelperModelObservers, MayPauseAndReloadInTheMiddleOfAReload) {
    startWithCards();
    atFirst(&HelperModel::limitsChanged, [&] {
        model().setClaudeUsagePaused(true);
        model().reload();
    });
    writeLimits("claude-work", 10, 60);
    model().reload();
    EXPECT_THAT(shownIds(), ElementsAre("codex-default"));
    EXPECT_EQ(model().menuTitle(), "50%");
    expectSettled();
}

TEST_F(HelperModelObservers, MaySwitchCodexOffInTheMiddleOfAReload) {
    startWithCards();
    atFirst(&HelperModel::limitsChanged, [&] { model().setCodexEnabled(false); });
    writeLimits("claude-work", 10, 60);
    model().reload();
    EXPECT_THAT(shownIds(), ElementsAre("claude-work"));
    EXPECT_EQ(model().menuTitle(), "40%");
    EXPECT_EQ(model().menuGauge().remaining, 0.4);
    expectSettled();
}

TEST_F(HelperModelObservers, MayChangeTheDisplayWhenToldOfTheTitle) {
    startWithCards();
    atFirst(&HelperModel::menuTitleChanged, [&] { model().setUsageDisplay(UsageDisplay::used); });
    writeLimits("claude-work", 10, 60);
    model().reload();
    EXPECT_EQ(model().menuTitle(), "55%");
    EXPECT_EQ(model().menuGauge().remaining, 0.45);
    expectSettled();
}

TEST_F(HelperModelObservers, MayRenameAndReorderWhenToldOfFigures) {
    startWithCards();
    atFirst(&HelperModel::limitsChanged, [&] {
        model().setUsageName("claude-work", "회사");
        model().moveCard("subscription.codex-default", -1);
    });
    writeLimits("claude-work", 10, 60);
    model().reload();
    EXPECT_EQ(model().limits().front().displayName, "회사");
    EXPECT_EQ(model().menuLimits().front().id(), "codex-default");
    expectSettled();
}

TEST_F(HelperModelObservers, MayRefreshWhenToldOfAccountsAndTiers) {
    startWithCards();
    for (const auto signal : {&HelperModel::accountsChanged, &HelperModel::codexAccountsChanged,
                              &HelperModel::claudeTiersChanged, &HelperModel::codexBinaryChanged})
        QObject::connect(&model(), signal, &model(), [&] { model().refresh(); });
    for (const char* name : {".claude-a", ".claude-b", ".claude-c"}) {
        const std::string folder = makeClaudeFolder(name);
        storeTier(folder, "claude_pro");
    }
    makeCodexFolder(".codex-a");
    codex_.installed = "/opt/codex";
    model().refresh();
    EXPECT_THAT(model().claudeIDs(), ElementsAre("a", "b", "c", "work"));
    EXPECT_EQ(model().claudeTiers().size(), 3U);
    EXPECT_THAT(model().codexIDs(), ElementsAre("a", "default"));
    EXPECT_EQ(model().codexBinary(), "/opt/codex");
    expectSettled();
}

TEST_F(HelperModelObservers, MayConnectAndDisconnectWhenToldOfAccounts) {
    startWithCards();
    atFirst(&HelperModel::accountsChanged,
            [&] { model().disconnectClaude({.directory = path(".claude-work")}); });
    makeClaudeFolder(".claude-new");
    model().refresh();
    EXPECT_THAT(model().claudeIDs(), ElementsAre("new"));
    EXPECT_FALSE(isRegistered(path(".claude-work")));
    EXPECT_THAT(shownIds(), ElementsAre("codex-default"));
    expectSettled();
}

TEST_F(HelperModelObservers, HaveTheLastWordOnAChoice) {
    startWithCards();
    atFirst(&HelperModel::appThemeChanged, [&] { model().setAppTheme(AppTheme::light); });
    atFirst(&HelperModel::usageDisplayChanged,
            [&] { model().setUsageDisplay(UsageDisplay::remaining); });
    atFirst(&HelperModel::recentUsagePeriodChanged,
            [&] { model().setRecentUsagePeriod(RecentUsagePeriod::sixHours); });
    atFirst(&HelperModel::claudeUsagePausedChanged, [&] { model().setClaudeUsagePaused(false); });
    atFirst(&HelperModel::codexEnabledChanged, [&] { model().setCodexEnabled(true); });
    model().setAppTheme(AppTheme::dark);
    model().setUsageDisplay(UsageDisplay::used);
    model().setRecentUsagePeriod(RecentUsagePeriod::oneHour);
    model().setClaudeUsagePaused(true);
    model().setCodexEnabled(false);
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(model().appTheme(), AppTheme::light);
        EXPECT_EQ(model().usageDisplay(), UsageDisplay::remaining);
        EXPECT_EQ(model().recentUsagePeriod(), RecentUsagePeriod::sixHours);
        EXPECT_FALSE(model().claudeUsagePaused());
        EXPECT_TRUE(model().codexEnabled());
        EXPECT_THAT(shownIds(), ElementsAre("claude-work", "codex-default"));
        EXPECT_EQ(model().menuTitle(), "55%");
        start();
    }
}

TEST_F(HelperModelObservers, HaveTheLastWordOnNamesOrderAndSelection) {
    startWithCards();
    const CodexAccounts::Account account = {
        .directory = path(".codex"), .name = "default", .key = "default"};
    atFirst(&HelperModel::usageNamesChanged, [&] { model().setUsageName("claude-work", "둘"); });
    atFirst(&HelperModel::menuOrderChanged, [&] { model().resetCardOrder(); });
    atFirst(&HelperModel::codexSelectionChanged, [&] { model().setCodexAccount(account, true); });
    model().setUsageName("claude-work", "하나");
    model().moveCard("subscription.codex-default", -1);
    model().setCodexAccount(account, false);
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(model().usageNames().at("subscription.claude-work"), "둘");
        EXPECT_THAT(model().menuOrder(), IsEmpty());
        EXPECT_TRUE(model().isCodexAccountOn(account));
        EXPECT_EQ(model().limits().front().displayName, "둘");
        EXPECT_THAT(shownIds(), ElementsAre("claude-work", "codex-default"));
        start();
    }
}

TEST_F(HelperModelObservers, MaySwitchCodexOnAgainWhileItIsSwitchedOff) {
    start();
    codex_.answerAtOnce = [this](const auto&) { return test::codexReading(20, 50, now()); };
    spawn(model().pollCodex());
    atFirst(&HelperModel::receivedCodexChanged, [&] { model().setCodexEnabled(true); });
    model().setCodexEnabled(false);
    EXPECT_TRUE(model().codexEnabled());
    EXPECT_EQ(defaults_.stored("codexEnabled"), "true");
    EXPECT_THAT(model().receivedCodex(), IsEmpty());
    EXPECT_THAT(shownIds(), ElementsAre("codex-default"));
    EXPECT_EQ(model().codexConnectionRevision(), 2);
    expectSettled();
}

}  // namespace
}  // namespace brimwatch
