#include <utility>

#include "limits/recent_usage_history.h"
#include "limits/recent_usage_json.h"
#include "support/json_fields.h"

namespace brimwatch {
namespace {

std::optional<RecentUsageSamples> decodeSamples(const JsonArray& array) {
    RecentUsageSamples samples;
    samples.reserve(array.size());
    for (const JsonValue& value : array) {
        const JsonObject* object = value.object();
        std::optional<RecentUsageSample> sample =
            object != nullptr ? decodeSample(*object, JsonEpoch::year2001) : std::nullopt;
        if (!sample) return std::nullopt;
        samples.push_back(*std::move(sample));
    }
    return samples;
}

JsonArray encodeSamples(const RecentUsageSamples& samples) {
    JsonArray array;
    array.reserve(samples.size());
    for (const RecentUsageSample& sample : samples)
        array.emplace_back(encodeSample(sample, JsonEpoch::year2001));
    return array;
}

}  // namespace

std::optional<RecentUsageHistory> RecentUsageHistory::fromJson(const JsonValue& value) {
    if (value.object() == nullptr) return std::nullopt;
    JsonFields fields(*value.object());
    RecentUsageHistory history;
    for (const auto& [id, entry] : fields.object("accounts").members()) {
        const JsonArray* array = entry.array();
        std::optional<RecentUsageSamples> samples =
            array != nullptr ? decodeSamples(*array) : std::nullopt;
        if (!samples) return std::nullopt;
        history.accounts.emplace_hint(history.accounts.end(), id, *std::move(samples));
    }
    if (!fields.allRead()) return std::nullopt;
    return history;
}

JsonObject RecentUsageHistory::toJson() const {
    JsonObject arrays;
    for (const auto& [id, samples] : accounts)
        arrays.set(id, encodeSamples(samples));
    JsonObject object;
    object.set("accounts", std::move(arrays));
    return object;
}

}  // namespace brimwatch
