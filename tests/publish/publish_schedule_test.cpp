#include "publish/publish_schedule.h"

#include <gtest/gtest.h>

#include <limits>

#include "harness/random.h"
#include "publish_examples.h"

namespace brimwatch {
namespace {

using test::accountOf;
using test::now;
using test::secondsAgo;
using test::secondsAhead;
using test::toHex;
using Wait = PublishSchedule::Wait;

constexpr ContentDigest digestA{1};
constexpr ContentDigest digestB{2};

std::string hexOf(const ContentDigest& digest) {
    return toHex({reinterpret_cast<const char*>(digest.data()), digest.size()});
}

PublishSchedule sentAgo(double seconds) {
    PublishSchedule schedule;
    schedule.noteSuccess(digestA, secondsAgo(seconds));
    return schedule;
}

TEST(PublishScheduleDue, AtOnceOfAnEmptySchedule) {
    EXPECT_TRUE(PublishSchedule().isDue(digestA, now));
    EXPECT_TRUE(PublishSchedule().isDue(ContentDigest{}, now));
}

TEST(PublishScheduleDue, NeverWithWhatWasSentLast) {
    for (const double age : {-100.0, 0.0, 59.0, 60.0, 1e9}) {
        PublishSchedule schedule = sentAgo(age);
        EXPECT_FALSE(schedule.isDue(digestA, now)) << age;
        schedule.retryAt = secondsAgo(1);
        EXPECT_FALSE(schedule.isDue(digestA, now)) << age;
        schedule.retryAt = secondsAhead(1);
        EXPECT_FALSE(schedule.isDue(digestA, now)) << age;
    }
    PublishSchedule neverSent;
    neverSent.sentDigest = digestA;
    EXPECT_FALSE(neverSent.isDue(digestA, now));
}

TEST(PublishScheduleDue, NotBeforeTheRetryTime) {
    PublishSchedule schedule;
    schedule.retryAt = secondsAhead(0.001);
    EXPECT_FALSE(schedule.isDue(digestB, now));
    schedule = sentAgo(1000);
    schedule.retryAt = secondsAhead(0.001);
    EXPECT_FALSE(schedule.isDue(digestB, now));
}

TEST(PublishScheduleDue, ExactlyAtTheRetryTime) {
    PublishSchedule schedule;
    schedule.retryAt = now;
    EXPECT_TRUE(schedule.isDue(digestB, now));
}

TEST(PublishScheduleDue, AMinuteAfterTheLastSendAndNotBefore) {
    EXPECT_FALSE(sentAgo(0).isDue(digestB, now));
    EXPECT_FALSE(sentAgo(59.999).isDue(digestB, now));
    EXPECT_TRUE(sentAgo(60).isDue(digestB, now));
    EXPECT_TRUE(sentAgo(61).isDue(digestB, now));
}

TEST(PublishScheduleDue, NotByAPassedRetryTimeAlone) {
    PublishSchedule schedule = sentAgo(30);
    schedule.retryAt = secondsAgo(5);
    EXPECT_FALSE(schedule.isDue(digestB, now));
    EXPECT_TRUE(schedule.isDue(digestB, secondsAhead(30)));
}

TEST(PublishScheduleDue, AgainAndAgainWhileNoSendSucceeds) {
    const PublishSchedule schedule = sentAgo(60);
    EXPECT_TRUE(schedule.isDue(digestB, now));
    EXPECT_TRUE(schedule.isDue(digestB, now));
}

TEST(PublishScheduleDue, OnlyWhenAClockThatWasSetBackHasCaughtUp) {
    const PublishSchedule schedule = sentAgo(-3600);
    EXPECT_FALSE(schedule.isDue(digestB, now));
    EXPECT_FALSE(schedule.isDue(digestB, secondsAhead(3600)));
    EXPECT_FALSE(schedule.isDue(digestB, secondsAhead(3659)));
    EXPECT_TRUE(schedule.isDue(digestB, secondsAhead(3660)));
    EXPECT_FALSE(schedule.isDue(digestA, secondsAhead(3660)));
}

TEST(PublishScheduleOutcome, OfASuccessIsRememberedAndEndsTheRetryWait) {
    PublishSchedule schedule;
    schedule.retryAt = secondsAhead(100);
    schedule.noteSuccess(digestB, now);
    EXPECT_EQ(schedule, (PublishSchedule{digestB, now, std::nullopt}));
}

TEST(PublishScheduleOutcome, OfAFailureKeepsWhatWasSent) {
    PublishSchedule schedule = sentAgo(500);
    schedule.noteFailure(now, PublishSchedule::noAccountWait);
    EXPECT_EQ(schedule, (PublishSchedule{digestA, secondsAgo(500), secondsAhead(300)}));
    schedule.noteFailure(now, PublishSchedule::keychainWait);
    EXPECT_EQ(schedule, (PublishSchedule{digestA, secondsAgo(500), secondsAhead(600)}));
    schedule.noteFailure(now, PublishSchedule::otherFailureWait);
    EXPECT_EQ(schedule, (PublishSchedule{digestA, secondsAgo(500), secondsAhead(60)}));
    PublishSchedule neverSent;
    neverSent.noteFailure(now, PublishSchedule::otherFailureWait);
    EXPECT_EQ(neverSent, (PublishSchedule{std::nullopt, std::nullopt, secondsAhead(60)}));
}

TEST(PublishScheduleOutcome, OfAFailureCountsTheSameContentAsUnsent) {
    PublishSchedule schedule;
    schedule.noteFailure(now, PublishSchedule::otherFailureWait);
    EXPECT_FALSE(schedule.isDue(digestB, secondsAhead(59)));
    EXPECT_TRUE(schedule.isDue(digestB, secondsAhead(60)));
}

TEST(PublishScheduleOutcome, OfACloudErrorWaitsAsLongAsAskedAndAtLeastAMinute) {
    EXPECT_EQ(PublishSchedule::cloudErrorWait(std::nullopt), Wait(60));
    EXPECT_EQ(PublishSchedule::cloudErrorWait(7), Wait(60));
    EXPECT_EQ(PublishSchedule::cloudErrorWait(60), Wait(60));
    EXPECT_EQ(PublishSchedule::cloudErrorWait(60.5), Wait(60.5));
    EXPECT_EQ(PublishSchedule::cloudErrorWait(600), Wait(600));
    EXPECT_EQ(PublishSchedule::cloudErrorWait(-5), Wait(60));
}

TEST(PublishScheduleOutcome, IsNeverAWaitWithoutEnd) {
    EXPECT_EQ(PublishSchedule::cloudErrorWait(std::numeric_limits<double>::infinity()), Wait(60));
    EXPECT_EQ(PublishSchedule::cloudErrorWait(std::numeric_limits<double>::quiet_NaN()), Wait(60));
}

TEST(PublishSchedule, IsEqualFieldByField) {
    const PublishSchedule whole{digestA, now, now};
    EXPECT_EQ(whole, (PublishSchedule{digestA, now, now}));
    EXPECT_NE(whole, (PublishSchedule{digestB, now, now}));
    EXPECT_NE(whole, (PublishSchedule{digestA, secondsAgo(1), now}));
    EXPECT_NE(whole, (PublishSchedule{digestA, now, secondsAgo(1)}));
    EXPECT_NE(PublishSchedule(), (PublishSchedule{ContentDigest{}, std::nullopt, std::nullopt}));
}

// The five rows of the decision, over every mixture of times around their bounds.
TEST(PublishSchedule, DecidesByItsTableWhateverTheTimes) {
    const std::vector<std::optional<Instant>> times = {
        std::nullopt, secondsAgo(61),    secondsAgo(60),  secondsAgo(59.5), secondsAgo(1),
        now,          secondsAhead(0.5), secondsAhead(60)};
    const std::vector<std::optional<ContentDigest>> digests = {std::nullopt, digestA, digestB};
    for (const auto& sentDigest : digests) {
        for (const auto& lastSent : times) {
            for (const auto& retryAt : times) {
                const PublishSchedule schedule{sentDigest, lastSent, retryAt};
                const bool isSame = sentDigest && *sentDigest == digestA;
                const bool isBeforeRetry = retryAt && unixSeconds(*retryAt) > unixSeconds(now);
                const bool isTooSoon = lastSent && unixSeconds(*lastSent) > unixSeconds(now) - 60;
                EXPECT_EQ(schedule.isDue(digestA, now), !isSame && !isBeforeRetry && !isTooSoon);
            }
        }
    }
}

// From sha256sum(1), of the bytes that are told here.
TEST(ContentDigestTest, IsTheSha256OfTheLimitsWithSortedKeys) {
    EXPECT_EQ(hexOf(PublishSchedule::contentDigest({})),
              "04412774254598c0e6ca767aed55a9ca48306ba35a67476313d192bd0ad49d14");
    SubscriptionLimits limits;
    limits.account = "work";
    limits.updatedAt = instantFromUnixSeconds(1'790'000'100);
    limits.sevenDay = UsageWindow{37.5, instantFromUnixSeconds(1'790'090'100)};
    // {"limits":[{"account":"work","provider":"claude",
    // "sevenDay":{"resetsAt":1790090100,"usedPercentage":37.5},"updatedAt":1790000100}]}
    EXPECT_EQ(hexOf(PublishSchedule::contentDigest({limits})),
              "ead7e0f291329330e0f3a5bd866fea6018a2f8bf1309507b22e452f389f4e996");
}

TEST(ContentDigestTest, CoversAllAccountsOfTheList) {
    SubscriptionLimits first;
    first.account = "a";
    first.updatedAt = instantFromUnixSeconds(5);
    SubscriptionLimits second = first;
    second.provider = SubscriptionLimits::Provider::codex;
    second.account = "b";
    // {"limits":[{"account":"a","provider":"claude","updatedAt":5},
    // {"account":"b","provider":"codex","updatedAt":5}]}
    EXPECT_EQ(hexOf(PublishSchedule::contentDigest({first, second})),
              "f2bd6ee5bb0c12054749c85043907a72f391d3fa7b487f8ac41edfdb7ac5b0d7");
}

TEST(ContentDigestTest, IsAnotherWhateverChanges) {
    SubscriptionLimits base = accountOf("work", 0, {600, 300});
    base.fiveHour = UsageWindow{1, now};
    base.planTier = "Max";
    std::vector<SubscriptionLimits> changed(12, base);
    changed[0].provider = SubscriptionLimits::Provider::codex;
    changed[1].account = "home";
    changed[2].fiveHour->usedPercentage = 1.0000000000000002;
    changed[3].fiveHour->resetsAt.reset();
    changed[4].sevenDay.reset();
    changed[5].updatedAt = secondsAgo(0.5);
    changed[6].planTier = "Pro";
    changed[7].displayName = "";
    changed[8].recentUsageHistory.reset();
    changed[9].recentUsageHistory->back().sevenDayReset = true;
    changed[10].recentUsageHistory->back().fiveHourReset = true;
    changed[11].recentUsageHistory->back().planTier = "Max";
    const ContentDigest digest = PublishSchedule::contentDigest({base});
    EXPECT_EQ(PublishSchedule::contentDigest({base}), digest);
    for (std::size_t index = 0; index < changed.size(); ++index)
        EXPECT_NE(PublishSchedule::contentDigest({changed[index]}), digest) << index;
    EXPECT_NE(PublishSchedule::contentDigest({base, base}), digest);
}

TEST(ContentDigestTest, DependsOnTheOrderOfTheAccounts) {
    EXPECT_NE(PublishSchedule::contentDigest({accountOf("a", 0), accountOf("b", 0)}),
              PublishSchedule::contentDigest({accountOf("b", 0), accountOf("a", 0)}));
}

TEST(ContentDigestTest, OfWhatCannotBeEncodedIsThatOfNoBytes) {
    SubscriptionLimits limits = accountOf("work", 0, {600});
    limits.recentUsageHistory->back().sevenDay->usedPercentage =
        std::numeric_limits<double>::quiet_NaN();
    const ContentDigest digest = PublishSchedule::contentDigest({accountOf("a", 0), limits});
    EXPECT_EQ(hexOf(digest), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    PublishSchedule schedule;
    schedule.noteSuccess(digest, secondsAgo(1000));
    limits.updatedAt = instantFromUnixSeconds(std::numeric_limits<double>::infinity());
    EXPECT_FALSE(schedule.isDue(PublishSchedule::contentDigest({limits}), now));
}

}  // namespace
}  // namespace brimwatch
