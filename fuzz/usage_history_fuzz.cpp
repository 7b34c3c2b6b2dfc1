// The stored history of recent usage: what it takes it writes so that it reads the same again, and
// recording, joining and deriving hold their promises on any samples.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "harness/stored_json.h"
#include "limits/recent_usage_history.h"
#include "limits/recent_usage_result.h"
#include "require.h"

namespace {

using namespace brimwatch;

bool isSorted(const RecentUsageSamples& samples) {
    return std::adjacent_find(samples.begin(), samples.end(), [](const auto& a, const auto& b) {
               return !(a.updatedAt < b.updatedAt);
           }) == samples.end();
}

bool areSound(const RecentUsageSamples& samples) {
    return samples.size() <= recentUsageCapacity && isSorted(samples) &&
           std::all_of(samples.begin(), samples.end(),
                       [](const RecentUsageSample& sample) { return isValid(sample); });
}

SubscriptionLimits recordLike(const RecentUsageSample& sample) {
    SubscriptionLimits limits;
    limits.account = "work";
    limits.updatedAt = sample.updatedAt;
    limits.fiveHour = sample.fiveHour;
    limits.sevenDay = sample.sevenDay;
    limits.planTier = sample.planTier;
    return limits;
}

void requireSoundResult(const SubscriptionLimits& limits, Instant now) {
    for (const int hours : {0, 1, 2, 4, 6}) {
        const auto period = recentUsagePeriodFromRawValue(hours);
        const auto result = RecentUsageResult::derive(limits, period, now);
        const bool isAvailable = result.status == RecentUsageResult::Status::available;
        REQUIRE(result.percentagePoints.has_value() == isAvailable);
        REQUIRE(!isAvailable || (*result.percentagePoints >= 0 && *result.percentagePoints <= 100));
        REQUIRE(result.updatedAt.has_value() == (limits.fiveHour || limits.sevenDay));
    }
}

// Each sample once plays the record that was just read, at its own time.
void requireSoundRecording(RecentUsageHistory history, const RecentUsageSamples& samples) {
    for (const RecentUsageSample& sample : samples) {
        SubscriptionLimits limits = recordLike(sample);
        limits.recentUsageHistory = samples;
        requireSoundResult(limits, sample.updatedAt);
        limits = history.record({limits}, {"claude-work"}, sample.updatedAt).at(0);
        for (const auto& [id, recorded] : history.accounts) {
            REQUIRE(!recorded.empty() && areSound(recorded));
        }
        requireSoundResult(limits, sample.updatedAt);
    }
}

void requireSoundSamples(const RecentUsageSamples& samples) {
    using Capacity = RecentUsageHistory::Capacity;
    if (samples.empty()) return;
    const Instant now = samples.front().updatedAt;
    const auto normalized = RecentUsageHistory::normalized(samples, now, Capacity::newest300);
    REQUIRE(areSound(normalized));
    REQUIRE(RecentUsageHistory::normalized(normalized, now, Capacity::newest300) == normalized);
    const auto merged = RecentUsageHistory::merged({&samples, nullptr, &normalized}, now);
    REQUIRE(areSound(merged));
    REQUIRE(RecentUsageHistory::merged({&merged}, now) == merged);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto history = brimwatch::test::decode<RecentUsageHistory>(
        std::string_view(reinterpret_cast<const char*>(data), size));
    if (!history) return 0;
    // A time far from our days may lose digits on its first way through, but not on the next.
    const std::string encoded = brimwatch::test::encode(*history);
    const auto decoded = brimwatch::test::decode<RecentUsageHistory>(encoded);
    REQUIRE(decoded.has_value());
    REQUIRE(brimwatch::test::encode(*decoded) == encoded);
    for (const auto& [id, samples] : history->accounts) {
        requireSoundSamples(samples);
        requireSoundRecording(*history, samples);
    }
    return 0;
}
