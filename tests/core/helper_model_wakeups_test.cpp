// What makes a model reload, refresh and ask by itself, and when.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "core/helper_model.h"
#include "model_fixture.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;
using test::ModelFixture;
using test::SignalCount;
using ::testing::IsEmpty;

class HelperModelWakeUps : public ModelFixture {
  protected:
    // With one figure on its card, and Codex switched off so that only the figures move.
    void startWithACard() {
        makeRegisteredFolder(".claude-work");
        writeLimits("claude-work", 10, 40);
        defaults_.put("codexEnabled", "false");
        startWithServices();
        time_.settle();
        ASSERT_EQ(shownWeekly("claude-work"), 40);
    }
    std::size_t reloadCount() const {
        return static_cast<std::size_t>(std::count(files_.steps().begin(), files_.steps().end(),
                                                   "entries " + limitsFolder(home_)));
    }
};

TEST_F(HelperModelWakeUps, AnEventOfTheFolderReloadsAfterThreeTenthsOfASecond) {
    startWithACard();
    writeLimits("claude-work", 10, 50);
    services_.watch.changed();
    EXPECT_EQ(shownWeekly("claude-work"), 40);
    advance(299ms);
    EXPECT_EQ(shownWeekly("claude-work"), 40);
    advance(1ms);
    EXPECT_EQ(shownWeekly("claude-work"), 50);
}

TEST_F(HelperModelWakeUps, ABroadcastReloadsAfterThreeTenthsOfASecond) {
    startWithACard();
    writeLimits("claude-work", 10, 50);
    services_.broadcast.received();
    advance(299ms);
    EXPECT_EQ(shownWeekly("claude-work"), 40);
    advance(1ms);
    EXPECT_EQ(shownWeekly("claude-work"), 50);
}

TEST_F(HelperModelWakeUps, AllEventsOfThreeTenthsOfASecondCauseOneReload) {
    startWithACard();
    const std::size_t reloads = reloadCount();
    const std::size_t sleepers = time_.sleeperCount();
    services_.watch.changed();
    services_.broadcast.received();
    EXPECT_EQ(time_.sleeperCount(), sleepers + 1);
    advance(200ms);
    services_.watch.changed();
    services_.broadcast.received();
    EXPECT_EQ(time_.sleeperCount(), sleepers + 1);
    advance(100ms);
    EXPECT_EQ(reloadCount(), reloads + 1);
    advance(5s);
    EXPECT_EQ(reloadCount(), reloads + 1);
}

TEST_F(HelperModelWakeUps, ABurstCostsOneReloadEachThreeTenthsOfASecond) {
    startWithACard();
    const std::size_t reloads = reloadCount();
    for (int event = 0; event < 300; ++event) {
        services_.watch.changed();
        advance(10ms);
    }
    EXPECT_EQ(reloadCount(), reloads + 10);
}

TEST_F(HelperModelWakeUps, AnEventDuringTheReloadCausesAnotherOne) {
    startWithACard();
    const std::size_t reloads = reloadCount();
    QObject::connect(&model(), &HelperModel::limitsChanged, &model(),
                     [&] { services_.watch.changed(); });
    writeLimits("claude-work", 10, 50);
    services_.watch.changed();
    advance(300ms);
    EXPECT_EQ(reloadCount(), reloads + 1);
    advance(299ms);
    EXPECT_EQ(reloadCount(), reloads + 1);
    advance(1ms);
    EXPECT_EQ(reloadCount(), reloads + 2);
    advance(5s);
    EXPECT_EQ(reloadCount(), reloads + 2);
}

TEST_F(HelperModelWakeUps, AFileThatIsReplacedWhileTheFolderIsReadIsNotLost) {
    startWithACard();
    bool replaced = false;
    files_.interruptBeforeEachStep([&](std::size_t, const std::string& step) {
        if (step != "entries" || replaced) return;
        replaced = true;
        services_.broadcast.received();
    });
    services_.watch.changed();
    advance(300ms);
    ASSERT_TRUE(replaced);
    writeLimits("claude-work", 10, 50);
    EXPECT_EQ(shownWeekly("claude-work"), 40);
    advance(300ms);
    EXPECT_EQ(shownWeekly("claude-work"), 50);
}

TEST_F(HelperModelWakeUps, AReloadForAnotherReasonDoesNotEndTheWait) {
    startWithACard();
    services_.watch.changed();
    advance(100ms);
    model().reload();
    writeLimits("claude-work", 10, 50);
    advance(200ms);
    EXPECT_EQ(shownWeekly("claude-work"), 50);
}

TEST_F(HelperModelWakeUps, AWaitThatIsCutShortReloadsAllTheSame) {
    startWithACard();
    writeLimits("claude-work", 10, 50);
    services_.watch.changed();
    time_.cancelSleeps();
    EXPECT_EQ(shownWeekly("claude-work"), 50);
    writeLimits("claude-work", 10, 60);
    services_.watch.changed();
    advance(300ms);
    EXPECT_EQ(shownWeekly("claude-work"), 60);
}

TEST_F(HelperModelWakeUps, TheLoopsEndWhenTheirSleepIsCutShort) {
    startWithServices();
    time_.settle();
    codex_.answer(test::codexFailure(CodexPoller::Failure::Kind::timedOut));
    EXPECT_EQ(time_.sleeperCount(), 2U);
    time_.cancelSleeps();
    EXPECT_EQ(time_.sleeperCount(), 0U);
    const std::size_t steps = files_.steps().size();
    advance(1h);
    EXPECT_EQ(files_.steps().size(), steps);
    EXPECT_EQ(codex_.questions().size(), 1U);
}

TEST_F(HelperModelWakeUps, EachMinuteEverythingIsLookedForAnew) {
    startWithServices();
    time_.settle();
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 40);
    services_.login.enabled = true;
    advance(59'999ms);
    EXPECT_THAT(model().accounts(), IsEmpty());
    advance(1ms);
    EXPECT_EQ(shownWeekly("claude-work"), 40);
    EXPECT_TRUE(model().launchAtLogin());
    codex_.installed = "/opt/codex";
    writeLimits("claude-work", 10, 50);
    advance(59'999ms);
    EXPECT_EQ(shownWeekly("claude-work"), 40);
    advance(1ms);
    EXPECT_EQ(shownWeekly("claude-work"), 50);
    EXPECT_EQ(model().codexBinary(), "/opt/codex");
}

TEST_F(HelperModelWakeUps, AnEventOfTheFolderLooksForNoAccounts) {
    startWithACard();
    makeRegisteredFolder(".claude-new");
    services_.login.enabled = true;
    services_.watch.changed();
    advance(300ms);
    EXPECT_EQ(model().accounts().size(), 1U);
    EXPECT_FALSE(model().launchAtLogin());
    advance(1min);
    EXPECT_EQ(model().accounts().size(), 2U);
}

TEST_F(HelperModelWakeUps, AMinuteIsCountedFromTheStart) {
    startWithACard();
    advance(30s);
    const std::size_t reloads = reloadCount();
    model().refresh();
    EXPECT_EQ(reloadCount(), reloads + 1);
    advance(30s);
    EXPECT_EQ(reloadCount(), reloads + 2);
    advance(10min);
    EXPECT_EQ(reloadCount(), reloads + 12);
}

TEST_F(HelperModelWakeUps, CodexIsAskedFiveMinutesAfterTheEndOfTheLastRun) {
    makeCodexFolder(".codex-work");
    startWithServices();
    time_.settle();
    EXPECT_EQ(codex_.questions().size(), 1U);
    advance(1h);
    EXPECT_EQ(codex_.questions().size(), 1U);
    codex_.answer(test::codexFailure(CodexPoller::Failure::Kind::timedOut));
    EXPECT_EQ(codex_.questions().size(), 2U);
    advance(30s);
    codex_.answer(test::codexReading(20, 50, now()));
    advance(299s);
    EXPECT_EQ(codex_.questions().size(), 2U);
    advance(1s);
    EXPECT_EQ(codex_.questions().size(), 3U);
}

TEST_F(HelperModelWakeUps, WhileCodexIsAwaitedFiguresAndMinutesGoOn) {
    makeRegisteredFolder(".claude-work");
    startWithServices();
    time_.settle();
    ASSERT_TRUE(codex_.isAsking());
    writeLimits("claude-work", 10, 40);
    services_.watch.changed();
    advance(300ms);
    EXPECT_EQ(shownWeekly("claude-work"), 40);
    writeLimits("claude-work", 10, 50);
    advance(1min);
    EXPECT_EQ(shownWeekly("claude-work"), 50);
    EXPECT_TRUE(codex_.isAsking());
}

TEST_F(HelperModelWakeUps, ADeletedFolderIsReloadedEachMinuteAndNeitherMadeNorWatchedAgain) {
    startWithACard();
    ASSERT_EQ(services_.watch.folder, limitsFolder(home_));
    services_.watch.folder.clear();
    const std::size_t made = files_.steps().size();
    std::filesystem::remove_all(limitsFolder(home_));
    advance(1min);
    EXPECT_THAT(shownIds(), IsEmpty());
    EXPECT_FALSE(test::exists(limitsFolder(home_)));
    writeLimits("claude-work", 10, 50);
    advance(1min);
    EXPECT_EQ(shownWeekly("claude-work"), 50);
    EXPECT_EQ(services_.watch.folder, "");
    EXPECT_EQ(std::count(files_.steps().begin() + static_cast<std::ptrdiff_t>(made),
                         files_.steps().end(), "makeFolders " + limitsFolder(home_)),
              0);
}

TEST_F(HelperModelWakeUps, TheFigureOfAStatusLineRunTakesTheWholeRoad) {
    makeRegisteredFolder(".claude-work");
    startWithServices();
    time_.settle();
    model().setUsageName("claude-work", "회사");
    const LimitsFile reported = figures("claude-work", 10, 40);
    LimitsFile::WriteRequest request;
    request.provider = reported.provider;
    request.account = reported.account;
    request.windows = reported.windows;
    request.minimumIntervalSeconds = 300;
    request.mergingExisting = true;
    request.now = now();
    request.folder = limitsFolder(home_);
    ASSERT_EQ(LimitsFile::write(disk_, request), true);
    const SignalCount told(model(), &HelperModel::limitsChanged);
    services_.watch.changed();
    services_.broadcast.received();
    advance(300ms);
    EXPECT_EQ(told.count(), 1);
    ASSERT_EQ(model().limits().size(), 1U);
    const SubscriptionLimits& shown = model().limits().front();
    EXPECT_EQ(shown.displayName, "회사");
    EXPECT_EQ(shown.fiveHour->usedPercentage, 10);
    EXPECT_EQ(shown.sevenDay->usedPercentage, 40);
    EXPECT_TRUE(shown.recentUsageHistory);
    EXPECT_EQ(model().menuTitle(), "60%");
    EXPECT_EQ(LimitsFile::write(disk_, request), false);
}

TEST_F(HelperModelWakeUps, EventsAfterTheEndOfTheModelDoNothing) {
    startWithACard();
    services_.watch.changed();
    model_.reset();
    const std::size_t steps = files_.steps().size();
    services_.watch.changed();
    services_.broadcast.received();
    advance(1h);
    EXPECT_EQ(files_.steps().size(), steps);
}

}  // namespace
}  // namespace brimwatch
