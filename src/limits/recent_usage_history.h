// What was seen of each account in the last 24 hours.
//
// No provider tells how much of a limit was spent lately; it is derived from these samples. They
// are taken at every reload, at most one for each five minutes and 300 for each account, whether
// or not anybody looks at them. Belongs to one thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "limits/recent_usage_samples.h"
#include "limits/subscription_limits.h"
#include "support/instant.h"
#include "support/json_value.h"

namespace brimwatch {

struct RecentUsageHistory {
    enum class Capacity : std::uint8_t { newest300, unlimited };

    std::map<std::string, RecentUsageSamples, std::less<>> accounts;  // by id, oldest first

    // Forgets what has become too old, takes one sample of each record whose account is allowed,
    // and gives the records back with the samples of their accounts.
    std::vector<SubscriptionLimits> record(std::vector<SubscriptionLimits> limits,
                                           const SubscriptionIds& allowed, Instant now);

    // The valid samples of the 24 hours before `now`, in the order of time, the first one of each
    // instant.
    static RecentUsageSamples normalized(RecentUsageSamples samples, Instant now,
                                         Capacity capacity);

    // Joins what several sources saw of one account into one sample for each five minutes, which
    // carries every reset that was seen in them. Of one instant the first group counts. A null
    // pointer is a group that is absent.
    static RecentUsageSamples merged(const std::vector<const RecentUsageSamples*>& groups,
                                     Instant now);

    // The stored form: times in seconds since 2001-01-01 UTC. Damage anywhere gives nothing;
    // unknown keys are ignored. Every number in `accounts` must be finite, as those recorded or
    // read are.
    static std::optional<RecentUsageHistory> fromJson(const JsonValue& value);
    JsonObject toJson() const;

    bool operator==(const RecentUsageHistory&) const = default;
};

}  // namespace brimwatch
