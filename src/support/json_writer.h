// Writing JSON text.
//
// Keys come sorted, "/" is not escaped, text other than ASCII stands as it is.
// The same value always gives the same bytes.
#pragma once

#include <string>
#include <string_view>

#include "support/json_value.h"

namespace brimwatch {

enum class JsonLayout {
    compact,
    pretty,  // two blanks for each level, a member or an element a line, no line feed at the end
};

// Appends the text as a JSON string, quotes included.
void appendJsonString(std::string& out, std::string_view text);

std::string writeJson(const JsonValue& value, JsonLayout layout);

}  // namespace brimwatch
