// What the panel shows of all accounts together: the gauge of the rocket's ring, and its number.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "limits/subscription_limits.h"
#include "limits/usage_display.h"

namespace brimwatch {

struct MenuBarGauge {
    // The fraction that is left, 0 to 1 in whole hundredths; absent when no account has a figure.
    std::optional<double> remaining;
    // The mean fraction that is left of the weekly windows; not clamped, it drives the rocket.
    double weekly = 1.0;

    bool operator==(const MenuBarGauge&) const = default;
};

// Of each account the weekly window counts, or the five-hour window where there is no weekly one.
MenuBarGauge menuBarGauge(std::span<const SubscriptionLimits> limits);

// The mean percentage, left or used, as in "42%"; empty when no account has a figure.
std::string menuTitleText(std::span<const SubscriptionLimits> limits, UsageDisplay display);

}  // namespace brimwatch
