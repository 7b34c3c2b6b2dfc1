// The time zone that the machine has now.
//
// Asked of the C library: ICU keeps the zone of its first use, and does not know every zone that
// the variable TZ can describe. The instants must be readings of a clock, or as near to one as
// `onCalendar` makes them.
#pragma once

#include <unicode/timezone.h>

#include <ctime>
#include <memory>

#include "support/instant.h"

namespace brimwatch {

std::tm localTime(Instant instant);

// With the offset that is in force at the instant, at all times.
std::unique_ptr<icu::TimeZone> localZone(Instant instant);

// The nearest instant that calendars can work with; for what came from a file.
Instant onCalendar(Instant instant);

}  // namespace brimwatch
