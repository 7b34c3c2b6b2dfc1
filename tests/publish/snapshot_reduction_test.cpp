#include <gtest/gtest.h>

#include <limits>
#include <tuple>

#include "harness/random.h"
#include "publish/limits_cloud.h"
#include "publish/snapshot_json.h"
#include "publish_examples.h"

namespace brimwatch {
namespace {

using test::accountOf;
using test::now;
using test::otherMac;
using test::secondsAgo;
using test::secondsAhead;
using test::Snapshot;
using test::thisMac;
using Candidate = LimitsCloud::Candidate;

constexpr std::size_t limit = 899'972;

// Gives an account a name that makes the document exactly that large.
void padTo(Snapshot& snapshot, SubscriptionLimits& limits, std::size_t bytes) {
    limits.displayName = "";
    limits.displayName = std::string(bytes - encodeSnapshot(snapshot).size(), 'x');
    ASSERT_EQ(encodeSnapshot(snapshot).size(), bytes);
}

Snapshot reduced(const Snapshot& snapshot) {
    return decodeSnapshot(LimitsCloud::encodedPayload(snapshot)).value();
}

std::vector<double> sampleAges(const SubscriptionLimits& limits) {
    std::vector<double> ages;
    if (!limits.recentUsageHistory) return ages;
    const RecentUsageSamples& samples = *limits.recentUsageHistory;
    for (const RecentUsageSample& sample : samples)
        ages.push_back(unixSeconds(now) - unixSeconds(sample.updatedAt));
    return ages;
}

// An account with a history that takes many bytes.
SubscriptionLimits heavyAccount(const std::string& name, double ageSeconds,
                                std::size_t historyBytes = 400'000) {
    SubscriptionLimits limits = accountOf(name, ageSeconds, {ageSeconds});
    limits.recentUsageHistory->front().planTier = std::string(historyBytes, 'x');
    return limits;
}

bool hasHistory(const Snapshot& snapshot, const MacId& mac, std::size_t index) {
    return snapshot.macs.at(mac).limits.at(index).recentUsageHistory.has_value();
}

TEST(SnapshotReduction, LeavesADocumentOfExactlyTheLimitAlone) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {now, {accountOf("work", 0, {50'000, 600, -100})}};
    padTo(snapshot, snapshot.macs[thisMac].limits[0], limit);
    EXPECT_EQ(LimitsCloud::encodedPayload(snapshot), encodeSnapshot(snapshot));
    const SealedPayload payload = LimitsCloud::seal(snapshot, test::countingKey());
    EXPECT_EQ(payload.bytes.size(), 900'000U);
    EXPECT_EQ(LimitsCloud::open(payload.bytes, test::countingKey()), snapshot);
}

TEST(SnapshotReduction, NarrowsHistoriesOneByteBeyondTheLimit) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {now, {accountOf("work", 0, {50'000, 600, -100})}};
    padTo(snapshot, snapshot.macs[thisMac].limits[0], limit + 1);
    EXPECT_EQ(sampleAges(reduced(snapshot).macs.at(thisMac).limits.at(0)),
              (std::vector<double>{600}));
}

TEST(SnapshotReduction, KeepsTheSamplesOfTheLast22200SecondsOfEachAccount) {
    Snapshot snapshot;
    // Ages count from the account's own figures, which are 1000 seconds old.
    snapshot.macs[thisMac] = {
        now, {accountOf("b", 1000, {23'201, 23'200.5, 23'200, 23'199, 1001, 1000, 999, 0})}};
    snapshot.macs[thisMac].limits[0].recentUsageHistory->front().planTier = std::string(limit, 'x');
    EXPECT_EQ(sampleAges(reduced(snapshot).macs.at(thisMac).limits.at(0)),
              (std::vector<double>{23'200, 23'199, 1001, 1000}));
}

TEST(SnapshotReduction, MakesAHistoryAbsentOfWhichNothingIsLeft) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {
        now, {accountOf("a", 0, {30'000, -1}), accountOf("b", 0), accountOf("c", 0, {5})}};
    snapshot.macs[thisMac].limits.push_back(accountOf("d", 0));
    snapshot.macs[thisMac].limits[3].recentUsageHistory.emplace();
    padTo(snapshot, snapshot.macs[thisMac].limits[1], limit + 1);
    const Snapshot result = reduced(snapshot);
    EXPECT_FALSE(hasHistory(result, thisMac, 0));
    EXPECT_FALSE(hasHistory(result, thisMac, 1));
    EXPECT_TRUE(hasHistory(result, thisMac, 2));
    EXPECT_FALSE(hasHistory(result, thisMac, 3));
}

TEST(SnapshotReduction, NarrowsOnlyIfNarrowingIsEnough) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {now, {accountOf("a", 0, {30'000, 600}), accountOf("b", 0, {600})}};
    SubscriptionLimits& padded = snapshot.macs[thisMac].limits[0];
    const std::size_t sampleBytes = [&] {
        Snapshot without = snapshot;
        without.macs[thisMac].limits[0].recentUsageHistory->erase(
            without.macs[thisMac].limits[0].recentUsageHistory->begin());
        return encodeSnapshot(snapshot).size() - encodeSnapshot(without).size();
    }();
    padTo(snapshot, padded, limit + sampleBytes);
    EXPECT_EQ(LimitsCloud::encodedPayload(snapshot).size(), limit);
    padTo(snapshot, padded, limit + sampleBytes + 1);
    const Snapshot result = reduced(snapshot);
    EXPECT_FALSE(hasHistory(result, thisMac, 0));
    EXPECT_TRUE(hasHistory(result, thisMac, 1));
}

TEST(SnapshotReduction, DropsTheOlderCopyOfAnAccountFirstEvenIfItWasSentLater) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {secondsAgo(0), {heavyAccount("a", 500), accountOf("b", 0, {5})}};
    snapshot.macs[otherMac] = {secondsAgo(900), {heavyAccount("a", 100)}};
    snapshot.macs[otherMac].limits[0].displayName = std::string(200'000, 'x');
    const Snapshot result = reduced(snapshot);
    EXPECT_FALSE(hasHistory(result, thisMac, 0));
    EXPECT_TRUE(hasHistory(result, thisMac, 1));
    EXPECT_TRUE(hasHistory(result, otherMac, 0));
}

TEST(SnapshotReduction, DropsNewestCopiesOnlyAfterAllOlderOnes) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {secondsAgo(0), {heavyAccount("a", 500), heavyAccount("b", 500)}};
    snapshot.macs[otherMac] = {secondsAgo(900), {heavyAccount("a", 100), heavyAccount("b", 100)}};
    Snapshot result = reduced(snapshot);
    EXPECT_FALSE(hasHistory(result, thisMac, 0));
    EXPECT_FALSE(hasHistory(result, thisMac, 1));
    EXPECT_TRUE(hasHistory(result, otherMac, 0));
    EXPECT_TRUE(hasHistory(result, otherMac, 1));
    snapshot.macs[otherMac].limits[1].displayName = std::string(300'000, 'x');
    result = reduced(snapshot);
    EXPECT_FALSE(hasHistory(result, thisMac, 0));
    EXPECT_FALSE(hasHistory(result, thisMac, 1));
    EXPECT_FALSE(hasHistory(result, otherMac, 0));
    EXPECT_TRUE(hasHistory(result, otherMac, 1));
}

TEST(SnapshotReduction, DropsNoMoreThanItHasTo) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {
        now, {heavyAccount("a", 0, 1000), heavyAccount("b", 0, 1000), accountOf("c", 0)}};
    Snapshot withoutFirst = snapshot;
    withoutFirst.macs[thisMac].limits[0].recentUsageHistory.reset();
    const std::size_t saved = encodeSnapshot(snapshot).size() - encodeSnapshot(withoutFirst).size();
    padTo(snapshot, snapshot.macs[thisMac].limits[2], limit + saved);
    Snapshot result = reduced(snapshot);
    EXPECT_FALSE(hasHistory(result, thisMac, 0));
    EXPECT_TRUE(hasHistory(result, thisMac, 1));
    EXPECT_EQ(encodeSnapshot(result).size(), limit);
    padTo(snapshot, snapshot.macs[thisMac].limits[2], limit + saved + 1);
    result = reduced(snapshot);
    EXPECT_FALSE(hasHistory(result, thisMac, 0));
    EXPECT_FALSE(hasHistory(result, thisMac, 1));
}

TEST(SnapshotReduction, KeepsEveryFigureAndEveryMacHoweverLargeTheDocumentStays) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {now, {accountOf("a", 0, {600}), accountOf("b", 7)}};
    snapshot.macs[otherMac] = {secondsAgo(9), {accountOf("a", 0, {600, 300})}};
    snapshot.macs[MacId{"empty"}] = {secondsAgo(9), {}};
    padTo(snapshot, snapshot.macs[thisMac].limits[1], 3 * limit);
    Snapshot expected = snapshot;
    expected.macs[thisMac].limits[0].recentUsageHistory.reset();
    expected.macs[otherMac].limits[0].recentUsageHistory.reset();
    EXPECT_EQ(reduced(snapshot), expected);
    EXPECT_GT(LimitsCloud::seal(snapshot, test::countingKey()).bytes.size(), 2 * limit);
}

TEST(SnapshotReduction, LeavesTheDocumentOfTheCallerAsItWas) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {now, {heavyAccount("a", 0), heavyAccount("b", 0)}};
    snapshot.macs[otherMac] = {now, {heavyAccount("a", 5), accountOf("c", 0, {600, 50'000})}};
    const std::string before = encodeSnapshot(snapshot);
    static_cast<void>(LimitsCloud::encodedPayload(snapshot));
    EXPECT_EQ(encodeSnapshot(snapshot), before);
}

TEST(SnapshotReduction, RefusesANumberThatIsNotFiniteAlsoWhereItWouldBeDropped) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {now, {heavyAccount("a", 0, limit)}};
    snapshot.macs[thisMac].limits[0].recentUsageHistory->front().updatedAt =
        instantFromUnixSeconds(-std::numeric_limits<double>::infinity());
    EXPECT_THROW(LimitsCloud::encodedPayload(snapshot), LimitsCloud::EncodingError);
}

Candidate candidateOf(const Snapshot& snapshot, const MacId& mac, std::size_t index, bool latest) {
    return {.mac = mac, .index = index, .latest = latest, .sentAt = snapshot.macs.at(mac).sentAt};
}

TEST(SnapshotCandidates, AreTheAccountsWithAHistory) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {now, {accountOf("a", 0), accountOf("b", 0, {1}), accountOf("c", 0)}};
    EXPECT_EQ(LimitsCloud::candidates(snapshot),
              (std::vector{candidateOf(snapshot, thisMac, 1, true)}));
    EXPECT_TRUE(LimitsCloud::candidates(Snapshot()).empty());
}

TEST(SnapshotCandidates, OfEqualAgeBelongToTheMacThatSentLast) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {secondsAgo(60), {accountOf("a", 5, {5})}};
    snapshot.macs[otherMac] = {secondsAgo(30), {accountOf("a", 5, {5})}};
    EXPECT_EQ(LimitsCloud::candidates(snapshot),
              (std::vector{candidateOf(snapshot, thisMac, 0, false),
                           candidateOf(snapshot, otherMac, 0, true)}));
}

TEST(SnapshotCandidates, OfEqualAgeAndEqualSendingBelongToTheMacOfTheLowerKey) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {now, {accountOf("a", 5, {5})}};
    snapshot.macs[otherMac] = {now, {accountOf("a", 5, {5})}};
    EXPECT_EQ(LimitsCloud::candidates(snapshot),
              (std::vector{candidateOf(snapshot, otherMac, 0, false),
                           candidateOf(snapshot, thisMac, 0, true)}));
}

TEST(SnapshotCandidates, ACopyWithoutAHistoryHoldsNothing) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {now, {accountOf("a", 0)}};
    snapshot.macs[otherMac] = {secondsAgo(60), {accountOf("a", 500, {500})}};
    EXPECT_EQ(LimitsCloud::candidates(snapshot),
              (std::vector{candidateOf(snapshot, otherMac, 0, true)}));
}

TEST(SnapshotCandidates, TheSameNameAtTwoProvidersIsTwoAccounts) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {now, {accountOf("a", 0, {5})}};
    snapshot.macs[otherMac] = {secondsAgo(60), {accountOf("a", 500, {500})}};
    snapshot.macs[otherMac].limits[0].provider = SubscriptionLimits::Provider::codex;
    EXPECT_EQ(LimitsCloud::candidates(snapshot),
              (std::vector{candidateOf(snapshot, otherMac, 0, true),
                           candidateOf(snapshot, thisMac, 0, true)}));
}

TEST(SnapshotCandidates, AnAccountTwiceInOneMacIsJudgedOnce) {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {now, {accountOf("a", 500, {500}), accountOf("a", 100, {100})}};
    snapshot.macs[otherMac] = {secondsAgo(60), {accountOf("a", 200, {200})}};
    EXPECT_EQ(LimitsCloud::candidates(snapshot),
              (std::vector{candidateOf(snapshot, otherMac, 0, false),
                           candidateOf(snapshot, thisMac, 0, true),
                           candidateOf(snapshot, thisMac, 1, true)}));
}

TEST(SnapshotCandidates, ComeByStalenessThenSendingThenMacThenIndex) {
    Snapshot snapshot;
    const MacId early{"Z"};
    snapshot.macs[early] = {secondsAgo(90),
                            {accountOf("only here", 9, {9}), accountOf("a", 9, {9})}};
    snapshot.macs[thisMac] = {now, {accountOf("b", 9, {9}), accountOf("a", 5, {5})}};
    snapshot.macs[otherMac] = {now, {accountOf("b", 9, {9}), accountOf("a", 9, {9})}};
    EXPECT_EQ(
        LimitsCloud::candidates(snapshot),
        (std::vector{
            candidateOf(snapshot, early, 1, false), candidateOf(snapshot, otherMac, 0, false),
            candidateOf(snapshot, otherMac, 1, false), candidateOf(snapshot, early, 0, true),
            candidateOf(snapshot, thisMac, 0, true), candidateOf(snapshot, thisMac, 1, true)}));
}

// The reduction once more, plainly: the whole is encoded at every step.
class PlainReduction {
  public:
    explicit PlainReduction(const Snapshot& snapshot) : snapshot_(snapshot) {}

    Snapshot result() {
        if (fits()) return snapshot_;
        for (auto& [id, mac] : snapshot_.macs)
            for (SubscriptionLimits& limits : mac.limits)
                limits.recentUsageHistory = narrowed(limits);
        narrowed_ = snapshot_;
        std::vector<Place> places;
        for (const auto& [id, mac] : narrowed_.macs)
            for (std::size_t index = 0; index < mac.limits.size(); ++index)
                if (mac.limits[index].recentUsageHistory) places.push_back({id, index});
        std::sort(places.begin(), places.end(),
                  [this](const Place& a, const Place& b) { return rank(a) < rank(b); });
        for (const Place& place : places)
            if (!fits()) accountAt(snapshot_, place).recentUsageHistory.reset();
        return snapshot_;
    }

  private:
    struct Place {
        MacId mac;
        std::size_t index;
    };

    bool fits() const { return encodeSnapshot(snapshot_).size() <= limit; }

    static SubscriptionLimits& accountAt(Snapshot& snapshot, const Place& place) {
        return snapshot.macs.at(place.mac).limits.at(place.index);
    }

    static std::optional<RecentUsageSamples> narrowed(const SubscriptionLimits& limits) {
        if (!limits.recentUsageHistory) return std::nullopt;
        const RecentUsageSamples& history = *limits.recentUsageHistory;
        RecentUsageSamples kept;
        for (const RecentUsageSample& sample : history) {
            const double age = unixSeconds(limits.updatedAt) - unixSeconds(sample.updatedAt);
            if (age >= 0 && age <= 22'200) kept.push_back(sample);
        }
        return kept.empty() ? std::nullopt : std::optional(kept);
    }

    // The Mac that no other one beats: by newer figures, by later sending, by the lower key.
    MacId holderOf(const std::string& account) const {
        std::optional<std::tuple<double, double, MacId>> best;
        for (const auto& [id, mac] : narrowed_.macs) {
            for (const SubscriptionLimits& limits : mac.limits) {
                if (limits.id() != account || !limits.recentUsageHistory) continue;
                const std::tuple own(-unixSeconds(limits.updatedAt), -unixSeconds(mac.sentAt), id);
                if (!best || own < *best) best = own;
            }
        }
        return std::get<MacId>(best.value());
    }

    std::tuple<bool, double, MacId, std::size_t> rank(const Place& place) {
        const bool isLatest = holderOf(accountAt(narrowed_, place).id()) == place.mac;
        return {isLatest, unixSeconds(narrowed_.macs.at(place.mac).sentAt), place.mac, place.index};
    }

    Snapshot snapshot_;
    Snapshot narrowed_;
};

// Few different times and names, so that most comparisons are ties somewhere.
class RandomDocuments {
  public:
    explicit RandomDocuments(test::Random& random) : random_(random) {}

    Snapshot next() {
        Snapshot snapshot;
        const std::size_t heaviest = 20'000 + random_.below(150'000);
        for (std::size_t count = 1 + random_.below(4); count > 0; --count) {
            Snapshot::Mac& mac = snapshot.macs[MacId{std::string(1, letter(5))}];
            mac.sentAt = secondsAgo(static_cast<double>(60 * random_.below(3)));
            for (std::size_t accounts = random_.below(6); accounts > 0; --accounts)
                mac.limits.push_back(account(heaviest));
        }
        return snapshot;
    }

  private:
    char letter(std::size_t count) { return static_cast<char>('A' + random_.below(count)); }

    SubscriptionLimits account(std::size_t heaviest) {
        SubscriptionLimits limits =
            accountOf(std::string(1, letter(4)), static_cast<double>(100 * random_.below(3)));
        if (random_.oneIn(3)) limits.provider = SubscriptionLimits::Provider::codex;
        if (random_.oneIn(8)) limits.displayName = std::string(random_.below(heaviest), 'n');
        if (random_.oneIn(6)) return limits;
        limits.recentUsageHistory.emplace();
        for (std::size_t samples = random_.below(4); samples > 0; --samples) {
            const double age = sampleAge(unixSeconds(now) - unixSeconds(limits.updatedAt));
            RecentUsageSample sample = test::weeklySample(age, 25.5);
            sample.planTier = std::string(random_.below(heaviest), 'p');
            limits.recentUsageHistory->push_back(sample);
        }
        return limits;
    }

    double sampleAge(double accountAge) {
        constexpr std::array<double, 7> ages = {-1, 0, 300, 22'199, 22'200, 22'200.5, 22'201};
        return accountAge + ages[random_.below(ages.size())];
    }

    test::Random& random_;
};

TEST(SnapshotReduction, GivesWhatAPlainReductionGives) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    RandomDocuments documents(random);
    int reducedCount = 0;
    for (int round = 0; round < 150; ++round) {
        const Snapshot document = documents.next();
        const std::string payload = LimitsCloud::encodedPayload(document);
        const Snapshot expected = PlainReduction(document).result();
        ASSERT_TRUE(payload == encodeSnapshot(expected)) << "round " << round;
        if (expected != document) ++reducedCount;
    }
    EXPECT_GT(reducedCount, 0);
}

}  // namespace
}  // namespace brimwatch
