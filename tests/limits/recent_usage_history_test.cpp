#include "limits/recent_usage_history.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

#include "recent_usage_oracle.h"
#include "usage_examples.h"

namespace brimwatch {
namespace {

using test::now;
using test::secondsAgo;
using test::secondsAhead;
using test::weeklyRecord;
using test::weeklySample;
using Capacity = RecentUsageHistory::Capacity;

const SubscriptionIds work = {"claude-work"};

std::vector<double> ages(const RecentUsageSamples& samples) {
    std::vector<double> ages;
    for (const RecentUsageSample& sample : samples)
        ages.push_back((now - sample.updatedAt).count());
    return ages;
}

RecentUsageSamples normalized(const RecentUsageSamples& samples) {
    return RecentUsageHistory::normalized(samples, now, Capacity::newest300);
}

using Ages = std::vector<double>;

TEST(NormalizedSamples, StandInTheOrderOfTime) {
    EXPECT_EQ(ages(normalized({weeklySample(10, 1), weeklySample(30, 2), weeklySample(20, 3)})),
              (Ages{30, 20, 10}));
    EXPECT_TRUE(normalized({}).empty());
}

TEST(NormalizedSamples, AreADayOldAtMostAndAMinuteAheadAtMostBoundsIncluded) {
    EXPECT_EQ(ages(normalized({weeklySample(86'400.5, 1), weeklySample(86'400, 1),
                               weeklySample(-60, 1), weeklySample(-60.5, 1)})),
              (Ages{86'400, -60}));
}

TEST(NormalizedSamples, OfOneInstantTheFirstStays) {
    const RecentUsageSamples samples = {weeklySample(20, 1), weeklySample(10, 2),
                                        weeklySample(20, 3), weeklySample(10, 4)};
    EXPECT_EQ(normalized(samples), (RecentUsageSamples{weeklySample(20, 1), weeklySample(10, 2)}));
}

TEST(NormalizedSamples, OfOneInstantAnInvalidOneDoesNotHideAValidOne) {
    EXPECT_EQ(normalized({weeklySample(20, 101), weeklySample(20, 3)}),
              (RecentUsageSamples{weeklySample(20, 3)}));
}

TEST(NormalizedSamples, LoseTheInvalidOnesSilently) {
    RecentUsageSample withoutWindow = weeklySample(30, 1);
    withoutWindow.sevenDay = std::nullopt;
    RecentUsageSample withoutTime = weeklySample(30, 1);
    withoutTime.updatedAt = instantFromUnixSeconds(std::nan(""));
    EXPECT_EQ(
        ages(normalized({withoutWindow, withoutTime, weeklySample(20, -1), weeklySample(10, 100)})),
        (Ages{10}));
}

TEST(NormalizedSamples, AreTheNewest300WhereCapped) {
    RecentUsageSamples samples;
    for (int age = 400; age > 0; --age)
        samples.push_back(weeklySample(age, 1));
    const RecentUsageSamples capped = normalized(samples);
    ASSERT_EQ(capped.size(), 300U);
    EXPECT_EQ(capped.front(), weeklySample(300, 1));
    EXPECT_EQ(capped.back(), weeklySample(1, 1));
    EXPECT_EQ(RecentUsageHistory::normalized(samples, now, Capacity::unlimited), samples);
}

// Records one observation after the other, as reloads do.
class Recording : public testing::Test {
  protected:
    // A record that was updated at that time and is seen at once.
    RecentUsageSamples& observe(double ageSeconds, double usedPercentage) {
        return observe(recordOf(ageSeconds, usedPercentage));
    }

    RecentUsageSamples& observe(const SubscriptionLimits& limits) {
        history.record({limits}, work, limits.updatedAt);
        return history.accounts["claude-work"];
    }

    static SubscriptionLimits recordOf(double ageSeconds, double usedPercentage) {
        SubscriptionLimits limits = weeklyRecord(usedPercentage);
        limits.updatedAt = secondsAgo(ageSeconds);
        return limits;
    }

    RecentUsageHistory history;
};

TEST_F(Recording, TakesASampleOfEachRecordAndGivesItBackWithIt) {
    SubscriptionLimits limits = weeklyRecord(40);
    limits.fiveHour = test::window(5);
    limits.planTier = "Pro";
    limits.displayName = "Work";
    const auto records = history.record({limits}, work, now);
    const RecentUsageSample expected{.updatedAt = now,
                                     .fiveHour = limits.fiveHour,
                                     .sevenDay = limits.sevenDay,
                                     .planTier = "Pro"};
    EXPECT_EQ(history.accounts.at("claude-work"), RecentUsageSamples{expected});
    limits.recentUsageHistory = {expected};
    EXPECT_EQ(records, std::vector<SubscriptionLimits>{limits});
}

TEST_F(Recording, AnUnchangedFileAddsNothing) {
    observe(1000, 40);
    EXPECT_EQ(observe(1000, 40).size(), 1U);
    EXPECT_EQ(observe(1000, 50), RecentUsageSamples{weeklySample(1000, 40)});
}

TEST_F(Recording, DoesNotRunBackwards) {
    observe(1000, 40);
    history.record({recordOf(2000, 30)}, work, now);
    EXPECT_EQ(history.accounts.at("claude-work"), RecentUsageSamples{weeklySample(1000, 40)});
}

TEST_F(Recording, AnAccountThatIsNotAllowedIsNotRecordedButKeepsItsSamples) {
    EXPECT_EQ(history.record({weeklyRecord(1)}, {}, now)[0].recentUsageHistory, std::nullopt);
    EXPECT_TRUE(history.accounts.empty());
    observe(1000, 40);
    const auto records = history.record({weeklyRecord(50)}, {"codex-work"}, now);
    EXPECT_EQ(records[0].recentUsageHistory, RecentUsageSamples{weeklySample(1000, 40)});
}

TEST_F(Recording, FormerSamplesOfARecordAreReplacedByThoseOfTheHistory) {
    SubscriptionLimits limits = weeklyRecord(1);
    limits.recentUsageHistory = {weeklySample(5, 5)};
    EXPECT_EQ(history.record({limits}, {}, now)[0].recentUsageHistory, std::nullopt);
}

TEST_F(Recording, ARecordTooOldOrOfTheFutureIsNotRecorded) {
    for (const double age : {86'400.5, -60.5}) {
        history.record({recordOf(age, 40)}, work, now);
        EXPECT_TRUE(history.accounts.empty()) << age;
    }
    for (const double age : {86'400.0, -60.0}) {
        history = {};
        history.record({recordOf(age, 40)}, work, now);
        EXPECT_EQ(history.accounts.at("claude-work").size(), 1U) << age;
    }
}

TEST_F(Recording, AnInvalidRecordIsNotRecorded) {
    history.record({weeklyRecord(101)}, work, now);
    SubscriptionLimits withoutTime = weeklyRecord(10);
    withoutTime.updatedAt = instantFromUnixSeconds(std::numeric_limits<double>::infinity());
    history.record({withoutTime}, work, now);
    EXPECT_TRUE(history.accounts.empty());
}

TEST_F(Recording, AFallAnOtherCycleOrAWindowThatComesOrGoesIsMarkedOnItsWindowAlone) {
    SubscriptionLimits limits = recordOf(3000, 40);
    limits.fiveHour = test::window(10);
    observe(limits);
    limits.updatedAt = secondsAgo(2000);
    limits.fiveHour = test::window(9);
    EXPECT_TRUE(observe(limits).back().fiveHourReset);
    EXPECT_FALSE(observe(limits).back().sevenDayReset);
    limits.updatedAt = secondsAgo(1000);
    limits.sevenDay = UsageWindow{41, secondsAhead(90'000 + 3601)};
    EXPECT_FALSE(observe(limits).back().fiveHourReset);
    EXPECT_TRUE(observe(limits).back().sevenDayReset);
    limits.updatedAt = secondsAgo(500);
    limits.fiveHour = std::nullopt;
    EXPECT_TRUE(observe(limits).back().fiveHourReset);
    EXPECT_FALSE(observe(limits).back().sevenDayReset);
}

TEST_F(Recording, AnotherPlanIsAResetOfBothWindowsAlsoWhereThereWasNone) {
    observe(3000, 40);
    SubscriptionLimits limits = recordOf(2000, 41);
    limits.planTier = "Pro";
    EXPECT_TRUE(observe(limits).back().fiveHourReset);
    EXPECT_TRUE(observe(limits).back().sevenDayReset);
    limits.updatedAt = secondsAgo(1000);
    EXPECT_FALSE(observe(limits).back().sevenDayReset);
    limits.updatedAt = secondsAgo(500);
    limits.planTier = std::nullopt;
    EXPECT_TRUE(observe(limits).back().sevenDayReset);
}

TEST_F(Recording, TwoWritesInOneBucketLeaveOneSampleWithTheNewerFiguresAndAnyReset) {
    observe(3000, 40);
    observe(2100, 10);
    const RecentUsageSamples& samples = observe(2000, 20);
    ASSERT_EQ(ages(samples), (Ages{3000, 2000}));
    EXPECT_EQ(samples[1].sevenDay, test::window(20));
    EXPECT_TRUE(samples[1].sevenDayReset);
    EXPECT_FALSE(samples[1].fiveHourReset);
}

TEST_F(Recording, ABucketEndsWhereAFullFiveMinutesSince1970Do) {
    observe(300, 40);
    EXPECT_EQ(ages(observe(0.25, 41)), (Ages{0.25}));
    EXPECT_EQ(ages(observe(0, 42)), (Ages{0.25, 0}));
}

TEST_F(Recording, AfterADayTheOldestSamplesFallAway) {
    observe(86'500, 10);
    observe(1000, 11);
    observe(0, 12);
    EXPECT_EQ(ages(history.accounts.at("claude-work")), (Ages{1000, 0}));
}

TEST_F(Recording, AnAccountThatNobodyReportsLosesItsSamplesAfterADayAndThenItsPlace) {
    observe(86'000, 10);
    history.record({}, {}, now);
    EXPECT_EQ(history.accounts.size(), 1U);
    history.record({}, {}, secondsAhead(401));
    EXPECT_TRUE(history.accounts.empty());
}

TEST_F(Recording, ADayOfObservationsEveryMinuteStaysBelowTheCapacity) {
    for (double age = 99'960; age >= 0; age -= 60)
        observe(age, 10);
    const RecentUsageSamples& samples = history.accounts.at("claude-work");
    EXPECT_EQ(samples.size(), 289U);
    EXPECT_EQ(ages(samples).front(), 86'160);
}

TEST_F(Recording, MoreThan300SamplesAreCutToTheNewest) {
    RecentUsageSamples crowded;
    for (int age = 400; age > 0; --age)
        crowded.push_back(weeklySample(age, 10));
    history.accounts["claude-work"] = crowded;
    history.record({weeklyRecord(11)}, work, now);
    const RecentUsageSamples& samples = history.accounts.at("claude-work");
    ASSERT_EQ(samples.size(), 300U);
    EXPECT_EQ(ages(samples).front(), 299);
    EXPECT_EQ(samples.back(), weeklySample(0, 11));
}

TEST_F(Recording, AClockThatWasSetBackDropsWhatIsNowOfTheFuture) {
    observe(0, 40);
    const auto records = history.record({recordOf(3600, 30)}, work, secondsAgo(3600));
    EXPECT_EQ(records[0].recentUsageHistory, RecentUsageSamples{weeklySample(3600, 30)});
}

TEST_F(Recording, TwoRecordsOfOneAccountAreTakenInTheirOrder) {
    const auto records =
        history.record({recordOf(1000, 40), recordOf(500, 41), recordOf(800, 39)}, work, now);
    EXPECT_EQ(records[0].recentUsageHistory->size(), 1U);
    EXPECT_EQ(records[1].recentUsageHistory->size(), 2U);
    EXPECT_EQ(records[2].recentUsageHistory, records[1].recentUsageHistory);
}

TEST(Recordings, AgreeWithThePlainStepsOverRandomObservations) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int round = 0; round < 300; ++round) {
        test::RandomUsage usage(random, 2 + random.below(20));
        RecentUsageHistory history;
        std::map<std::string, RecentUsageSamples> expected;
        if (random.oneIn(2)) {
            history.accounts["claude-work"] = usage.samples(random.below(350), 400);
            expected["claude-work"] = history.accounts["claude-work"];
        }
        double seconds = test::nowSeconds;
        for (int step = 0; step < 60; ++step) {
            seconds += static_cast<double>(random.between(random.oneIn(10) ? -5000 : 0, 700)) / 2;
            std::vector<SubscriptionLimits> limits;
            for (const char* account : {"work", "home", "work"}) {
                if (random.oneIn(3)) continue;
                const RecentUsageSample sample = usage.nextSample(instantFromUnixSeconds(
                    seconds - static_cast<double>(random.between(-70, 100))));
                SubscriptionLimits entry;
                entry.account = account;
                entry.updatedAt = sample.updatedAt;
                entry.fiveHour = sample.fiveHour;
                entry.sevenDay = sample.sevenDay;
                entry.planTier = sample.planTier;
                limits.push_back(entry);
            }
            const auto time = instantFromUnixSeconds(seconds);
            const auto records = history.record(limits, work, time);
            const auto plain = test::oracle::record(expected, limits, {"claude-work"}, seconds);
            ASSERT_EQ(records.size(), plain.size());
            for (std::size_t index = 0; index < plain.size(); ++index)
                ASSERT_EQ(records[index].recentUsageHistory, plain[index].recentUsageHistory);
            ASSERT_TRUE(std::equal(expected.begin(), expected.end(), history.accounts.begin(),
                                   history.accounts.end()));
        }
    }
}

TEST(NormalizedSamples, AgreeWithThePlainStepsOverRandomSamples) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int round = 0; round < 2000; ++round) {
        test::RandomUsage usage(random, 2 + random.below(20));
        const RecentUsageSamples samples = usage.samples(random.below(400), random.between(1, 500));
        const RecentUsageSamples capped = normalized(samples);
        ASSERT_EQ(capped, test::oracle::normalized(samples, test::nowSeconds, true));
        ASSERT_EQ(normalized(capped), capped);
        ASSERT_EQ(RecentUsageHistory::normalized(samples, now, Capacity::unlimited),
                  test::oracle::normalized(samples, test::nowSeconds, false));
    }
}

TEST(MergedSamples, JoinWhatSeveralSourcesSaw) {
    const RecentUsageSamples a = {weeklySample(3000, 1), weeklySample(1000, 3)};
    const RecentUsageSamples b = {weeklySample(2000, 2)};
    EXPECT_EQ(ages(RecentUsageHistory::merged({&a, nullptr, &b}, now)), (Ages{3000, 2000, 1000}));
    EXPECT_TRUE(RecentUsageHistory::merged({}, now).empty());
    EXPECT_TRUE(RecentUsageHistory::merged({nullptr}, now).empty());
}

TEST(MergedSamples, OfOneInstantTheFirstGroupCountsEvenWhereItsSampleIsInvalid) {
    const RecentUsageSamples a = {weeklySample(1000, 1), weeklySample(2000, 101)};
    const RecentUsageSamples b = {weeklySample(1000, 2), weeklySample(2000, 2)};
    EXPECT_EQ(RecentUsageHistory::merged({&a, &b}, now), RecentUsageSamples{weeklySample(1000, 1)});
    EXPECT_EQ(RecentUsageHistory::merged({&b, &a}, now),
              (RecentUsageSamples{weeklySample(2000, 2), weeklySample(1000, 2)}));
}

TEST(MergedSamples, OneBucketKeepsItsNewestSampleWithEveryResetSeenInIt) {
    RecentUsageSamples first = {weeklySample(300, 10)};
    first[0].fiveHourReset = true;
    const RecentUsageSamples second = {weeklySample(200, 8), weeklySample(100, 9)};
    const RecentUsageSamples merged = RecentUsageHistory::merged({&first, &second}, now);
    ASSERT_EQ(ages(merged), (Ages{100}));
    EXPECT_EQ(merged[0].sevenDay, test::window(9));
    EXPECT_TRUE(merged[0].fiveHourReset);
    EXPECT_TRUE(merged[0].sevenDayReset);
}

TEST(MergedSamples, AnotherPlanWithinABucketIsAResetOfBothWindows) {
    RecentUsageSamples samples = {weeklySample(300, 10), weeklySample(200, 11)};
    EXPECT_FALSE(RecentUsageHistory::merged({&samples}, now)[0].sevenDayReset);
    samples[1].planTier = "Pro";
    const RecentUsageSamples merged = RecentUsageHistory::merged({&samples}, now);
    EXPECT_TRUE(merged[0].fiveHourReset);
    EXPECT_TRUE(merged[0].sevenDayReset);
}

TEST(MergedSamples, NothingIsMarkedBetweenBuckets) {
    const RecentUsageSamples samples = {weeklySample(1000, 20), weeklySample(200, 10)};
    EXPECT_EQ(RecentUsageHistory::merged({&samples}, now), samples);
}

TEST(MergedSamples, AreTheNewest300Buckets) {
    RecentUsageSamples samples;
    for (int index = 400; index > 0; --index)
        samples.push_back(weeklySample(index * 200, 10));
    const RecentUsageSamples merged = RecentUsageHistory::merged({&samples}, now);
    EXPECT_EQ(merged, test::oracle::merged({samples}, test::nowSeconds));
    EXPECT_LE(merged.size(), 300U);
    RecentUsageSamples crowded;
    for (int index = 310; index >= 0; --index)
        crowded.push_back(weeklySample(index * 300 - 60, 10));
    // A day and a minute hold 289 buckets, so that the capacity is not reached.
    EXPECT_EQ(RecentUsageHistory::merged({&crowded}, now).size(), 289U);
}

TEST(MergedSamples, AgreeWithThePlainStepsOverRandomGroups) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int round = 0; round < 1000; ++round) {
        test::RandomUsage usage(random, 2 + random.below(20));
        std::vector<std::optional<RecentUsageSamples>> groups;
        for (std::size_t count = random.below(4); count > 0; --count) {
            groups.emplace_back();
            if (!random.oneIn(4)) groups.back() = usage.samples(random.below(200), 300);
        }
        std::vector<const RecentUsageSamples*> references;
        for (const auto& group : groups)
            references.push_back(group ? &*group : nullptr);
        ASSERT_EQ(RecentUsageHistory::merged(references, now),
                  test::oracle::merged(groups, test::nowSeconds));
    }
}

}  // namespace
}  // namespace brimwatch
