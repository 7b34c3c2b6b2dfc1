// What makes a sample of recent usage good, and what counts as a reset between two of them: the
// ground that recording and deriving stand on.
#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "limits/subscription_limits.h"
#include "support/instant.h"

namespace brimwatch {

using RecentUsageSamples = std::vector<RecentUsageSample>;
// Samples that belong to somebody else, none of them null.
using RecentUsageSampleReferences = std::vector<const RecentUsageSample*>;

inline constexpr std::chrono::hours recentUsageRetention{24};
// A time up to this far ahead of the clock still counts.
inline constexpr std::chrono::seconds recentUsageFutureAllowance{60};

enum class SampleCapacity { newest300, unlimited };

bool isValid(const RecentUsageSample& sample);

// Whether the sample may be kept at the time `now`: valid, and neither too old nor of the future.
bool isKept(const RecentUsageSample& sample, Instant now);

// Whether a window started anew, came or went between two observations of it.
bool wasReset(const std::optional<UsageWindow>& previous,
              const std::optional<UsageWindow>& current);

// The samples that may be kept, in the order of time, the first one of each instant. Costs one
// allocation, and one pass where they stand in that order already.
RecentUsageSampleReferences normalizedReferences(const RecentUsageSamples& samples, Instant now,
                                                 SampleCapacity capacity);

RecentUsageSamples copied(const RecentUsageSampleReferences& samples);

// Removes all but the newest 300.
template <class Samples>
void keepNewest(Samples& samples) {
    constexpr typename Samples::size_type capacity = 300;
    if (samples.size() <= capacity) return;
    samples.erase(samples.begin(), samples.end() - capacity);
}

}  // namespace brimwatch
