#include "limits/menu_bar_gauge.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace brimwatch {
namespace {

// Whole percents, rounded down. The rounding before that keeps a value such as 28.999999999, which
// stands for 29, from falling to 28.
std::int64_t percentLeft(const UsageWindow& window) {
    constexpr double steps = 1'000'000;
    const double fraction = std::max(1 - window.usedPercentage / 100, 0.0);
    return static_cast<std::int64_t>(std::floor(std::round(fraction * 100 * steps) / steps));
}

std::optional<std::int64_t> menuPercent(std::span<const SubscriptionLimits> limits) {
    std::int64_t sum = 0;
    std::int64_t count = 0;
    for (const SubscriptionLimits& account : limits) {
        const std::optional<UsageWindow>& window =
            account.sevenDay ? account.sevenDay : account.fiveHour;
        if (!window) continue;
        sum += percentLeft(*window);
        ++count;
    }
    if (count == 0) return std::nullopt;
    return sum / count;
}

std::optional<double> weeklyFractionLeft(std::span<const SubscriptionLimits> limits) {
    double sum = 0;
    double count = 0;
    for (const SubscriptionLimits& account : limits) {
        if (!account.sevenDay) continue;
        sum += 1 + account.sevenDay->usedPercentage / -100;
        ++count;
    }
    if (count == 0) return std::nullopt;
    return sum / count;
}

}  // namespace

MenuBarGauge menuBarGauge(std::span<const SubscriptionLimits> limits) {
    MenuBarGauge gauge;
    if (const std::optional<std::int64_t> percent = menuPercent(limits)) {
        gauge.remaining = static_cast<double>(*percent) / 100;
    }
    gauge.weekly = weeklyFractionLeft(limits).value_or(gauge.remaining.value_or(1.0));
    return gauge;
}

std::string menuTitleText(std::span<const SubscriptionLimits> limits, UsageDisplay display) {
    const std::optional<std::int64_t> percent = menuPercent(limits);
    if (!percent) return {};
    const std::int64_t left = std::clamp<std::int64_t>(*percent, 0, 100);
    return std::to_string(display == UsageDisplay::used ? 100 - left : left) + '%';
}

}  // namespace brimwatch
