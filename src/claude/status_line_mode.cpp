#include "claude/status_line_mode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "limits/account_name.h"
#include "support/json_reader.h"
#include "support/paths.h"
#include "support/unicode.h"

namespace brimwatch {
namespace {

constexpr std::string_view fiveHour = "five_hour";
constexpr std::string_view sevenDay = "seven_day";
constexpr std::int64_t minimumIntervalSeconds = 300;
constexpr StatusLineMode::TimeOut nextStatusLineTimeOut{5.0};
constexpr std::size_t settingsSizeLimit = 1U << 20U;

// True and false count as 1 and 0 in this document.
std::optional<JsonNumber> numberAt(const JsonValue& object, std::string_view key) {
    const JsonValue* value = object.member(key);
    if (value == nullptr) return std::nullopt;
    if (const bool* boolean = value->boolean()) return JsonNumber{*boolean ? "1" : "0"};
    if (value->number() == nullptr) return std::nullopt;
    return *value->number();
}

// One decimal place, within 0 to 100.
double roundedPercentage(double number) {
    if (number <= 0) return 0;
    return std::round(std::min(number, 100.0) * 10.0) / 10.0;
}

std::optional<LimitsFile::Window> parseWindow(const JsonValue& value) {
    const std::optional<JsonNumber> used = numberAt(value, "used_percentage");
    if (!used) return std::nullopt;
    LimitsFile::Window window{.usedPercentage = roundedPercentage(used->toDouble()),
                              .resetsAt = std::nullopt};
    if (const std::optional<JsonNumber> resetsAt = numberAt(value, "resets_at")) {
        window.resetsAt = resetsAt->truncated();
        // No clock reads that; going on would store a window that never ends.
        if (!window.resetsAt) std::abort();
    }
    return window;
}

std::string percentageText(double usedPercentage, UsageDisplay display, const Language& language) {
    const int left = static_cast<int>(std::clamp(std::floor(100.0 - usedPercentage), 0.0, 100.0));
    const int shown = display == UsageDisplay::used ? 100 - left : left;
    return std::to_string(shown) + "% " + translatedText(shortSuffix(display), language);
}

// The characters that end a line: U+000A to U+000D, U+0085, U+2028 and U+2029.
constexpr auto newlines = std::to_array<std::string_view>(
    {"\n", "\v", "\f", "\r", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"});

std::string_view withoutOuterNewlines(std::string_view text) {
    const auto leading = [&text](std::string_view newline) { return text.starts_with(newline); };
    const auto trailing = [&text](std::string_view newline) { return text.ends_with(newline); };
    const auto* found = newlines.begin();
    while ((found = std::find_if(newlines.begin(), newlines.end(), leading)) != newlines.end()) {
        text.remove_prefix(found->size());
    }
    while ((found = std::find_if(newlines.begin(), newlines.end(), trailing)) != newlines.end()) {
        text.remove_suffix(found->size());
    }
    return text;
}

}  // namespace

void StatusLineMode::run() const {
    const std::string input = readInput();
    const ParsedLimits limits = parseRateLimits(input);
    if (!limits.empty()) store(limits);
    const std::optional<std::string> output = nextStatusLine(input);
    writeOutput((output ? *output : ownStatusLine(limits)) + '\n');
}

void StatusLineMode::store(const ParsedLimits& limits) const {
    const std::optional<std::string> home = homeFolder(environment, files, userId);
    if (!home) return;
    const FileResult<bool> written = LimitsFile::write(
        files, {.provider = "claude",
                .account = accountArgument(arguments, environment.value("CLAUDE_CONFIG_DIR")),
                .windows = limits,
                .planTier = std::nullopt,
                .minimumIntervalSeconds = minimumIntervalSeconds,
                .mergingExisting = true,
                .now = now(),
                .folder = limitsFolder(*home),
                .lockWait = LockWait::untilFree});
    if (written && *written) postLimitsChanged();
}

std::optional<std::string> StatusLineMode::nextStatusLine(std::string_view input) const {
    const std::optional<std::string_view> command = environment.value("BRIMWATCH_NEXT_STATUSLINE");
    // A command that leads back here would start itself without end.
    if (!command || command->empty() || isChainedByItself()) return std::nullopt;
    return runNextStatusLine(std::string(*command), input, nextStatusLineTimeOut);
}

std::string StatusLineMode::ownStatusLine(const ParsedLimits& limits) const {
    const JsonObject settings = readSettings();
    const auto raw = [&settings](std::string_view key) {
        const JsonValue* value = settings.find(key);
        const std::string* text = value != nullptr ? value->string() : nullptr;
        return text != nullptr ? std::string_view(*text) : std::string_view();
    };
    return statusText(limits, usageDisplayFromRawString(raw("usageDisplay")), now(),
                      languageOfCode(raw("language")));
}

JsonObject StatusLineMode::readSettings() const {
    const std::optional<std::string> path = settingsFile(environment, files, userId);
    if (!path) return {};
    const FileResult<std::string> bytes = files.read(*path, settingsSizeLimit);
    if (!bytes) return {};
    return parseJsonMembers(*bytes, {"language", "usageDisplay"}).value_or(JsonObject());
}

std::string StatusLineMode::accountArgument(std::span<const std::string_view> arguments,
                                            std::optional<std::string_view> claudeConfigDirectory) {
    const auto option = std::find(arguments.begin(), arguments.end(), "--account");
    if (option != arguments.end() && option + 1 != arguments.end()) {
        const std::string_view value = *(option + 1);
        if (!value.empty() && holdsOnlyAccountKeyCharacters(value)) return std::string(value);
    }
    return derivedAccountName(claudeConfigDirectory, ".claude");
}

StatusLineMode::ParsedLimits StatusLineMode::parseRateLimits(std::string_view input) {
    ParsedLimits limits;
    const std::optional<JsonObject> document = parseJsonMembers(input, {"rate_limits"});
    const JsonValue* rateLimits = document ? document->find("rate_limits") : nullptr;
    if (rateLimits == nullptr) return limits;
    for (const std::string_view key : {fiveHour, sevenDay}) {
        const JsonValue* member = rateLimits->member(key);
        const auto window = member != nullptr ? parseWindow(*member) : std::nullopt;
        if (window) limits.emplace(key, *window);
    }
    return limits;
}

std::string StatusLineMode::statusText(const ParsedLimits& limits, UsageDisplay display,
                                       Instant now, const Language& language) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 2> labels = {
        {{sevenDay, "주간"}, {fiveHour, "5시간"}}};
    std::string text;
    for (const auto& [key, label] : labels) {
        const auto found = limits.find(key);
        if (found == limits.end()) continue;
        const LimitsFile::Window& window = found->second;
        if (!text.empty()) text += " · ";
        text += translatedText(label, language) + ' ';
        if (!window.resetsAt || *window.resetsAt > wholeUnixSeconds(now)) {
            text += percentageText(window.usedPercentage, display, language);
        } else if (key == fiveHour && limits.contains(sevenDay)) {
            text += translatedText("새 값 대기", language);
        } else {
            text += translatedText("초기화됨", language);
        }
    }
    return text;
}

std::optional<std::string> StatusLineMode::runNextStatusLine(const std::string& commandLine,
                                                             std::string_view input,
                                                             TimeOut timeOut) const {
    const std::optional<std::string> output = runCommand(commandLine, input, timeOut);
    if (!output || !isValidUtf8(*output)) return std::nullopt;
    return std::string(withoutOuterNewlines(*output));
}

}  // namespace brimwatch
