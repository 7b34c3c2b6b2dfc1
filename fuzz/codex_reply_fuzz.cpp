// A reply of `codex app-server`: whatever it says, what is read of it can be shown.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "codex/codex_poller.h"
#include "require.h"
#include "support/json_reader.h"
#include "support/unicode.h"

namespace brimwatch {
namespace {

// Without a reset time beyond 64 bits: that one ends the process, as it should.
JsonObject withReadableResetTime(JsonObject candidate) {
    const JsonValue* resetsAt = candidate.find("resetsAt");
    const JsonNumber* number = resetsAt != nullptr ? resetsAt->number() : nullptr;
    if (number != nullptr && !number->truncated()) candidate.remove("resetsAt");
    return candidate;
}

JsonObject withReadableResetTimes(const JsonObject& result) {
    JsonObject block = CodexPoller::limitsBlock(result);
    for (const char* key : {"primary", "secondary"}) {
        const JsonValue* candidate = block.find(key);
        const JsonObject* members = candidate != nullptr ? candidate->object() : nullptr;
        if (members != nullptr) block.set(key, withReadableResetTime(*members));
    }
    return JsonObject({{"rateLimits", std::move(block)}});
}

void checkWindows(const LimitsFile::Windows& windows) {
    for (const auto& [key, window] : windows) {
        REQUIRE(key == "five_hour" || key == "seven_day");
        REQUIRE(window.usedPercentage >= 0 && window.usedPercentage <= 100);
    }
}

void checkCredits(const CodexCredits& credits) {
    if (credits.balance) {
        REQUIRE(credits.balance->digits().size() <= CodexPoller::longestBalanceCharacters);
        REQUIRE(Decimal::fromDigits(credits.balance->digits()) == credits.balance);
    }
    for (const char* locale : {"ko", "ar"}) {
        const std::optional<CodexCredits::Text> text = credits.text(locale);
        REQUIRE(!text || (!text->value().empty() && isValidUtf8(text->accessibilityLabel())));
    }
}

void readReply(const JsonObject& reply) {
    const JsonValue* result = reply.find("result");
    if (result == nullptr || result->object() == nullptr) return;
    const CodexPoller::Reading reading =
        CodexPoller::Reading::fromResult(withReadableResetTimes(*result->object()));
    checkWindows(reading.windows);
    if (reading.credits) checkCredits(*reading.credits);
    REQUIRE(reading.credits == CodexPoller::credits(*result->object()));
    REQUIRE(reading.planType == CodexPoller::planType(*result->object()));
}

}  // namespace
}  // namespace brimwatch

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::optional<brimwatch::JsonObject> reply = brimwatch::parseJsonObject(text);
    if (reply) brimwatch::readReply(*reply);
    return 0;
}
