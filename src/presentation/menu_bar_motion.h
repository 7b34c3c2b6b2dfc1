// How the rocket flies: the more of the week is left, the faster. When the week runs low it
// stutters and trembles.
//
// Time is in seconds, angles are in radians. Plain values and arithmetic; a week that is no number
// counts as a full one.
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "presentation/menu_bar_icon.h"

namespace brimwatch {

struct MenuBarMotion {
    double angle = 0;    // of the rocket on the ring, from 0 to less than a full turn
    double elapsed = 0;  // sum of all steps

    // Flies on for a time. `weekly` is the fraction of the week that is left; below 0 and above 1
    // it does what it does at these. A step of no finite length is none.
    void step(double seconds, double weekly);

    bool operator==(const MenuBarMotion&) const = default;
};

// How short the week is: 0 and less while 35 percent are left, 1 when nothing is, 1 at most.
double weeklyShortage(double weekly);

// This frame's trembling, drawn anew for each. The generator is not touched while the rocket holds
// its place.
template <std::uniform_random_bit_generator Generator>
MenuBarShake drawShake(double weekly, Generator& generator) {
    const double shortage = weeklyShortage(weekly);
    if (shortage <= 0) return {};
    const auto drawUpTo = [&generator](double limit) {
        const double beyond = std::nextafter(limit, 2 * limit);
        return std::uniform_real_distribution<double>(-limit, beyond)(generator);
    };
    const double radial = shortage * drawUpTo(0.9);
    const double angle = shortage * drawUpTo(9) * std::numbers::pi / 180;
    return {radial, angle};
}

}  // namespace brimwatch
