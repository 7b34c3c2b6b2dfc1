// Which cards the popover shows, and how much room they get.
#pragma once

#include <QString>
#include <optional>
#include <string>
#include <vector>

#include "core/helper_model.h"
#include "presentation/subscription_usage_card.h"
#include "support/instant.h"

namespace brimwatch {

// Of one of the records that are shown: only where another one of them has the same provider does
// the account have to be told.
TitleAccount titleAccount(const SubscriptionLimits& limits,
                          const std::vector<SubscriptionLimits>& shown);

// In the order that the user chose. `locale` is an identifier such as "ko".
std::vector<SubscriptionUsageCard> menuCards(const HelperModel& model, Instant now,
                                             const std::string& locale);

// The most height for all cards, in points. Takes the heights that the screens leave to windows.
double cardListHeight(const std::vector<double>& screenHeights);

}  // namespace brimwatch
