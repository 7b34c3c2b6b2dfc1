#include "limits/menu_bar_gauge.h"

#include <gtest/gtest.h>

#include <vector>

namespace brimwatch {
namespace {

SubscriptionLimits account(std::optional<double> fiveHour, std::optional<double> sevenDay) {
    SubscriptionLimits limits;
    if (fiveHour) limits.fiveHour = UsageWindow{*fiveHour, std::nullopt};
    if (sevenDay) limits.sevenDay = UsageWindow{*sevenDay, std::nullopt};
    return limits;
}

std::string title(const std::vector<SubscriptionLimits>& limits,
                  UsageDisplay display = UsageDisplay::remaining) {
    return menuTitleText(limits, display);
}

TEST(MenuBarGauge, WithoutAFigureIsAbsentAndFull) {
    EXPECT_EQ(menuBarGauge({}), (MenuBarGauge{std::nullopt, 1.0}));
    EXPECT_EQ(menuBarGauge(std::vector{account({}, {})}), (MenuBarGauge{std::nullopt, 1.0}));
}

TEST(MenuBarGauge, TakesTheWeeklyWindowFirst) {
    EXPECT_EQ(menuBarGauge(std::vector{account(90, 25)}), (MenuBarGauge{0.75, 0.75}));
}

TEST(MenuBarGauge, TakesTheFiveHourWindowWhereTheWeekIsUnknown) {
    EXPECT_EQ(menuBarGauge(std::vector{account(90, {})}), (MenuBarGauge{0.10, 0.10}));
}

TEST(MenuBarGauge, IsTheTruncatedMeanOfWholePercents) {
    EXPECT_EQ(
        menuBarGauge(std::vector{account({}, 10), account({}, 11), account({}, {})}).remaining,
        0.89);
    EXPECT_EQ(menuBarGauge(std::vector{account({}, 1), account({}, 0)}).remaining, 0.99);
    EXPECT_EQ(menuBarGauge(std::vector{account({}, 0.5), account({}, 0.5)}).remaining, 0.99);
}

TEST(MenuBarGauge, TheWeekIsTheMeanOfWeeklyWindowsAloneWithoutRounding) {
    const MenuBarGauge gauge =
        menuBarGauge(std::vector{account(0, {}), account({}, 62.5), account({}, 37.25)});
    EXPECT_DOUBLE_EQ(gauge.weekly, (0.375 + 0.6275) / 2);
    EXPECT_EQ(gauge.remaining, 0.66);
}

TEST(MenuBarGauge, AnOverdrawnWeekGivesANegativeTermButNoNegativePercent) {
    const MenuBarGauge gauge = menuBarGauge(std::vector{account({}, 150), account({}, 50)});
    EXPECT_DOUBLE_EQ(gauge.weekly, 0);
    EXPECT_EQ(gauge.remaining, 0.25);
}

TEST(MenuBarGauge, AFractionJustBelowAWholePercentThroughRoundingDoesNotFall) {
    for (int used = 0; used <= 100; ++used) {
        EXPECT_EQ(title({account({}, used)}), std::to_string(100 - used) + "%");
        EXPECT_EQ(title({account({}, used + 1e-10)}), std::to_string(100 - used) + "%");
    }
    EXPECT_EQ(title({account({}, 28.000000001)}), "72%");
    EXPECT_EQ(title({account({}, 28.00001)}), "71%");
}

TEST(MenuTitle, IsEmptyWithoutAFigure) {
    EXPECT_EQ(title({}), "");
    EXPECT_EQ(title({account({}, {})}), "");
}

TEST(MenuTitle, ShowsWhatIsLeftOrWhatIsUsed) {
    EXPECT_EQ(title({account(0, 58)}), "42%");
    EXPECT_EQ(title({account(0, 58)}, UsageDisplay::used), "58%");
    EXPECT_EQ(title({account(0, 12.5)}), "87%");
    EXPECT_EQ(title({account(0, 12.5)}, UsageDisplay::used), "13%");
}

TEST(MenuTitle, StaysWithinZeroAndAHundred) {
    EXPECT_EQ(title({account({}, 250)}), "0%");
    EXPECT_EQ(title({account({}, 250)}, UsageDisplay::used), "100%");
    EXPECT_EQ(title({account({}, -50)}), "100%");
    EXPECT_EQ(title({account({}, -50)}, UsageDisplay::used), "0%");
}

}  // namespace
}  // namespace brimwatch
