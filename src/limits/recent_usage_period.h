// How far back the card looks for what was spent of a limit.
#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

namespace brimwatch {

// The value of a case is its number of hours, and what is stored for it.
enum class RecentUsagePeriod : std::uint8_t {
    off = 0,
    oneHour = 1,
    twoHours = 2,
    fourHours = 4,
    sixHours = 6,
};

constexpr std::int64_t rawValue(RecentUsagePeriod period) {
    return static_cast<std::int64_t>(period);
}

// Any other number reads as `off`.
constexpr RecentUsagePeriod recentUsagePeriodFromRawValue(std::int64_t raw) {
    using enum RecentUsagePeriod;
    for (const RecentUsagePeriod period : {oneHour, twoHours, fourHours, sixHours}) {
        if (raw == rawValue(period)) return period;
    }
    return off;
}

constexpr std::chrono::seconds duration(RecentUsagePeriod period) {
    return std::chrono::hours(rawValue(period));
}

constexpr std::string_view label(RecentUsagePeriod period) {
    switch (period) {
        case RecentUsagePeriod::oneHour:
            return "최근 1시간";
        case RecentUsagePeriod::twoHours:
            return "최근 2시간";
        case RecentUsagePeriod::fourHours:
            return "최근 4시간";
        case RecentUsagePeriod::sixHours:
            return "최근 6시간";
        case RecentUsagePeriod::off:
            break;
    }
    return "표시 안 함";
}

}  // namespace brimwatch
