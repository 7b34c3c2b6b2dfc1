// Texts that depend on the time: how old a figure is, and how long until a limit starts anew.
//
// Times of day are in the zone that the machine has now. `locale` is an identifier such as "ko" or
// "de_DE.UTF-8". An instant may be any number a file can carry; those that no calendar reaches read
// as the farthest that one does.
#pragma once

#include <QString>
#include <string>

#include "support/instant.h"

namespace brimwatch {

// "방금" for what is less than a minute old or still to come, otherwise a relative phrase in the
// largest unit that fits, as in "5분 전".
QString agoText(Instant instant, Instant now, const std::string& locale);

// Whether the time until then is shown by the second: it ends within a day.
bool isLiveCountdown(Instant end, Instant now);

// The time until `end`, which lies ahead: by the second as in "1:23:45" or "5:09" where it ends
// within a day, otherwise in its two largest units, as in "3일 4시간". Seconds are rounded up, so
// that a countdown never shows 0; other units are rounded down, and have as many hours to the day
// in the night of a clock change as otherwise.
QString countdownText(Instant end, Instant now, const std::string& locale);

// As in "9월 25일 (금) 오후 3시", with the minutes only where there are some.
QString longResetTime(Instant instant, const std::string& locale);
// As in "오후 3:04".
QString shortResetTime(Instant instant, const std::string& locale);
bool isSameDay(Instant a, Instant b);

}  // namespace brimwatch
