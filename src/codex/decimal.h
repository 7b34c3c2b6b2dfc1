// An exact decimal number of zero or more.
//
// A value of our own, because a balance is only compared, cut and shown: the digits themselves do
// all of that exactly. A decimal library would bring a context of limited precision (libmpdec,
// Boost Multiprecision) or ICU into a room that is free of it, for an arithmetic that nobody uses.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace brimwatch {

class Decimal {
  public:
    // From one or more of the ASCII digits, with at most one point somewhere between two of them.
    // Nothing for any other text: no locale can change the meaning of a figure.
    static std::optional<Decimal> fromDigits(std::string_view text);

    // The shortest spelling, as in "12.5" and "0"; equal numbers have the same one.
    const std::string& digits() const { return digits_; }

    bool isZero() const { return digits_ == "0"; }

    Decimal roundedDown(std::size_t fractionDigits) const;

    bool operator==(const Decimal&) const = default;

  private:
    Decimal(std::string_view whole, std::string_view fraction);

    std::string digits_;
};

}  // namespace brimwatch
