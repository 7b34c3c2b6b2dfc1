// What an Android phone gets of an account's samples. Any thread.
#pragma once

#include <vector>

#include "limits/subscription_limits.h"

namespace brimwatch {

// At most one sample for each five minutes and 78 in all, of the six hours and a quarter before the
// figures themselves. Without any the history is absent.
SubscriptionLimits limitsForPhone(SubscriptionLimits limits);

// The same for all accounts, again and again: an account that has not changed since the last time
// is not worked out anew. One thread.
class PhoneLimits {
  public:
    std::vector<SubscriptionLimits> prepare(std::vector<SubscriptionLimits> limits);

  private:
    struct Account {
        SubscriptionLimits given;
        SubscriptionLimits prepared;
    };

    std::vector<Account> accounts_;  // in the order in which they came
};

}  // namespace brimwatch
