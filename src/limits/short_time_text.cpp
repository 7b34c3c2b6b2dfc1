#include "limits/short_time_text.h"

#include <unicode/datefmt.h>
#include <unicode/unistr.h>

#include <memory>

#include "limits/local_time.h"
#include "limits/number_locale.h"

namespace brimwatch {

std::string shortTimeText(Instant instant, const std::string& locale) {
    const std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createTimeInstance(icu::DateFormat::kShort, numberLocale(locale)));
    if (!format) return {};
    format->adoptTimeZone(localZone(instant).release());
    icu::UnicodeString text;
    format->format(unixSeconds(instant) * 1000, text);
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

}  // namespace brimwatch
