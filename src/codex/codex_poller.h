// What Codex tells of an account: the reply to `account/rateLimits/read`, reduced to what is shown.
//
// Codex is free to extend its reply. Windows are told by their length, not by their place, and what
// can't be used counts as missing. Nothing here fails, but for one case: a reset time beyond 64
// bits aborts. Pure functions, for any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "codex/codex_credits.h"
#include "limits/limits_file.h"
#include "support/json_value.h"

namespace brimwatch {

struct CodexPoller {
    struct Reading {
        LimitsFile::Windows windows;  // "five_hour" and "seven_day"; not rounded
        std::optional<CodexCredits> credits;
        std::optional<std::string> planType;  // as the server sent it

        // From the `result` object of the reply. Aborts as `windows` does.
        static Reading fromResult(const JsonObject& result);

        bool operator==(const Reading&) const = default;
    };

    // Why there is no reading.
    struct Failure {
        enum class Kind {
            server,    // the server answered with an error, or ended
            notFound,  // there is no `codex`
            timedOut,
            noLimits,  // the answer held no window that is shown
        };

        Kind kind = Kind::server;
        std::string message;  // of the server; never shown

        bool operator==(const Failure&) const = default;
    };

    // A longer balance, blanks at its ends not counted, is no balance: no account has one, and the
    // work that a reply can cause stays small.
    static constexpr std::size_t longestBalanceCharacters = 128;

    // The block that holds the limits of Codex itself, a part of `result`; else an empty object.
    static const JsonObject& limitsBlock(const JsonObject& result);

    // Aborts on a reset time beyond 64 bits in a window that would be taken. A number is a JSON
    // number: true and false are none here.
    static LimitsFile::Windows windows(const JsonObject& result);
    static std::optional<CodexCredits> credits(const JsonObject& result);
    static std::optional<std::string> planType(const JsonObject& result);

    // Digits with at most one point between them, and blanks and tabs around them.
    static std::optional<Decimal> parseBalance(std::string_view text);
};

}  // namespace brimwatch
