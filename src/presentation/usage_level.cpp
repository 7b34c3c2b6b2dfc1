#include "presentation/usage_level.h"

#include "limits/usage_percent.h"

namespace brimwatch {

UsageLevel usageLevel(const UsageWindow& window, double warningRatio) {
    constexpr double half = 0.5;
    const double used = window.usedPercentage / 100;
    if (percentLeft(window) == 0) return UsageLevel::exhausted;
    if (used >= warningRatio) return UsageLevel::warning;
    return used >= half ? UsageLevel::overHalf : UsageLevel::comfortable;
}

}  // namespace brimwatch
