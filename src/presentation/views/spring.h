// A spring by how it is felt, and the numbers that Qt Quick's `SpringAnimation` wants for it.
//
// That animation goes by steps of 16 ms. In each it adds `spring` times the way that is left to the
// speed, takes `damping` times the speed from it, and moves on by the speed, which is that of a
// second.
#pragma once

#include <numbers>

namespace brimwatch {

struct Spring {
    double response = 0;         // seconds that one swing would need without damping
    double dampingFraction = 0;  // of the damping by which it would just not swing any more

    static constexpr double step = 0.016;  // seconds

    constexpr double angularFrequency() const { return 2 * std::numbers::pi / response; }
    constexpr double spring() const { return angularFrequency() * angularFrequency() * step; }
    constexpr double damping() const { return 2 * dampingFraction * angularFrequency() * step; }
};

// Of a row that glides to its place among others.
inline constexpr Spring rowMotion{.response = 0.5, .dampingFraction = 0.85};

}  // namespace brimwatch
