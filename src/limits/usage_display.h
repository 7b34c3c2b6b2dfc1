// Whether figures are shown as what is left or as what is used.
#pragma once

#include <string_view>

namespace brimwatch {

enum class UsageDisplay { remaining, used };

// From the raw string of the setting `usageDisplay`: anything but "used" reads as `remaining`.
constexpr UsageDisplay usageDisplayFromRawString(std::string_view raw) {
    return raw == "used" ? UsageDisplay::used : UsageDisplay::remaining;
}

constexpr std::string_view rawString(UsageDisplay display) {
    return display == UsageDisplay::used ? "used" : "remaining";
}

// What follows a number, and what the choice is called.
constexpr std::string_view shortSuffix(UsageDisplay display) {
    return display == UsageDisplay::used ? "사용" : "남음";
}

constexpr std::string_view label(UsageDisplay display) {
    return display == UsageDisplay::used ? "사용량" : "남은 양";
}

}  // namespace brimwatch
