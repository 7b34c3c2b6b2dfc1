#include "limits/menu_bar_gauge.h"

#include <cstdint>

#include "limits/usage_percent.h"

namespace brimwatch {
namespace {

std::optional<std::int64_t> menuPercent(std::span<const SubscriptionLimits> limits) {
    std::int64_t sum = 0;
    std::int64_t count = 0;
    for (const SubscriptionLimits& account : limits) {
        const std::optional<UsageWindow>& window = mainWindow(account);
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
    return std::to_string(shownPercent(*percent, display)) + '%';
}

}  // namespace brimwatch
