// Samples and records of usage for tests.
#pragma once

#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "harness/random.h"
#include "limits/recent_usage_samples.h"
#include "limits/subscription_limits.h"

namespace brimwatch::test {

// The begin of a bucket of five minutes.
inline constexpr double nowSeconds = 1'790'000'100;
inline constexpr Instant now = instantFromUnixSeconds(nowSeconds);

constexpr Instant secondsAgo(double seconds) {
    return instantFromUnixSeconds(nowSeconds - seconds);
}

constexpr Instant secondsAhead(double seconds) {
    return secondsAgo(-seconds);
}

inline UsageWindow window(double usedPercentage) {
    return {usedPercentage, secondsAhead(90'000)};
}

// A sample of the weekly window alone.
inline RecentUsageSample weeklySample(double ageSeconds, double usedPercentage) {
    RecentUsageSample sample;
    sample.updatedAt = secondsAgo(ageSeconds);
    sample.sevenDay = window(usedPercentage);
    return sample;
}

// A record that was updated just now.
inline SubscriptionLimits weeklyRecord(double usedPercentage) {
    SubscriptionLimits limits;
    limits.account = "work";
    limits.updatedAt = now;
    limits.sevenDay = window(usedPercentage);
    return limits;
}

// What a random history is made of: mostly sound, with every kind of flaw now and then.
class RandomUsage {
  public:
    // One in `flawOneIn` things, at least 2, is flawed.
    explicit RandomUsage(Random& random, std::size_t flawOneIn)
        : random_(random), flawOneIn_(flawOneIn) {}

    std::optional<UsageWindow> nextWindow() {
        if (random_.oneIn(4 * flawOneIn_)) return std::nullopt;
        used_ += static_cast<double>(random_.below(3)) / 4;
        if (random_.oneIn(flawOneIn_)) used_ -= 5;
        UsageWindow window{used_, resetsAt_};
        if (random_.oneIn(flawOneIn_)) resetsAt_ += std::chrono::seconds(random_.between(-1, 1));
        if (random_.oneIn(8 * flawOneIn_)) resetsAt_ += std::chrono::seconds(3600);
        if (random_.oneIn(8 * flawOneIn_)) resetsAt_ += std::chrono::seconds(3601);
        if (random_.oneIn(8 * flawOneIn_)) window.resetsAt = std::nullopt;
        if (random_.oneIn(8 * flawOneIn_)) window.resetsAt = instantFromUnixSeconds(infinity);
        if (random_.oneIn(8 * flawOneIn_)) window.usedPercentage = infinity;
        if (random_.oneIn(8 * flawOneIn_)) window.usedPercentage = notANumber;
        return window;
    }

    std::optional<std::string> nextPlan() {
        if (random_.oneIn(4 * flawOneIn_)) return std::nullopt;
        return random_.oneIn(8 * flawOneIn_) ? "Pro" : "Max 20배, and nothing but this";
    }

    RecentUsageSample nextSample(Instant updatedAt) {
        RecentUsageSample sample{.updatedAt = updatedAt,
                                 .fiveHour = nextWindow(),
                                 .sevenDay = nextWindow(),
                                 .planTier = nextPlan(),
                                 .fiveHourReset = random_.oneIn(8 * flawOneIn_),
                                 .sevenDayReset = random_.oneIn(8 * flawOneIn_)};
        if (random_.oneIn(8 * flawOneIn_)) sample.updatedAt = instantFromUnixSeconds(notANumber);
        if (random_.oneIn(8 * flawOneIn_)) sample.updatedAt = instantFromUnixSeconds(infinity);
        return sample;
    }

    // Samples up to `now`, mostly in order.
    RecentUsageSamples samples(std::size_t count, std::int64_t longestStepSeconds) {
        RecentUsageSamples samples;
        double age = 0;
        std::vector<double> ages;
        for (std::size_t index = 0; index < count; ++index) {
            ages.push_back(age);
            age += static_cast<double>(random_.between(0, longestStepSeconds));
        }
        for (auto each = ages.rbegin(); each != ages.rend(); ++each)
            samples.push_back(nextSample(secondsAgo(*each)));
        while (samples.size() > 1 && random_.oneIn(flawOneIn_)) {
            std::swap(samples[random_.below(count)], samples[random_.below(count)]);
        }
        return samples;
    }

  private:
    static constexpr double infinity = std::numeric_limits<double>::infinity();
    static constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

    Random& random_;
    std::size_t flawOneIn_;
    double used_ = 20;
    Instant resetsAt_ = secondsAhead(4000);
};

}  // namespace brimwatch::test
