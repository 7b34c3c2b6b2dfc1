#include "limits/recent_usage_history.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace brimwatch {
namespace {

// Instants with the same number fall into the same five minutes.
double bucketNumber(Instant instant) {
    constexpr double bucketSeconds = 300;
    return std::trunc(std::trunc(unixSeconds(instant)) / bucketSeconds);
}

bool isSameBucket(const RecentUsageSample& a, const RecentUsageSample& b) {
    return bucketNumber(a.updatedAt) == bucketNumber(b.updatedAt);
}

// Adds the resets between the two samples to those that `sample` tells of.
void addResetsSince(const RecentUsageSample& previous, RecentUsageSample& sample) {
    const bool isOtherPlan = previous.planTier != sample.planTier;
    sample.fiveHourReset |= isOtherPlan || wasReset(previous.fiveHour, sample.fiveHour);
    sample.sevenDayReset |= isOtherPlan || wasReset(previous.sevenDay, sample.sevenDay);
}

// Puts the sample in the place of the last one, without losing the resets that one tells of.
void replaceLast(RecentUsageSamples& samples, RecentUsageSample sample) {
    sample.fiveHourReset |= samples.back().fiveHourReset;
    sample.sevenDayReset |= samples.back().sevenDayReset;
    samples.back() = std::move(sample);
}

RecentUsageSample sampleOf(const SubscriptionLimits& limits) {
    return {.updatedAt = limits.updatedAt,
            .fiveHour = limits.fiveHour,
            .sevenDay = limits.sevenDay,
            .planTier = limits.planTier};
}

void append(RecentUsageSamples& samples, RecentUsageSample sample) {
    if (samples.empty()) {
        samples.push_back(std::move(sample));
        return;
    }
    if (!(samples.back().updatedAt < sample.updatedAt)) return;
    addResetsSince(samples.back(), sample);
    if (isSameBucket(samples.back(), sample)) {
        replaceLast(samples, std::move(sample));
    } else {
        samples.push_back(std::move(sample));
    }
    keepNewest(samples);
}

void prune(RecentUsageHistory& history, Instant now) {
    for (auto& [id, samples] : history.accounts) {
        samples = RecentUsageHistory::normalized(samples, now, SampleCapacity::newest300);
    }
    std::erase_if(history.accounts, [](const auto& account) { return account.second.empty(); });
}

// All samples in the order of time; of one instant the first, even if it is of no use.
RecentUsageSampleReferences firstOfEachInstant(
    const std::vector<const RecentUsageSamples*>& groups) {
    RecentUsageSampleReferences references;
    for (const RecentUsageSamples* group : groups) {
        if (group == nullptr) continue;
        for (const RecentUsageSample& sample : *group) {
            // A time that is not a number has no place in the order.
            if (std::isfinite(unixSeconds(sample.updatedAt))) references.push_back(&sample);
        }
    }
    std::stable_sort(references.begin(), references.end(),
                     [](const auto* a, const auto* b) { return a->updatedAt < b->updatedAt; });
    const auto last =
        std::unique(references.begin(), references.end(),
                    [](const auto* a, const auto* b) { return a->updatedAt == b->updatedAt; });
    references.erase(last, references.end());
    return references;
}

}  // namespace

std::vector<SubscriptionLimits> RecentUsageHistory::record(std::vector<SubscriptionLimits> limits,
                                                           const SubscriptionIds& allowed,
                                                           Instant now) {
    prune(*this, now);
    for (SubscriptionLimits& entry : limits) {
        const std::string id = entry.id();
        RecentUsageSample sample = sampleOf(entry);
        if (allowed.contains(id) && isKept(sample, now)) append(accounts[id], std::move(sample));
        const auto found = accounts.find(id);
        entry.recentUsageHistory = std::nullopt;
        if (found != accounts.end()) entry.recentUsageHistory = found->second;
    }
    return limits;
}

RecentUsageSamples RecentUsageHistory::normalized(const RecentUsageSamples& samples, Instant now,
                                                  SampleCapacity capacity) {
    return copied(normalizedReferences(samples, now, capacity));
}

RecentUsageSamples RecentUsageHistory::merged(const std::vector<const RecentUsageSamples*>& groups,
                                              Instant now) {
    RecentUsageSamples result;
    for (const RecentUsageSample* reference : firstOfEachInstant(groups)) {
        if (!isKept(*reference, now)) continue;
        if (result.empty() || !isSameBucket(result.back(), *reference)) {
            result.push_back(*reference);
            continue;
        }
        RecentUsageSample sample = *reference;
        addResetsSince(result.back(), sample);
        replaceLast(result, std::move(sample));
    }
    keepNewest(result);
    return result;
}

}  // namespace brimwatch
