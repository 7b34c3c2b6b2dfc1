#include "limits/short_time_text.h"

#include <unicode/datefmt.h>
#include <unicode/simpletz.h>
#include <unicode/unistr.h>

#include <ctime>
#include <memory>

#include "limits/number_locale.h"

namespace brimwatch {
namespace {

constexpr int millisecondsPerSecond = 1000;

// Asked of the C library: ICU keeps the zone of its first use, and does not know every zone that
// the variable TZ can describe.
int offsetMilliseconds(std::time_t time) {
    std::tm local{};
    ::tzset();
    if (::localtime_r(&time, &local) == nullptr) return 0;
    return static_cast<int>(local.tm_gmtoff) * millisecondsPerSecond;
}

}  // namespace

std::string shortTimeText(Instant instant, const std::string& locale) {
    const std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createTimeInstance(icu::DateFormat::kShort, numberLocale(locale)));
    if (!format) return {};
    const int offset = offsetMilliseconds(wholeUnixSeconds(instant));
    format->adoptTimeZone(std::make_unique<icu::SimpleTimeZone>(offset, "").release());
    icu::UnicodeString text;
    format->format(unixSeconds(instant) * millisecondsPerSecond, text);
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

}  // namespace brimwatch
