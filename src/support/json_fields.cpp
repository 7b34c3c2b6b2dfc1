#include "support/json_fields.h"

namespace brimwatch {

std::int64_t JsonFields::integer(std::string_view key) {
    const JsonValue* value = object_.find(key);
    const JsonNumber* number = value != nullptr ? value->number() : nullptr;
    const std::optional<std::int64_t> integer =
        number != nullptr ? number->toInteger() : std::nullopt;
    allRead_ &= integer.has_value();
    return integer.value_or(0);
}

double JsonFields::number(std::string_view key) {
    const JsonValue* value = object_.find(key);
    const JsonNumber* number = value != nullptr ? value->number() : nullptr;
    allRead_ &= number != nullptr;
    return number != nullptr ? number->toDouble() : 0;
}

bool JsonFields::boolean(std::string_view key) {
    const JsonValue* value = object_.find(key);
    const bool* boolean = value != nullptr ? value->boolean() : nullptr;
    allRead_ &= boolean != nullptr;
    return boolean != nullptr && *boolean;
}

std::string JsonFields::string(std::string_view key) {
    const JsonValue* value = object_.find(key);
    const std::string* text = value != nullptr ? value->string() : nullptr;
    allRead_ &= text != nullptr;
    return text != nullptr ? *text : std::string();
}

const JsonObject& JsonFields::object(std::string_view key) {
    static const JsonObject empty;
    const JsonValue* value = object_.find(key);
    const JsonObject* object = value != nullptr ? value->object() : nullptr;
    allRead_ &= object != nullptr;
    return object != nullptr ? *object : empty;
}

const JsonArray& JsonFields::array(std::string_view key) {
    static const JsonArray empty;
    const JsonValue* value = object_.find(key);
    const JsonArray* array = value != nullptr ? value->array() : nullptr;
    allRead_ &= array != nullptr;
    return array != nullptr ? *array : empty;
}

std::optional<std::int64_t> JsonFields::optionalInteger(std::string_view key) {
    if (isAbsent(key)) return std::nullopt;
    return integer(key);
}

std::optional<double> JsonFields::optionalNumber(std::string_view key) {
    if (isAbsent(key)) return std::nullopt;
    return number(key);
}

std::optional<std::string> JsonFields::optionalString(std::string_view key) {
    if (isAbsent(key)) return std::nullopt;
    return string(key);
}

const JsonObject* JsonFields::optionalObject(std::string_view key) {
    if (isAbsent(key)) return nullptr;
    return &object(key);
}

bool JsonFields::isAbsent(std::string_view key) const {
    const JsonValue* value = object_.find(key);
    return value == nullptr || value->isNull();
}

}  // namespace brimwatch
