// How fresh the figures of an account are, in the words of a card's last line.
#pragma once

#include <QString>
#include <string>

#include "limits/subscription_limits.h"
#include "support/instant.h"

namespace brimwatch {

struct Freshness {
    QString text;
    bool needsAttention = false;

    bool operator==(const Freshness&) const = default;
};

// Figures above six hours old are told as old even where their limit has started anew since.
// `locale` is an identifier such as "ko".
Freshness freshness(const SubscriptionLimits& limits, Instant now, const std::string& locale);

}  // namespace brimwatch
