#include "presentation/menu_bar_motion.h"

namespace brimwatch {
namespace {

constexpr double fullTurn = 2 * std::numbers::pi;
constexpr double shortageThreshold = 0.35;  // of the week
constexpr double stuttersPerSecond = 12;
constexpr double deepestStutter = 0.85;
constexpr double leastThrottle = 0.08;

double sureWeekly(double weekly) {
    return std::isnan(weekly) ? 1.0 : weekly;
}

// A fraction of full speed. The stutter is the same in every run.
double throttle(double elapsed, double weekly) {
    const double depth = std::max(weeklyShortage(weekly), 0.0) * deepestStutter;
    const double beat = std::round(elapsed * stuttersPerSecond);
    const double stutter = std::sin(beat * 0.63) * (std::sin(beat * 1.7) * 0.5) + 0.5;
    return std::max(1 - depth * stutter, leastThrottle);
}

// Radians a second: a turn takes 2 seconds with a full week and 120 with an empty one.
double fullSpeed(double weekly) {
    const double spent = 1 - std::clamp(weekly, 0.0, 1.0);
    const double halfTurnSeconds = std::pow(60, std::pow(spent, 1.1));
    return fullTurn / (halfTurnSeconds + halfTurnSeconds);
}

}  // namespace

double weeklyShortage(double weekly) {
    return std::min((shortageThreshold - sureWeekly(weekly)) / shortageThreshold, 1.0);
}

void MenuBarMotion::step(double seconds, double weekly) {
    if (!std::isfinite(seconds)) return;
    elapsed += seconds;
    const double advance = throttle(elapsed, weekly) * (seconds * fullSpeed(sureWeekly(weekly)));
    angle = std::fmod(angle + advance, fullTurn);
}

}  // namespace brimwatch
