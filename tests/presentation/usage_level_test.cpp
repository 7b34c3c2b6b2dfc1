#include "presentation/usage_level.h"

#include <gtest/gtest.h>

#include "card_examples.h"

namespace brimwatch {
namespace {

UsageLevel level(double usedPercentage, double warningRatio = 0.8) {
    return usageLevel(test::usedUntil(usedPercentage, std::nullopt), warningRatio);
}

TEST(UsageLevel, IsComfortableBelowHalf) {
    EXPECT_EQ(level(0), UsageLevel::comfortable);
    EXPECT_EQ(level(49.9), UsageLevel::comfortable);
}

TEST(UsageLevel, IsOverHalfFromHalfOn) {
    EXPECT_EQ(level(50), UsageLevel::overHalf);
    EXPECT_EQ(level(79.9), UsageLevel::overHalf);
}

TEST(UsageLevel, IsAWarningFromTheRatioOn) {
    EXPECT_EQ(level(80), UsageLevel::warning);
    EXPECT_EQ(level(99), UsageLevel::warning);
    EXPECT_EQ(level(60, 0.6), UsageLevel::warning);
    EXPECT_EQ(level(59.9, 0.6), UsageLevel::overHalf);
    EXPECT_EQ(level(30, 0.3), UsageLevel::warning);
}

TEST(UsageLevel, IsExhaustedWhereLessThanAWholePercentIsLeft) {
    EXPECT_EQ(level(99.000001), UsageLevel::exhausted);
    EXPECT_EQ(level(99.5), UsageLevel::exhausted);
    EXPECT_EQ(level(100), UsageLevel::exhausted);
    EXPECT_EQ(level(100.5), UsageLevel::exhausted);
}

TEST(UsageLevel, TakesNoPartOfTheTimeLeft) {
    for (const double seconds : {-1.0, 0.0, 1.0, 1e6, test::infinity, test::notANumber}) {
        EXPECT_EQ(usageLevel(test::usedUntil(80, test::after(seconds)), 0.8), UsageLevel::warning);
    }
}

TEST(UsageLevel, IsOrderedFromGoodToBad) {
    EXPECT_LT(UsageLevel::comfortable, UsageLevel::overHalf);
    EXPECT_LT(UsageLevel::overHalf, UsageLevel::warning);
    EXPECT_LT(UsageLevel::warning, UsageLevel::exhausted);
}

TEST(UsageLevel, HasALabel) {
    EXPECT_EQ(label(UsageLevel::comfortable), "넉넉해요");
    EXPECT_EQ(label(UsageLevel::overHalf), "절반 넘게 썼어요");
    EXPECT_EQ(label(UsageLevel::warning), "슬슬 아껴 써요");
    EXPECT_EQ(label(UsageLevel::exhausted), "예산을 넘었어요");
}

}  // namespace
}  // namespace brimwatch
