// What makes a sample of recent usage good, and what counts as a reset between two of them: the
// ground that recording and deriving stand on. In the header, because a card asks for each sample
// on each draw.
#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>

#include "limits/subscription_limits.h"
#include "support/instant.h"

namespace brimwatch {

inline constexpr std::chrono::hours recentUsageRetention{24};
// A time up to this far ahead of the clock still counts.
inline constexpr std::chrono::seconds recentUsageFutureAllowance{60};
inline constexpr RecentUsageSamples::size_type recentUsageCapacity = 300;

inline bool isAbsentOrValid(const std::optional<UsageWindow>& window) {
    return !window || isValid(*window);
}

inline bool isValid(const RecentUsageSample& sample) {
    return std::isfinite(unixSeconds(sample.updatedAt)) && (sample.fiveHour || sample.sevenDay) &&
           isAbsentOrValid(sample.fiveHour) && isAbsentOrValid(sample.sevenDay);
}

// In the order of time, each instant once.
inline bool isInOrder(const RecentUsageSamples& samples) {
    return std::adjacent_find(samples.begin(), samples.end(), [](const auto& a, const auto& b) {
               return !(a.updatedAt < b.updatedAt);
           }) == samples.end();
}

// Both absent, or at most an hour apart.
inline bool isSameCycle(const std::optional<Instant>& a, const std::optional<Instant>& b) {
    if (!a || !b) return a.has_value() == b.has_value();
    return std::chrono::abs(*a - *b) <= std::chrono::hours(1);
}

// Whether a window started anew, came or went between two observations of it.
inline bool wasReset(const std::optional<UsageWindow>& previous,
                     const std::optional<UsageWindow>& current) {
    if (!previous || !current) return previous.has_value() != current.has_value();
    return current->usedPercentage < previous->usedPercentage ||
           !isSameCycle(previous->resetsAt, current->resetsAt);
}

}  // namespace brimwatch
