// The document on standard input: figures come out in range, and always a line that can be printed.

#include <cstdint>
#include <string_view>

#include "claude/status_line_mode.h"
#include "require.h"
#include "support/json_reader.h"
#include "support/unicode.h"

namespace {

// The one input that is meant to abort: a reset time beyond 64 bits in a window that counts.
bool isMeantToAbort(std::string_view text) {
    const auto document = brimwatch::parseJsonObject(text);
    if (!document || document->find("rate_limits") == nullptr) return false;
    for (const char* key : {"five_hour", "seven_day"}) {
        const brimwatch::JsonValue* window = document->find("rate_limits")->member(key);
        if (window == nullptr) continue;
        const brimwatch::JsonValue* used = window->member("used_percentage");
        const brimwatch::JsonValue* resetsAt = window->member("resets_at");
        const bool counts =
            used != nullptr && (used->number() != nullptr || used->boolean() != nullptr);
        if (counts && resetsAt != nullptr && resetsAt->number() != nullptr &&
            !resetsAt->number()->truncated()) {
            return true;
        }
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using brimwatch::StatusLineMode;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (isMeantToAbort(text)) return 0;
    const auto limits = StatusLineMode::parseRateLimits(text);
    REQUIRE(limits.size() <= 2);
    for (const auto& [key, window] : limits) {
        REQUIRE(key == "five_hour" || key == "seven_day");
        REQUIRE(window.usedPercentage >= 0 && window.usedPercentage <= 100);
    }
    const auto now = brimwatch::instantFromUnixSeconds(1790000000);
    for (const auto display : {brimwatch::UsageDisplay::remaining, brimwatch::UsageDisplay::used}) {
        const std::string line = StatusLineMode::statusText(limits, display, now);
        REQUIRE(brimwatch::isValidUtf8(line));
        REQUIRE(line.find('\n') == std::string::npos);
        REQUIRE(line.empty() == limits.empty());
    }
    return 0;
}
