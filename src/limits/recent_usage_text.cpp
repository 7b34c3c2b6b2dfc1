#include "limits/recent_usage_text.h"

#include <unicode/numberformatter.h>
#include <unicode/unistr.h>

#include "limits/number_locale.h"

namespace brimwatch {
namespace {

std::optional<std::string> withOneDecimal(double figure, const std::string& locale) {
    UErrorCode error = U_ZERO_ERROR;
    const icu::UnicodeString text =
        icu::number::NumberFormatter::withLocale(numberLocale(locale))
            .precision(icu::number::Precision::fixedFraction(1))
            .sign(UNUM_SIGN_NEGATIVE)  // a figure that rounds to zero has none
            .formatDouble(figure, error)
            .toString(error);
    if (U_FAILURE(error) != 0) return std::nullopt;
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

}  // namespace

std::optional<std::string> figureText(const RecentUsageResult& result, const std::string& locale) {
    const bool isAvailable = result.status == RecentUsageResult::Status::available;
    if (!isAvailable || !result.percentagePoints) return std::nullopt;
    return withOneDecimal(*result.percentagePoints, locale);
}

}  // namespace brimwatch
