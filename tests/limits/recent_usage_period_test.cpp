#include "limits/recent_usage_period.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

namespace brimwatch {
namespace {

using enum RecentUsagePeriod;

TEST(RecentUsagePeriod, EveryCaseHasItsRawValueItsSecondsAndItsLabel) {
    const std::tuple<RecentUsagePeriod, std::int64_t, std::int64_t, const char*> rows[] = {
        {off, 0, 0, "표시 안 함"},          {oneHour, 1, 3600, "최근 1시간"},
        {twoHours, 2, 7200, "최근 2시간"},  {fourHours, 4, 14400, "최근 4시간"},
        {sixHours, 6, 21600, "최근 6시간"},
    };
    for (const auto& [period, raw, seconds, text] : rows) {
        EXPECT_EQ(rawValue(period), raw);
        EXPECT_EQ(recentUsagePeriodFromRawValue(raw), period);
        EXPECT_EQ(duration(period).count(), seconds);
        EXPECT_EQ(label(period), text);
    }
}

TEST(RecentUsagePeriod, AnyOtherNumberReadsAsOff) {
    for (const std::int64_t raw :
         {std::int64_t{3}, std::int64_t{5}, std::int64_t{7}, std::int64_t{-1}, std::int64_t{257},
          std::int64_t{258}, std::numeric_limits<std::int64_t>::max(),
          std::numeric_limits<std::int64_t>::min()}) {
        EXPECT_EQ(recentUsagePeriodFromRawValue(raw), off) << raw;
    }
}

}  // namespace
}  // namespace brimwatch
