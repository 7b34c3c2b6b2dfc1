#include "support/json_fields.h"

namespace brimwatch {

std::int64_t JsonFields::integer(std::string_view key) {
    const std::optional<std::int64_t> integer = required(at(key).number()).toInteger();
    allRead_ &= integer.has_value();
    return integer.value_or(0);
}

double JsonFields::number(std::string_view key) {
    return required(at(key).number()).toDouble();
}

bool JsonFields::boolean(std::string_view key) {
    return required(at(key).boolean());
}

std::string JsonFields::string(std::string_view key) {
    return required(at(key).string());
}

const JsonObject& JsonFields::object(std::string_view key) {
    return required(at(key).object());
}

const JsonArray& JsonFields::array(std::string_view key) {
    return required(at(key).array());
}

std::optional<std::int64_t> JsonFields::optionalInteger(std::string_view key) {
    if (at(key).isNull()) return std::nullopt;
    return integer(key);
}

std::optional<double> JsonFields::optionalNumber(std::string_view key) {
    if (at(key).isNull()) return std::nullopt;
    return number(key);
}

std::optional<std::string> JsonFields::optionalString(std::string_view key) {
    if (at(key).isNull()) return std::nullopt;
    return string(key);
}

const JsonObject* JsonFields::optionalObject(std::string_view key) {
    if (at(key).isNull()) return nullptr;
    return &object(key);
}

const JsonArray* JsonFields::optionalArray(std::string_view key) {
    if (at(key).isNull()) return nullptr;
    return &array(key);
}

const JsonValue& JsonFields::at(std::string_view key) const {
    static const JsonValue absent;
    const JsonValue* value = object_.find(key);
    return value != nullptr ? *value : absent;
}

template <class Kind>
const Kind& JsonFields::required(const Kind* value) {
    static const Kind none{};
    allRead_ &= value != nullptr;
    return value != nullptr ? *value : none;
}

}  // namespace brimwatch
