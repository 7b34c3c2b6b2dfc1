// The order of the cards, and what they are called by in the settings.
//
// The user's order is a list of card keys. It holds what the user arranged and nothing else: a card
// that it does not name comes behind all that it names, and a key whose card has gone keeps its
// place for a return. Pure functions, for any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "limits/subscription_limits.h"

namespace brimwatch {

// As in "subscription.claude-work".
std::string cardKey(std::string_view id);

std::vector<SubscriptionLimits> inCardOrder(std::vector<SubscriptionLimits> limits,
                                            const std::vector<std::string>& order);

// The order after the card moved by that many places among the shown ones. The same order where it
// can't: it is not shown, or would leave the list.
std::vector<std::string> movedBy(std::ptrdiff_t offset, std::string_view key,
                                 std::vector<std::string> shown,
                                 const std::vector<std::string>& order);

// The order after the card took the place of another one, above or below it. The same order where
// either is not shown, or they are one.
std::vector<std::string> movedToPlaceOf(std::string_view target, std::string_view key,
                                        std::vector<std::string> shown,
                                        const std::vector<std::string>& order);

}  // namespace brimwatch
