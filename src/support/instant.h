// Points in time on the wall clock.
#pragma once

#include <chrono>
#include <cstdint>

namespace brimwatch {

// Seconds since 1970-01-01 UTC. One that came from a file may be infinite.
using Instant = std::chrono::sys_time<std::chrono::duration<double>>;

constexpr Instant instantFromUnixSeconds(double seconds) {
    return Instant(std::chrono::duration<double>(seconds));
}

constexpr double unixSeconds(Instant instant) {
    return instant.time_since_epoch().count();
}

// Whole seconds since 1970-01-01 UTC, the fraction dropped. The instant must be the reading of a
// clock, not a value from a file.
constexpr std::int64_t wholeUnixSeconds(Instant instant) {
    return static_cast<std::int64_t>(unixSeconds(instant));
}

// Whether `later` lies more than `seconds` after `earlier`. Holds for any two values: files may
// carry times as far apart as 64 bits allow.
constexpr bool isMoreThanSecondsLater(std::int64_t earlier, std::int64_t later,
                                      std::uint64_t seconds) {
    return later > earlier &&
           static_cast<std::uint64_t>(later) - static_cast<std::uint64_t>(earlier) > seconds;
}

}  // namespace brimwatch
