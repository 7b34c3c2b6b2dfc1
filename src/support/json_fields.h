// Reading a JSON object as a record whose fields have fixed types.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "support/json_value.h"

namespace brimwatch {

// Asked for one field after the other, it remembers whether any of them was missing or of another
// type; what it gave is then of no use. A field that may be absent may also be null.
class JsonFields {
  public:
    explicit JsonFields(const JsonObject& object) : object_(object) {}

    bool allRead() const { return allRead_; }

    std::int64_t integer(std::string_view key);
    // Beyond the range of a double the number is infinite.
    double number(std::string_view key);
    bool boolean(std::string_view key);
    std::string string(std::string_view key);
    // Gives an empty object where it fails.
    const JsonObject& object(std::string_view key);
    const JsonArray& array(std::string_view key);

    std::optional<std::int64_t> optionalInteger(std::string_view key);
    std::optional<double> optionalNumber(std::string_view key);
    std::optional<std::string> optionalString(std::string_view key);
    const JsonObject* optionalObject(std::string_view key);
    const JsonArray* optionalArray(std::string_view key);

  private:
    // The member, or null where there is none.
    const JsonValue& at(std::string_view key) const;
    // What stands there, or an empty value of its kind, which is remembered as a failure.
    template <class Kind>
    const Kind& required(const Kind* value);

    const JsonObject& object_;
    bool allRead_ = true;
};

}  // namespace brimwatch
