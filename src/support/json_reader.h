// Reading JSON text (RFC 8259).
//
// A text is taken whole or not at all: what breaks the grammar, is not UTF-8, or
// nests deeper than `jsonDepthLimit` gives nothing. A byte order mark before the
// text is passed over. Members of one name: the last one counts.
//
// Why a reader of our own: no JSON library that Debian ships takes both a number
// outside the range of a double and a surrogate without a partner, and hands
// both back as they were spelled. Settings files of other programs hold such
// things, and must come back unchanged.
#pragma once

#include <initializer_list>
#include <optional>
#include <string_view>

#include "support/json_value.h"

namespace brimwatch {

// How many arrays and objects may stand inside each other.
inline constexpr int jsonDepthLimit = 512;

std::optional<JsonValue> parseJson(std::string_view text);

// A text whose top level is an object, reduced to the wanted members. The others are held to the
// same grammar, but their values are not built. Nothing if the top level is of another kind.
std::optional<JsonObject> parseJsonMembers(std::string_view text,
                                           std::initializer_list<std::string_view> wanted);

// A text whose top level is an object.
std::optional<JsonObject> parseJsonObject(std::string_view text);

}  // namespace brimwatch
