// How well an account still stands. It compares what is used with fixed marks; no time takes part.
#pragma once

#include <cstdint>
#include <string_view>

#include "limits/subscription_limits.h"

namespace brimwatch {

enum class UsageLevel : std::uint8_t { comfortable, overHalf, warning, exhausted };

// `warningRatio` is the fraction used from which on a window is in warning. One of which less than
// one whole percent is left counts as exhausted.
UsageLevel usageLevel(const UsageWindow& window, double warningRatio);

// These are Korean, the keys of their translations.
constexpr std::string_view label(UsageLevel level) {
    switch (level) {
        case UsageLevel::overHalf:
            return "절반 넘게 썼어요";
        case UsageLevel::warning:
            return "슬슬 아껴 써요";
        case UsageLevel::exhausted:
            return "예산을 넘었어요";
        case UsageLevel::comfortable:
            break;
    }
    return "넉넉해요";
}

// What the status row of a card says and shows: an exhausted limit has words of its own there.
constexpr std::string_view statusText(UsageLevel level) {
    return level == UsageLevel::exhausted ? "한도에 닿았어요" : label(level);
}

constexpr std::string_view statusSymbol(UsageLevel level) {
    switch (level) {
        case UsageLevel::overHalf:
            return "circle.lefthalf.filled";
        case UsageLevel::warning:
            return "exclamationmark.triangle.fill";
        case UsageLevel::exhausted:
            return "exclamationmark.octagon.fill";
        case UsageLevel::comfortable:
            break;
    }
    return "checkmark.circle.fill";
}

}  // namespace brimwatch
