// The short texts of subscription plans, as a card shows them.
//
// Providers report plans as internal identifiers. One that isn't known gives no text, so that a
// card never shows a raw identifier. The texts live as long as the program.
#pragma once

#include <optional>
#include <string_view>

namespace brimwatch {

// For a tier of `.claude.json`, as in "default_claude_max_20x". Upper and lower case are equal.
std::optional<std::string_view> claudePlanName(std::optional<std::string_view> tier);

// For the plan type of the Codex app server, as in "prolite". Upper and lower case differ.
std::optional<std::string_view> codexPlanName(std::optional<std::string_view> planType);

// Whether the text is one that these functions give.
bool isPlanName(std::string_view text);

}  // namespace brimwatch
