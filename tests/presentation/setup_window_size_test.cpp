#include "presentation/setup/setup_window_size.h"

#include <gtest/gtest.h>

namespace brimwatch {
namespace {

TEST(SetupWindowSize, IsThatOfTheContentWhereItFits) {
    EXPECT_EQ(setupWindowSize(500, 1000), (SetupWindowSize{500, false}));
}

TEST(SetupWindowSize, IsNeverLowerThanTheContent) {
    EXPECT_EQ(setupWindowSize(500.3, 1000), (SetupWindowSize{501, false}));
    EXPECT_EQ(setupWindowSize(500.7, 1000), (SetupWindowSize{501, false}));
}

TEST(SetupWindowSize, IsThatOfTheScreenWhereTheContentIsTooHigh) {
    EXPECT_EQ(setupWindowSize(1600, 1000), (SetupWindowSize{940, true}));
}

TEST(SetupWindowSize, LeavesRoomForATitleBarAndMargins) {
    EXPECT_EQ(setupWindowSize(820, 1000), (SetupWindowSize{820, false}));
    EXPECT_EQ(setupWindowSize(820.5, 1000), (SetupWindowSize{940, true}));
}

TEST(SetupWindowSize, IsMeasuredByAUsualScreenWithoutOne) {
    EXPECT_EQ(setupWindowSize(1600, std::nullopt), (SetupWindowSize{740, true}));
    EXPECT_EQ(setupWindowSize(620, std::nullopt), (SetupWindowSize{620, false}));
    EXPECT_EQ(setupWindowSize(621, std::nullopt), (SetupWindowSize{740, true}));
}

TEST(SetupWindowSize, FollowsEvenASmallScreen) {
    EXPECT_EQ(setupWindowSize(500, 400), (SetupWindowSize{340, true}));
}

}  // namespace
}  // namespace brimwatch
