#include "limits/recent_usage_text.h"

#include <unicode/numberformatter.h>
#include <unicode/unistr.h>

#include <optional>

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

std::string text(const RecentUsageResult& result, const std::string& locale) {
    using Status = RecentUsageResult::Status;
    const bool hasFigure = result.status == Status::available && result.percentagePoints;
    const auto figure = hasFigure ? withOneDecimal(*result.percentagePoints, locale) : std::nullopt;
    if (!figure) return std::string(textWithoutFigure(result.status));
    return std::string(result.basisName) + " 약 " + *figure + "%";
}

}  // namespace brimwatch
