#include "publish/limits_wire.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "limits/recent_usage_json.h"
#include "publish/limits_cloud.h"
#include "support/json_fields.h"
#include "support/json_writer.h"
#include "support/unicode.h"

namespace brimwatch {
namespace {

// Whole numbers below it are exact, and are spelled without a fraction or an exponent.
constexpr double beyondWholeNumbers = 0x1p53;

bool isSpelledAsInteger(double number) {
    return std::abs(number) < beyondWholeNumbers &&
           number == static_cast<double>(static_cast<std::int64_t>(number)) &&
           !(number == 0 && std::signbit(number));
}

// What an account without a history, and what a sample commonly take.
constexpr std::size_t expectedAccountBytes = 300;
constexpr std::size_t expectedSampleBytes = 250;

std::string validUnicode(std::string_view text) {
    std::string valid;
    while (!text.empty()) {
        const DecodedScalar decoded = decodeUtf8(text);
        appendUtf8(valid, decoded.scalar);
        text.remove_prefix(decoded.length);
    }
    return valid;
}

void appendInstant(std::string& json, Instant instant) {
    appendWireNumber(json, unixSeconds(instant));
}

void appendWindow(std::string& json, const UsageWindow& window) {
    json += '{';
    if (window.resetsAt) {
        json += R"("resetsAt":)";
        appendInstant(json, *window.resetsAt);
        json += ',';
    }
    json += R"("usedPercentage":)";
    appendWireNumber(json, window.usedPercentage);
    json += '}';
}

void appendSample(std::string& json, const RecentUsageSample& sample) {
    json += '{';
    if (sample.fiveHour) {
        json += R"("fiveHour":)";
        appendWindow(json, *sample.fiveHour);
        json += ',';
    }
    json += sample.fiveHourReset ? R"("fiveHourReset":true,)" : R"("fiveHourReset":false,)";
    if (sample.planTier) {
        json += R"("planTier":)";
        appendWireText(json, *sample.planTier);
        json += ',';
    }
    if (sample.sevenDay) {
        json += R"("sevenDay":)";
        appendWindow(json, *sample.sevenDay);
        json += ',';
    }
    json += sample.sevenDayReset ? R"("sevenDayReset":true,"updatedAt":)"
                                 : R"("sevenDayReset":false,"updatedAt":)";
    appendInstant(json, sample.updatedAt);
    json += '}';
}

void appendSamples(std::string& json, const RecentUsageSamples& samples) {
    json += '[';
    for (const RecentUsageSample& sample : samples) {
        if (&sample != &samples.front()) json += ',';
        appendSample(json, sample);
    }
    json += ']';
}

void appendMember(std::string& json, std::string_view key, const std::optional<std::string>& text) {
    if (!text) return;
    json += key;
    appendWireText(json, *text);
}

void appendMember(std::string& json, std::string_view key,
                  const std::optional<UsageWindow>& window) {
    if (!window) return;
    json += key;
    appendWindow(json, *window);
}

std::optional<RecentUsageSamples> decodeSamples(const JsonArray& array) {
    RecentUsageSamples samples;
    samples.reserve(array.size());
    for (const JsonValue& value : array) {
        const JsonObject* object = value.object();
        std::optional<RecentUsageSample> sample =
            object != nullptr ? decodeSample(*object, JsonEpoch::year1970) : std::nullopt;
        if (!sample) return std::nullopt;
        samples.push_back(*std::move(sample));
    }
    return samples;
}

std::optional<UsageWindow> decodeIfPresent(const JsonObject* object) {
    return object != nullptr ? decodeWindow(*object, JsonEpoch::year1970) : std::nullopt;
}

std::optional<RecentUsageSamples> decodeIfPresent(const JsonArray* array) {
    return array != nullptr ? decodeSamples(*array) : std::nullopt;
}

// Whether what stands there could be read; what is absent needs no reading.
template <class Json, class Value>
bool isReadIfPresent(const Json* json, const std::optional<Value>& value) {
    return json == nullptr || value.has_value();
}

}  // namespace

void appendWireNumber(std::string& json, double number) {
    if (!std::isfinite(number)) throw LimitsCloud::EncodingError();
    std::array<char, 32> spelling;  // NOLINT(cppcoreguidelines-pro-type-member-init): written below
    char* const begin = spelling.data();
    char* const end = begin + spelling.size();
    const auto result = isSpelledAsInteger(number)
                            ? std::to_chars(begin, end, static_cast<std::int64_t>(number))
                            : std::to_chars(begin, end, number);
    json.append(begin, result.ptr);
}

void appendWireText(std::string& json, std::string_view text) {
    if (isValidUtf8(text)) {
        appendJsonString(json, text);
    } else {
        appendJsonString(json, validUnicode(text));
    }
}

std::size_t expectedBytes(const std::vector<SubscriptionLimits>& limits) {
    std::size_t bytes = 0;
    for (const SubscriptionLimits& element : limits) {
        bytes += expectedAccountBytes;
        if (element.recentUsageHistory)
            bytes += expectedSampleBytes * element.recentUsageHistory->size();
    }
    return bytes;
}

void appendLimits(std::string& json, const SubscriptionLimits& limits) {
    json += R"({"account":)";
    appendWireText(json, limits.account);
    appendMember(json, R"(,"displayName":)", limits.displayName);
    appendMember(json, R"(,"fiveHour":)", limits.fiveHour);
    appendMember(json, R"(,"planTier":)", limits.planTier);
    json += R"(,"provider":)";
    appendWireText(json, rawString(limits.provider));
    if (limits.recentUsageHistory) {
        json += R"(,"recentUsageHistory":)";
        appendSamples(json, *limits.recentUsageHistory);
    }
    appendMember(json, R"(,"sevenDay":)", limits.sevenDay);
    json += R"(,"updatedAt":)";
    appendInstant(json, limits.updatedAt);
    json += '}';
}

std::optional<SubscriptionLimits> decodeLimits(const JsonValue& value) {
    if (value.object() == nullptr) return std::nullopt;
    JsonFields fields(*value.object());
    const auto provider = providerFromRawString(fields.string("provider"));
    const JsonObject* fiveHour = fields.optionalObject("fiveHour");
    const JsonObject* sevenDay = fields.optionalObject("sevenDay");
    const JsonArray* history = fields.optionalArray("recentUsageHistory");
    SubscriptionLimits limits{.provider = provider.value_or(SubscriptionLimits::Provider::claude),
                              .account = fields.string("account"),
                              .fiveHour = decodeIfPresent(fiveHour),
                              .sevenDay = decodeIfPresent(sevenDay),
                              .updatedAt = instantFromUnixSeconds(fields.number("updatedAt")),
                              .planTier = fields.optionalString("planTier"),
                              .displayName = fields.optionalString("displayName"),
                              .recentUsageHistory = decodeIfPresent(history)};
    const bool isWhole = provider && fields.allRead() &&
                         isReadIfPresent(fiveHour, limits.fiveHour) &&
                         isReadIfPresent(sevenDay, limits.sevenDay) &&
                         isReadIfPresent(history, limits.recentUsageHistory);
    if (!isWhole || !std::isfinite(unixSeconds(limits.updatedAt))) return std::nullopt;
    return limits;
}

}  // namespace brimwatch
