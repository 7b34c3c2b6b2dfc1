#include "limits/recent_usage_samples.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace brimwatch {
namespace {

constexpr std::chrono::hours sameCycle{1};

bool isAbsentOrValid(const std::optional<UsageWindow>& window) {
    return !window || isValid(*window);
}

bool isSameCycle(const std::optional<Instant>& a, const std::optional<Instant>& b) {
    if (!a || !b) return a.has_value() == b.has_value();
    return std::chrono::abs(*a - *b) <= sameCycle;
}

// The samples are elements of one array, so that of equal instants the lower address came first.
void sortAndDropRepeated(RecentUsageSampleReferences& samples) {
    std::sort(samples.begin(), samples.end(),
              [](const RecentUsageSample* a, const RecentUsageSample* b) {
                  if (a->updatedAt != b->updatedAt) return a->updatedAt < b->updatedAt;
                  return std::less<>()(a, b);
              });
    const auto last = std::unique(samples.begin(), samples.end(),
                                  [](const RecentUsageSample* a, const RecentUsageSample* b) {
                                      return a->updatedAt == b->updatedAt;
                                  });
    samples.erase(last, samples.end());
}

}  // namespace

bool isValid(const RecentUsageSample& sample) {
    return std::isfinite(unixSeconds(sample.updatedAt)) && (sample.fiveHour || sample.sevenDay) &&
           isAbsentOrValid(sample.fiveHour) && isAbsentOrValid(sample.sevenDay);
}

bool isKept(const RecentUsageSample& sample, Instant now) {
    return now - recentUsageRetention <= sample.updatedAt &&
           sample.updatedAt <= now + recentUsageFutureAllowance && isValid(sample);
}

bool wasReset(const std::optional<UsageWindow>& previous,
              const std::optional<UsageWindow>& current) {
    if (!previous || !current) return previous.has_value() != current.has_value();
    return current->usedPercentage < previous->usedPercentage ||
           !isSameCycle(previous->resetsAt, current->resetsAt);
}

RecentUsageSampleReferences normalizedReferences(const RecentUsageSamples& samples, Instant now,
                                                 SampleCapacity capacity) {
    RecentUsageSampleReferences kept;
    kept.reserve(samples.size());
    bool isInOrder = true;
    for (const RecentUsageSample& sample : samples) {
        if (!isKept(sample, now)) continue;
        isInOrder &= kept.empty() || kept.back()->updatedAt < sample.updatedAt;
        kept.push_back(&sample);
    }
    if (!isInOrder) sortAndDropRepeated(kept);
    if (capacity == SampleCapacity::newest300) keepNewest(kept);
    return kept;
}

RecentUsageSamples copied(const RecentUsageSampleReferences& samples) {
    RecentUsageSamples copies;
    copies.reserve(samples.size());
    for (const RecentUsageSample* sample : samples)
        copies.push_back(*sample);
    return copies;
}

}  // namespace brimwatch
