// Whole percents of a limit, as people read them.
#pragma once

#include <cstdint>
#include <optional>

#include "limits/subscription_limits.h"
#include "limits/usage_display.h"

namespace brimwatch {

// Rounded down, so that what reads as left is left. Never below 0; above 100 only where less than
// nothing was used.
std::int64_t percentLeft(const UsageWindow& window);

// What to show of that, from 0 to 100.
std::int64_t shownPercent(std::int64_t percentLeft, UsageDisplay display);

// The window that speaks for the account: the weekly one, or the five-hour one without it.
const std::optional<UsageWindow>& mainWindow(const SubscriptionLimits& limits);

}  // namespace brimwatch
