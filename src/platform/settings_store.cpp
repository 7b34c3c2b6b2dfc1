#include "platform/settings_store.h"

#include <utility>

namespace brimwatch {

std::optional<bool> SettingsStore::boolean(std::string_view key) const {
    const std::optional<JsonValue> value = json(key);
    const bool* boolean = value ? value->boolean() : nullptr;
    return boolean != nullptr ? std::optional(*boolean) : std::nullopt;
}

std::optional<std::int64_t> SettingsStore::integer(std::string_view key) const {
    const std::optional<JsonValue> value = json(key);
    const JsonNumber* number = value ? value->number() : nullptr;
    return number != nullptr ? number->toInteger() : std::nullopt;
}

std::optional<std::string> SettingsStore::string(std::string_view key) const {
    const std::optional<JsonValue> value = json(key);
    const std::string* string = value ? value->string() : nullptr;
    return string != nullptr ? std::optional(*string) : std::nullopt;
}

std::optional<std::vector<std::string>> SettingsStore::strings(std::string_view key) const {
    const std::optional<JsonValue> value = json(key);
    const JsonArray* array = value ? value->array() : nullptr;
    if (array == nullptr) return std::nullopt;
    std::vector<std::string> strings;
    for (const JsonValue& element : *array) {
        const std::string* string = element.string();
        if (string == nullptr) return std::nullopt;
        strings.push_back(*string);
    }
    return strings;
}

std::optional<SettingsStore::Dictionary> SettingsStore::dictionary(std::string_view key) const {
    const std::optional<JsonValue> value = json(key);
    const JsonObject* object = value ? value->object() : nullptr;
    if (object == nullptr) return std::nullopt;
    Dictionary dictionary;
    for (const JsonMember& member : object->members()) {
        const std::string* string = member.value.string();
        if (string == nullptr) return std::nullopt;
        dictionary.emplace(member.key, *string);
    }
    return dictionary;
}

FileResult<void> SettingsStore::setBoolean(std::string_view key, bool value) {
    return setJson(key, value);
}

FileResult<void> SettingsStore::setInteger(std::string_view key, std::int64_t value) {
    return setJson(key, JsonNumber::fromInteger(value));
}

FileResult<void> SettingsStore::setString(std::string_view key, std::string_view value) {
    return setJson(key, value);
}

FileResult<void> SettingsStore::setStrings(std::string_view key,
                                           const std::vector<std::string>& value) {
    return setJson(key, JsonArray(value.begin(), value.end()));
}

FileResult<void> SettingsStore::setDictionary(std::string_view key, const Dictionary& value) {
    std::vector<JsonMember> members;
    for (const auto& [name, text] : value)
        members.push_back({.key = name, .value = text});
    return setJson(key, JsonObject(std::move(members)));
}

}  // namespace brimwatch
