#include "limits/recent_usage_samples.h"

#include <gtest/gtest.h>

#include <limits>

#include "usage_examples.h"

namespace brimwatch {
namespace {

using test::secondsAhead;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(UsageWindow, IsValidFromZeroToAHundred) {
    for (const double used : {0.0, -0.0, 0.1, 99.9, 100.0}) {
        EXPECT_TRUE(isValid(UsageWindow{used, std::nullopt})) << used;
    }
    for (const double used : {-0.001, 100.001, infinity, -infinity, notANumber}) {
        EXPECT_FALSE(isValid(UsageWindow{used, std::nullopt})) << used;
    }
}

TEST(UsageWindow, IsValidWithAFiniteResetTimeOrNone) {
    EXPECT_TRUE(isValid(UsageWindow{1, instantFromUnixSeconds(0)}));
    for (const double seconds : {infinity, -infinity, notANumber}) {
        EXPECT_FALSE(isValid(UsageWindow{1, instantFromUnixSeconds(seconds)})) << seconds;
    }
}

TEST(RecentUsageSample, NeedsAFiniteTime) {
    RecentUsageSample sample = test::weeklySample(0, 10);
    EXPECT_TRUE(isValid(sample));
    for (const double seconds : {infinity, -infinity, notANumber}) {
        sample.updatedAt = instantFromUnixSeconds(seconds);
        EXPECT_FALSE(isValid(sample)) << seconds;
    }
}

TEST(RecentUsageSample, NeedsAWindowAndNoWindowMayBeInvalid) {
    RecentUsageSample sample = test::weeklySample(0, 10);
    sample.fiveHour = UsageWindow{101, std::nullopt};
    EXPECT_FALSE(isValid(sample));
    sample.fiveHour = UsageWindow{1, instantFromUnixSeconds(infinity)};
    EXPECT_FALSE(isValid(sample));
    sample.fiveHour = UsageWindow{1, std::nullopt};
    EXPECT_TRUE(isValid(sample));
    sample.sevenDay = UsageWindow{notANumber, std::nullopt};
    EXPECT_FALSE(isValid(sample));
    sample.sevenDay = std::nullopt;
    EXPECT_TRUE(isValid(sample));
    sample.fiveHour = std::nullopt;
    EXPECT_FALSE(isValid(sample));
}

TEST(ResetDetection, AWindowThatComesOrGoesIsAReset) {
    std::vector<std::optional<UsageWindow>> windows(2);
    EXPECT_FALSE(wasReset(windows[0], windows[1]));
    windows[1] = test::window(1);
    EXPECT_TRUE(wasReset(windows[0], windows[1]));
    EXPECT_TRUE(wasReset(windows[1], windows[0]));
}

TEST(ResetDetection, ALowerFigureIsAReset) {
    EXPECT_TRUE(wasReset(test::window(12), test::window(11.999)));
    EXPECT_FALSE(wasReset(test::window(12), test::window(12)));
    EXPECT_FALSE(wasReset(test::window(12), test::window(13)));
    EXPECT_TRUE(wasReset(UsageWindow{12, std::nullopt}, UsageWindow{11, std::nullopt}));
}

TEST(ResetDetection, AResetTimeThatComesOrGoesIsAReset) {
    EXPECT_TRUE(wasReset(test::window(12), UsageWindow{13, std::nullopt}));
    EXPECT_TRUE(wasReset(UsageWindow{12, std::nullopt}, test::window(13)));
    EXPECT_FALSE(wasReset(UsageWindow{12, std::nullopt}, UsageWindow{13, std::nullopt}));
}

TEST(ResetDetection, ResetTimesMoreThanAnHourApartAreAReset) {
    const UsageWindow previous{12, secondsAhead(9000)};
    for (const double distance : {0.0, 3600.0, -3600.0}) {
        EXPECT_FALSE(wasReset(previous, UsageWindow{12, secondsAhead(9000 + distance)}));
    }
    for (const double distance : {3600.5, -3600.5, 604'800.0}) {
        EXPECT_TRUE(wasReset(previous, UsageWindow{12, secondsAhead(9000 + distance)}));
    }
}

}  // namespace
}  // namespace brimwatch
