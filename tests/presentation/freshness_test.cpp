#include "presentation/freshness.h"

#include <gtest/gtest.h>

#include "card_examples.h"

namespace brimwatch {
namespace {

using test::after;
using test::before;
using test::cardTime;
using Provider = SubscriptionLimits::Provider;

const QString claudeHint = "이 계정으로 Claude Code에서 대화하면 새로 받아요.";
const QString codexHint = "맥이 켜져 있으면 5분마다 새로 받아요.";

SubscriptionLimits aged(double seconds, Provider provider = Provider::claude) {
    SubscriptionLimits limits = test::weeklyCard(28).limits;
    limits.provider = provider;
    limits.updatedAt = before(seconds);
    return limits;
}

Freshness of(const SubscriptionLimits& limits) {
    return freshness(limits, cardTime, "ko_KR");
}

TEST(Freshness, TellsWhoGaveTheFigureAndWhen) {
    EXPECT_EQ(of(aged(59.9)), (Freshness{"Claude Code에서 방금 받음", false}));
    EXPECT_EQ(of(aged(60)), (Freshness{"Claude Code에서 1분 전 받음", false}));
    EXPECT_EQ(of(aged(7200, Provider::codex)), (Freshness{"Codex에서 2시간 전 받음", false}));
}

TEST(Freshness, AFigureOfTheFutureCameJustNow) {
    EXPECT_EQ(of(aged(-3600)), (Freshness{"Claude Code에서 방금 받음", false}));
    EXPECT_EQ(of(aged(-test::infinity)), (Freshness{"Claude Code에서 방금 받음", false}));
}

TEST(Freshness, AFigureIsOldAboveSixHours) {
    EXPECT_EQ(of(aged(21600)), (Freshness{"Claude Code에서 6시간 전 받음", false}));
    EXPECT_EQ(of(aged(21600.1)), (Freshness{"6시간 전 받은 값이에요. " + claudeHint, true}));
    EXPECT_EQ(of(aged(86400, Provider::codex)),
              (Freshness{"1일 전 받은 값이에요. " + codexHint, true}));
    EXPECT_TRUE(of(aged(test::infinity)).needsAttention);
}

TEST(Freshness, ALimitThatStartedAnewWaitsForAFigure) {
    SubscriptionLimits limits = aged(300);
    limits.sevenDay->resetsAt = before(1);
    EXPECT_EQ(of(limits), (Freshness{"주간 한도가 초기화됐어요. " + claudeHint, true}));
    limits.provider = Provider::codex;
    EXPECT_EQ(of(limits), (Freshness{"주간 한도가 초기화됐어요. " + codexHint, true}));
    limits.fiveHour = std::exchange(limits.sevenDay, std::nullopt);
    EXPECT_EQ(of(limits), (Freshness{"5시간 한도가 초기화됐어요. " + codexHint, true}));
}

TEST(Freshness, AResetRightNowHasPassed) {
    SubscriptionLimits limits = aged(0);
    limits.sevenDay->resetsAt = cardTime;
    EXPECT_TRUE(of(limits).needsAttention);
    limits.sevenDay->resetsAt = after(0.001);
    EXPECT_FALSE(of(limits).needsAttention);
}

TEST(Freshness, TheFiveHourWindowDoesNotCountBesideTheWeek) {
    SubscriptionLimits limits = aged(300);
    limits.fiveHour = test::usedUntil(10, before(1));
    EXPECT_EQ(of(limits), (Freshness{"Claude Code에서 5분 전 받음", false}));
}

TEST(Freshness, AnOldFigureIsOldEvenIfItsLimitStartedAnew) {
    SubscriptionLimits limits = aged(25200);
    limits.sevenDay->resetsAt = before(1);
    EXPECT_EQ(of(limits), (Freshness{"7시간 전 받은 값이에요. " + claudeHint, true}));
}

TEST(Freshness, NeedsNoWindowAndNoResetTime) {
    SubscriptionLimits limits = aged(300);
    limits.sevenDay->resetsAt = std::nullopt;
    EXPECT_EQ(of(limits), (Freshness{"Claude Code에서 5분 전 받음", false}));
    limits.sevenDay = std::nullopt;
    EXPECT_EQ(of(limits), (Freshness{"Claude Code에서 5분 전 받음", false}));
}

TEST(Freshness, TellsTheTimeInTheWordsOfTheLocale) {
    EXPECT_EQ(freshness(aged(300), cardTime, "en_US").text, "Claude Code에서 5 minutes ago 받음");
    EXPECT_EQ(freshness(aged(300), cardTime, "de_DE").text, "Claude Code에서 vor 5 Minuten 받음");
    EXPECT_EQ(freshness(aged(300), cardTime, "ar_EG").text, "Claude Code에서 قبل ٥ دقائق 받음");
}

}  // namespace
}  // namespace brimwatch
