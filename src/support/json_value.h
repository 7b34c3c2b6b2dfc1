// A JSON document as a value (RFC 8259).
//
// The program edits files that belong to other programs, so a value here keeps
// what the text said: a number is its spelling, never a double, and a string
// may hold a surrogate without its partner, which JavaScript writes and other
// readers refuse. Such a surrogate is kept in the three bytes that UTF-8 would
// give it ("WTF-8") and written as a \u escape again.
//
// Objects keep their members sorted by key, by bytes, and each key once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace brimwatch {

// A number as it was spelled, which always follows the grammar of RFC 8259.
struct JsonNumber {
    std::string spelling;

    static JsonNumber fromInteger(std::int64_t value);
    // The shortest spelling that reads back as the same double, which must be finite.
    static JsonNumber fromDouble(double value);

    // The nearest double; beyond its range an infinity or a zero.
    double toDouble() const;
    // The value if it is a whole number that fits, however it is spelled: 1, 1.0 and 1e0 are 1.
    std::optional<std::int64_t> toInteger() const;
    // The value without its fraction, or nothing if that does not fit.
    std::optional<std::int64_t> truncated() const;

    bool operator==(const JsonNumber&) const = default;
};

class JsonValue;
struct JsonMember;
using JsonArray = std::vector<JsonValue>;

class JsonObject {
  public:
    JsonObject();
    JsonObject(const JsonObject& other);
    JsonObject(JsonObject&& other) noexcept;
    JsonObject& operator=(const JsonObject& other);
    JsonObject& operator=(JsonObject&& other) noexcept;
    ~JsonObject();
    // Of members with the same key the last one stays, as in JavaScript.
    explicit JsonObject(std::vector<JsonMember> members);

    const JsonValue* find(std::string_view key) const;
    void set(std::string_view key, JsonValue value);
    // Gives the removed value, if there was one.
    std::optional<JsonValue> remove(std::string_view key);

    bool empty() const;
    const std::vector<JsonMember>& members() const { return members_; }

    bool operator==(const JsonObject& other) const;

  private:
    std::vector<JsonMember> members_;
};

class JsonValue {
  public:
    JsonValue() = default;
    JsonValue(std::nullptr_t) {}
    JsonValue(bool value) : data_(value) {}
    JsonValue(JsonNumber value) : data_(std::move(value)) {}
    JsonValue(std::string value) : data_(std::move(value)) {}
    JsonValue(std::string_view value) : data_(std::string(value)) {}
    JsonValue(const char* value) : data_(std::string(value)) {}
    JsonValue(JsonArray value) : data_(std::move(value)) {}
    JsonValue(JsonObject value) : data_(std::move(value)) {}

    bool isNull() const { return std::holds_alternative<std::monostate>(data_); }
    const bool* boolean() const { return std::get_if<bool>(&data_); }
    const JsonNumber* number() const { return std::get_if<JsonNumber>(&data_); }
    const std::string* string() const { return std::get_if<std::string>(&data_); }
    const JsonArray* array() const { return std::get_if<JsonArray>(&data_); }
    const JsonObject* object() const { return std::get_if<JsonObject>(&data_); }
    JsonObject* object() { return std::get_if<JsonObject>(&data_); }

    // The member of that key, if this is an object that has it.
    const JsonValue* member(std::string_view key) const;

    bool operator==(const JsonValue&) const = default;

  private:
    std::variant<std::monostate, bool, JsonNumber, std::string, JsonArray, JsonObject> data_;
};

struct JsonMember {
    std::string key;
    JsonValue value;

    bool operator==(const JsonMember&) const = default;
};

}  // namespace brimwatch
