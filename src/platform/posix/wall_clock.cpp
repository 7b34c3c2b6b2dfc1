#include "platform/posix/wall_clock.h"

#include <ctime>

namespace brimwatch {

Instant wallClock() {
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    constexpr double nanosecond = 1e-9;
    return instantFromUnixSeconds(static_cast<double>(time.tv_sec) +
                                  static_cast<double>(time.tv_nsec) * nanosecond);
}

}  // namespace brimwatch
