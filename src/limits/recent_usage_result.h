// How much of a limit was spent lately, derived from an account's record and its samples.
//
// There is a number only where the whole stretch from the start of the period until now is provably
// one unbroken rise; otherwise a state says why there is none.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "limits/recent_usage_period.h"
#include "limits/subscription_limits.h"
#include "support/instant.h"

namespace brimwatch {

struct RecentUsageResult {
    enum class Status : std::uint8_t {
        available,
        collecting,   // the samples don't reach back far enough yet
        stale,        // no figures came for a while
        reset,        // the limit or the plan started anew within the period
        unavailable,  // there is nothing to derive from
    };

    Status status = Status::unavailable;
    // Points of the whole limit, never less than 0; only where `status` is `available`.
    std::optional<double> percentagePoints;
    // The window that it speaks of: the weekly one, or without that the five-hour one. A text that
    // lives as long as the program.
    std::string_view basisName;
    // Of the record, where that has a window at all.
    std::optional<Instant> updatedAt;

    // Fit for drawing: two passes over the samples at most, and no allocation for samples as they
    // are recorded. Others are put in order in a copy.
    static RecentUsageResult derive(const SubscriptionLimits& limits, RecentUsagePeriod period,
                                    Instant now);

    bool operator==(const RecentUsageResult&) const = default;
};

std::string_view rawString(RecentUsageResult::Status status);

// What people read in place of a number. A result that is available but has no number reads as one
// whose samples are still being collected.
std::string_view textWithoutFigure(RecentUsageResult::Status status);

}  // namespace brimwatch
