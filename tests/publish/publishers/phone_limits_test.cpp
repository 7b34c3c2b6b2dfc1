// What an Android phone gets of an account's samples.

#include "publish/publishers/phone_limits.h"

#include <gmock/gmock.h>

#include <limits>
#include <utility>
#include <vector>

#include "publish/publish_examples.h"

namespace brimwatch {
namespace {

using test::accountOf;

// One sample for each five minutes, the oldest first, the newest at the time of the figures.
SubscriptionLimits withSamples(int count) {
    SubscriptionLimits limits = accountOf("work", 0);
    limits.recentUsageHistory.emplace();
    for (int index = count - 1; index >= 0; --index)
        limits.recentUsageHistory->push_back(test::weeklySample(300.0 * index, 10));
    return limits;
}

std::vector<double> agesOf(const SubscriptionLimits& limits) {
    std::vector<double> ages;
    if (!limits.recentUsageHistory) return ages;
    const RecentUsageSamples& samples = *limits.recentUsageHistory;
    for (const RecentUsageSample& sample : samples)
        ages.push_back((test::now - sample.updatedAt).count());
    return ages;
}

TEST(PhoneLimits, AnAccountWithoutSamplesStaysAsItIs) {
    EXPECT_EQ(limitsForPhone(accountOf("work", 5)), accountOf("work", 5));
}

TEST(PhoneLimits, OnlyTheSamplesChange) {
    SubscriptionLimits limits = accountOf("work", 0, {100'000});
    limits.planTier = "Max";
    limits.displayName = "mine";
    SubscriptionLimits expected = limits;
    expected.recentUsageHistory.reset();
    EXPECT_EQ(limitsForPhone(limits), expected);
}

TEST(PhoneLimits, OfFiveMinutesOneSampleIsLeft) {
    const SubscriptionLimits limits = accountOf("work", 0, {650, 610, 350, 310, 0});
    EXPECT_THAT(agesOf(limitsForPhone(limits)), ::testing::ElementsAre(610, 310, 0));
}

TEST(PhoneLimits, ASampleOfExactlySixHoursAndAQuarterStays) {
    EXPECT_THAT(agesOf(limitsForPhone(accountOf("work", 0, {22'501, 22'500, 0}))),
                ::testing::ElementsAre(22'500, 0));
}

TEST(PhoneLimits, TheWindowCountsFromTheFiguresAndNotFromNow) {
    EXPECT_THAT(agesOf(limitsForPhone(accountOf("work", 1'000, {23'501, 23'500, 1'000}))),
                ::testing::ElementsAre(23'500, 1'000));
}

TEST(PhoneLimits, ASampleLaterThanTheFiguresIsDropped) {
    EXPECT_THAT(agesOf(limitsForPhone(accountOf("work", 600, {900, 600, 560}))),
                ::testing::ElementsAre(900));
}

TEST(PhoneLimits, AHundredSamplesInTheWindowGoOutWithinTheirBound) {
    SubscriptionLimits limits = accountOf("work", 0);
    limits.recentUsageHistory.emplace();
    for (int index = 100; index >= 0; --index)
        limits.recentUsageHistory->push_back(test::weeklySample(225.0 * index, 10));
    const std::vector<double> ages = agesOf(limitsForPhone(limits));
    // One for each five minutes are two fewer than there may be.
    EXPECT_EQ(ages.size(), 76U);
    EXPECT_EQ(ages.back(), 0);
    EXPECT_EQ(agesOf(limitsForPhone(withSamples(76))).size(), 76U);
}

TEST(PhoneLimits, WithoutASampleInTheWindowTheHistoryIsAbsent) {
    EXPECT_EQ(limitsForPhone(accountOf("work", 0, {30'000})).recentUsageHistory, std::nullopt);
    SubscriptionLimits empty = accountOf("work", 0);
    empty.recentUsageHistory.emplace();
    EXPECT_EQ(limitsForPhone(empty).recentUsageHistory, std::nullopt);
}

TEST(PhoneLimits, WhatIsThinnedStaysAsItIs) {
    const SubscriptionLimits once = limitsForPhone(withSamples(90));
    EXPECT_EQ(limitsForPhone(once), once);
}

TEST(PhoneLimits, FiguresOfNoFiniteTimeHaveNoSamples) {
    for (const double sign : {1.0, -1.0}) {
        SubscriptionLimits limits = accountOf("work", 0, {300, 0});
        limits.updatedAt = instantFromUnixSeconds(sign * std::numeric_limits<double>::infinity());
        EXPECT_EQ(limitsForPhone(limits).recentUsageHistory, std::nullopt);
    }
}

const RecentUsageSample* samplesOf(const SubscriptionLimits& limits) {
    return &limits.recentUsageHistory->front();
}

TEST(PhoneLimits, AnAccountThatHasNotChangedIsNotWorkedOutAnew) {
    PhoneLimits phoneLimits;
    std::vector<SubscriptionLimits> limits = {withSamples(3), withSamples(5)};
    limits[1].account = "home";
    const std::vector<SubscriptionLimits> first = phoneLimits.prepare(limits);
    EXPECT_THAT(first,
                ::testing::ElementsAre(limitsForPhone(limits[0]), limitsForPhone(limits[1])));
    limits[1].recentUsageHistory->push_back(test::weeklySample(-300, 20));
    limits[1].updatedAt += std::chrono::seconds(300);
    const std::vector<SubscriptionLimits> second = phoneLimits.prepare(limits);
    EXPECT_THAT(second, ::testing::ElementsAre(first[0], limitsForPhone(limits[1])));
    EXPECT_EQ(samplesOf(std::as_const(second[0])), samplesOf(std::as_const(first[0])));
    EXPECT_NE(second[1], first[1]);
}

TEST(PhoneLimits, AccountsMayComeGoAndChangePlaces) {
    PhoneLimits phoneLimits;
    std::vector<SubscriptionLimits> limits = {withSamples(3), withSamples(5), withSamples(4)};
    phoneLimits.prepare(limits);
    limits.erase(limits.begin());
    std::swap(limits[0], limits[1]);
    EXPECT_THAT(phoneLimits.prepare(limits),
                ::testing::ElementsAre(limitsForPhone(limits[0]), limitsForPhone(limits[1])));
    EXPECT_THAT(phoneLimits.prepare({}), ::testing::IsEmpty());
    EXPECT_THAT(phoneLimits.prepare(limits),
                ::testing::ElementsAre(limitsForPhone(limits[0]), limitsForPhone(limits[1])));
}

}  // namespace
}  // namespace brimwatch
