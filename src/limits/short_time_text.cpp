#include "limits/short_time_text.h"

#include <unicode/datefmt.h>
#include <unicode/unistr.h>

#include <memory>

#include "limits/local_time.h"
#include "limits/number_locale.h"

namespace brimwatch {

std::string shortTimeText(Instant instant, const std::string& locale) {
    const icu::Locale known = numberLocale(locale);
    // By the hours of the region, whose language may be another one; of no region, by those of all.
    const char* const skeleton = known == icu::Locale::getRoot() ? "Hmm" : "jmm";
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createInstanceForSkeleton(skeleton, known, error));
    if (U_FAILURE(error) || !format) return {};
    format->adoptTimeZone(localZone(instant).release());
    icu::UnicodeString text;
    format->format(unixSeconds(instant) * 1000, text);
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

}  // namespace brimwatch
