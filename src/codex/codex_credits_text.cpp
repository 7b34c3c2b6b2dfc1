#include <unicode/numberformatter.h>

#include "codex/codex_credits.h"
#include "limits/number_locale.h"

namespace brimwatch {
namespace {

constexpr int fractionDigits = 2;

std::string numberText(const Decimal& number, const std::string& locale) {
    UErrorCode error = U_ZERO_ERROR;
    // ICU takes the digits as they are: no double lies between them and the text.
    const icu::number::FormattedNumber formatted =
        icu::number::NumberFormatter::withLocale(numberLocale(locale))
            .precision(icu::number::Precision::minMaxFraction(0, fractionDigits))
            .formatDecimal(number.digits(), error);
    std::string text;
    formatted.toString(error).toUTF8String(text);
    return U_SUCCESS(error) != 0 ? text : number.digits();
}

}  // namespace

std::string CodexCredits::Text::value() const {
    return balance.value_or("무제한");
}

std::string CodexCredits::Text::accessibilityLabel() const {
    return balance ? "크레딧 " + *balance + " 남음" : "크레딧 무제한";
}

std::optional<CodexCredits::Text> CodexCredits::text(const std::string& locale) const {
    if (unlimited) return Text{.balance = std::nullopt};
    if (!hasCredits || !balance) return std::nullopt;
    const Decimal shown = balance->roundedDown(fractionDigits);
    if (shown.isZero()) return std::nullopt;
    return Text{.balance = numberText(shown, locale)};
}

}  // namespace brimwatch
