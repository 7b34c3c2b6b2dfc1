#include "limits/local_time.h"

#include <unicode/simpletz.h>

#include <algorithm>
#include <cmath>

namespace brimwatch {
namespace {

constexpr int millisecondsPerSecond = 1000;
// A hundred million days to both sides of 1970.
constexpr double farthestSeconds = 8.64e12;

}  // namespace

std::tm localTime(Instant instant) {
    const auto time = static_cast<std::time_t>(std::floor(unixSeconds(instant)));
    std::tm local{};
    ::tzset();
    if (::localtime_r(&time, &local) == nullptr) return {};
    return local;
}

std::unique_ptr<icu::TimeZone> localZone(Instant instant) {
    const int offset = static_cast<int>(localTime(instant).tm_gmtoff) * millisecondsPerSecond;
    return std::make_unique<icu::SimpleTimeZone>(offset, "");
}

Instant onCalendar(Instant instant) {
    const double seconds = unixSeconds(instant);
    if (std::isnan(seconds)) return instantFromUnixSeconds(0);
    return instantFromUnixSeconds(std::clamp(seconds, -farthestSeconds, farthestSeconds));
}

}  // namespace brimwatch
