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

// Of samples of one instant the first one stays. Every instant must be a number.
void orderByInstant(RecentUsageSamples& samples) {
    std::stable_sort(samples.begin(), samples.end(),
                     [](const auto& a, const auto& b) { return a.updatedAt < b.updatedAt; });
    const auto last = std::unique(samples.begin(), samples.end(), [](const auto& a, const auto& b) {
        return a.updatedAt == b.updatedAt;
    });
    samples.erase(last, samples.end());
}

void keepNewest(RecentUsageSamples& samples) {
    if (samples.size() <= recentUsageCapacity) return;
    samples.erase(samples.begin(), samples.end() - recentUsageCapacity);
}

// Whether the sample may be kept at the time `now`.
bool isKept(const RecentUsageSample& sample, Instant now) {
    return now - recentUsageRetention <= sample.updatedAt &&
           sample.updatedAt <= now + recentUsageFutureAllowance && isValid(sample);
}

bool isValidAndInOrder(const RecentUsageSamples& samples) {
    if (samples.isNoted()) return true;
    const auto valid = [](const RecentUsageSample& sample) { return isValid(sample); };
    if (!isInOrder(samples) || !std::all_of(samples.begin(), samples.end(), valid)) return false;
    samples.note();
    return true;
}

// As recorded samples are until one becomes too old. Looks at each sample only once.
bool isNormal(const RecentUsageSamples& samples, Instant now) {
    if (samples.empty()) return true;
    return samples.size() <= recentUsageCapacity && isValidAndInOrder(samples) &&
           isKept(samples.front(), now) && isKept(samples.back(), now);
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
    const RecentUsageSample& last = std::as_const(samples).back();
    if (!(last.updatedAt < sample.updatedAt)) return;
    addResetsSince(last, sample);
    if (isSameBucket(last, sample)) {
        replaceLast(samples, std::move(sample));
    } else {
        samples.push_back(std::move(sample));
    }
    keepNewest(samples);
}

void prune(RecentUsageHistory& history, Instant now) {
    for (auto& [id, samples] : history.accounts) {
        samples = RecentUsageHistory::normalized(std::move(samples), now,
                                                 RecentUsageHistory::Capacity::newest300);
    }
    std::erase_if(history.accounts, [](const auto& account) { return account.second.empty(); });
}

// What the groups hold together; of one instant the sample that comes first, even if it is of no
// use.
RecentUsageSamples firstOfEachInstant(const std::vector<const RecentUsageSamples*>& groups) {
    RecentUsageSamples samples;
    for (const RecentUsageSamples* group : groups) {
        if (group != nullptr) samples.insert(samples.end(), group->begin(), group->end());
    }
    erase_if(samples, [](const RecentUsageSample& sample) {
        return !std::isfinite(unixSeconds(sample.updatedAt));
    });
    orderByInstant(samples);
    return samples;
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

RecentUsageSamples RecentUsageHistory::normalized(RecentUsageSamples samples, Instant now,
                                                  Capacity capacity) {
    if (isNormal(samples, now)) return samples;
    erase_if(samples, [now](const RecentUsageSample& sample) { return !isKept(sample, now); });
    orderByInstant(samples);
    if (capacity == Capacity::newest300) keepNewest(samples);
    return samples;
}

RecentUsageSamples RecentUsageHistory::merged(const std::vector<const RecentUsageSamples*>& groups,
                                              Instant now) {
    RecentUsageSamples result;
    for (RecentUsageSample& sample : firstOfEachInstant(groups)) {
        if (!isKept(sample, now)) continue;
        if (result.empty() || !isSameBucket(result.back(), sample)) {
            result.push_back(std::move(sample));
            continue;
        }
        addResetsSince(result.back(), sample);
        replaceLast(result, std::move(sample));
    }
    keepNewest(result);
    return result;
}

}  // namespace brimwatch
