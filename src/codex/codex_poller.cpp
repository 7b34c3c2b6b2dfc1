#include "codex/codex_poller.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace brimwatch {
namespace {

const JsonObject* objectAt(const JsonObject& object, std::string_view key) {
    const JsonValue* value = object.find(key);
    return value != nullptr ? value->object() : nullptr;
}

const JsonNumber* numberAt(const JsonObject& object, std::string_view key) {
    const JsonValue* value = object.find(key);
    return value != nullptr ? value->number() : nullptr;
}

const std::string* stringAt(const JsonObject& object, std::string_view key) {
    const JsonValue* value = object.find(key);
    return value != nullptr ? value->string() : nullptr;
}

bool isTrueAt(const JsonObject& object, std::string_view key) {
    const JsonValue* value = object.find(key);
    return value != nullptr && *value == JsonValue(true);
}

std::string_view keyOfWindow(const JsonNumber& durationMinutes) {
    constexpr std::int64_t fiveHoursMinutes = 300;
    constexpr std::int64_t sevenDaysMinutes = 10080;
    const std::optional<std::int64_t> minutes = durationMinutes.truncated();
    if (minutes == fiveHoursMinutes) return "five_hour";
    if (minutes == sevenDaysMinutes) return "seven_day";
    return {};
}

double clampedPercentage(const JsonNumber& number) {
    const double percentage = number.toDouble();
    return percentage <= 0 ? 0 : std::min(percentage, 100.0);
}

std::optional<std::int64_t> resetTime(const JsonObject& candidate) {
    const JsonNumber* number = numberAt(candidate, "resetsAt");
    if (number == nullptr) return std::nullopt;
    const std::optional<std::int64_t> seconds = number->truncated();
    // No clock reads that; going on would store a window that never ends.
    if (!seconds) std::abort();
    return seconds;
}

void takeWindow(LimitsFile::Windows& windows, const JsonObject& candidate) {
    const JsonNumber* usedPercent = numberAt(candidate, "usedPercent");
    const JsonNumber* durationMinutes = numberAt(candidate, "windowDurationMins");
    if (usedPercent == nullptr || durationMinutes == nullptr) return;
    const std::string_view key = keyOfWindow(*durationMinutes);
    if (key.empty() || windows.contains(key)) return;
    windows.emplace(key, LimitsFile::Window{.usedPercentage = clampedPercentage(*usedPercent),
                                            .resetsAt = resetTime(candidate)});
}

std::string_view withoutOuterBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

}  // namespace

CodexPoller::Reading CodexPoller::Reading::fromResult(const JsonObject& result) {
    return {.windows = CodexPoller::windows(result),
            .credits = CodexPoller::credits(result),
            .planType = CodexPoller::planType(result)};
}

const JsonObject& CodexPoller::limitsBlock(const JsonObject& result) {
    static const JsonObject empty;
    const JsonObject* byLimit = objectAt(result, "rateLimitsByLimitId");
    const JsonObject* block = byLimit != nullptr ? objectAt(*byLimit, "codex") : nullptr;
    if (block == nullptr) block = objectAt(result, "rateLimits");
    return block != nullptr ? *block : empty;
}

LimitsFile::Windows CodexPoller::windows(const JsonObject& result) {
    LimitsFile::Windows windows;
    const JsonObject& block = limitsBlock(result);
    for (const std::string_view key : {"primary", "secondary"}) {
        const JsonObject* candidate = objectAt(block, key);
        if (candidate != nullptr) takeWindow(windows, *candidate);
    }
    return windows;
}

std::optional<CodexCredits> CodexPoller::credits(const JsonObject& result) {
    const JsonObject* block = objectAt(limitsBlock(result), "credits");
    if (block == nullptr) return std::nullopt;
    const std::string* balance = stringAt(*block, "balance");
    return CodexCredits{.hasCredits = isTrueAt(*block, "hasCredits"),
                        .unlimited = isTrueAt(*block, "unlimited"),
                        .balance = balance != nullptr ? parseBalance(*balance) : std::nullopt};
}

std::optional<std::string> CodexPoller::planType(const JsonObject& result) {
    const std::string* plan = stringAt(limitsBlock(result), "planType");
    if (plan == nullptr) return std::nullopt;
    return *plan;
}

std::optional<Decimal> CodexPoller::parseBalance(std::string_view text) {
    text = withoutOuterBlanks(text);
    if (text.size() > longestBalanceCharacters) return std::nullopt;
    return Decimal::fromDigits(text);
}

}  // namespace brimwatch
