// Values that the program keeps as JSON, as the bytes of a file.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "support/json_reader.h"
#include "support/json_writer.h"

namespace brimwatch::test {

template <class Value>
std::optional<Value> decode(std::string_view bytes) {
    const std::optional<JsonValue> value = parseJson(bytes);
    return value ? Value::fromJson(*value) : std::nullopt;
}

template <class Value>
std::string encode(const Value& value) {
    return writeJson(value.toJson(), JsonLayout::compact);
}

}  // namespace brimwatch::test
