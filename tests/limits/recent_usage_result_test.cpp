#include "limits/recent_usage_result.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <map>

#include "allocation_count.h"
#include "limits/recent_usage_history.h"
#include "recent_usage_oracle.h"
#include "usage_examples.h"

namespace brimwatch {
namespace {

using test::now;
using test::secondsAgo;
using test::secondsAhead;
using test::weeklyRecord;
using test::weeklySample;
using Status = RecentUsageResult::Status;
using enum RecentUsagePeriod;

RecentUsageResult derive(const SubscriptionLimits& limits, RecentUsagePeriod period = oneHour) {
    return RecentUsageResult::derive(limits, period, now);
}

// A record of 40% now, with 10% an hour ago and 20% half an hour ago.
SubscriptionLimits risingRecord() {
    SubscriptionLimits limits = weeklyRecord(40);
    limits.recentUsageHistory = {weeklySample(3600, 10), weeklySample(1800, 20)};
    return limits;
}

RecentUsageSample& sampleOf(SubscriptionLimits& limits, std::size_t index) {
    return limits.recentUsageHistory->at(index);
}

TEST(RecentUsage, IsTheRiseFromTheStartOfThePeriod) {
    EXPECT_EQ(derive(risingRecord()), (RecentUsageResult{.status = Status::available,
                                                         .percentagePoints = 30,
                                                         .basisName = "주간",
                                                         .updatedAt = now}));
}

TEST(RecentUsage, EveryPeriodHasItsOwnStart) {
    SubscriptionLimits limits = weeklyRecord(70);
    for (double hours = 6; hours >= 0; --hours)
        limits.recentUsageHistory.emplace(limits.recentUsageHistory.value_or(RecentUsageSamples()))
            .push_back(weeklySample(hours * 3600, 70 - 10 * hours));
    EXPECT_EQ(derive(limits, oneHour).percentagePoints, 10);
    EXPECT_EQ(derive(limits, twoHours).percentagePoints, 20);
    EXPECT_EQ(derive(limits, fourHours).percentagePoints, 40);
    EXPECT_EQ(derive(limits, sixHours).percentagePoints, 60);
}

TEST(RecentUsage, SwitchedOffIsUnavailable) {
    EXPECT_EQ(derive(risingRecord(), off),
              (RecentUsageResult{Status::unavailable, std::nullopt, "주간", now}));
}

TEST(RecentUsage, WithoutAWindowIsUnavailableAndHasNoTime) {
    SubscriptionLimits limits = risingRecord();
    limits.sevenDay = std::nullopt;
    EXPECT_EQ(derive(limits),
              (RecentUsageResult{Status::unavailable, std::nullopt, "5시간", std::nullopt}));
}

TEST(RecentUsage, OfABadRecordIsUnavailable) {
    SubscriptionLimits limits = risingRecord();
    limits.sevenDay->usedPercentage = 100.5;
    EXPECT_EQ(derive(limits).status, Status::unavailable);
    limits = risingRecord();
    limits.sevenDay->resetsAt = instantFromUnixSeconds(std::numeric_limits<double>::infinity());
    EXPECT_EQ(derive(limits).status, Status::unavailable);
    for (const double seconds : {std::numeric_limits<double>::infinity(),
                                 -std::numeric_limits<double>::infinity(), std::nan("")}) {
        limits = risingRecord();
        limits.updatedAt = instantFromUnixSeconds(seconds);
        EXPECT_EQ(derive(limits).status, Status::unavailable);
    }
}

TEST(RecentUsage, AMinuteAheadIsTakenAndASecondMoreIsUnavailable) {
    SubscriptionLimits limits = risingRecord();
    limits.updatedAt = secondsAhead(60);
    EXPECT_EQ(derive(limits).status, Status::available);
    EXPECT_EQ(derive(limits).updatedAt, secondsAhead(60));
    limits.updatedAt = secondsAhead(61);
    EXPECT_EQ(derive(limits).status, Status::unavailable);
}

TEST(RecentUsage, OfARecord901SecondsOldIsStaleAndOf900IsNot) {
    SubscriptionLimits limits = risingRecord();
    limits.updatedAt = secondsAgo(900);
    EXPECT_EQ(derive(limits).status, Status::available);
    limits.updatedAt = secondsAgo(901);
    EXPECT_EQ(derive(limits),
              (RecentUsageResult{Status::stale, std::nullopt, "주간", secondsAgo(901)}));
}

TEST(RecentUsage, AResetOfExactlyNowIsAReset) {
    SubscriptionLimits limits = risingRecord();
    for (RecentUsageSample& sample : *limits.recentUsageHistory)
        sample.sevenDay->resetsAt = secondsAhead(1);
    limits.sevenDay->resetsAt = secondsAhead(1);
    EXPECT_EQ(derive(limits).status, Status::available);
    limits.sevenDay->resetsAt = now;
    EXPECT_EQ(derive(limits), (RecentUsageResult{Status::reset, std::nullopt, "주간", now}));
}

TEST(RecentUsage, AtFirstThereIsNoSampleAtTheStartOfThePeriod) {
    SubscriptionLimits limits = risingRecord();
    limits.recentUsageHistory = std::nullopt;
    EXPECT_EQ(derive(limits), (RecentUsageResult{Status::collecting, std::nullopt, "주간", now}));
    limits.recentUsageHistory = RecentUsageSamples();
    EXPECT_EQ(derive(limits).status, Status::collecting);
    limits.recentUsageHistory = {weeklySample(3599, 10)};
    EXPECT_EQ(derive(limits).status, Status::collecting);
}

TEST(RecentUsage, ASampleTenMinutesBeforeThePeriodIsABaselineAndASecondMoreIsNone) {
    SubscriptionLimits limits = risingRecord();
    sampleOf(limits, 0).updatedAt = secondsAgo(4200);
    EXPECT_EQ(derive(limits).status, Status::available);
    sampleOf(limits, 0).updatedAt = secondsAgo(4201);
    EXPECT_EQ(derive(limits).status, Status::collecting);
}

TEST(RecentUsage, TheBaselineIsTheNewestSampleBeforeThePeriod) {
    SubscriptionLimits limits = risingRecord();
    limits.recentUsageHistory->insert(limits.recentUsageHistory->begin(), weeklySample(3900, 50));
    EXPECT_EQ(derive(limits).percentagePoints, 30);
}

TEST(RecentUsage, AnInvalidSampleIsNoBaseline) {
    SubscriptionLimits limits = risingRecord();
    limits.recentUsageHistory->insert(limits.recentUsageHistory->begin(), weeklySample(4000, 5));
    sampleOf(limits, 1).sevenDay->usedPercentage = 101;
    EXPECT_EQ(derive(limits).percentagePoints, 35);
    sampleOf(limits, 0).updatedAt = secondsAgo(4201);
    EXPECT_EQ(derive(limits).status, Status::collecting);
}

TEST(RecentUsage, AnInvalidSampleInBetweenIsPassedOver) {
    SubscriptionLimits limits = risingRecord();
    sampleOf(limits, 1).sevenDay->usedPercentage = -1;
    sampleOf(limits, 1).sevenDayReset = true;
    EXPECT_EQ(derive(limits).percentagePoints, 30);
}

TEST(RecentUsage, ABaselineWithoutTheWindowIsUnavailable) {
    SubscriptionLimits limits = risingRecord();
    sampleOf(limits, 0).sevenDay = std::nullopt;
    sampleOf(limits, 0).fiveHour = test::window(1);
    EXPECT_EQ(derive(limits).status, Status::unavailable);
}

TEST(RecentUsage, ASampleWithoutTheWindowIsUnavailable) {
    SubscriptionLimits limits = risingRecord();
    sampleOf(limits, 1).sevenDay = std::nullopt;
    sampleOf(limits, 1).fiveHour = test::window(1);
    EXPECT_EQ(derive(limits).status, Status::unavailable);
}

TEST(RecentUsage, AFallBreaksTheStretch) {
    SubscriptionLimits limits = weeklyRecord(11);
    limits.recentUsageHistory = {weeklySample(3600, 10), weeklySample(3300, 12),
                                 weeklySample(3000, 11)};
    EXPECT_EQ(derive(limits).status, Status::reset);
    limits.recentUsageHistory->pop_back();
    EXPECT_EQ(derive(limits).status, Status::reset);
    limits.sevenDay->usedPercentage = 12;
    EXPECT_EQ(derive(limits).percentagePoints, 2);
}

TEST(RecentUsage, AnotherPlanInThePeriodIsAResetThoughTheFiguresRise) {
    SubscriptionLimits limits = risingRecord();
    sampleOf(limits, 1).planTier = "Pro";
    EXPECT_EQ(derive(limits).status, Status::reset);
    limits = risingRecord();
    limits.planTier = "Pro";
    EXPECT_EQ(derive(limits).status, Status::reset);
    for (RecentUsageSample& sample : *limits.recentUsageHistory)
        sample.planTier = "Pro";
    EXPECT_EQ(derive(limits).status, Status::available);
}

TEST(RecentUsage, ASeenResetOfTheWindowIsAResetThatOfTheOtherIsNot) {
    SubscriptionLimits limits = risingRecord();
    sampleOf(limits, 1).fiveHourReset = true;
    EXPECT_EQ(derive(limits).status, Status::available);
    sampleOf(limits, 1).sevenDayReset = true;
    EXPECT_EQ(derive(limits).status, Status::reset);
}

TEST(RecentUsage, AResetBeforeTheBaselineDoesNotMatter) {
    SubscriptionLimits limits = risingRecord();
    sampleOf(limits, 0).sevenDayReset = true;
    EXPECT_EQ(derive(limits).status, Status::available);
}

TEST(RecentUsage, AResetTimeThatComesGoesOrMovesByMoreThanAnHourIsAReset) {
    SubscriptionLimits limits = risingRecord();
    sampleOf(limits, 1).sevenDay->resetsAt = secondsAhead(90'000 + 3600);
    EXPECT_EQ(derive(limits).status, Status::available);
    sampleOf(limits, 1).sevenDay->resetsAt = secondsAhead(90'000 + 3601);
    EXPECT_EQ(derive(limits).status, Status::reset);
    sampleOf(limits, 1).sevenDay->resetsAt = std::nullopt;
    EXPECT_EQ(derive(limits).status, Status::reset);
    limits = risingRecord();
    limits.sevenDay->resetsAt = std::nullopt;
    EXPECT_EQ(derive(limits).status, Status::reset);
}

TEST(RecentUsage, ACycleThatEndedAfterTheBaselineIsAReset) {
    SubscriptionLimits limits = risingRecord();
    limits.sevenDay->resetsAt = secondsAhead(1700);
    sampleOf(limits, 1).sevenDay->resetsAt = secondsAhead(1700);
    sampleOf(limits, 0).sevenDay->resetsAt = secondsAhead(1);
    EXPECT_EQ(derive(limits).status, Status::available);
    sampleOf(limits, 0).sevenDay->resetsAt = now;
    EXPECT_EQ(derive(limits).status, Status::reset);
    sampleOf(limits, 0).sevenDay->resetsAt = secondsAgo(1800);
    EXPECT_EQ(derive(limits).status, Status::reset);
}

TEST(RecentUsage, TheWeeklyWindowCountsEvenWhereTheOtherMovesFaster) {
    SubscriptionLimits limits = risingRecord();
    limits.fiveHour = test::window(90);
    for (RecentUsageSample& sample : *limits.recentUsageHistory)
        sample.fiveHour = test::window(1);
    EXPECT_EQ(derive(limits).basisName, "주간");
    EXPECT_EQ(derive(limits).percentagePoints, 30);
}

TEST(RecentUsage, AnAccountWithAFiveHourWindowAloneSpeaksOfThat) {
    SubscriptionLimits limits = risingRecord();
    std::swap(limits.fiveHour, limits.sevenDay);
    for (RecentUsageSample& sample : *limits.recentUsageHistory)
        std::swap(sample.fiveHour, sample.sevenDay);
    EXPECT_EQ(derive(limits), (RecentUsageResult{Status::available, 30, "5시간", now}));
    sampleOf(limits, 1).sevenDayReset = true;
    EXPECT_EQ(derive(limits).status, Status::available);
    sampleOf(limits, 1).fiveHourReset = true;
    EXPECT_EQ(derive(limits).status, Status::reset);
}

TEST(RecentUsage, NothingSpentIsAResult) {
    SubscriptionLimits limits = weeklyRecord(10);
    limits.recentUsageHistory = {weeklySample(3600, 10)};
    EXPECT_EQ(derive(limits).status, Status::available);
    EXPECT_EQ(derive(limits).percentagePoints, 0);
}

TEST(RecentUsage, SamplesLaterThanTheRecordDoNotCount) {
    SubscriptionLimits limits = risingRecord();
    limits.updatedAt = secondsAgo(600);
    limits.recentUsageHistory->push_back(weeklySample(599, 5));
    EXPECT_EQ(derive(limits).percentagePoints, 30);
    sampleOf(limits, 2).updatedAt = secondsAgo(600);
    EXPECT_EQ(derive(limits).status, Status::reset);
}

TEST(RecentUsage, SamplesInAnyOrderGiveTheSame) {
    SubscriptionLimits limits = risingRecord();
    std::swap(sampleOf(limits, 0), sampleOf(limits, 1));
    limits.recentUsageHistory->push_back(weeklySample(3600, 39));
    EXPECT_EQ(derive(limits).percentagePoints, 30);
}

TEST(RecentUsage, OnlyTheNewest300SamplesCount) {
    SubscriptionLimits limits = risingRecord();
    for (int index = 0; index < 299; ++index)
        limits.recentUsageHistory->push_back(weeklySample(1000 - index, 30));
    EXPECT_EQ(derive(limits).status, Status::collecting);
    limits.recentUsageHistory->resize(300);
    EXPECT_EQ(derive(limits).status, Status::available);
}

TEST(RecentUsage, EveryStatusHasItsRawStringAndItsText) {
    const std::tuple<Status, const char*, const char*> rows[] = {
        {Status::available, "available", "기록 모으는 중"},
        {Status::collecting, "collecting", "기록 모으는 중"},
        {Status::stale, "stale", "새 기록 대기"},
        {Status::reset, "reset", "초기화 후 기록 중"},
        {Status::unavailable, "unavailable", "사용 기록 없음"},
    };
    for (const auto& [status, raw, text] : rows) {
        EXPECT_EQ(rawString(status), raw);
        EXPECT_EQ(textWithoutFigure(status), text);
    }
}

// A full day of samples, with plan names that don't fit into a string object.
SubscriptionLimits fullRecord() {
    SubscriptionLimits limits = weeklyRecord(99);
    limits.planTier = "A plan whose name is long enough to be kept elsewhere";
    RecentUsageSamples samples;
    for (int index = 299; index >= 0; --index)
        samples.push_back(weeklySample(index * 288, 90 - index * 0.25));
    for (RecentUsageSample& sample : samples)
        sample.planTier = limits.planTier;
    limits.recentUsageHistory = samples;
    return limits;
}

TEST(RecentUsage, OfRecordedSamplesAllocatesNothing) {
    const SubscriptionLimits limits = fullRecord();
    for (const RecentUsagePeriod period : {off, oneHour, twoHours, fourHours, sixHours}) {
        const std::size_t before = test::allocationCount();
        const RecentUsageResult result = derive(limits, period);
        EXPECT_EQ(test::allocationCount(), before);
        EXPECT_EQ(result.status, period == off ? Status::unavailable : Status::available);
    }
}

TEST(RecentUsage, OfSamplesOutOfOrderAllocatesForTheirCopyAlone) {
    SubscriptionLimits limits = fullRecord();
    std::swap(sampleOf(limits, 0), sampleOf(limits, 299));
    std::size_t before = test::allocationCount();
    const RecentUsageSamples& samples = *limits.recentUsageHistory;
    const RecentUsageSamples copy(samples.begin(), samples.end());
    const std::size_t allocationsOfACopy = test::allocationCount() - before;
    before = test::allocationCount();
    const RecentUsageResult result = derive(limits, sixHours);
    // Sorting borrows one buffer.
    EXPECT_LE(test::allocationCount() - before, allocationsOfACopy + 1);
    EXPECT_EQ(result.status, Status::available);
    EXPECT_EQ(copy.size(), 300U);
}

TEST(RecentUsage, AgreesWithThePlainStepsOverRandomHistories) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    std::map<Status, int> seen;
    for (int round = 0; round < 4000; ++round) {
        test::RandomUsage usage(random, random.oneIn(3) ? 2 + random.below(20) : 2000);
        SubscriptionLimits limits;
        limits.recentUsageHistory =
            usage.samples(1 + random.below(310), random.between(1, 6) * 100);
        const RecentUsageSample last =
            usage.nextSample(secondsAgo(static_cast<double>(random.between(-62, 1000))));
        if (random.oneIn(2)) limits.fiveHour = last.fiveHour;
        if (random.oneIn(2)) limits.sevenDay = last.sevenDay;
        limits.planTier = last.planTier;
        limits.updatedAt = last.updatedAt;
        if (random.oneIn(50)) limits.recentUsageHistory = std::nullopt;
        for (const RecentUsagePeriod period : {off, oneHour, twoHours, fourHours, sixHours}) {
            const RecentUsageResult result = derive(limits, period);
            const RecentUsageResult plain =
                test::oracle::derive(limits, rawValue(period), test::nowSeconds);
            ASSERT_EQ(result.status, plain.status);
            ASSERT_EQ(result.percentagePoints, plain.percentagePoints);
            ASSERT_EQ(result.basisName, plain.basisName);
            ASSERT_EQ(result.updatedAt.has_value(), plain.updatedAt.has_value());
            ++seen[result.status];
        }
    }
    for (const Status status : {Status::available, Status::collecting, Status::stale, Status::reset,
                                Status::unavailable}) {
        EXPECT_GT(seen[status], 100) << rawString(status);
    }
}

}  // namespace
}  // namespace brimwatch
