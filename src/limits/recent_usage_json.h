// Usage windows and samples as JSON, in the form of the stored history and of the snapshots. Keys
// are named as the fields are; what is absent is left out.
#pragma once

#include <cstdint>
#include <optional>

#include "limits/subscription_limits.h"
#include "support/json_value.h"

namespace brimwatch {

// Which midnight (UTC, January 1st) the seconds of a time are counted from.
enum class JsonEpoch : std::uint8_t { year1970, year2001 };

// Every number must be finite.
JsonObject encodeWindow(const UsageWindow& window, JsonEpoch epoch);
JsonObject encodeSample(const RecentUsageSample& sample, JsonEpoch epoch);

// Nothing unless every key is there with its type, and every number finite. Unknown keys are
// ignored.
std::optional<UsageWindow> decodeWindow(const JsonObject& object, JsonEpoch epoch);
std::optional<RecentUsageSample> decodeSample(const JsonObject& object, JsonEpoch epoch);

}  // namespace brimwatch
