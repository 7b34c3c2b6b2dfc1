// One account's figures as the rest of the program sees them.
#pragma once

#include <cmath>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "support/instant.h"
#include "support/shared_vector.h"

namespace brimwatch {

struct LimitsFile;

struct UsageWindow {
    double usedPercentage = 0;        // percent, 0 to 100
    std::optional<Instant> resetsAt;  // absent: the provider did not say

    bool operator==(const UsageWindow&) const = default;
};

// Whether a window can be shown: a percentage from 0 to 100, and a reset time that is finite.
inline bool isValid(const UsageWindow& window) {
    return window.usedPercentage >= 0 && window.usedPercentage <= 100 &&
           (!window.resetsAt || std::isfinite(unixSeconds(*window.resetsAt)));
}

// One observation of an account, kept for the usage of the last hours.
struct RecentUsageSample {
    Instant updatedAt;
    std::optional<UsageWindow> fiveHour;
    std::optional<UsageWindow> sevenDay;
    std::optional<std::string> planTier;
    // Whether a reset of the window was seen between the sample before and this one.
    bool fiveHourReset = false;
    bool sevenDayReset = false;

    bool operator==(const RecentUsageSample&) const = default;
};

using RecentUsageSamples = SharedVector<RecentUsageSample>;

// Ids of accounts, as `SubscriptionLimits::id` gives them.
using SubscriptionIds = std::set<std::string, std::less<>>;

enum class TitleAccount { shown, hidden };

struct SubscriptionLimits {
    using Window = UsageWindow;
    enum class Provider { claude, codex };

    Provider provider = Provider::claude;
    std::string account;  // the account key within the provider
    std::optional<Window> fiveHour;
    std::optional<Window> sevenDay;
    Instant updatedAt;  // when the writer last stored figures; may be infinite
    std::optional<std::string> planTier;
    std::optional<std::string> displayName;
    std::optional<RecentUsageSamples> recentUsageHistory;

    // The reader of limits files. It is tolerant where `LimitsFile` is strict: times may have
    // fractions, and a window that can't be shown is dropped alone. Nothing if the file is not of
    // version 1, its provider is unknown, or no window is left.
    static std::optional<SubscriptionLimits> fromFileData(std::string_view fileData);

    // What `fromFileData` gives for the bytes that the file encodes to.
    static std::optional<SubscriptionLimits> fromFile(const LimitsFile& file);

    // Provider, "-", account, as in "claude-work": the key of everything that is kept by account.
    std::string id() const;

    // The title of the account's card: the provider, then the name that it was given or, where
    // accounts are shown, its key.
    std::string title(TitleAccount shownAccount) const;

    bool operator==(const SubscriptionLimits&) const = default;
};

std::string_view rawString(SubscriptionLimits::Provider provider);
std::string_view displayName(SubscriptionLimits::Provider provider);
std::optional<SubscriptionLimits::Provider> providerFromRawString(std::string_view raw);

// By provider, then by account, by bytes: the order of records until the user chose another.
bool precedes(const SubscriptionLimits& a, const SubscriptionLimits& b);

}  // namespace brimwatch
