// Paths inside JSON.
//
// A path is bytes, a JSON string is Unicode: written as it is, one folder whose name is not UTF-8
// would make a whole document unreadable. Each byte that is not part of valid UTF-8 is therefore
// written as the surrogate U+DC00 plus the byte, which stands alone in no real text (as Python does
// with file names, PEP 383). Every path comes back byte for byte; a valid one is its own text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brimwatch {

// A string for `JsonValue`.
std::string textFromPath(std::string_view path);

// Nothing for a text with a NUL, which no path can have.
std::optional<std::string> pathFromText(std::string_view text);

}  // namespace brimwatch
