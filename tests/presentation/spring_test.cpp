#include "presentation/views/spring.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "presentation/views/view_palette.h"

namespace brimwatch {
namespace {

// How far it has come after each step on its way from 0 to 1, as `SpringAnimation` moves.
std::vector<double> way(const Spring& spring, double seconds) {
    std::vector<double> places;
    double place = 0;
    double speed = 0;
    const int count = static_cast<int>(seconds / Spring::step);
    for (int number = 0; number < count; ++number) {
        speed += spring.spring() * (1 - place) - spring.damping() * speed;
        place += speed * Spring::step;
        places.push_back(place);
    }
    return places;
}

double furthest(const Spring& spring) {
    const std::vector<double> places = way(spring, 2);
    return *std::max_element(places.begin(), places.end());
}

TEST(Spring, SwingsOnceInItsResponse) {
    constexpr Spring free{.response = 1, .dampingFraction = 0};
    const std::vector<double> places = way(free, 1);
    EXPECT_NEAR(places[places.size() / 2], 2, 0.1);
    EXPECT_NEAR(places.back(), 0, 0.1);
    constexpr Spring faster{.response = 0.5, .dampingFraction = 0};
    EXPECT_NEAR(way(faster, 0.25).back(), 2, 0.1);
}

TEST(Spring, OvershootsByItsDamping) {
    EXPECT_GT(furthest({.response = 0.5, .dampingFraction = 0.3}), 1.2);
    EXPECT_LT(furthest({.response = 0.5, .dampingFraction = 1}), 1.001);
}

TEST(Spring, OfRowsNeedsHalfASecondAndHardlySwings) {
    EXPECT_EQ(rowMotion.response, 0.5);
    EXPECT_EQ(rowMotion.dampingFraction, 0.85);
    EXPECT_NEAR(rowMotion.spring(), 2.527, 0.001);
    EXPECT_NEAR(rowMotion.damping(), 0.3418, 0.0001);
    EXPECT_EQ(ViewPalette::rowSpring(), rowMotion.spring());
    EXPECT_EQ(ViewPalette::rowDamping(), rowMotion.damping());
}

}  // namespace
}  // namespace brimwatch
