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

}  // namespace brimwatch
