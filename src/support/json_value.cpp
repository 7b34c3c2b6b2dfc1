#include "support/json_value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>

namespace brimwatch {
namespace {

// Both bounds are exact as doubles: -2^63, and 2^63, the first value that does not fit.
constexpr double smallestInt64 = -0x1p63;
constexpr double beyondInt64 = 0x1p63;

bool isSpelledAsInteger(std::string_view spelling) {
    return spelling.find_first_of(".eE") == std::string_view::npos;
}

std::optional<std::int64_t> parseInteger(std::string_view spelling) {
    std::int64_t value = 0;
    const char* end = spelling.data() + spelling.size();
    const auto [stop, error] = std::from_chars(spelling.data(), end, value);
    if (error != std::errc() || stop != end) return std::nullopt;
    return value;
}

// Which side a number that no double can hold lies on: beyond the largest or below the smallest.
// Only the exponent of its first digit other than 0 decides that.
bool isBeyondLargestDouble(std::string_view spelling) {
    if (spelling.starts_with('-')) spelling.remove_prefix(1);
    const std::size_t exponentMark = std::min(spelling.find_first_of("eE"), spelling.size());
    const std::string_view digits = spelling.substr(0, exponentMark);
    std::string_view exponent = spelling.substr(std::min(exponentMark + 1, spelling.size()));
    if (exponent.starts_with('+')) exponent.remove_prefix(1);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    const std::size_t first = digits.find_first_not_of("0.");
    const std::int64_t magnitude =
        static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
    std::int64_t scale = 0;
    const auto [stop, error] =
        std::from_chars(exponent.data(), exponent.data() + exponent.size(), scale);
    if (error == std::errc::result_out_of_range) return !exponent.starts_with('-');
    return scale > -magnitude;
}

template <class Members>
auto positionOf(Members& members, std::string_view key) {
    return std::lower_bound(members.begin(), members.end(), key,
                            [](const JsonMember& member, std::string_view wanted) {
                                return member.key.compare(wanted) < 0;
                            });
}

}  // namespace

JsonNumber JsonNumber::fromInteger(std::int64_t value) {
    return {std::to_string(value)};
}

JsonNumber JsonNumber::fromDouble(double value) {
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {std::string(buffer.data(), result.ptr)};
}

double JsonNumber::toDouble() const {
    double value = 0;
    const auto result = std::from_chars(spelling.data(), spelling.data() + spelling.size(), value);
    if (result.ec != std::errc::result_out_of_range) return value;
    const double size =
        isBeyondLargestDouble(spelling) ? std::numeric_limits<double>::infinity() : 0.0;
    return spelling.starts_with('-') ? -size : size;
}

std::optional<std::int64_t> JsonNumber::toInteger() const {
    if (isSpelledAsInteger(spelling)) return parseInteger(spelling);
    const double value = toDouble();
    if (value != std::trunc(value)) return std::nullopt;
    return truncated();
}

std::optional<std::int64_t> JsonNumber::truncated() const {
    if (isSpelledAsInteger(spelling)) return parseInteger(spelling);
    const double value = toDouble();
    if (!(value >= smallestInt64 && value < beyondInt64)) return std::nullopt;
    return static_cast<std::int64_t>(value);
}

JsonObject::JsonObject() = default;
JsonObject::JsonObject(const JsonObject& other) = default;
JsonObject::JsonObject(JsonObject&& other) noexcept = default;
JsonObject& JsonObject::operator=(const JsonObject& other) = default;
JsonObject& JsonObject::operator=(JsonObject&& other) noexcept = default;
JsonObject::~JsonObject() = default;

JsonObject::JsonObject(std::vector<JsonMember> members) : members_(std::move(members)) {
    std::stable_sort(members_.begin(), members_.end(),
                     [](const JsonMember& a, const JsonMember& b) { return a.key < b.key; });
    // Walked from the back, so that of equal keys the one written last is met first and stays.
    const auto keptFromBack =
        std::unique(members_.rbegin(), members_.rend(),
                    [](const JsonMember& a, const JsonMember& b) { return a.key == b.key; });
    members_.erase(members_.begin(), keptFromBack.base());
}

bool JsonObject::empty() const {
    return members_.empty();
}

const JsonValue* JsonObject::find(std::string_view key) const {
    const auto position = positionOf(members_, key);
    return position != members_.end() && position->key == key ? &position->value : nullptr;
}

void JsonObject::set(std::string_view key, JsonValue value) {
    auto position = positionOf(members_, key);
    if (position == members_.end() || position->key != key) {
        position = members_.insert(position, JsonMember{std::string(key), nullptr});
    }
    position->value = std::move(value);
}

std::optional<JsonValue> JsonObject::remove(std::string_view key) {
    const auto position = positionOf(members_, key);
    if (position == members_.end() || position->key != key) return std::nullopt;
    JsonValue removed = std::move(position->value);
    members_.erase(position);
    return removed;
}

bool JsonObject::operator==(const JsonObject& other) const {
    return members_ == other.members_;
}

const JsonValue* JsonValue::member(std::string_view key) const {
    const JsonObject* members = object();
    return members != nullptr ? members->find(key) : nullptr;
}

}  // namespace brimwatch
