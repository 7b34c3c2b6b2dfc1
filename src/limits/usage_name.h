// The names that users give to their accounts.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brimwatch {

// A name with its white space folded to single blanks and cut to 40 characters as a reader counts
// them (grapheme clusters, Unicode Standard Annex 29); nothing if no character is left.
std::optional<std::string> normalizedUsageName(std::string_view name);

}  // namespace brimwatch
