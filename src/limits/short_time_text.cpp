#include "limits/short_time_text.h"

#include <unicode/datefmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <memory>

#include "limits/number_locale.h"

namespace brimwatch {

std::string shortTimeText(Instant instant, const std::string& locale) {
    const std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createTimeInstance(icu::DateFormat::kShort, numberLocale(locale)));
    if (!format) return {};
    // The default time zone of ICU stays what it was at its first use.
    format->adoptTimeZone(icu::TimeZone::detectHostTimeZone());
    icu::UnicodeString text;
    constexpr double millisecondsPerSecond = 1000;
    format->format(unixSeconds(instant) * millisecondsPerSecond, text);
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

}  // namespace brimwatch
