#include "presentation/menu_content_model.h"

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>
#include <QCoreApplication>
#include <QSignalSpy>
#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>

#include "card_examples.h"
#include "harness/random.h"
#include "harness/time_zone.h"
#include "log_capture.h"
#include "model_fixture.h"
#include "presentation/menu_cards.h"
#include "publish/limits_cloud.h"
#include "publish/publish_examples.h"
#include "publish/publishers/cloud_failure.h"
#include "virtual_timers.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;

class MenuContent : public test::ModelFixture {
  protected:
    // Over the model as it is now.
    MenuContentModel& makeContent() {
        content_ = std::make_unique<MenuContentModel>(MenuContentModel::Surroundings{
            .model = model(),
            .now =
                [this] {
                    ++clockReadings_;
                    return time_.now();
                },
            .screenHeights = [this] { return screenHeights_; },
            .openSetup = [this] { calls_.emplace_back("openSetup"); },
            .quit = [this] { calls_.emplace_back("quit"); }});
        tester_.emplace(content_->cards(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        timers_.emplace(*content_, time_);
        return *content_;
    }

    MenuContentModel& makeShownContent() {
        makeContent().setShown(true);
        return *content_;
    }

    // An account of Claude Code with both windows, used to those percentages.
    void startWithAccount(double fiveHour = 60, double sevenDay = 28) {
        makeRegisteredFolder(".claude-work");
        writeLimits("claude-work", fiveHour, sevenDay);
        start();
    }

    UsageCardContent card(std::size_t row = 0) { return content_->cards()->cards().at(row); }
    // As a new content would show them now.
    std::vector<UsageCardContent> cardsFromScratch() {
        const auto cards = menuCards(model(), time_.now(), "ko_KR");
        std::vector<UsageCardContent> contents;
        std::transform(cards.begin(), cards.end(), std::back_inserter(contents), content);
        return contents;
    }
    // What a change of the model leads to at the next turn of the event loop.
    void settle() { timers_->settle(); }
    void pass(std::chrono::milliseconds duration) { timers_->advance(duration); }
    // How often the content has looked at the clock since the last call: once for each thing it
    // does.
    int takeClockReadings() { return std::exchange(clockReadings_, 0); }

    int argumentCount_ = 1;
    std::string programName_ = "card_test";
    char* arguments_[2] = {programName_.data(), nullptr};
    QCoreApplication application_{argumentCount_, arguments_};
    test::TimeZone zone_{"Asia/Seoul"};
    std::vector<double> screenHeights_ = {900};
    std::vector<std::string> calls_;
    int clockReadings_ = 0;
    std::unique_ptr<MenuContentModel> content_;
    std::optional<QAbstractItemModelTester> tester_;
    std::optional<test::VirtualTimers> timers_;
};

TEST_F(MenuContent, IsUpToDateAsSoonAsItIsShown) {
    startWithAccount();
    makeContent();
    EXPECT_EQ(content_->cards()->rowCount(), 0);
    content_->setShown(true);
    EXPECT_EQ(content_->cards()->cards(), cardsFromScratch());
    EXPECT_EQ(card().amount, "72%");
    EXPECT_FALSE(content_->isEmpty());
}

TEST_F(MenuContent, WithoutAFigureIsEmpty) {
    start();
    makeShownContent();
    EXPECT_TRUE(content_->isEmpty());
    EXPECT_FALSE(content_->canReorder());
    EXPECT_EQ(content_->emptyText(),
              "아직 받은 한도가 없어요. 설정에서 Claude Code와 Codex를 연결해 주세요.");
    EXPECT_EQ(timers_->activeCount(), 1U);
}

TEST_F(MenuContent, TellsWhenItIsNoLongerEmptyOrIsAgain) {
    startWithAccount();
    makeContent();
    QSignalSpy spy(content_.get(), &MenuContentModel::isEmptyChanged);
    content_->setShown(true);
    EXPECT_EQ(spy.count(), 1);
    model().setClaudeUsagePaused(true);
    model().reload();
    settle();
    EXPECT_TRUE(content_->isEmpty());
    EXPECT_EQ(spy.count(), 2);
}

TEST_F(MenuContent, OffersAnOtherOrderOfTwoCardsAndMore) {
    startWithAccount();
    makeShownContent();
    QSignalSpy spy(content_.get(), &MenuContentModel::canReorderChanged);
    EXPECT_FALSE(content_->canReorder());
    makeRegisteredFolder(".claude-other");
    writeLimits("claude-other", 10, 10);
    model().refresh();
    settle();
    EXPECT_TRUE(content_->canReorder());
    EXPECT_EQ(spy.count(), 1);
}

TEST_F(MenuContent, FollowsTheModelWhileItIsShown) {
    startWithAccount();
    makeShownContent();
    writeLimits("claude-work", 61, 50);
    model().reload();
    settle();
    EXPECT_EQ(card().amount, "50%");
    model().setUsageDisplay(UsageDisplay::used);
    settle();
    EXPECT_EQ(card().amountSuffix, "사용");
    model().setRecentUsagePeriod(RecentUsagePeriod::oneHour);
    settle();
    EXPECT_EQ(card().recentTitle, "최근 1시간");
    model().setUsageName("claude-work", "My team");
    settle();
    EXPECT_EQ(card().title, "Claude · My team");
    EXPECT_EQ(content_->cards()->cards(), cardsFromScratch());
}

TEST_F(MenuContent, FollowsTheCreditsOfCodexWithoutAnotherFigure) {
    makeCodexFolder(".codex-work");
    start();
    makeShownContent();
    CodexPoller::Reading reading = test::codexReading(10, 20, now());
    codex_.answerAtOnce = [&reading](const auto&) { return reading; };
    static_cast<void>(model().pollCodex());
    settle();
    EXPECT_EQ(card().credit, "");
    reading.credits = CodexCredits{.hasCredits = true, .unlimited = true, .balance = {}};
    static_cast<void>(model().pollCodex());
    settle();
    EXPECT_EQ(card().credit, "무제한");
}

TEST_F(MenuContent, FollowsTheOrderOfTheCards) {
    makeRegisteredFolder(".claude-other");
    writeLimits("claude-other", 10, 10);
    startWithAccount();
    makeShownContent();
    QSignalSpy moved(content_->cards(), &UsageCardsModel::rowsMoved);
    QSignalSpy changed(content_->cards(), &UsageCardsModel::dataChanged);
    model().moveCard("subscription.claude-work", -1);
    settle();
    EXPECT_EQ(card().account, "work");
    EXPECT_EQ(moved.count(), 1);
    EXPECT_EQ(changed.count(), 0);
}

TEST_F(MenuContent, TakesTheChangesOfOneTurnTogether) {
    startWithAccount();
    makeShownContent();
    takeClockReadings();
    model().setUsageDisplay(UsageDisplay::used);
    model().setRecentUsagePeriod(RecentUsagePeriod::oneHour);
    model().setUsageName("claude-work", "My team");
    model().setUsageDisplay(UsageDisplay::remaining);
    EXPECT_EQ(takeClockReadings(), 0);
    settle();
    EXPECT_EQ(takeClockReadings(), 1);
    settle();
    EXPECT_EQ(takeClockReadings(), 0);
}

TEST_F(MenuContent, MakesTheCardsAnewEveryThirtySeconds) {
    startWithAccount();
    makeShownContent();
    pass(29'999ms);
    EXPECT_EQ(card().freshness, "Claude Code에서 방금 받음");
    pass(30'001ms);
    EXPECT_EQ(card().freshness, "Claude Code에서 1분 전 받음");
    pass(1h);
    EXPECT_EQ(card().freshness, "Claude Code에서 1시간 전 받음");
}

TEST_F(MenuContent, CountsDownByTheSecond) {
    startWithAccount();
    makeShownContent();
    EXPECT_EQ(card().fiveHourResetText, "· 2:00:00 후");
    pass(1s);
    EXPECT_EQ(card().fiveHourResetText, "· 1:59:59 후");
    QSignalSpy changed(content_->cards(), &UsageCardsModel::dataChanged);
    pass(10s);
    EXPECT_EQ(card().fiveHourResetText, "· 1:59:49 후");
    EXPECT_EQ(changed.count(), 10);
    for (const QList<QVariant>& signal : changed) {
        const auto roles = signal[2].value<QList<int>>();
        ASSERT_EQ(roles.size(), 1);
        EXPECT_EQ(content_->cards()->roleNames().value(roles[0]), "fiveHourResetText");
    }
}

TEST_F(MenuContent, CountsWithTheSecondsOfTheClock) {
    startWithAccount();
    advance(250ms);
    makeShownContent();
    EXPECT_EQ(card().fiveHourResetText, "· 2:00:00 후");
    pass(749ms);
    EXPECT_EQ(card().fiveHourResetText, "· 2:00:00 후");
    pass(2ms);
    EXPECT_EQ(card().fiveHourResetText, "· 1:59:59 후");
}

TEST_F(MenuContent, DoesNotCountWhereNoLimitStartsAnewWithinADay) {
    startWithAccount();
    LimitsFile file = figures("claude-work", 60, 28);
    file.windows.at("five_hour").resetsAt = std::nullopt;
    defaults_.put("limitsMemory", R"({"files":{}})");
    writeLimits(file);
    start();
    makeShownContent();
    takeClockReadings();
    EXPECT_EQ(timers_->activeCount(), 1U);
    pass(30s);
    EXPECT_EQ(takeClockReadings(), 1);
    EXPECT_EQ(card().resetText, "3일 23시간 후 초기화");
}

TEST_F(MenuContent, BeginsToCountOnceALimitComesNear) {
    makeRegisteredFolder(".claude-work");
    LimitsFile file = figures("claude-work", 60, 28);
    file.windows.erase("five_hour");
    file.windows.at("seven_day").resetsAt = wholeUnixSeconds(now()) + 86400 + 45;
    writeLimits(file);
    start();
    makeShownContent();
    EXPECT_EQ(card().resetText, "1일 후 초기화");
    EXPECT_EQ(timers_->activeCount(), 1U);
    pass(60s);
    EXPECT_EQ(card().resetText, "23:59:45 후 초기화");
    pass(1s);
    EXPECT_EQ(card().resetText, "23:59:44 후 초기화");
}

TEST_F(MenuContent, ShowsAResetAtItsMoment) {
    startWithAccount();
    makeShownContent();
    pass(2h - 1s);
    EXPECT_EQ(card().fiveHourResetText, "· 0:01 후");
    EXPECT_EQ(card().fiveHourText, "40% 남음");
    pass(1s);
    EXPECT_EQ(card().fiveHourText, "새 값 대기");
    EXPECT_EQ(card().fiveHourResetText, "");
    EXPECT_EQ(timers_->activeCount(), 1U);
}

TEST_F(MenuContent, FollowsAClockThatIsSet) {
    startWithAccount();
    makeShownContent();
    time_.setWallClock(now() - 1h);
    pass(1s);
    EXPECT_EQ(card().fiveHourResetText, "· 2:59:59 후");
    time_.setWallClock(now() + 5h);
    pass(1s);
    EXPECT_EQ(card().fiveHourText, "새 값 대기");
}

TEST_F(MenuContent, RestsUntilItIsShown) {
    startWithAccount();
    makeContent();
    EXPECT_EQ(timers_->activeCount(), 0U);
    model().setUsageDisplay(UsageDisplay::used);
    writeLimits("claude-work", 61, 50);
    model().reload();
    EXPECT_EQ(timers_->activeCount(), 0U);
    pass(24h);
    EXPECT_EQ(takeClockReadings(), 0);
    EXPECT_EQ(timers_->firedCount(), 0U);
    EXPECT_EQ(content_->cards()->rowCount(), 0);
}

TEST_F(MenuContent, RestsAgainOnceItIsHidden) {
    startWithAccount();
    makeShownContent();
    model().setUsageDisplay(UsageDisplay::used);  // what it was about to show
    content_->setShown(false);
    EXPECT_EQ(timers_->activeCount(), 0U);
    takeClockReadings();
    QSignalSpy changed(content_->cards(), &UsageCardsModel::dataChanged);
    model().setUsageDisplay(UsageDisplay::remaining);
    writeLimits("claude-work", 61, 50);
    model().reload();
    EXPECT_EQ(timers_->activeCount(), 0U);
    pass(24h);
    EXPECT_EQ(takeClockReadings(), 0);
    EXPECT_EQ(timers_->firedCount(), 0U);
    EXPECT_EQ(changed.count(), 0);
}

TEST_F(MenuContent, CatchesUpWhenItIsShownAgain) {
    startWithAccount();
    makeShownContent();
    content_->setShown(false);
    writeLimits("claude-work", 61, 50);
    model().reload();
    pass(1h);
    screenHeights_ = {600};
    content_->setShown(true);
    EXPECT_EQ(card().amount, "50%");
    EXPECT_EQ(content_->listHeight(), 380);
    EXPECT_EQ(content_->cards()->cards(), cardsFromScratch());
}

TEST_F(MenuContent, BeingShownOrHiddenTwiceIsNothingNew) {
    startWithAccount();
    makeShownContent();
    takeClockReadings();
    content_->setShown(true);
    EXPECT_EQ(takeClockReadings(), 0);
    content_->setShown(false);
    content_->setShown(false);
    EXPECT_EQ(timers_->activeCount(), 0U);
}

TEST_F(MenuContent, GivesTheListTheRoomThatTheScreensLeave) {
    start();
    makeContent();
    EXPECT_EQ(content_->listHeight(), 432);
    screenHeights_ = {400};
    QSignalSpy spy(content_.get(), &MenuContentModel::listHeightChanged);
    content_->setShown(true);
    EXPECT_EQ(content_->listHeight(), 260);
    screenHeights_ = {};
    pass(30s);
    EXPECT_EQ(content_->listHeight(), 432);
    EXPECT_EQ(spy.count(), 2);
}

TEST_F(MenuContent, ReceivesNow) {
    makeCodexFolder(".codex-work");
    startWithAccount();
    makeShownContent();
    content_->receiveNow();
    EXPECT_TRUE(codex_.isAsking());
    // While that is under way, only the refresh itself looks at the files.
    writeLimits("claude-work", 61, 50);
    content_->receiveNow();
    EXPECT_EQ(codex_.questions().size(), 1U);
    settle();
    EXPECT_EQ(card().amount, "50%");
    codex_.answer(test::codexReading(10, 20, now()));
    settle();
    EXPECT_EQ(card(1).amount, "80%");
}

TEST_F(MenuContent, OpensTheSettingsAndQuits) {
    start();
    makeContent().openSetup();
    EXPECT_FALSE(model().revealsMenuCardOrder());
    content_->quit();
    EXPECT_THAT(calls_, ::testing::ElementsAre("openSetup", "quit"));
}

TEST_F(MenuContent, OpensTheSettingsOnTheOrderOfTheCards) {
    start();
    bool wasRevealed = false;
    makeContent();
    QObject::connect(&model(), &HelperModel::revealsMenuCardOrderChanged, content_.get(),
                     [this, &wasRevealed] { wasRevealed = calls_.empty(); });
    content_->reorderCards();
    EXPECT_TRUE(model().revealsMenuCardOrder());
    EXPECT_TRUE(wasRevealed) << "after the settings opened";
    EXPECT_THAT(calls_, ::testing::ElementsAre("openSetup"));
}

QCoro::Task<CloudRecord> savedRecord(ShareToSave /*share*/) {
    co_return CloudRecord{};
}

QCoro::Task<CloudRecord> refusedWithoutAccount(ShareToSave /*share*/) {
    throw LimitsCloud::Failure(LimitsCloud::Failure::Reason::noAccount);
    co_return CloudRecord{};
}

QCoro::Task<CloudRecord> refusedWithoutNetwork(ShareToSave /*share*/) {
    throw CloudFailure(CloudError{.code = cloud_error_code::networkFailure});
    co_return CloudRecord{};
}

class MenuContentSending : public MenuContent {
  protected:
    // With one account, and a save that ends so.
    void startSending(QCoro::Task<CloudRecord> (*save)(ShareToSave)) {
        makeRegisteredFolder(".claude-work");
        writeLimits("claude-work", 60, 28);
        HelperModel::Surroundings around = surroundings();
        around.cloud = std::make_unique<CloudPublisher>(
            CloudPublisher::Surroundings{.defaults = &defaults_,
                                         .right = PublishingRight::granted,
                                         .now = [this] { return now(); },
                                         .sleep = time_.sleeper(),
                                         .loadKey = [] { return test::keyFilledWith('k'); },
                                         .save = save,
                                         .remove = []() -> QCoro::Task<> { co_return; }});
        start(std::move(around));
        model().reload();
    }
    void finishSending() {
        while (time_.wakeNext())
            QCoreApplication::processEvents();
        settle();
    }

    const test::LogCapture quiet_;
};

TEST_F(MenuContentSending, TellsThatADevelopmentBuildSendsNothing) {
    startWithAccount();
    makeShownContent();
    EXPECT_EQ(content_->sendingText(), "개발용 빌드라 iPhone으로 보내지 않아요.");
    EXPECT_FALSE(content_->isSendingFailure());
}

TEST_F(MenuContentSending, TellsWhenItWasSent) {
    startSending(savedRecord);
    makeShownContent();
    EXPECT_EQ(content_->sendingText(), "보낼 한도를 기다리고 있어요.");
    EXPECT_FALSE(content_->isSendingFailure());
    QSignalSpy changes(content_.get(), &MenuContentModel::sendingChanged);
    finishSending();
    EXPECT_TRUE(content_->sendingText().startsWith("iPhone으로 보냄: "));
    EXPECT_FALSE(content_->isSendingFailure());
    EXPECT_EQ(changes.count(), 1);
}

TEST_F(MenuContentSending, WarnsWhereNobodyIsSignedIn) {
    startSending(refusedWithoutAccount);
    makeShownContent();
    finishSending();
    EXPECT_EQ(content_->sendingText(), "시스템 설정에서 Apple 계정에 로그인해 주세요.");
    EXPECT_TRUE(content_->isSendingFailure());
}

TEST_F(MenuContentSending, WarnsWhereSendingFailed) {
    startSending(refusedWithoutNetwork);
    makeShownContent();
    finishSending();
    EXPECT_EQ(content_->sendingText(), "인터넷에 연결되지 않았어요. 연결되면 다시 보내요.");
    EXPECT_TRUE(content_->isSendingFailure());
}

TEST_F(MenuContentSending, TellsThatItIsOff) {
    defaults_.put("cloudEnabled", "false");
    startSending(savedRecord);
    makeShownContent();
    EXPECT_EQ(content_->sendingText(), "iPhone으로 보내지 않아요.");
    EXPECT_FALSE(content_->isSendingFailure());
}

TEST_F(MenuContent, OffersItselfToViews) {
    start();
    makeShownContent();
    for (const char* name : {"cards", "isEmpty", "canReorder", "listHeight", "emptyText"})
        EXPECT_TRUE(content_->property(name).isValid()) << name;
    EXPECT_EQ(content_->property("cards").value<UsageCardsModel*>(), content_->cards());
    for (const char* name : {"receiveNow", "openSetup", "reorderCards", "quit"})
        EXPECT_TRUE(QMetaObject::invokeMethod(content_.get(), name)) << name;
}

// A user and his tools at work.
class MenuContentHistory : public MenuContent {
  protected:
    void doSomething() {
        switch (random_.below(9)) {
            case 0:
                return rename();
            case 1:
                return model().moveCard("subscription." + someId(), random_.between(-2, 2));
            case 2:
                return model().resetCardOrder();
            case 3:
                model().setClaudeUsagePaused(random_.oneIn(4));
                return model().reload();
            case 4:
                return model().setCodexEnabled(!random_.oneIn(4));
            case 5:
                return model().setRecentUsagePeriod(
                    recentUsagePeriodFromRawValue(random_.between(0, 6)));
            case 6:
                return content_->setShown(random_.oneIn(2));
            default:
                return writeSomething();
        }
    }

    void rename() {
        const std::optional<std::string> name =
            random_.oneIn(2) ? std::nullopt : std::optional("name " + someId());
        model().setUsageName(someId(), name);
    }

    void writeSomething() {
        LimitsFile file = figures(someId(), static_cast<double>(random_.below(101)),
                                  static_cast<double>(random_.below(201)) / 2);
        for (auto& [key, window] : file.windows) {
            if (random_.oneIn(8)) window.resetsAt = std::nullopt;
            if (random_.oneIn(4)) window.resetsAt = file.updatedAt + random_.between(-90, 90);
        }
        if (random_.oneIn(4)) file.windows.erase(random_.oneIn(2) ? "five_hour" : "seven_day");
        writeLimits(file);
        model().reload();
    }

    const std::string& someId() { return ids_[random_.below(ids_.size())]; }

    test::Random random_;
    std::vector<std::string> ids_ = {"claude-a", "claude-b", "claude-c",
                                     "claude-d", "codex-a",  "codex-b"};
};

TEST_F(MenuContentHistory, ShowsWhatOneMadeAnewWouldShow) {
    SCOPED_TRACE(random_.trace());
    for (const std::string& id : ids_) {
        const std::string folder = '.' + id;
        id.starts_with("codex") ? makeCodexFolder(folder) : makeRegisteredFolder(folder);
    }
    start();
    makeShownContent();
    for (int step = 0; step < 150; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        pass(std::chrono::milliseconds(random_.between(0, 45'000)));
        doSomething();
        content_->setShown(true);
        model().setUsageDisplay(model().usageDisplay() == UsageDisplay::used
                                    ? UsageDisplay::remaining
                                    : UsageDisplay::used);
        settle();
        ASSERT_EQ(content_->cards()->cards(), cardsFromScratch());
        ASSERT_EQ(content_->isEmpty(), cardsFromScratch().empty());
        ASSERT_EQ(content_->canReorder(), cardsFromScratch().size() >= 2);
    }
}

}  // namespace
}  // namespace brimwatch
