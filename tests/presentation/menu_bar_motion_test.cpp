#include "presentation/menu_bar_motion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>

namespace brimwatch {
namespace {

constexpr double fullTurn = 2 * std::numbers::pi;
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

MenuBarMotion after(int steps, double weekly, double seconds = 0.1) {
    MenuBarMotion motion;
    for (int step = 0; step < steps; ++step)
        motion.step(seconds, weekly);
    return motion;
}

// The difference of two directions.
double apart(double left, double right) {
    return std::abs(std::remainder(left - right, fullTurn));
}

// The angles come from another program: 1, 10 and 900 steps of a tenth of a second.
TEST(MenuBarMotion, FliesAsFarAsWasWorkedOutElsewhere) {
    struct Row {
        double weekly;
        double afterOne;
        double afterTen;
        double afterNineHundred;
    };
    constexpr Row rows[] = {
        {1.0, 0.3141592653589793, 3.141592653589793, 0.0},
        {1.7, 0.3141592653589793, 3.141592653589793, 0.0},
        {0.75, 0.12887160267523448, 1.288716026752345, 2.8871068784784066},
        {0.5, 0.04651713755201015, 0.4651713755201015, 4.1663119537317455},
        {0.35, 0.024551847712538183, 0.24551847712538183, 3.247107019745584},
        {0.3499, 0.02453653750080656, 0.24537781877962783, 3.2348992337714124},
        {0.2, 0.009081553087321262, 0.10052435045930994, 3.116246196730906},
        {0.05, 0.00277186541601046, 0.0376893425158516, 3.7537814955271958},
        {0.0, 0.001710599802147746, 0.026398268997097823, 2.7129716176220398},
        {-0.2, 0.001710599802147746, 0.026398268997097823, 2.7129716176220398},
    };
    for (const Row& row : rows) {
        EXPECT_LT(apart(after(1, row.weekly).angle, row.afterOne), 1e-12) << row.weekly;
        EXPECT_LT(apart(after(10, row.weekly).angle, row.afterTen), 1e-12) << row.weekly;
        EXPECT_LT(apart(after(900, row.weekly).angle, row.afterNineHundred), 1e-9) << row.weekly;
    }
}

TEST(MenuBarMotion, TakesTwoSecondsForATurnWithAFullWeek) {
    EXPECT_LT(apart(after(8, 1, 0.25).angle, 0), 1e-12);
    EXPECT_NEAR(after(4, 1, 0.25).angle, std::numbers::pi, 1e-12);
}

TEST(MenuBarMotion, TakesTenAndTwentyFiveSecondsForATurnAtHalfAndAtTheThreshold) {
    EXPECT_NEAR(fullTurn / after(1, 0.75).angle / 10, 4.8755, 1e-4);
    EXPECT_NEAR(fullTurn / after(1, 0.5).angle / 10, 13.5072, 1e-4);
    EXPECT_NEAR(fullTurn / after(1, 0.35).angle / 10, 25.5915, 1e-4);
}

TEST(MenuBarMotion, StuttersBelowTheThresholdOnly) {
    const auto unevenness = [](double weekly) {
        MenuBarMotion motion;
        double least = fullTurn;
        double most = 0;
        for (int step = 0; step < 100; ++step) {
            const double before = motion.angle;
            motion.step(0.1, weekly);
            const double advance = apart(motion.angle, before);
            least = std::min(least, advance);
            most = std::max(most, advance);
        }
        return most / least;
    };
    EXPECT_NEAR(unevenness(0.35), 1, 1e-9);
    EXPECT_GT(unevenness(0.3499), 1 + 1e-6);
    EXPECT_LT(unevenness(0.3499), 1.001);
    EXPECT_GT(unevenness(0), 4);
}

TEST(MenuBarMotion, NeverStopsAndNeverFliesBack) {
    for (const double weekly : {0.0, -0.2, 0.1, 0.34}) {
        MenuBarMotion motion;
        for (int step = 0; step < 10'000; ++step) {
            const double before = motion.angle;
            motion.step(0.1, weekly);
            const double advance = std::remainder(motion.angle - before, fullTurn);
            // An empty week at the least throttle, over a tenth of a second.
            ASSERT_GE(advance, 0.08 * 0.1 * fullTurn / 120 - 1e-12);
            ASSERT_LE(advance, 0.1 * fullTurn / 25);
        }
    }
}

TEST(MenuBarMotion, StaysWithinOneTurn) {
    MenuBarMotion motion;
    for (int step = 0; step < 10'000; ++step) {
        motion.step(0.25, 1);
        ASSERT_GE(motion.angle, 0);
        ASSERT_LT(motion.angle, fullTurn);
    }
    EXPECT_DOUBLE_EQ(motion.elapsed, 2500);
}

TEST(MenuBarMotion, CountsHalfATwelfthOfASecondAsAWholeOne) {
    // 0.375 s are 4.5 twelfths, so the fifth beat counts: 1 - 0.85 * stutter(5) = 0.6358...
    const double stutter = std::sin(5 * 0.63) * (std::sin(5 * 1.7) * 0.5) + 0.5;
    EXPECT_NEAR(after(1, 0, 0.375).angle, (1 - 0.85 * stutter) * 0.375 * fullTurn / 120, 1e-15);
}

TEST(MenuBarMotion, GoesOnAfterALongTime) {
    for (const double elapsed : {1e9, 1e15, 1e300}) {
        MenuBarMotion motion{.angle = 1, .elapsed = elapsed};
        motion.step(0.1, 0);
        EXPECT_GT(motion.angle, 1);
        EXPECT_LT(motion.angle, 1 + 0.1 * fullTurn / 120);
    }
}

TEST(MenuBarMotion, AWeekThatIsNoNumberCountsAsFull) {
    EXPECT_EQ(after(3, notANumber), after(3, 1));
}

TEST(MenuBarMotion, AnEndlessWeekCountsAsFullOrEmpty) {
    EXPECT_EQ(after(3, infinity), after(3, 1));
    EXPECT_EQ(after(3, -infinity), after(3, 0));
}

TEST(MenuBarMotion, AStepOfNoFiniteLengthIsNone) {
    MenuBarMotion motion = after(3, 0.5);
    const MenuBarMotion before = motion;
    motion.step(notANumber, 0.5);
    motion.step(infinity, 0.5);
    EXPECT_EQ(motion, before);
}

TEST(WeeklyShortage, BeginsAtThirtyFivePercentAndEndsAtNothing) {
    EXPECT_EQ(weeklyShortage(0.35), 0);
    EXPECT_DOUBLE_EQ(weeklyShortage(0.175), 0.5);
    EXPECT_EQ(weeklyShortage(0), 1);
    EXPECT_EQ(weeklyShortage(-3), 1);
    EXPECT_LT(weeklyShortage(0.36), 0);
}

// Gives the same number again and again, and counts how often it is asked.
struct ConstantGenerator {
    using result_type = std::uint64_t;
    static constexpr result_type min() { return 0; }
    static constexpr result_type max() { return UINT64_MAX; }
    result_type operator()() {
        ++calls;
        return value;
    }

    result_type value = 0;
    int calls = 0;
};

TEST(DrawShake, DoesNotTouchTheGeneratorFromTheThresholdOn) {
    for (const double weekly : {0.35, 0.5, 1.0, 7.0, infinity, notANumber}) {
        ConstantGenerator generator;
        EXPECT_EQ(drawShake(weekly, generator), MenuBarShake{});
        EXPECT_EQ(generator.calls, 0);
    }
}

TEST(DrawShake, ReachesBothEndsOfItsRange) {
    ConstantGenerator least{.value = 0};
    EXPECT_DOUBLE_EQ(drawShake(0, least).radial, -0.9);
    EXPECT_DOUBLE_EQ(drawShake(0, least).angle, -9 * std::numbers::pi / 180);
    ConstantGenerator most{.value = UINT64_MAX};
    EXPECT_DOUBLE_EQ(drawShake(0, most).radial, 0.9);
    EXPECT_DOUBLE_EQ(drawShake(0, most).angle, 9 * std::numbers::pi / 180);
}

TEST(DrawShake, GrowsWithTheShortageAndThenNoFurther) {
    ConstantGenerator most{.value = UINT64_MAX};
    EXPECT_DOUBLE_EQ(drawShake(0.175, most).radial, 0.45);
    EXPECT_DOUBLE_EQ(drawShake(0.175, most).angle, 4.5 * std::numbers::pi / 180);
    EXPECT_EQ(drawShake(-0.2, most), drawShake(0, most));
    EXPECT_EQ(drawShake(-infinity, most), drawShake(0, most));
    EXPECT_GT(drawShake(0.3499, most).radial, 0);
    EXPECT_LT(drawShake(0.3499, most).radial, 0.001);
}

TEST(DrawShake, DrawsRadiusAndAngleEvenlyAndApart) {
    std::mt19937_64 generator(7);
    constexpr int draws = 20'000;
    double radialSum = 0;
    double radialSquares = 0;
    double angleSum = 0;
    double products = 0;
    for (int draw = 0; draw < draws; ++draw) {
        const MenuBarShake shake = drawShake(0, generator);
        ASSERT_LE(std::abs(shake.radial), 0.9);
        ASSERT_LE(std::abs(shake.angle), 9.0000001 * std::numbers::pi / 180);
        radialSum += shake.radial;
        radialSquares += shake.radial * shake.radial;
        angleSum += shake.angle;
        products += shake.radial * shake.angle;
    }
    EXPECT_NEAR(radialSum / draws, 0, 0.02);
    EXPECT_NEAR(radialSquares / draws, 0.9 * 0.9 / 3, 0.01);
    EXPECT_NEAR(angleSum / draws, 0, 0.005);
    EXPECT_NEAR(products / draws, 0, 0.003);
}

TEST(DrawShake, IsAnotherOneEachTime) {
    std::mt19937_64 generator(7);
    EXPECT_NE(drawShake(0.1, generator), drawShake(0.1, generator));
}

}  // namespace
}  // namespace brimwatch
