#include "presentation/subscription_usage_card.h"

#include <gtest/gtest.h>

#include "card_examples.h"
#include "harness/time_zone.h"
#include "limits/usage_examples.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;
using test::after;
using test::before;
using test::cardTime;
using test::cardWithBoth;
using test::daySeconds;
using test::emptyCard;
using test::weeklyCard;

class UsageCard : public ::testing::Test {
  protected:
    test::TimeZone zone_{"Asia/Seoul"};
};

// --- Header ---

TEST_F(UsageCard, KnowsWhoseItIs) {
    const UsageCardContent shown = content(emptyCard());
    EXPECT_EQ(shown.provider, "claude");
    EXPECT_EQ(shown.account, "work");
    EXPECT_EQ(shown.identifierSuffix, "claude-work");
    EXPECT_EQ(shown.cardKey, "subscription.claude-work");
    SubscriptionUsageCard card = emptyCard();
    card.limits.provider = SubscriptionLimits::Provider::codex;
    EXPECT_EQ(content(card).provider, "codex");
    EXPECT_EQ(content(card).identifierSuffix, "codex-work");
}

TEST_F(UsageCard, IsTitledByTheNameOrTheAccountOrTheProvider) {
    SubscriptionUsageCard card = emptyCard();
    EXPECT_EQ(content(card).title, "Claude");
    card.titleAccount = TitleAccount::shown;
    EXPECT_EQ(content(card).title, "Claude · work");
    card.limits.displayName = " My \t team ";
    EXPECT_EQ(content(card).title, "Claude · My team");
    card.limits.provider = SubscriptionLimits::Provider::codex;
    EXPECT_EQ(content(card).title, "Codex · My team");
}

TEST_F(UsageCard, ANameOfBlanksIsNone) {
    SubscriptionUsageCard card = emptyCard();
    card.limits.displayName = " \t\u00A0\u3000 ";
    EXPECT_EQ(content(card).title, "Claude");
    card.titleAccount = TitleAccount::shown;
    EXPECT_EQ(content(card).title, "Claude · work");
}

TEST_F(UsageCard, ANameIsCutToFortyCharacters) {
    SubscriptionUsageCard card = emptyCard();
    card.limits.displayName = std::string(60, 'a');
    EXPECT_EQ(content(card).title, "Claude · " + QString(40, 'a'));
    card.limits.displayName = std::string(39, 'a') + "  bc";
    EXPECT_EQ(content(card).title, "Claude · " + QString(39, 'a'));
}

TEST_F(UsageCard, NamesThePlan) {
    SubscriptionUsageCard card = emptyCard();
    EXPECT_EQ(content(card).plan, "구독 한도");
    card.limits.planTier = "default_claude_max_20x";
    EXPECT_EQ(content(card).plan, "Max 20배");
    card.planName = "Pro";
    EXPECT_EQ(content(card).plan, "Pro");
}

TEST_F(UsageCard, NeverShowsARawPlan) {
    SubscriptionUsageCard card = emptyCard();
    card.limits.planTier = "prolite";
    EXPECT_EQ(content(card).plan, "구독 한도");
    card.limits.provider = SubscriptionLimits::Provider::codex;
    EXPECT_EQ(content(card).plan, "Pro Lite");
    card.limits.planTier = "default_claude_max_20x";
    EXPECT_EQ(content(card).plan, "구독 한도");
}

// --- Main block ---

TEST_F(UsageCard, ShowsWhatIsLeftOfTheWeek) {
    const UsageCardContent shown = content(weeklyCard(18));
    EXPECT_TRUE(shown.hasMainWindow);
    EXPECT_EQ(shown.amount, "82%");
    EXPECT_EQ(shown.amountSuffix, "남음");
    EXPECT_DOUBLE_EQ(shown.gaugeFraction, 0.82);
    EXPECT_EQ(shown.gaugeLabel, "주간 한도 남음");
    EXPECT_EQ(shown.gaugeValue, "82%");
}

TEST_F(UsageCard, ShowsWhatIsUsedWhereTheUserWantsThat) {
    SubscriptionUsageCard card = weeklyCard(18);
    card.display = UsageDisplay::used;
    const UsageCardContent shown = content(card);
    EXPECT_EQ(shown.amount, "18%");
    EXPECT_EQ(shown.amountSuffix, "사용");
    EXPECT_DOUBLE_EQ(shown.gaugeFraction, 0.18);
    EXPECT_EQ(shown.gaugeLabel, "주간 한도 사용");
    EXPECT_EQ(shown.gaugeValue, "18%");
    EXPECT_EQ(shown.level, UsageLevel::comfortable);
}

TEST_F(UsageCard, RoundsWhatIsLeftDownInBothDisplays) {
    SubscriptionUsageCard card = weeklyCard(27.5);
    EXPECT_EQ(content(card).amount, "72%");
    card.display = UsageDisplay::used;
    EXPECT_EQ(content(card).amount, "28%");
}

TEST_F(UsageCard, SaysHowItStands) {
    struct Expected {
        double used;
        UsageLevel level;
        const char* text;
        const char* symbol;
    };
    for (const auto& [used, level, text, symbol] : {
             Expected{49.9, UsageLevel::comfortable, "넉넉해요", "checkmark.circle.fill"},
             Expected{50, UsageLevel::overHalf, "절반 넘게 썼어요", "circle.lefthalf.filled"},
             Expected{79.9, UsageLevel::overHalf, "절반 넘게 썼어요", "circle.lefthalf.filled"},
             Expected{80, UsageLevel::warning, "슬슬 아껴 써요", "exclamationmark.triangle.fill"},
             Expected{99.5, UsageLevel::exhausted, "한도에 닿았어요",
                      "exclamationmark.octagon.fill"},
         }) {
        const UsageCardContent shown = content(weeklyCard(used));
        EXPECT_EQ(shown.level, level) << used;
        EXPECT_EQ(shown.statusText, text) << used;
        EXPECT_EQ(shown.statusSymbol, symbol) << used;
    }
}

TEST_F(UsageCard, NothingIsLeftOfALimitThatIsAllUsed) {
    SubscriptionUsageCard card = weeklyCard(100);
    UsageCardContent shown = content(card);
    EXPECT_EQ(shown.amount, "0%");
    EXPECT_EQ(shown.amountSuffix, "남음");
    EXPECT_EQ(shown.gaugeFraction, 0);
    EXPECT_EQ(shown.statusText, "한도에 닿았어요");
    card.display = UsageDisplay::used;
    shown = content(card);
    EXPECT_EQ(shown.amount, "100%");
    EXPECT_EQ(shown.amountSuffix, "사용");
    EXPECT_EQ(shown.gaugeFraction, 1);
    EXPECT_EQ(shown.level, UsageLevel::exhausted);
}

TEST_F(UsageCard, WarnsFromItsOwnRatioOn) {
    SubscriptionUsageCard card = cardWithBoth(60, 3600);
    card.limits.sevenDay->usedPercentage = 60;
    card.warningRatio = 0.6;
    EXPECT_EQ(content(card).level, UsageLevel::warning);
    EXPECT_EQ(content(card).fiveHourLevel, UsageLevel::warning);
}

TEST_F(UsageCard, TellsWhenTheLimitStartsAnew) {
    SubscriptionUsageCard card = weeklyCard(18);
    EXPECT_EQ(content(card).resetText, "3일 4시간 후 초기화");
    EXPECT_EQ(content(card).resetLabel, "9월 25일 (금) 오전 3시에 초기화");
    card.limits.sevenDay->resetsAt = after(5025);
    EXPECT_EQ(content(card).resetText, "1:23:45 후 초기화");
    EXPECT_EQ(content(card).resetLabel, "9월 22일 (화) 오전 12:23에 초기화");
}

TEST_F(UsageCard, TheMainResetIsToldWithItsDateOnTheSameDayToo) {
    SubscriptionUsageCard card = weeklyCard(18);
    card.limits.sevenDay->resetsAt = after(1800);
    EXPECT_EQ(content(card).resetLabel, "9월 21일 (월) 오후 11:30에 초기화");
}

TEST_F(UsageCard, ALimitThatStartedAnewKeepsItsFigureButHasNoCountdown) {
    for (const double passed : {0.0, 1.0, 1e9, test::infinity}) {
        SubscriptionUsageCard card = weeklyCard(85);
        card.limits.sevenDay->resetsAt = before(passed);
        const UsageCardContent shown = content(card);
        EXPECT_EQ(shown.amount, "15%");
        EXPECT_EQ(shown.level, UsageLevel::warning);
        EXPECT_EQ(shown.resetText, "");
        EXPECT_EQ(shown.resetLabel, "");
        EXPECT_EQ(shown.freshness,
                  "주간 한도가 초기화됐어요. 이 계정으로 Claude Code에서 대화하면 새로 받아요.");
        EXPECT_TRUE(shown.needsAttention);
    }
}

TEST_F(UsageCard, WithoutAResetTimeThereIsNoCountdown) {
    SubscriptionUsageCard card = weeklyCard(18);
    card.limits.sevenDay->resetsAt = std::nullopt;
    EXPECT_EQ(content(card).resetText, "");
    EXPECT_EQ(content(card).resetLabel, "");
    EXPECT_FALSE(content(card).needsAttention);
}

TEST_F(UsageCard, SurvivesEveryTimeOfAFile) {
    for (const double seconds :
         {test::infinity, -test::infinity, test::notANumber, 1e300, -1e300, 1e18}) {
        SubscriptionUsageCard card = cardWithBoth(10, seconds);
        card.limits.sevenDay->resetsAt = after(seconds);
        card.limits.updatedAt = after(seconds);
        card.recentUsagePeriod = RecentUsagePeriod::oneHour;
        const UsageCardContent shown = content(card);
        EXPECT_EQ(shown.amount, "72%");
        EXPECT_FALSE(shown.freshness.isEmpty());
        EXPECT_EQ(shown.resetText.isEmpty(), shown.resetLabel.isEmpty());
        EXPECT_EQ(shown.resetText.isEmpty(), !(seconds > 0));
        EXPECT_EQ(shown.fiveHourPassed, seconds < 0);
        EXPECT_FALSE(hasLiveCountdown(card, cardTime));
    }
}

TEST_F(UsageCard, WithAFiveHourFigureAloneShowsItOnceInTheMainPlace) {
    SubscriptionUsageCard card = cardWithBoth(40, 5025);
    card.limits.sevenDay = std::nullopt;
    const UsageCardContent shown = content(card);
    EXPECT_EQ(shown.amount, "60%");
    EXPECT_EQ(shown.gaugeLabel, "5시간 한도 남음");
    EXPECT_EQ(shown.resetText, "1:23:45 후 초기화");
    EXPECT_FALSE(shown.hasSecondWindow);
    EXPECT_EQ(shown.fiveHourText, "");
    EXPECT_EQ(shown.fiveHourResetText, "");
}

TEST_F(UsageCard, WithoutAWindowKeepsHeaderAndFreshness) {
    SubscriptionUsageCard card = emptyCard();
    card.recentUsagePeriod = RecentUsagePeriod::oneHour;
    UsageCardContent expected;
    expected.provider = "claude";
    expected.account = "work";
    expected.identifierSuffix = "claude-work";
    expected.cardKey = "subscription.claude-work";
    expected.title = "Claude";
    expected.plan = "구독 한도";
    expected.freshness = "Claude Code에서 방금 받음";
    EXPECT_EQ(content(card), expected);
}

// --- Five-hour row ---

TEST_F(UsageCard, HasTheFiveHourFigureBesideTheWeek) {
    SubscriptionUsageCard card = cardWithBoth(18, 5025);
    EXPECT_TRUE(content(card).hasSecondWindow);
    EXPECT_EQ(content(card).fiveHourText, "82% 남음");
    EXPECT_FALSE(content(card).fiveHourPassed);
    EXPECT_EQ(content(card).fiveHourResetText, "· 1:23:45 후");
    card.display = UsageDisplay::used;
    EXPECT_EQ(content(card).fiveHourText, "18% 사용");
    EXPECT_FALSE(content(weeklyCard(18)).hasSecondWindow);
}

TEST_F(UsageCard, TheFiveHourFigureHasALevelOfItsOwn) {
    EXPECT_EQ(content(cardWithBoth(49.9, 60)).fiveHourLevel, UsageLevel::comfortable);
    EXPECT_EQ(content(cardWithBoth(50, 60)).fiveHourLevel, UsageLevel::overHalf);
    EXPECT_EQ(content(cardWithBoth(80, 60)).fiveHourLevel, UsageLevel::warning);
    EXPECT_EQ(content(cardWithBoth(99.5, 60)).fiveHourLevel, UsageLevel::exhausted);
    EXPECT_EQ(content(cardWithBoth(99.5, 60)).level, UsageLevel::comfortable);
}

TEST_F(UsageCard, TheFiveHourRowWaitsOnceItsResetHasPassed) {
    for (const double passed : {0.0, 1.0, 1e9}) {
        const UsageCardContent shown = content(cardWithBoth(18, -passed));
        EXPECT_EQ(shown.fiveHourText, "새 값 대기");
        EXPECT_TRUE(shown.fiveHourPassed);
        EXPECT_EQ(shown.fiveHourResetText, "");
        EXPECT_EQ(shown.fiveHourResetLabel, "");
        EXPECT_FALSE(shown.needsAttention);
    }
    EXPECT_EQ(content(cardWithBoth(18, 0.5)).fiveHourResetText, "· 0:01 후");
}

TEST_F(UsageCard, TheFiveHourRowNeedsNoResetTime) {
    SubscriptionUsageCard card = cardWithBoth(18, 0);
    card.limits.fiveHour->resetsAt = std::nullopt;
    const UsageCardContent shown = content(card);
    EXPECT_EQ(shown.fiveHourText, "82% 남음");
    EXPECT_FALSE(shown.fiveHourPassed);
    EXPECT_EQ(shown.fiveHourResetText, "");
}

TEST_F(UsageCard, TheFiveHourResetIsToldWithItsDateFromMidnightOn) {
    EXPECT_EQ(content(cardWithBoth(18, 3540)).fiveHourResetLabel, "오후 11:59에 초기화");
    EXPECT_EQ(content(cardWithBoth(18, 3600)).fiveHourResetLabel,
              "9월 22일 (화) 오전 12시에 초기화");
    zone_.move("UTC");
    EXPECT_EQ(content(cardWithBoth(18, 3600)).fiveHourResetLabel, "오후 3:00에 초기화");
}

// --- Recent usage ---

SubscriptionUsageCard recentCard(double usedPercentage) {
    SubscriptionUsageCard card = emptyCard();
    card.limits = test::weeklyRecord(usedPercentage);
    card.now = test::now;
    card.recentUsagePeriod = RecentUsagePeriod::oneHour;
    return card;
}

SubscriptionUsageCard recentCardWithHistory() {
    SubscriptionUsageCard card = recentCard(22.3);
    card.limits.recentUsageHistory = RecentUsageSamples{
        test::weeklySample(3700, 10), test::weeklySample(1800, 15), test::weeklySample(0, 22.3)};
    return card;
}

TEST_F(UsageCard, HasNoRecentUsageWhereThatIsOff) {
    SubscriptionUsageCard card = recentCardWithHistory();
    card.recentUsagePeriod = RecentUsagePeriod::off;
    EXPECT_FALSE(content(card).hasRecentUsage);
    EXPECT_EQ(content(card).recentTitle, "");
    EXPECT_EQ(content(card).recentText, "");
}

TEST_F(UsageCard, TellsWhatWasSpentLately) {
    SubscriptionUsageCard card = recentCardWithHistory();
    EXPECT_TRUE(content(card).hasRecentUsage);
    EXPECT_EQ(content(card).recentText, "주간 약 12.3%");
    card.locale = "de_DE.UTF-8";
    EXPECT_EQ(content(card).recentText, "주간 약 12,3%");
    card.locale = "ar_EG";
    EXPECT_EQ(content(card).recentText, "주간 약 ١٢٫٣%");
}

TEST_F(UsageCard, TellsWhatWasSpentOfTheFiveHourWindowWithoutAWeek) {
    SubscriptionUsageCard card = recentCardWithHistory();
    card.limits.fiveHour = std::exchange(card.limits.sevenDay, std::nullopt);
    RecentUsageSamples samples;
    for (RecentUsageSample sample : *card.limits.recentUsageHistory) {
        sample.fiveHour = std::exchange(sample.sevenDay, std::nullopt);
        samples.push_back(sample);
    }
    card.limits.recentUsageHistory = samples;
    EXPECT_EQ(content(card).recentText, "5시간 약 12.3%");
}

TEST_F(UsageCard, NothingSpentIsAFigure) {
    SubscriptionUsageCard card = recentCardWithHistory();
    card.limits.sevenDay->usedPercentage = 22.3;
    card.limits.recentUsageHistory = RecentUsageSamples{test::weeklySample(3700, 22.3)};
    EXPECT_EQ(content(card).recentText, "주간 약 0.0%");
}

TEST_F(UsageCard, SaysWhyThereIsNoRecentUsage) {
    SubscriptionUsageCard card = recentCard(30);
    EXPECT_EQ(content(card).recentText, "기록 모으는 중");
    card.limits.updatedAt = test::secondsAgo(901);
    EXPECT_EQ(content(card).recentText, "새 기록 대기");
    card.limits.updatedAt = test::now;
    card.limits.sevenDay->resetsAt = test::now;
    EXPECT_EQ(content(card).recentText, "초기화 후 기록 중");
    card.limits.updatedAt = test::secondsAhead(61);
    EXPECT_EQ(content(card).recentText, "사용 기록 없음");
}

TEST_F(UsageCard, TitlesRecentUsageByItsPeriod) {
    SubscriptionUsageCard card = recentCard(30);
    EXPECT_EQ(content(card).recentTitle, "최근 1시간");
    card.recentUsagePeriod = RecentUsagePeriod::twoHours;
    EXPECT_EQ(content(card).recentTitle, "최근 2시간");
    card.recentUsagePeriod = RecentUsagePeriod::fourHours;
    EXPECT_EQ(content(card).recentTitle, "최근 4시간");
    card.recentUsagePeriod = RecentUsagePeriod::sixHours;
    EXPECT_EQ(content(card).recentTitle, "최근 6시간");
}

// --- Credits ---

TEST_F(UsageCard, ShowsCreditsWhereThereAreSome) {
    SubscriptionUsageCard card = weeklyCard(18);
    EXPECT_EQ(content(card).credit, "");
    EXPECT_EQ(content(card).creditLabel, "");
    card.creditValue = "1,234.5";
    EXPECT_EQ(content(card).credit, "1,234.5");
    EXPECT_EQ(content(card).creditLabel, "크레딧 1,234.5");
    card.creditAccessibilityLabel = "크레딧 1,234.5 남음";
    EXPECT_EQ(content(card).creditLabel, "크레딧 1,234.5 남음");
    card.creditValue = std::nullopt;
    EXPECT_EQ(content(card).creditLabel, "");
}

// --- Time that passes ---

TEST_F(UsageCard, CountsDownAndLeavesAllElseAlone) {
    const SubscriptionUsageCard card = cardWithBoth(18, 5025);
    UsageCardContent shown = content(card);
    updateCountdowns(shown, card, after(25));
    UsageCardContent expected = content(card);
    expected.resetText = "3일 3시간 후 초기화";
    expected.fiveHourResetText = "· 1:23:20 후";
    EXPECT_EQ(shown, expected);
}

TEST_F(UsageCard, ACountdownThatEndedIsGone) {
    const SubscriptionUsageCard card = cardWithBoth(18, 10);
    UsageCardContent shown = content(card);
    updateCountdowns(shown, card, after(9));
    EXPECT_EQ(shown.fiveHourResetText, "· 0:01 후");
    updateCountdowns(shown, card, after(10));
    EXPECT_EQ(shown.fiveHourResetText, "");
}

TEST_F(UsageCard, CountsDownByTheSecondWhereALimitStartsAnewWithinADay) {
    EXPECT_FALSE(hasLiveCountdown(emptyCard(), cardTime));
    EXPECT_FALSE(hasLiveCountdown(weeklyCard(18), cardTime));
    EXPECT_TRUE(hasLiveCountdown(cardWithBoth(18, 60), cardTime));
    EXPECT_FALSE(hasLiveCountdown(cardWithBoth(18, 60), after(60)));
    EXPECT_TRUE(hasLiveCountdown(weeklyCard(18), after(3 * daySeconds)));
}

TEST_F(UsageCard, NoticesAResetThatComesAfterItWasMade) {
    EXPECT_FALSE(wasResetSince(cardWithBoth(18, 60), after(59.9)));
    EXPECT_TRUE(wasResetSince(cardWithBoth(18, 60), after(60)));
    EXPECT_FALSE(wasResetSince(cardWithBoth(18, 0), after(60)));
    EXPECT_TRUE(wasResetSince(weeklyCard(18), after(4 * daySeconds)));
    EXPECT_FALSE(wasResetSince(emptyCard(), after(1e9)));
}

}  // namespace
}  // namespace brimwatch
