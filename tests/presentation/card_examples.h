// Cards and times for tests.
#pragma once

#include <QString>
#include <chrono>
#include <limits>
#include <optional>
#include <ostream>

#include "presentation/subscription_usage_card.h"

// Else the tests print its bytes.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace brimwatch::test {

inline constexpr double infinity = std::numeric_limits<double>::infinity();
inline constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
inline constexpr double daySeconds = 86400;

// At a full hour of Korea's time: 2026-09-21, a Monday, 23:00 there.
inline constexpr Instant cardTime = instantFromUnixSeconds(1'789'999'200);

constexpr Instant after(double seconds) {
    return instantFromUnixSeconds(unixSeconds(cardTime) + seconds);
}

constexpr Instant before(double seconds) {
    return after(-seconds);
}

// In UTC.
constexpr Instant utc(std::chrono::year_month_day day, int hour, int minute) {
    return std::chrono::sys_days(day) + std::chrono::hours(hour) + std::chrono::minutes(minute);
}

inline UsageWindow usedUntil(double usedPercentage, std::optional<Instant> resetsAt) {
    return {usedPercentage, resetsAt};
}

// Of Claude Code, made at `cardTime` with figures of that moment; without a window yet.
inline SubscriptionUsageCard emptyCard() {
    SubscriptionUsageCard card;
    card.limits.account = "work";
    card.limits.updatedAt = cardTime;
    card.now = cardTime;
    card.locale = "ko_KR";
    return card;
}

// With the weekly window alone, which resets in three days and four hours.
inline SubscriptionUsageCard weeklyCard(double usedPercentage) {
    SubscriptionUsageCard card = emptyCard();
    card.limits.sevenDay = usedUntil(usedPercentage, after(3 * daySeconds + 4 * 3600));
    return card;
}

// With the five-hour window beside it, which resets after that time.
inline SubscriptionUsageCard cardWithBoth(double fiveHourPercentage, double fiveHourSeconds) {
    SubscriptionUsageCard card = weeklyCard(28);
    card.limits.fiveHour = usedUntil(fiveHourPercentage, after(fiveHourSeconds));
    return card;
}

}  // namespace brimwatch::test
