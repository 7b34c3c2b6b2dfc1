#include "limits/usage_percent.h"

#include <algorithm>
#include <cmath>

namespace brimwatch {

// The rounding before the floor keeps a value such as 28.999999999, which stands for 29, from
// falling to 28. Of what is no number nothing is left: `std::max` gives its first argument then.
std::int64_t percentLeft(const UsageWindow& window) {
    constexpr double steps = 1'000'000;
    const double fraction = std::max(0.0, 1 - window.usedPercentage / 100);
    return static_cast<std::int64_t>(std::floor(std::round(fraction * 100 * steps) / steps));
}

std::int64_t shownPercent(std::int64_t percentLeft, UsageDisplay display) {
    const std::int64_t left = std::clamp<std::int64_t>(percentLeft, 0, 100);
    return display == UsageDisplay::used ? 100 - left : left;
}

const std::optional<UsageWindow>& mainWindow(const SubscriptionLimits& limits) {
    return limits.sevenDay ? limits.sevenDay : limits.fiveHour;
}

}  // namespace brimwatch
