#include "limits/usage_percent.h"

#include <gtest/gtest.h>

#include <limits>

namespace brimwatch {
namespace {

UsageWindow used(double percentage) {
    return {percentage, std::nullopt};
}

TEST(PercentLeft, IsRoundedDown) {
    EXPECT_EQ(percentLeft(used(0)), 100);
    EXPECT_EQ(percentLeft(used(0.1)), 99);
    EXPECT_EQ(percentLeft(used(27.5)), 72);
    EXPECT_EQ(percentLeft(used(99)), 1);
    EXPECT_EQ(percentLeft(used(99.5)), 0);
    EXPECT_EQ(percentLeft(used(100)), 0);
}

TEST(PercentLeft, OfAWholePercentageIsWhole) {
    for (int whole = 0; whole <= 100; ++whole)
        EXPECT_EQ(percentLeft(used(whole)), 100 - whole);
}

TEST(PercentLeft, TellsNothingFromWhatIsOverdrawnOrNoNumber) {
    EXPECT_EQ(percentLeft(used(250)), 0);
    EXPECT_EQ(percentLeft(used(std::numeric_limits<double>::infinity())), 0);
    EXPECT_EQ(percentLeft(used(std::numeric_limits<double>::quiet_NaN())), 0);
}

TEST(PercentLeft, IsAboveAHundredWhereLessThanNothingWasUsed) {
    EXPECT_EQ(percentLeft(used(-50)), 150);
}

TEST(ShownPercent, IsWhatIsLeftOrWhatIsUsed) {
    EXPECT_EQ(shownPercent(72, UsageDisplay::remaining), 72);
    EXPECT_EQ(shownPercent(72, UsageDisplay::used), 28);
}

TEST(ShownPercent, StaysWithinZeroAndAHundred) {
    EXPECT_EQ(shownPercent(150, UsageDisplay::remaining), 100);
    EXPECT_EQ(shownPercent(150, UsageDisplay::used), 0);
    EXPECT_EQ(shownPercent(-5, UsageDisplay::remaining), 0);
    EXPECT_EQ(shownPercent(-5, UsageDisplay::used), 100);
}

TEST(MainWindow, IsTheWeeklyOneFirst) {
    SubscriptionLimits limits;
    EXPECT_EQ(mainWindow(limits), std::nullopt);
    limits.fiveHour = used(1);
    EXPECT_EQ(mainWindow(limits), used(1));
    limits.sevenDay = used(2);
    EXPECT_EQ(mainWindow(limits), used(2));
}

TEST(UsageDisplay, HasASuffixForNumbersAndALabelOfItsOwn) {
    EXPECT_EQ(shortSuffix(UsageDisplay::remaining), "남음");
    EXPECT_EQ(shortSuffix(UsageDisplay::used), "사용");
    EXPECT_EQ(label(UsageDisplay::remaining), "남은 양");
    EXPECT_EQ(label(UsageDisplay::used), "사용량");
}

}  // namespace
}  // namespace brimwatch
