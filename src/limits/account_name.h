// The account naming rule of both providers.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brimwatch {

// The account key of a configuration folder. `prefix` begins with a dot, as ".claude" does. The key
// is never empty and holds only letters, marks, digits, ".", "_" and "-": ".claude-work" gives
// "work", ".claude" gives "default", ".claude-a b" gives "a-b".
std::string derivedAccountName(std::optional<std::string_view> path, std::string_view prefix);

}  // namespace brimwatch
