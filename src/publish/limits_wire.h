// The figures of one account as they go to phones: compact JSON with sorted keys, named as the
// fields are, times in seconds since 1970-01-01 UTC, and what is absent left out.
//
// A number reads back as the same double. Equal figures give equal bytes, which is what their
// digest stands on. Any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "limits/subscription_limits.h"
#include "support/json_value.h"

namespace brimwatch {

// Both throw `LimitsCloud::EncodingError` on a number that is not finite. What is not valid Unicode
// in a text becomes U+FFFD: readers refuse a whole document for it.
void appendLimits(std::string& json, const SubscriptionLimits& limits);
void appendWireNumber(std::string& json, double number);
void appendWireText(std::string& json, std::string_view text);

// About as many bytes as they take, to be reserved.
std::size_t expectedBytes(const std::vector<SubscriptionLimits>& limits);

// Nothing unless every required key is there, everything has its type, and every number is finite.
// Unknown keys are ignored.
std::optional<SubscriptionLimits> decodeLimits(const JsonValue& value);

}  // namespace brimwatch
