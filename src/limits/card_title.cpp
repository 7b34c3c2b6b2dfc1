#include "limits/subscription_limits.h"
#include "limits/usage_name.h"

namespace brimwatch {

std::string SubscriptionLimits::title(TitleAccount shownAccount) const {
    std::string title(brimwatch::displayName(provider));
    std::optional<std::string> name =
        displayName ? normalizedUsageName(*displayName) : std::nullopt;
    if (name) name = normalizedUsageName(*name);  // the cut may have left a blank at the end
    if (!name && shownAccount == TitleAccount::shown) name = account;
    if (name) title += " · " + *name;
    return title;
}

}  // namespace brimwatch
