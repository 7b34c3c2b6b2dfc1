// What an Android phone gets of an account's samples. Any thread.
#pragma once

#include "limits/subscription_limits.h"

namespace brimwatch {

// At most one sample for each five minutes and 78 in all, of the six hours and a quarter before the
// figures themselves. Without any the history is absent.
SubscriptionLimits limitsForPhone(SubscriptionLimits limits);

}  // namespace brimwatch
