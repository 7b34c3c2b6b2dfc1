// The time of day as people read it.
#pragma once

#include <string>

#include "support/instant.h"

namespace brimwatch {

// In the short format of the locale, without the date, as in "오후 3:04"; in the time zone that the
// machine has now. The instant must be the reading of a clock. `locale` is an identifier such as
// "ko" or "de_DE.UTF-8".
std::string shortTimeText(Instant instant, const std::string& locale);

}  // namespace brimwatch
