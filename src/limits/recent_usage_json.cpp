#include "limits/recent_usage_json.h"

#include <chrono>
#include <cmath>

#include "support/json_fields.h"

namespace brimwatch {
namespace {

constexpr Instant midnight(JsonEpoch epoch) {
    const std::chrono::year year(epoch == JsonEpoch::year1970 ? 1970 : 2001);
    return std::chrono::sys_days(year / std::chrono::January / 1);
}

JsonNumber encodeInstant(Instant instant, JsonEpoch epoch) {
    return JsonNumber::fromDouble((instant - midnight(epoch)).count());
}

Instant decodeInstant(double seconds, JsonEpoch epoch) {
    return midnight(epoch) + std::chrono::duration<double>(seconds);
}

std::optional<UsageWindow> decodeWindow(const JsonObject* object, JsonEpoch epoch) {
    return object != nullptr ? decodeWindow(*object, epoch) : std::nullopt;
}

}  // namespace

JsonObject encodeWindow(const UsageWindow& window, JsonEpoch epoch) {
    JsonObject object;
    object.set("usedPercentage", JsonNumber::fromDouble(window.usedPercentage));
    if (window.resetsAt) object.set("resetsAt", encodeInstant(*window.resetsAt, epoch));
    return object;
}

JsonObject encodeSample(const RecentUsageSample& sample, JsonEpoch epoch) {
    JsonObject object;
    object.set("updatedAt", encodeInstant(sample.updatedAt, epoch));
    if (sample.fiveHour) object.set("fiveHour", encodeWindow(*sample.fiveHour, epoch));
    if (sample.sevenDay) object.set("sevenDay", encodeWindow(*sample.sevenDay, epoch));
    if (sample.planTier) object.set("planTier", *sample.planTier);
    object.set("fiveHourReset", sample.fiveHourReset);
    object.set("sevenDayReset", sample.sevenDayReset);
    return object;
}

std::optional<UsageWindow> decodeWindow(const JsonObject& object, JsonEpoch epoch) {
    JsonFields fields(object);
    const double usedPercentage = fields.number("usedPercentage");
    const std::optional<double> resetsAt = fields.optionalNumber("resetsAt");
    if (!fields.allRead() || !std::isfinite(usedPercentage)) return std::nullopt;
    if (!resetsAt) return UsageWindow{usedPercentage, std::nullopt};
    if (!std::isfinite(*resetsAt)) return std::nullopt;
    return UsageWindow{usedPercentage, decodeInstant(*resetsAt, epoch)};
}

std::optional<RecentUsageSample> decodeSample(const JsonObject& object, JsonEpoch epoch) {
    JsonFields fields(object);
    const JsonObject* fiveHour = fields.optionalObject("fiveHour");
    const JsonObject* sevenDay = fields.optionalObject("sevenDay");
    RecentUsageSample sample{.updatedAt = decodeInstant(fields.number("updatedAt"), epoch),
                             .fiveHour = decodeWindow(fiveHour, epoch),
                             .sevenDay = decodeWindow(sevenDay, epoch),
                             .planTier = fields.optionalString("planTier"),
                             .fiveHourReset = fields.boolean("fiveHourReset"),
                             .sevenDayReset = fields.boolean("sevenDayReset")};
    const bool isWhole = fields.allRead() && (fiveHour == nullptr || sample.fiveHour) &&
                         (sevenDay == nullptr || sample.sevenDay);
    if (!isWhole || !std::isfinite(unixSeconds(sample.updatedAt))) return std::nullopt;
    return sample;
}

}  // namespace brimwatch
