// What an account may use beyond its windows: a balance, or credits without limit.
#pragma once

#include <optional>
#include <string>

#include "codex/decimal.h"

namespace brimwatch {

struct CodexCredits {
    // The credit row of a card.
    struct Text {
        // As the locale writes it; absent where credits have no limit.
        std::optional<std::string> balance;

        // These are Korean, the keys of their translations.
        std::string value() const;
        std::string accessibilityLabel() const;

        bool operator==(const Text&) const = default;
    };

    bool hasCredits = false;  // whether the account has a balance at all
    bool unlimited = false;
    std::optional<Decimal> balance;

    // Nothing where there is no row to show. A balance is rounded down to two decimal places, so
    // that it never promises more than there is. `locale` is an identifier such as "ko", "hi_IN"
    // or "de_DE.UTF-8"; one that ICU does not know gets the digits of the root locale.
    // Of the library `brimwatch_codex_text`, because it needs ICU and the rest of the room does
    // not.
    std::optional<Text> text(const std::string& locale) const;

    bool operator==(const CodexCredits&) const = default;
};

}  // namespace brimwatch
