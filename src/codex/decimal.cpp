#include "codex/decimal.h"

#include <algorithm>

namespace brimwatch {
namespace {

struct Parts {
    std::string_view whole;
    std::optional<std::string_view> fraction;
};

Parts splitAtPoint(std::string_view text) {
    const std::size_t point = text.find('.');
    if (point == std::string_view::npos) return {.whole = text, .fraction = std::nullopt};
    return {.whole = text.substr(0, point), .fraction = text.substr(point + 1)};
}

bool isDigits(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

Decimal::Decimal(std::string_view whole, std::string_view fraction) {
    whole.remove_prefix(std::min(whole.find_first_not_of('0'), whole.size()));
    fraction = fraction.substr(0, fraction.find_last_not_of('0') + 1);
    digits_ = whole.empty() ? "0" : whole;
    if (fraction.empty()) return;
    digits_ += '.';
    digits_ += fraction;
}

std::optional<Decimal> Decimal::fromDigits(std::string_view text) {
    const Parts parts = splitAtPoint(text);
    if (!isDigits(parts.whole)) return std::nullopt;
    if (parts.fraction && !isDigits(*parts.fraction)) return std::nullopt;
    return Decimal(parts.whole, parts.fraction.value_or(""));
}

Decimal Decimal::roundedDown(std::size_t fractionDigits) const {
    const Parts parts = splitAtPoint(digits_);
    return {parts.whole, parts.fraction.value_or("").substr(0, fractionDigits)};
}

}  // namespace brimwatch
