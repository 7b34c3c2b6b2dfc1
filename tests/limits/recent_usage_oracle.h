// The rules of recent usage once more, as plainly as they can be told: step after step, on copies,
// without a thought for cost.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "limits/recent_usage_result.h"
#include "limits/recent_usage_samples.h"

namespace brimwatch::test::oracle {

using Samples = RecentUsageSamples;

inline bool windowIsSound(const std::optional<UsageWindow>& window) {
    if (!window) return true;
    if (!std::isfinite(window->usedPercentage)) return false;
    if (window->usedPercentage < 0 || window->usedPercentage > 100) return false;
    return !window->resetsAt || std::isfinite(unixSeconds(*window->resetsAt));
}

inline bool sampleIsSound(const RecentUsageSample& sample) {
    if (!std::isfinite(unixSeconds(sample.updatedAt))) return false;
    if (!sample.fiveHour && !sample.sevenDay) return false;
    return windowIsSound(sample.fiveHour) && windowIsSound(sample.sevenDay);
}

inline bool resetBetween(const std::optional<UsageWindow>& previous,
                         const std::optional<UsageWindow>& current) {
    if (previous && !current) return true;
    if (!previous && current) return true;
    if (!previous) return false;
    if (current->usedPercentage < previous->usedPercentage) return true;
    if (previous->resetsAt.has_value() != current->resetsAt.has_value()) return true;
    if (!previous->resetsAt) return false;
    return std::fabs(unixSeconds(*current->resetsAt) - unixSeconds(*previous->resetsAt)) > 3600;
}

inline Samples normalized(const Samples& samples, double now, bool capped) {
    Samples result;
    for (const RecentUsageSample& sample : samples) {
        const double time = unixSeconds(sample.updatedAt);
        if (!sampleIsSound(sample) || time < now - 86400 || time > now + 60) continue;
        auto place = result.end();
        while (place != result.begin() && unixSeconds(std::prev(place)->updatedAt) > time)
            --place;
        const bool isThere =
            place != result.begin() && unixSeconds(std::prev(place)->updatedAt) == time;
        if (!isThere) result.insert(place, sample);
    }
    while (capped && result.size() > 300)
        result.erase(result.begin());
    return result;
}

inline std::int64_t bucket(const RecentUsageSample& sample) {
    return static_cast<std::int64_t>(unixSeconds(sample.updatedAt)) / 300;
}

inline void recordOne(Samples& samples, const SubscriptionLimits& limits) {
    RecentUsageSample sample{limits.updatedAt, limits.fiveHour, limits.sevenDay,
                             limits.planTier,  false,           false};
    if (!samples.empty()) {
        const RecentUsageSample last = samples.back();
        if (!(sample.updatedAt > last.updatedAt)) return;
        if (sample.planTier != last.planTier) {
            sample.fiveHourReset = sample.sevenDayReset = true;
        } else {
            sample.fiveHourReset = resetBetween(last.fiveHour, sample.fiveHour);
            sample.sevenDayReset = resetBetween(last.sevenDay, sample.sevenDay);
        }
        if (bucket(last) == bucket(sample)) {
            sample.fiveHourReset = sample.fiveHourReset || last.fiveHourReset;
            sample.sevenDayReset = sample.sevenDayReset || last.sevenDayReset;
            samples.pop_back();
        }
    }
    samples.push_back(sample);
    while (samples.size() > 300)
        samples.erase(samples.begin());
}

inline std::vector<SubscriptionLimits> record(std::map<std::string, Samples>& accounts,
                                              const std::vector<SubscriptionLimits>& limits,
                                              const std::set<std::string>& allowed, double now) {
    std::map<std::string, Samples> pruned;
    for (const auto& [id, samples] : accounts) {
        const Samples kept = normalized(samples, now, true);
        if (!kept.empty()) pruned[id] = kept;
    }
    accounts = pruned;
    std::vector<SubscriptionLimits> result;
    for (SubscriptionLimits entry : limits) {
        const std::string key = entry.id();
        const double time = unixSeconds(entry.updatedAt);
        const bool isSound = sampleIsSound(
            {entry.updatedAt, entry.fiveHour, entry.sevenDay, std::nullopt, false, false});
        if (allowed.count(key) != 0 && isSound && !(time < now - 86400) && !(time > now + 60)) {
            recordOne(accounts[key], entry);
        }
        entry.recentUsageHistory = std::nullopt;
        if (accounts.count(key) != 0) entry.recentUsageHistory = accounts[key];
        result.push_back(entry);
    }
    return result;
}

inline Samples merged(const std::vector<std::optional<Samples>>& groups, double now) {
    std::map<double, RecentUsageSample> byTime;
    for (const std::optional<Samples>& group : groups) {
        if (!group) continue;
        for (const RecentUsageSample& sample : *group) {
            if (std::isnan(unixSeconds(sample.updatedAt))) continue;
            byTime.emplace(unixSeconds(sample.updatedAt), sample);
        }
    }
    Samples values;
    for (const auto& [time, sample] : byTime)
        values.push_back(sample);
    Samples result;
    for (RecentUsageSample sample : normalized(values, now, false)) {
        if (!result.empty() && bucket(result.back()) == bucket(sample)) {
            const RecentUsageSample& newest = result.back();
            const bool samePlan = newest.planTier == sample.planTier;
            sample.fiveHourReset =
                sample.fiveHourReset || newest.fiveHourReset ||
                (samePlan ? resetBetween(newest.fiveHour, sample.fiveHour) : true);
            sample.sevenDayReset =
                sample.sevenDayReset || newest.sevenDayReset ||
                (samePlan ? resetBetween(newest.sevenDay, sample.sevenDay) : true);
            result.pop_back();
        }
        result.push_back(sample);
    }
    while (result.size() > 300)
        result.erase(result.begin());
    return result;
}

inline RecentUsageResult derive(const SubscriptionLimits& limits, std::int64_t hours, double now) {
    using Status = RecentUsageResult::Status;
    const bool isWeekly = limits.sevenDay.has_value();
    const std::optional<UsageWindow> basis = isWeekly ? limits.sevenDay : limits.fiveHour;
    const auto windowOf = [&](const RecentUsageSample& sample) {
        return isWeekly ? sample.sevenDay : sample.fiveHour;
    };
    RecentUsageResult result;
    result.basisName = isWeekly ? "주간" : "5시간";
    if (basis) result.updatedAt = limits.updatedAt;
    const auto because = [&](Status status) {
        result.status = status;
        return result;
    };
    const double updatedAt = unixSeconds(limits.updatedAt);

    if (hours == 0 || !basis) return because(Status::unavailable);
    if (!windowIsSound(basis) || !std::isfinite(updatedAt)) return because(Status::unavailable);
    if (updatedAt > now + 60) return because(Status::unavailable);
    if (now - updatedAt > 900) return because(Status::stale);
    if (basis->resetsAt && unixSeconds(*basis->resetsAt) <= now) return because(Status::reset);

    Samples samples = normalized(limits.recentUsageHistory.value_or(Samples()), now, true);
    while (!samples.empty() && samples.back().updatedAt > limits.updatedAt)
        samples.pop_back();
    const double target = now - static_cast<double>(hours * 3600);
    std::optional<RecentUsageSample> baseline;
    for (const RecentUsageSample& sample : samples) {
        if (unixSeconds(sample.updatedAt) <= target) baseline = sample;
    }
    if (!baseline || target - unixSeconds(baseline->updatedAt) > 600) {
        return because(Status::collecting);
    }
    const std::optional<UsageWindow> start = windowOf(*baseline);
    if (!start) return because(Status::unavailable);
    UsageWindow previous = *start;
    for (const RecentUsageSample& sample : samples) {
        if (!(sample.updatedAt > baseline->updatedAt)) continue;
        const std::optional<UsageWindow> window = windowOf(sample);
        if (!window) return because(Status::unavailable);
        if (start->resetsAt && *start->resetsAt <= sample.updatedAt) return because(Status::reset);
        if (sample.planTier != baseline->planTier) return because(Status::reset);
        if (isWeekly ? sample.sevenDayReset : sample.fiveHourReset) return because(Status::reset);
        if (window->usedPercentage < previous.usedPercentage) return because(Status::reset);
        if (window->resetsAt.has_value() != previous.resetsAt.has_value()) {
            return because(Status::reset);
        }
        if (window->resetsAt &&
            std::fabs(unixSeconds(*window->resetsAt) - unixSeconds(*previous.resetsAt)) > 3600) {
            return because(Status::reset);
        }
        previous = *window;
    }
    if (start->resetsAt && unixSeconds(*start->resetsAt) <= updatedAt) {
        return because(Status::reset);
    }
    if (limits.planTier != baseline->planTier) return because(Status::reset);
    if (resetBetween(previous, basis)) return because(Status::reset);
    result.percentagePoints = basis->usedPercentage - start->usedPercentage;
    return because(Status::available);
}

}  // namespace brimwatch::test::oracle
